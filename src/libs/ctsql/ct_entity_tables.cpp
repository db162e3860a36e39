// SPDX-License-Identifier: MIT
//
// The tables `functions` and `classes`.
#include "ctsql/ct_entity_tables.h"

namespace CT::Sql {

namespace {

const Checkpoint::Function& function_of(Row& row) {
  return row.trace().functions()[static_cast<std::size_t>(row.number())];
}

const Checkpoint::ClassEntry& class_of(Row& row) {
  return row.trace().classes()[static_cast<std::size_t>(row.number())];
}

const ProfileRow& profile_of(Row& row) {
  return row.data().profile()[static_cast<std::size_t>(row.number())];
}

constexpr std::array function_columns = {
    Column{"id", integer_type, "what calls.function refers to",
           [](Row& row) { row.integer(row.number()); }, Key::id},
    Column{"name", text_type, "Class::method or function",
           [](Row& row) { row.function_name(row.number()); }, Key::name},
    Column{"class", text_type, "the class of a method",
           [](Row& row) { row.class_name(row.number()); }},
    Column{"method", text_type, "the name without its class; NULL for a plain function",
           [](Row& row) {
             const auto& function = function_of(row);
             function.class_entry() != nullptr ? row.stored_text(function.name()) : row.null();
           }},
    Column{"builtin", integer_type, "1 for what no script defines, else 0",
           [](Row& row) { row.integer(function_of(row).is_user() ? 0 : 1); }},
    Column{"calls", integer_type, "how often it was called",
           [](Row& row) { row.integer(profile_of(row).calls); }},
    Column{"total_ns", integer_type, "nanoseconds of its outermost calls, so recursion counts once",
           [](Row& row) { row.integer(profile_of(row).total_ns); }},
    Column{"own_ns", integer_type, "nanoseconds of its calls less those of what they called",
           [](Row& row) { row.integer(profile_of(row).own_ns); }},
    Column{"own_memory", integer_type, "the same for bytes of memory",
           [](Row& row) { row.integer(profile_of(row).own_memory); }},
    Column{"file", text_type, "the script that defines it",
           [](Row& row) {
             const auto& function = function_of(row);
             function.is_user() ? row.stored_name(function.filename()) : row.null();
           }},
    Column{"line", integer_type, "and the line there",
           [](Row& row) {
             const auto& function = function_of(row);
             function.is_user() ? row.integer(function.line_no()) : row.null();
           }},
};

constexpr std::array class_columns = {
    Column{"id", integer_type, "its number", [](Row& row) { row.integer(row.number()); }, Key::id},
    Column{"name", text_type, "with its namespace",
           [](Row& row) { row.stored_text(class_of(row).name()); }},
    Column{"builtin", integer_type, "1 for what no script defines, else 0",
           [](Row& row) { row.integer(class_of(row).is_user() ? 0 : 1); }},
    Column{"file", text_type, "the script that defines it",
           [](Row& row) {
             class_of(row).is_user() ? row.stored_name(class_of(row).filename()) : row.null();
           }},
    Column{
        "line", integer_type, "and the line there",
        [](Row& row) { class_of(row).is_user() ? row.integer(class_of(row).line()) : row.null(); }},
};

}  // namespace

constexpr Table functions_table = {
    "functions",
    "functions that were called, each with what its calls come to",
    function_columns,
    RowSet::numbered,
    {},
    [](TraceData& data) { return static_cast<std::int64_t>(data.trace().functions().size()); }};
constexpr Table classes_table = {
    "classes",
    "classes of methods and objects",
    class_columns,
    RowSet::numbered,
    {},
    [](TraceData& data) { return static_cast<std::int64_t>(data.trace().classes().size()); }};

}  // namespace CT::Sql
