// SPDX-License-Identifier: MIT
//
// The table `request`, which has one row.
#include "codetrace/render/ct_text.h"
#include "ctsql/ct_entity_tables.h"

namespace CT::Sql {

namespace {

template <class Number>
void put_optional(Row& row, const std::optional<Number>& number) {
  number ? row.unsigned_integer(*number) : row.null();
}

constexpr std::array columns = {
    Column{"path", text_type, "the file as it was opened",
           [](Row& row) { row.text([&](Writer& out) { put_text(out, row.data().path()); }); }},
    Column{"request_id", integer_type, "the number that the tracer gave it",
           [](Row& row) { row.integer(row.data().facts().request_id); }},
    Column{"php_api", integer_type, "the version of PHP's API",
           [](Row& row) { row.integer(row.data().facts().php_api); }},
    Column{"url", text_type, "the final one, after rewriting",
           [](Row& row) { row.stored_text(row.data().facts().url); }},
    Column{"uri", text_type, "as it was asked for",
           [](Row& row) { row.stored_text(row.data().facts().uri); }},
    Column{"host", text_type, "whom it was asked of",
           [](Row& row) { row.stored_text(row.data().facts().host); }},
    Column{"method", text_type, "GET, POST and so on",
           [](Row& row) { row.stored_text(row.data().facts().method); }},
    Column{"started", text_type, "when, in UTC: 2026-05-17T09:30:00.000000123Z",
           [](Row& row) {
             const auto& started = row.data().facts().started;
             const std::string text = started ? iso_time(*started) : std::string();
             text.empty() ? row.null() : row.text([&](Writer& out) { out.put(text); });
           }},
    Column{"total_ns", integer_type, "nanoseconds that it took",
           [](Row& row) { row.integer(row.data().facts().total_ns); }},
    Column{"memory", integer_type, "bytes in use at its begin",
           [](Row& row) { put_optional(row, row.data().facts().memory); }},
    Column{"memory_peak", integer_type, "the most bytes in use that the trace knows of",
           [](Row& row) { put_optional(row, row.data().facts().memory_peak); }},
    Column{"status", integer_type, "the status code of the response",
           [](Row& row) {
             const auto status = row.data().response().status();
             status ? row.integer(*status) : row.null();
           }},
    Column{"bytes_out", integer_type, "bytes of output that were written",
           [](Row& row) { row.unsigned_integer(row.data().response().bytes_out()); }},
    Column{"nodes", integer_type, "how many nodes there are",
           [](Row& row) { row.integer(row.trace().node_count()); }},
    Column{"calls", integer_type, "how many of them are calls",
           [](Row& row) { row.integer(row.data().facts().calls); }},
    Column{"functions", integer_type, "how many functions were called",
           [](Row& row) { row.unsigned_integer(row.trace().functions().size()); }},
    Column{"classes", integer_type, "how many classes are there",
           [](Row& row) { row.unsigned_integer(row.trace().classes().size()); }},
    Column{"depth", integer_type, "of the deepest node",
           [](Row& row) { row.integer(row.data().facts().depth); }},
    Column{"errors", integer_type, "how many errors PHP reported",
           [](Row& row) { row.integer(row.data().facts().errors); }},
    Column{"thrown", integer_type, "how many calls and includes ended with an exception",
           [](Row& row) { row.integer(row.data().thrown()); }},
    Column{"open", integer_type, "how many nodes never ended",
           [](Row& row) { row.integer(row.data().facts().open); }},
    Column{"complete", integer_type, "1 if it has begin and end and nothing is damaged, else 0",
           [](Row& row) { row.integer(row.data().facts().is_complete ? 1 : 0); }},
};

}  // namespace

constexpr Table request_table = {"request", "the request as a whole: one row",
                                 columns,   RowSet::numbered,
                                 {},        [](TraceData&) { return std::int64_t{1}; }};

}  // namespace CT::Sql
