// SPDX-License-Identifier: MIT
#include "ctsql/ct_module.h"

#include <new>

#include "ctsql/ct_plan.h"
#include "ctsql/ct_sqlite.h"
#include "ctsql/ct_tables.h"
#include "ctsql/ct_walk.h"

namespace CT::Sql {

namespace {

// The result of one column.
class Result final : public Cells {
 public:
  explicit Result(sqlite3_context* context) : context_(context) {}

  void null() override { sqlite3_result_null(context_); }
  void integer(std::int64_t value) override { sqlite3_result_int64(context_, value); }
  void real(double value) override { sqlite3_result_double(context_, value); }
  void kept_text(std::string_view text) override { put(text, SQLITE_STATIC); }
  void text(std::string_view text) override { put(text, SQLITE_TRANSIENT); }
  void json(std::string_view text) override {
    constexpr unsigned json_subtype = 'J';  // by which SQLite's own functions know JSON
    put(text, SQLITE_TRANSIENT);
    sqlite3_result_subtype(context_, json_subtype);
  }

 private:
  void put(std::string_view text, sqlite3_destructor_type lifetime) {
    sqlite3_result_text64(context_, text.data(), text.size(), lifetime, SQLITE_UTF8);
  }
  sqlite3_context* context_;
};

struct OpenTable : sqlite3_vtab {
  TableSource source;
};

struct Cursor : sqlite3_vtab_cursor {
  explicit Cursor(const OpenTable& table)
      : sqlite3_vtab_cursor(),
        columns(table.source.table->columns),
        walk(*table.source.table, *table.source.data),
        row(*table.source.data) {}

  void place() {
    if (!walk.is_at_end()) row.place(walk.number());
  }

  std::span<const Column> columns;
  Walk walk;
  Row row;
};

OpenTable& table_of(sqlite3_vtab* table) { return *static_cast<OpenTable*>(table); }
Cursor& cursor_of(sqlite3_vtab_cursor* cursor) { return *static_cast<Cursor*>(cursor); }

// No exception may reach SQLite.
template <class Work>
int guarded(const Work& work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;
  }
}

int connect(sqlite3* database, TableSource source, sqlite3_vtab** made) {
  const int status = sqlite3_declare_vtab(database, declaration(*source.table).c_str());
  if (status != SQLITE_OK) return status;
  *made = new OpenTable{{}, std::move(source)};
  return SQLITE_OK;
}

// The client data of a module of one table is its source.
int connect_known(sqlite3* database, void* client, int, const char* const*, sqlite3_vtab** made,
                  char**) {
  return guarded([&] { return connect(database, *static_cast<const TableSource*>(client), made); });
}

// That of the module that creates tables finds it. The first three arguments are names.
int connect_found(sqlite3* database, void* client, int count, const char* const* arguments,
                  sqlite3_vtab** made, char** message) {
  constexpr std::size_t names = 3;
  return guarded([&] {
    std::string error;
    const std::span all(arguments, static_cast<std::size_t>(count));
    TableSource source = (*static_cast<const FindSource*>(client))(all.subspan(names), error);
    if (source.table == nullptr) {
      *message = sqlite3_mprintf("%s", error.c_str());
      return SQLITE_ERROR;
    }
    // Nothing that is hidden in a schema may open files.
    sqlite3_vtab_config(database, SQLITE_VTAB_DIRECTONLY);
    return connect(database, std::move(source), made);
  });
}

// A function of its own: a module that creates and connects by the same one is just there.
int create_found(sqlite3* database, void* client, int count, const char* const* arguments,
                 sqlite3_vtab** made, char** message) {
  return connect_found(database, client, count, arguments, made, message);
}

int disconnect(sqlite3_vtab* table) {
  delete &table_of(table);
  return SQLITE_OK;
}

int best_index(sqlite3_vtab* table, sqlite3_index_info* info) {
  return guarded([&] {
    const TableSource& source = table_of(table).source;
    const int status = choose_plan(*source.table, *source.data, *info);
    if (status == SQLITE_ERROR) {
      table->zErrMsg = sqlite3_mprintf("%s needs the id of a node, as in %s(42) or %s(calls.id)",
                                       source.table->name, source.table->name, source.table->name);
    }
    return status;
  });
}

int open(sqlite3_vtab* table, sqlite3_vtab_cursor** made) {
  return guarded([&] {
    *made = new Cursor(table_of(table));
    return SQLITE_OK;
  });
}

int close(sqlite3_vtab_cursor* cursor) {
  delete &cursor_of(cursor);
  return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* cursor, int plan, const char*, int count, sqlite3_value** values) {
  return guarded([&] {
    cursor_of(cursor).walk.start(read_search(plan, count, values));
    cursor_of(cursor).place();
    return SQLITE_OK;
  });
}

int next(sqlite3_vtab_cursor* cursor) {
  return guarded([&] {
    cursor_of(cursor).walk.next();
    cursor_of(cursor).place();
    return SQLITE_OK;
  });
}

int eof(sqlite3_vtab_cursor* cursor) { return cursor_of(cursor).walk.is_at_end() ? 1 : 0; }

int column(sqlite3_vtab_cursor* at, sqlite3_context* context, int number) {
  return guarded([&] {
    Cursor& cursor = cursor_of(at);
    const auto put = cursor.columns[static_cast<std::size_t>(number)].put;
    if (put == nullptr) return SQLITE_OK;
    Result result(context);
    cursor.row.put_into(result);
    put(cursor.row);
    return SQLITE_OK;
  });
}

int rowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* number) {
  *number = cursor_of(cursor).walk.number();
  return SQLITE_OK;
}

constexpr sqlite3_module read_only_module() {
  sqlite3_module module{};
  module.iVersion = 1;
  module.xBestIndex = best_index;
  module.xDisconnect = disconnect;
  module.xOpen = open;
  module.xClose = close;
  module.xFilter = filter;
  module.xNext = next;
  module.xEof = eof;
  module.xColumn = column;
  module.xRowid = rowid;
  return module;
}

// Without xCreate: its one table is there under the module's name, and nothing else can be made.
constexpr sqlite3_module known_module = [] {
  sqlite3_module module = read_only_module();
  module.xConnect = connect_known;
  return module;
}();

constexpr sqlite3_module creating_module = [] {
  sqlite3_module module = read_only_module();
  module.xCreate = create_found;
  module.xConnect = connect_found;
  module.xDestroy = disconnect;
  return module;
}();

}  // namespace

// SQLite destroys the client data also where it fails.
int add_tables(sqlite3* database, const std::shared_ptr<TraceData>& data) {
  for (const Table* table : tables()) {
    const int status =
        sqlite3_create_module_v2(database, table->name, &known_module, new TableSource{table, data},
                                 [](void* client) { delete static_cast<TableSource*>(client); });
    if (status != SQLITE_OK) return status;
  }
  return SQLITE_OK;
}

int add_module(sqlite3* database, const char* name, FindSource find) {
  return sqlite3_create_module_v2(database, name, &creating_module, new FindSource(std::move(find)),
                                  [](void* client) { delete static_cast<FindSource*>(client); });
}

}  // namespace CT::Sql
