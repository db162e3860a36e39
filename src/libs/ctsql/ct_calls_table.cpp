// SPDX-License-Identifier: MIT
//
// The table `calls`, and `includes`, which are like them.
#include "ctsql/ct_node_columns.h"
#include "ctsql/ct_node_tables.h"

namespace CT::Sql {

namespace {

// What ended a call or an include, if it was this.
template <class End>
void put_end(Row& row) {
  const auto end = row.node().end_as<End>();
  end ? row.json(end->value(row.tape())) : row.null();
}

constexpr std::array call_columns = {
    Column{"function", integer_type, "the id of its function",
           [](Row& row) { row.integer(row.measure().function); }, Key::function},
    Column{"name", text_type, "Class::method or function",
           [](Row& row) { row.function_name(row.measure().function); }, Key::name},
    Column{"class", text_type, "the class of a method",
           [](Row& row) { row.class_name(row.measure().function); }},
    Column{"builtin", integer_type, "1 for what no script defines, else 0",
           [](Row& row) { row.integer(row.function().is_user() ? 0 : 1); }},
};

constexpr std::array value_columns = {
    Column{"arg_count", integer_type, "how many arguments it was given",
           [](Row& row) {
             const auto call = row.node().begin_as<Checkpoint::FunctionCall>();
             call ? row.integer(call->arg_count()) : row.null();
           }},
    Column{"this", json_type, "the object of a method",
           [](Row& row) {
             const auto call = row.node().begin_as<Checkpoint::FunctionCall>();
             call && call->has_this() ? row.json(call->this_value(row.tape())) : row.null();
           }},
    Column{"args", json_type, "the arguments, as an array",
           [](Row& row) {
             const auto call = row.node().begin_as<Checkpoint::FunctionCall>();
             call ? row.json_array(call->args(row.tape())) : row.null();
           }},
    Column{"returned", json_type, "what it returned; NULL if it did not",
           put_end<Checkpoint::FunctionReturn>},
    Column{"thrown", json_type, "what it threw; NULL if it did not",
           put_end<Checkpoint::FunctionException>},
};

constexpr auto calls_columns =
    joined(Columns::place, call_columns, Columns::outcome, Columns::span_measures, value_columns);

constexpr std::array include_columns = {
    Column{"path", text_type, "as the script wrote it",
           [](Row& row) {
             const auto include = row.node().begin_as<Checkpoint::IncludeCall>();
             include ? row.stored_text(include->include()) : row.null();
           }},
};

constexpr std::array include_values = {
    Column{"thrown", json_type, "what it threw; NULL if it did not",
           put_end<Checkpoint::IncludeException>},
};

constexpr auto includes_columns = joined(Columns::place, include_columns, Columns::outcome,
                                         Columns::span_measures, include_values);

}  // namespace

constexpr Table calls_table = {"calls", "calls of functions and methods", calls_columns,
                               RowSet::calls};
constexpr Table includes_table = {"includes", "files that were included", includes_columns,
                                  RowSet::listed, Node::Type::INCLUDE_CALL};

}  // namespace CT::Sql
