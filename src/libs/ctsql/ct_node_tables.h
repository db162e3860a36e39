// SPDX-License-Identifier: MIT
//
// The tables of which a row is a node of the tree.
#pragma once

#include "ctsql/ct_table.h"

namespace CT::Sql {

extern const Table nodes_table;
extern const Table calls_table;
extern const Table includes_table;
extern const Table writes_table;
extern const Table headers_table;
extern const Table sent_table;
extern const Table errors_table;
extern const Table events_table;
extern const Table ancestors_table;

}  // namespace CT::Sql
