// SPDX-License-Identifier: MIT
//
// Columns that the tables of nodes share.
#pragma once

#include "ctmeasure/ct_node_words.h"
#include "ctsql/ct_table.h"

namespace CT::Sql::Columns {

inline constexpr std::array place = {
    Column{"id", integer_type, "its number, which other verbs print and take",
           [](Row& row) { row.integer(row.number()); }, Key::id},
    Column{"parent", integer_type, "the node around it",
           [](Row& row) {
             const NodeId parent = row.trace().parent(row.number());
             parent >= 0 ? row.integer(parent) : row.null();
           },
           Key::parent},
    Column{"last", integer_type, "the last node under it: id+1 to last lie under it",
           [](Row& row) { row.integer(row.last()); }},
    Column{"depth", integer_type, "how many nodes are around it",
           [](Row& row) { row.integer(row.depth()); }},
};

inline constexpr std::array outcome = {
    Column{"outcome", text_type, "ended, threw or open; NULL for what takes no time",
           [](Row& row) { row.word(outcome_of(row.node())); }},
};

inline constexpr std::array start = {
    Column{"start_ns", integer_type, "when it began: nanoseconds since the request's start",
           [](Row& row) { row.integer(row.measure().start_ns); }},
};

inline constexpr std::array times = {
    Column{"total_ns", integer_type, "nanoseconds from begin to end",
           [](Row& row) { row.integer(row.measure().total_ns); }},
    Column{"own_ns", integer_type, "the same less the totals of its children",
           [](Row& row) { row.integer(row.own().ns); }},
};

inline constexpr std::array memory = {
    Column{"memory", integer_type, "bytes in use at the begin",
           [](Row& row) {
             const Measure& measure = row.measure();
             measure.has(Measure::has_memory) ? row.unsigned_integer(measure.memory) : row.null();
           }},
};

inline constexpr std::array memory_deltas = {
    Column{"memory_delta", integer_type, "bytes more in use at the end",
           [](Row& row) {
             const Measure& measure = row.measure();
             measure.has(Measure::has_delta) ? row.integer(measure.memory_delta) : row.null();
           }},
    Column{"own_memory", integer_type, "the same less those of its children",
           [](Row& row) {
             const Measure& measure = row.measure();
             measure.has(Measure::has_delta) ? row.integer(row.own().memory) : row.null();
           }},
};

inline constexpr std::array location = {
    Column{"file", text_type, "the script that it was made from",
           [](Row& row) { row.stored_name(row.node().begin().filename()); }},
    Column{"line", integer_type, "and the line there",
           [](Row& row) {
             const Checkpoint::Base& begin = row.node().begin();
             begin.has_location() ? row.integer(begin.line_no()) : row.null();
           }},
};

// Of what takes time, and of what does not.
inline constexpr auto span_measures = joined(start, times, memory, memory_deltas, location);
inline constexpr auto point_measures = joined(start, memory, location);

}  // namespace CT::Sql::Columns
