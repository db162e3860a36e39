// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_database_call.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace CT {

namespace {

using A = DatabaseCall::Action;
using K = DatabaseCall::Known;

constexpr std::array database_calls = {
    DatabaseCall{"pdo", "query", A::run, K::by_result},
    DatabaseCall{"pdo", "exec", A::run, K::not_at_all},
    DatabaseCall{"pdo", "prepare", A::prepare, K::by_result},
    DatabaseCall{"pdostatement", "execute", A::execute, K::by_this},

    DatabaseCall{"mysqli", "query", A::run, K::not_at_all},
    DatabaseCall{"mysqli", "real_query", A::run, K::not_at_all},
    DatabaseCall{"mysqli", "multi_query", A::run, K::not_at_all},
    DatabaseCall{"mysqli", "execute_query", A::run, K::not_at_all},
    DatabaseCall{"mysqli", "prepare", A::prepare, K::by_result},
    DatabaseCall{"mysqli_stmt", "__construct", A::prepare, K::by_this},
    DatabaseCall{"mysqli_stmt", "prepare", A::prepare, K::by_this},
    DatabaseCall{"mysqli_stmt", "execute", A::execute, K::by_this},
    DatabaseCall{"", "mysqli_query", A::run, K::not_at_all},
    DatabaseCall{"", "mysqli_real_query", A::run, K::not_at_all},
    DatabaseCall{"", "mysqli_multi_query", A::run, K::not_at_all},
    DatabaseCall{"", "mysqli_execute_query", A::run, K::not_at_all},
    DatabaseCall{"", "mysqli_prepare", A::prepare, K::by_result},
    DatabaseCall{"", "mysqli_stmt_prepare", A::prepare, K::by_argument},
    DatabaseCall{"", "mysqli_stmt_execute", A::execute, K::by_argument},
    DatabaseCall{"", "mysqli_execute", A::execute, K::by_argument},

    DatabaseCall{"", "pg_query", A::run, K::not_at_all},
    DatabaseCall{"", "pg_query_params", A::run, K::not_at_all},
    DatabaseCall{"", "pg_prepare", A::prepare, K::by_name},
    DatabaseCall{"", "pg_execute", A::execute, K::by_name},
    DatabaseCall{"", "pg_send_query", A::run, K::not_at_all},
    DatabaseCall{"", "pg_send_query_params", A::run, K::not_at_all},
    DatabaseCall{"", "pg_send_prepare", A::prepare, K::by_name},
    DatabaseCall{"", "pg_send_execute", A::execute, K::by_name},

    DatabaseCall{"sqlite3", "query", A::run, K::not_at_all},
    DatabaseCall{"sqlite3", "exec", A::run, K::not_at_all},
    DatabaseCall{"sqlite3", "querysingle", A::run, K::not_at_all},
    DatabaseCall{"sqlite3", "prepare", A::prepare, K::by_result},
    DatabaseCall{"sqlite3stmt", "execute", A::execute, K::by_this},
};

constexpr std::array<std::string_view, 30> layer_words = {
    "adodb",    "builder", "connection", "database", "databases", "db",         "dbal",   "dblib",
    "doctrine", "driver",  "eloquent",   "idiorm",   "mdb2",      "medoo",      "mysql",  "mysqli",
    "orm",      "pdo",     "pg",         "pgsql",    "postgres",  "postgresql", "propel", "rdbms",
    "redbean",  "sql",     "sqlite",     "sqlsrv",   "statement", "wpdb"};

bool is_capital(char c) { return c >= 'A' && c <= 'Z'; }
bool is_small(char c) { return c >= 'a' && c <= 'z'; }

std::string in_small_letters(std::string_view text) {
  std::string small(text);
  for (char& c : small) c = is_capital(c) ? static_cast<char>(c | 0x20) : c;
  return small;
}

bool is_layer_word(std::string_view word) {
  const std::string small = in_small_letters(word);
  return std::find(layer_words.begin(), layer_words.end(), small) != layer_words.end();
}

// Words of names such as Wikimedia\Rdbms, DatabaseSqlite, PDOStatement and db_query.
bool has_layer_word(std::string_view name) {
  std::size_t start = 0;
  for (std::size_t i = 0; i <= name.size(); ++i) {
    const bool is_letter = i != name.size() && (is_capital(name[i]) || is_small(name[i]) ||
                                                (name[i] >= '0' && name[i] <= '9'));
    const bool begins_word =
        is_letter && i > start && is_capital(name[i]) &&
        (is_small(name[i - 1]) || (i + 1 != name.size() && is_small(name[i + 1])));
    if (is_letter && !begins_word) continue;
    if (i > start && is_layer_word(name.substr(start, i - start))) return true;
    start = is_letter ? i : i + 1;
  }
  return false;
}

}  // namespace

const DatabaseCall* database_call_of(const Checkpoint::Function& function) {
  if (function.is_user()) return nullptr;
  constexpr std::size_t longest = 32;  // of all names above
  const auto* entry = function.class_entry();
  const std::string_view class_name = entry != nullptr ? entry->name().view() : "";
  if (class_name.size() > longest || function.name().view().size() > longest) return nullptr;
  const std::string class_wanted = in_small_letters(class_name);
  const std::string wanted = in_small_letters(function.name().view());
  for (const DatabaseCall& call : database_calls) {
    if (wanted == call.name && class_wanted == call.class_name) return &call;
  }
  return nullptr;
}

bool is_database_layer(const Checkpoint::Function& function) {
  const auto* entry = function.class_entry();
  return has_layer_word(entry != nullptr ? entry->name().view() : function.name().view());
}

}  // namespace CT
