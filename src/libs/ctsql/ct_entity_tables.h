// SPDX-License-Identifier: MIT
//
// The tables of which a row is no node: the trace itself, functions, classes, exceptions, equal
// calls.
#pragma once

#include "ctsql/ct_table.h"

namespace CT::Sql {

extern const Table request_table;
extern const Table functions_table;
extern const Table classes_table;
extern const Table exceptions_table;
extern const Table repeats_table;

}  // namespace CT::Sql
