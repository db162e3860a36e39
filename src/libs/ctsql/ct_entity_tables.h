// SPDX-License-Identifier: MIT
//
// The tables of which a row is no node: the trace itself, functions and classes.
#pragma once

#include "ctsql/ct_table.h"

namespace CT::Sql {

extern const Table request_table;
extern const Table functions_table;
extern const Table classes_table;

}  // namespace CT::Sql
