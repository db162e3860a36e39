// SPDX-License-Identifier: MIT
//
// The tables `nodes`, of all of them, and `ancestors`.
#include "ctsql/ct_node_columns.h"
#include "ctsql/ct_node_tables.h"

namespace CT::Sql {

namespace {

constexpr std::array own_columns = {
    Column{"kind", text_type,
           "request, call, include, write, flush, header, send_headers, exit, error or event",
           [](Row& row) { row.word(kind_of(row.trace().type(row.number()))); }},
    Column{"text", text_type, "its line in the output of codetrace -T",
           [](Row& row) {
             row.text([&](Writer& out) { row.node().write_text(out, row.text_room()); });
           }},
};

void put_marks(Row& row) {
  const Measure& measure = row.measure();
  const bool is_untimed = measure.has(Measure::untimed) || measure.has(Measure::end_untimed);
  if (!is_untimed) return row.word(measure.has(Measure::moved) ? "moved" : "");
  row.word(measure.has(Measure::moved) ? "untimed moved" : "untimed");
}

constexpr std::array mark_columns = {
    Column{"marks", text_type,
           "untimed: begin or end has no time; moved: its time was made to fit; NULL for neither",
           put_marks},
};

constexpr auto columns =
    joined(Columns::place, own_columns, Columns::outcome, Columns::span_measures, mark_columns);

constexpr std::array ancestor_columns = {
    Column{"id", integer_type, "the number of a node around it, the request first",
           [](Row& row) { row.integer(row.number()); }, Key::id},
    Column{"depth", integer_type, "how many nodes are around that one",
           [](Row& row) { row.integer(row.trace().depth(row.number())); }},
    Column{"of", integer_type, "the node that is asked for", nullptr, Key::given},
};

}  // namespace

constexpr Table nodes_table = {"nodes", "all that happened, in its order", columns, RowSet::nodes};
constexpr Table ancestors_table = {"ancestors",
                                   "the way from the request down to a node: ancestors(ID)",
                                   ancestor_columns, RowSet::above};

}  // namespace CT::Sql
