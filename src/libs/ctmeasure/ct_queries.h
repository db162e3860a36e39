// SPDX-License-Identifier: MIT
//
// What a request said to its databases through PDO, mysqli, pgsql and sqlite3: each call with its
// SQL text and with the call that asked for it. What executes a prepared statement has the text of
// the call that prepared it: of the latest one that gave back its object, because PHP gives
// handles of objects that are gone to new ones; with pgsql, of the latest one of its name.
//
// Methods are those of PHP itself. A class of a script that extends one of them shows up by what it
// calls of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"

namespace CT {

struct Query {
  NodeId id;           // the call
  NodeId prepared_by;  // of a statement: the call that has its text; else no_node
  // The outermost call of the database layer around it, or itself: its parent is the caller, and
  // its place is where that one called.
  NodeId entered_by;
  Checkpoint::String text;  // borrows the trace; absent where it is not known
  std::uint64_t stack;      // equal for queries with the same functions and lines around them
  bool only_prepares;
};

// In the order of the file. Looks at no call if no function of the trace is one of a database.
std::vector<Query> queries(const Trace& trace, const Measures& measures);

// Queries that are alike (see ct_sql_text.h).
struct LikeQueries {
  std::string text;
  std::uint64_t stack;             // 0 where calls of any stack count
  std::vector<std::size_t> which;  // places in the list of queries, in its order
  std::int32_t executions = 0;     // those that do not only prepare
  std::int64_t total_ns = 0;       // of all of them; as much as fits
  NodeId first = Storage::no_node;
  NodeId slowest = Storage::no_node;
};

// Groups in the order of their first queries; those without a text have an empty one. With
// `same_stack` queries of different call stacks are not alike, and what only prepares is left out.
std::vector<LikeQueries> like_queries(const std::vector<Query>& list, const Measures& measures,
                                      bool same_stack);

}  // namespace CT
