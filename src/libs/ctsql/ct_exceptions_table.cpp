// SPDX-License-Identifier: MIT
//
// The table `exceptions`.
#include "ctsql/ct_entity_tables.h"

namespace CT::Sql {

namespace {

const Exception& exception_of(Row& row) {
  return row.data().exceptions()[static_cast<std::size_t>(row.number())];
}

void put_node(Row& row, NodeId id) { id != Storage::no_node ? row.integer(id) : row.null(); }

// Where it was made: the place of the "new", or of the function of PHP that made it.
Checkpoint::Base origin_of(Row& row) {
  const Exception& exception = exception_of(row);
  const NodeId id =
      exception.made_by != Storage::no_node ? exception.made_by : exception.first_thrower();
  return row.trace().node(id).begin();
}

constexpr std::array columns = {
    Column{"class", text_type, "its class; NULL where the trace does not know it",
           [](Row& row) {
             const Checkpoint::ClassEntry* entry = exception_of(row).class_entry;
             entry != nullptr ? row.stored_text(entry->name()) : row.null();
           }},
    Column{"handle", integer_type, "the number of its object",
           [](Row& row) { row.integer(exception_of(row).handle); }},
    Column{"message", text_type, "what it says; NULL where the trace does not",
           [](Row& row) { row.stored_text(exception_of(row).message); }},
    Column{"file", text_type, "the script that made it",
           [](Row& row) { row.stored_name(origin_of(row).filename()); }},
    Column{"line", integer_type, "and the line there",
           [](Row& row) {
             const Checkpoint::Base begin = origin_of(row);
             begin.has_location() ? row.integer(begin.line_no()) : row.null();
           }},
    Column{"made_by", integer_type, "the id of its constructor; NULL where PHP made it",
           [](Row& row) { put_node(row, exception_of(row).made_by); }},
    Column{"thrown_by", integer_type, "the id of the first call that it ended",
           [](Row& row) { row.integer(exception_of(row).first_thrower()); }},
    Column{"passed", integer_type, "how many calls it ended",
           [](Row& row) {
             std::int64_t passed = 0;
             for (const Exception::Pass& pass : exception_of(row).passes) {
               passed += static_cast<std::int64_t>(pass.calls.size());
             }
             row.integer(passed);
           }},
    Column{"caught_in", integer_type, "the id of the call that caught it last; NULL for nobody",
           [](Row& row) {
             const Exception& exception = exception_of(row);
             exception.is_uncaught() ? row.null()
                                     : put_node(row, exception.passes.back().caught_in);
           }},
    Column{"previous", integer_type, "the rowid of the exception that it was made from",
           [](Row& row) {
             const std::ptrdiff_t previous = exception_of(row).previous;
             previous >= 0 ? row.integer(previous) : row.null();
           }},
};

}  // namespace

constexpr Table exceptions_table = {"exceptions",
                                    "exceptions, one row each however many calls they passed",
                                    columns,
                                    RowSet::numbered,
                                    {},
                                    [](TraceData& data) { return static_cast<std::int64_t>(data.exceptions().size()); }};

}  // namespace CT::Sql
