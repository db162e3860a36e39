// SPDX-License-Identifier: MIT
//
// The loadable extension: traces as tables in any program that uses SQLite.
//
//   .load codetrace                              in the sqlite3 shell
//   select codetrace_open('good.ct', 'good');    all tables of a trace, as good.calls and so on
//   select codetrace_open('bad.ct', 'bad');
//   select name, sum(b.own_ns) from bad.functions b join good.functions g using (name) ...
//
//   codetrace_open(FILE)           the same as temp.calls and so on, for one trace
//   codetrace_schema([TABLE])      the tables and their columns, as text
//   create virtual table temp.t using codetrace('bad.ct')             its calls
//   create virtual table temp.t using codetrace('bad.ct', functions)  another of its tables
//
// and the functions of ct_functions.h. Files are only ever read. What opens them works in SQL that
// the user types, not out of views and triggers that a database brings along.
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "ctsql/ct_functions.h"
#include "ctsql/ct_module.h"
#include "ctsql/ct_open_traces.h"
#include "ctsql/ct_sqlite.h"
#include "ctsql/ct_tables.h"

SQLITE_EXTENSION_INIT1

namespace CT::Sql {

namespace {

constexpr char module_name[] = "codetrace";

struct Free {
  void operator()(char* text) const { sqlite3_free(text); }
};
using Text = std::unique_ptr<char, Free>;

Text checked(char* text) {
  if (text == nullptr) throw std::bad_alloc();
  return Text(text);
}

// An argument of "using codetrace(...)" as SQLite hands it on: a word, or a text in quotes.
std::string unquoted(std::string_view argument) {
  const char quote = argument.empty() ? '\0' : argument.front();
  if (quote != '\'' && quote != '"') return std::string(argument);
  std::string text;
  for (std::size_t i = 1; i + 1 < argument.size(); ++i) {
    if (argument[i] == quote) ++i;  // it is there twice
    text.push_back(argument[i]);
  }
  return text;
}

TableSource find_source(OpenTraces& traces, std::span<const char* const> arguments,
                        std::string& error) {
  if (arguments.empty() || arguments.size() > 2) {
    error =
        "codetrace needs the name of a trace: codetrace('request.ct'), or codetrace("
        "'request.ct', functions) for another table than calls";
    return {};
  }
  const std::string name = arguments.size() == 2 ? unquoted(arguments[1]) : "calls";
  const Table* table = find_table(name);
  if (table == nullptr) {
    error = "a trace has no table " + name + "; select codetrace_schema() tells what it has";
    return {};
  }
  std::shared_ptr<TraceData> data = traces.open(unquoted(arguments[0]), error);
  return {data != nullptr ? table : nullptr, data};
}

// Runs work that ends in an error of its own or in none.
template <class Work>
void guarded(sqlite3_context* context, const Work& work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

// False after the context was told what is wrong.
bool execute(sqlite3_context* context, const char* sql) {
  sqlite3* const database = sqlite3_context_db_handle(context);
  if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  sqlite3_result_error(context, sqlite3_errmsg(database), -1);
  return false;
}

bool has_schema(sqlite3* database, const char* name) {
  return sqlite3_db_filename(database, name) != nullptr;
}

void drop_table(sqlite3_context* context, const std::string& schema, const char* name) {
  const Text sql = checked(sqlite3_mprintf(R"(drop table "%w"."%w")", schema.c_str(), name));
  sqlite3_exec(sqlite3_context_db_handle(context), sql.get(), nullptr, nullptr, nullptr);
}

// Makes all tables of a trace and lists them, or none: false after the context was told why.
bool make_tables(sqlite3_context* context, const std::string& schema, const std::string& path,
                 std::string& made) {
  const auto all = tables();
  for (std::size_t i = 0; i != all.size(); ++i) {
    const char* const name = all[i]->name;
    const Text sql =
        checked(sqlite3_mprintf(R"(create virtual table "%w"."%w" using %s(%Q, %s))",
                                schema.c_str(), name, module_name, path.c_str(), name));
    if (!execute(context, sql.get())) {
      // Those before it go again, so that one may try once more.
      while (i-- != 0) drop_table(context, schema, all[i]->name);
      return false;
    }
    if (!made.empty()) made += ", ";
    made += schema;
    made += '.';
    made += name;
  }
  return true;
}

void open_tables(sqlite3_context* context, int count, sqlite3_value** values) {
  guarded(context, [&] {
    const std::string path(text_of(values[0]));
    const std::string schema(count == 2 ? text_of(values[1]) : "temp");
    // If it cannot be read nothing is made.
    auto& traces = *static_cast<std::shared_ptr<OpenTraces>*>(sqlite3_user_data(context));
    std::string error;
    const auto data = traces->open(path, error);
    if (data == nullptr) return sqlite3_result_error(context, error.c_str(), -1);
    const bool is_new =
        count == 2 && !has_schema(sqlite3_context_db_handle(context), schema.c_str());
    if (is_new &&
        !execute(context,
                 checked(sqlite3_mprintf("attach ':memory:' as %Q", schema.c_str())).get())) {
      return;
    }
    std::string made;
    if (!make_tables(context, schema, path, made)) return;
    sqlite3_result_text64(context, made.data(), made.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  });
}

void tell_schema(sqlite3_context* context, int count, sqlite3_value** values) {
  guarded(context, [&] {
    const Table* table = count == 1 ? find_table(text_of(values[0])) : nullptr;
    if (count == 1 && table == nullptr) {
      return sqlite3_result_error(context, "a trace has no such table", -1);
    }
    const std::string text = table != nullptr ? schema_text(*table) : schema_text();
    sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  });
}

int add_everything(sqlite3* database) {
  const auto traces = std::make_shared<OpenTraces>();
  int status = add_module(database, module_name,
                          [traces](std::span<const char* const> arguments, std::string& error) {
                            return find_source(*traces, arguments, error);
                          });
  for (const int count : {1, 2}) {
    if (status != SQLITE_OK) return status;
    status = sqlite3_create_function_v2(
        database, "codetrace_open", count, SQLITE_UTF8 | SQLITE_DIRECTONLY,
        new std::shared_ptr<OpenTraces>(traces), open_tables, nullptr, nullptr,
        [](void* data) { delete static_cast<std::shared_ptr<OpenTraces>*>(data); });
  }
  for (const int count : {0, 1}) {
    if (status != SQLITE_OK) return status;
    status = sqlite3_create_function_v2(database, "codetrace_schema", count,
                                        SQLITE_UTF8 | SQLITE_INNOCUOUS, nullptr, tell_schema,
                                        nullptr, nullptr, nullptr);
  }
  return status == SQLITE_OK ? add_functions(database) : status;
}

int load(sqlite3* database, char** message, const sqlite3_api_routines* api) {
  SQLITE_EXTENSION_INIT2(api)
  constexpr int oldest = 3038000;  // has all that is called here
  if (sqlite3_libversion_number() < oldest) {
    *message = sqlite3_mprintf("codetrace needs SQLite 3.38, not %s", sqlite3_libversion());
    return SQLITE_ERROR;
  }
  try {
    const int status = add_everything(database);
    // What it links does not stand being unloaded.
    return status == SQLITE_OK ? SQLITE_OK_LOAD_PERMANENTLY : status;
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

}  // namespace

}  // namespace CT::Sql

#define CODETRACE_ENTRY_POINT extern "C" __attribute__((visibility("default"))) int

// The name that SQLite takes first, and the one that it makes of the file's name.
CODETRACE_ENTRY_POINT sqlite3_extension_init(sqlite3* database, char** message,
                                             const sqlite3_api_routines* api);
CODETRACE_ENTRY_POINT sqlite3_codetrace_init(sqlite3* database, char** message,
                                             const sqlite3_api_routines* api);

int sqlite3_extension_init(sqlite3* database, char** message, const sqlite3_api_routines* api) {
  return CT::Sql::load(database, message, api);
}
int sqlite3_codetrace_init(sqlite3* database, char** message, const sqlite3_api_routines* api) {
  return CT::Sql::load(database, message, api);
}
