// SPDX-License-Identifier: MIT
//
// The table `repeats`.
#include "ctsql/ct_entity_tables.h"

namespace CT::Sql {

namespace {

const Repeat& repeat_of(Row& row) {
  return row.data().repeats()[static_cast<std::size_t>(row.number())];
}

constexpr std::array columns = {
    Column{"function", integer_type, "the id of its function",
           [](Row& row) { row.integer(repeat_of(row).function); }},
    Column{"name", text_type, "Class::method or function",
           [](Row& row) { row.function_name(repeat_of(row).function); }},
    Column{"args", json_type, "the arguments, as an array",
           [](Row& row) {
             const Node::Base node = row.trace().node(repeat_of(row).first);
             const auto call = node.begin_as<Checkpoint::FunctionCall>();
             call ? row.json_array(call->args(row.tape())) : row.null();
           }},
    Column{"calls", integer_type, "how many there are, at least 2",
           [](Row& row) { row.integer(repeat_of(row).calls); }},
    Column{"total_ns", integer_type, "nanoseconds of all of them",
           [](Row& row) { row.integer(repeat_of(row).total_ns); }},
    Column{"first", integer_type, "the id of the first of them",
           [](Row& row) { row.integer(repeat_of(row).first); }},
    Column{"slowest_ns", integer_type, "nanoseconds of the slowest of them",
           [](Row& row) { row.integer(repeat_of(row).slowest_ns); }},
    Column{"spare_ns", integer_type, "nanoseconds of all but the slowest",
           [](Row& row) { row.integer(repeat_of(row).spare_ns()); }},
    Column{"results", text_type,
           "same, handle (of an object), none (null), unknown (no end), differ",
           [](Row& row) { row.word(word_of(repeat_of(row).results)); }},
};

}  // namespace

constexpr Table repeats_table = {
    "repeats", "calls of one function on the same object with equal arguments; most to spare first",
    columns,   RowSet::numbered,
    {},        [](TraceData& data) { return static_cast<std::int64_t>(data.repeats().size()); }};

}  // namespace CT::Sql
