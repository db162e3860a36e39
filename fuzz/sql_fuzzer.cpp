// SPDX-License-Identifier: MIT
//
// A text of SQL over a fixed trace, its results in one of the forms, its error in words. Nothing
// that it says may change anything or reach out of the connection.
#include <new>
#include <string>
#include <string_view>

#include "ctsql/ct_database.h"
#include "ctsql/ct_script.h"
#include "rich_trace.h"
#include "support.h"
#include "tools/cttool/ct_sql_error.h"
#include "tools/cttool/ct_sql_print.h"

namespace {

using namespace CT;

// Read once: nothing of it changes.
const Trace& fixed_trace() {
  static const Trace trace = [] {
    Trace made;
    const std::string bytes = Test::rich_trace(Test::ByteOrder::big).build();
    const void* const begin = bytes.data();
    Fuzz::expect(made.open(static_cast<const unsigned char*>(begin), bytes.size()), "a trace");
    return made;
  }();
  return trace;
}

void run(Sql::Database& database, std::string_view text, Tool::SqlForm form) {
  Fuzz::LimitedSink sink;
  StreamWriter out(sink);
  const auto results = Tool::make_result_printer(form, "fuzz", text.size() % 2 == 0 ? 0 : 80, out);
  Sql::Script script(database, text);
  results->begin();
  while (Sql::Statement* statement = script.next()) {
    results->begin_result(statement->get());
    for (int left = 1000; left != 0 && out.ok() && statement->step(); --left) {
      results->put_row(statement->get());
    }
    results->end_result();
  }
  results->end();
  if (!script.error()) return;
  Fuzz::expect(!script.error()->message.empty(), "a reason for the error");
  out.put(Tool::error_text(*script.error(), text));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr Sql::Limits limits = {
      .longest_text = 100'000, .longest_sql = 10'000, .longest_pattern = 50};
  constexpr sqlite3_int64 heap = 64 << 20;
  constexpr int most_stops = 100;  // of a thousand steps each
  constexpr std::size_t forms = 5;
  sqlite3_hard_heap_limit64(heap);
  static const Measures measures(fixed_trace());
  Sql::Database database(std::make_shared<Sql::TraceData>(fixed_trace(), measures, "fuzz"), limits);
  Fuzz::expect(database.error().empty(), "a connection");
  int asked = 0;
  database.set_stop([&] { return ++asked > most_stops; });
  try {
    run(database, Fuzz::as_text(data, size), static_cast<Tool::SqlForm>(size % forms));
  } catch (const std::bad_alloc&) {
    // A query may want more than the heap has.
  }
  Fuzz::expect(sqlite3_total_changes64(database.get()) == 0, "no change");
  Fuzz::expect(sqlite3_get_autocommit(database.get()) != 0, "no transaction");
  // The main database lies in memory, a temporary one is made by nobody.
  Fuzz::expect(sqlite3_db_filename(database.get(), "main")[0] == '\0', "no file");
  Fuzz::expect(sqlite3_db_name(database.get(), 2) == nullptr, "nothing attached");
  return 0;
}
