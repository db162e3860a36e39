// SPDX-License-Identifier: MIT
//
// What went to the client, and what was said on the way: `writes`, `headers`, `sent`, `errors` and
// `events`.
#include "ctsql/ct_node_columns.h"
#include "ctsql/ct_node_tables.h"

namespace CT::Sql {

namespace {

// Puts what `put` makes of the node's begin, if that is of this class.
template <class Record, class Put>
void with(Row& row, const Put& put) {
  const auto record = row.node().begin_as<Record>();
  record ? put(*record) : row.null();
}

using Checkpoint::SapiHeader;
using Checkpoint::SapiSendHeaders;
using Checkpoint::SapiWriteStart;
using Checkpoint::ScriptError;
using Checkpoint::UserEvent;

constexpr std::array write_columns = {
    Column{"body", text_type, "what was written; **CUT** stands where the tracer cut it",
           [](Row& row) {
             with<SapiWriteStart>(row, [&](const auto& write) { row.stored_text(write.body()); });
           }},
    Column{"size", integer_type, "its bytes before that",
           [](Row& row) {
             with<SapiWriteStart>(
                 row, [&](const auto& write) { row.integer(whole_size(write.body())); });
           }},
};

void put_operation(Row& row) {
  constexpr std::array<std::string_view, 5> names = {"replace", "add", "delete", "delete_all",
                                                     "set_status"};
  with<SapiHeader>(row, [&](const SapiHeader& header) {
    row.word(header.has_known_op() ? names[header.op()] : "");
  });
}

constexpr std::array header_columns = {
    Column{"operation", text_type, "replace, add, delete, delete_all or set_status", put_operation},
    Column{"header", text_type, "the line",
           [](Row& row) {
             with<SapiHeader>(row, [&](const auto& header) { row.stored_text(header.header()); });
           }},
};

constexpr std::array sent_columns = {
    Column{"code", integer_type, "the status code of the response",
           [](Row& row) {
             with<SapiSendHeaders>(row, [&](const auto& sent) {
               row.integer(static_cast<std::int32_t>(sent.code()));
             });
           }},
    Column{"status", text_type, "the status line",
           [](Row& row) {
             with<SapiSendHeaders>(row, [&](const auto& sent) { row.stored_text(sent.status()); });
           }},
};

constexpr std::array error_columns = {
    Column{"number", integer_type, "the number of the level",
           [](Row& row) {
             with<ScriptError>(row, [&](const auto& error) { row.integer(error.error_num()); });
           }},
    Column{"level", text_type, "its name, such as E_WARNING",
           [](Row& row) {
             with<ScriptError>(
                 row, [&](const auto& error) { row.word(error_level(error.error_num())); });
           }},
    Column{"message", text_type, "what PHP said",
           [](Row& row) {
             with<ScriptError>(row,
                               [&](const auto& error) { row.stored_text(error.error_message()); });
           }},
};

constexpr std::array event_columns = {
    Column{"name", text_type, "what the script called it",
           [](Row& row) {
             with<UserEvent>(row, [&](const auto& event) { row.stored_text(event.event_name()); });
           }},
    Column{"sequence", integer_type, "which one of this name",
           [](Row& row) {
             with<UserEvent>(row, [&](const auto& event) { row.integer(event.event_sequence()); });
           }},
};

constexpr auto writes_columns =
    joined(Columns::place, write_columns, Columns::outcome, Columns::span_measures);
constexpr auto headers_columns = joined(Columns::place, header_columns, Columns::point_measures);
constexpr auto sents_columns = joined(Columns::place, sent_columns, Columns::point_measures);
constexpr auto errors_columns = joined(Columns::place, error_columns, Columns::point_measures);
constexpr auto events_columns = joined(Columns::place, event_columns, Columns::point_measures);

}  // namespace

constexpr Table writes_table = {"writes", "output of the script", writes_columns, RowSet::listed,
                                Node::Type::SAPI_WRITE};
constexpr Table headers_table = {"headers", "what the script did to the response's headers",
                                 headers_columns, RowSet::listed, Node::Type::SAPI_HEADER};
constexpr Table sent_table = {"sent", "when the headers went out", sents_columns, RowSet::listed,
                              Node::Type::SAPI_SEND_HEADERS};
constexpr Table errors_table = {"errors", "errors of PHP", errors_columns, RowSet::listed,
                                Node::Type::SCRIPT_ERROR};
constexpr Table events_table = {"events", "marks that the script set", events_columns,
                                RowSet::listed, Node::Type::USER_EVENT};

}  // namespace CT::Sql
