// SPDX-License-Identifier: MIT
//
// A plan is a number of SQLite's: an Access, and bits for what limits the rows' numbers. Its values
// come in the order of the bits: the key, what is equal to the number, the lower limit, the upper.
#include "ctsql/ct_plan.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "ctsql/ct_functions.h"

namespace CT::Sql {

namespace {

enum Bit : int {
  access_bits = 15,
  equal = 16,
  low = 32,
  above_low = 64,  // the limit itself does not count
  high = 128,
  below_high = 256,
};

// The usable constraints that a plan is made of: places in aConstraint, -1 for none.
struct Constraints {
  int id = -1;
  int low = -1;
  int high = -1;
  int parent = -1;
  int function = -1;
  int name = -1;
  int given = -1;
  bool is_given = false;  // if not usably
};

Key key_of(const Table& table, int column) {
  return column < 0 ? Key::id : table.columns[static_cast<std::size_t>(column)].key;
}

bool compares_bytes(sqlite3_index_info& info, int constraint) {
  return sqlite3_stricmp(sqlite3_vtab_collation(&info, constraint), "BINARY") == 0;
}

void note_equal(Key key, int at, sqlite3_index_info& info, Constraints& found) {
  switch (key) {
    case Key::none: break;
    case Key::id: found.id = at; break;
    case Key::parent: found.parent = at; break;
    case Key::function: found.function = at; break;
    case Key::name:
      if (compares_bytes(info, at)) found.name = at;
      break;
    case Key::given: found.given = at; break;
  }
}

Constraints constraints_of(const Table& table, sqlite3_index_info& info) {
  Constraints found;
  for (int i = 0; i != info.nConstraint; ++i) {
    const auto& constraint = info.aConstraint[i];
    // Those about LIMIT and the like have no column.
    const bool is_equal = constraint.op == SQLITE_INDEX_CONSTRAINT_EQ;
    const bool is_low =
        constraint.op == SQLITE_INDEX_CONSTRAINT_GT || constraint.op == SQLITE_INDEX_CONSTRAINT_GE;
    const bool is_high =
        constraint.op == SQLITE_INDEX_CONSTRAINT_LT || constraint.op == SQLITE_INDEX_CONSTRAINT_LE;
    if (!is_equal && !is_low && !is_high) continue;
    const Key key = key_of(table, constraint.iColumn);
    if (key == Key::given && is_equal) found.is_given = true;
    if (constraint.usable == 0) continue;
    if (is_equal) note_equal(key, i, info, found);
    if (key == Key::id && is_low) found.low = i;
    if (key == Key::id && is_high) found.high = i;
  }
  return found;
}

// Gives the values of constraints numbers, in the order in which they are asked for.
class Arguments {
 public:
  explicit Arguments(sqlite3_index_info& info) : info_(info) {}
  void add(int constraint) { info_.aConstraintUsage[constraint].argvIndex = ++count_; }

 private:
  sqlite3_index_info& info_;
  int count_ = 0;
};

bool is_ordered_by(const Table& table, const sqlite3_index_info& info, int term, Key key) {
  return info.nOrderBy > term && info.aOrderBy[term].desc == 0 &&
         key_of(table, info.aOrderBy[term].iColumn) == key;
}

// Whether rows that come function by function are in the order that is asked for from this term on:
// the name depends on the function, and the calls of one function are in the order of their ids.
bool function_decides(const Table& table, const sqlite3_index_info& info, int term) {
  for (; term != info.nOrderBy; ++term) {
    const Key key = key_of(table, info.aOrderBy[term].iColumn);
    if (key == Key::id) return info.aOrderBy[term].desc == 0;
    if (key != Key::function && key != Key::name) return false;
  }
  return true;
}

// The access of which the rows are in the order that is asked for, if all calls are; else `all`.
// Kept: for GROUP BY it would be enough that equal rows stand together, but some versions of SQLite
// take such rows for sorted.
Access ordered_access(const Table& table, TraceData& data, const sqlite3_index_info& info) {
  if (table.rows != RowSet::calls) return Access::all;
  if (is_ordered_by(table, info, 0, Key::function) && function_decides(table, info, 1)) {
    return Access::function_by_function;
  }
  // Functions of one name come in the order of their numbers.
  const bool by_name = is_ordered_by(table, info, 0, Key::name) &&
                       (info.nOrderBy == 1 || (is_ordered_by(table, info, 1, Key::function) &&
                                               function_decides(table, info, 2)));
  return by_name && !data.names().in_order().empty() ? Access::name_by_name : Access::all;
}

std::int64_t row_count(const Table& table, TraceData& data) {
  switch (table.rows) {
    case RowSet::nodes:
    case RowSet::calls: return data.trace().node_count();
    case RowSet::listed: return static_cast<std::int64_t>(data.nodes_of(table.type).size());
    case RowSet::numbered: return table.count(data);
    case RowSet::above: return 16;
  }
  return 0;
}

// What EXPLAIN QUERY PLAN tells.
const char* word_for(Access access, const Constraints& found) {
  switch (access) {
    case Access::all:
      if (found.id >= 0) return "one id";
      return found.low >= 0 || found.high >= 0 ? "range of ids" : "all rows";
    case Access::of_parent: return "children of one parent";
    case Access::of_function: return "calls of one function";
    case Access::of_name: return "those of one name";
    case Access::function_by_function: return "all calls by function";
    case Access::name_by_name: return "all calls by name";
    case Access::above: return "ancestors of one node";
  }
  return "";
}

struct Choice {
  Access access = Access::all;
  int key = -1;  // the constraint that it is about
  double rows;
};

Choice choose_access(const Table& table, TraceData& data, const Constraints& found,
                     sqlite3_index_info& info) {
  constexpr double children = 8;
  const auto all = static_cast<double>(row_count(table, data));
  const auto functions = static_cast<double>(data.trace().functions().size() + 1);
  if (found.given >= 0) return {Access::above, found.given, all};
  if (found.id >= 0) return {Access::all, -1, 1};
  if (found.parent >= 0) return {Access::of_parent, found.parent, children};
  if (found.function >= 0) return {Access::of_function, found.function, 1 + all / functions};
  if (found.name >= 0) return {Access::of_name, found.name, 1 + all / functions};
  double rows = all;
  for (const int limit : {found.low, found.high}) {
    if (limit >= 0) rows /= 4;
  }
  return {ordered_access(table, data, info), -1, rows};
}

}  // namespace

int choose_plan(const Table& table, TraceData& data, sqlite3_index_info& info) {
  const Constraints found = constraints_of(table, info);
  if (table.rows == RowSet::above && found.given < 0) {
    return found.is_given ? SQLITE_CONSTRAINT : SQLITE_ERROR;
  }
  const Choice choice = choose_access(table, data, found, info);
  Arguments arguments(info);
  int plan = static_cast<int>(choice.access);
  if (choice.key >= 0) arguments.add(choice.key);
  // It is no column, so it cannot be tested again.
  if (found.given >= 0) info.aConstraintUsage[found.given].omit = 1;
  const auto add_limit = [&](int constraint, int bit, int strict_bit, int strict) {
    if (constraint < 0) return;
    arguments.add(constraint);
    plan |= bit | (info.aConstraint[constraint].op == strict ? strict_bit : 0);
  };
  add_limit(found.id, equal, 0, -1);
  add_limit(found.low, low, above_low, SQLITE_INDEX_CONSTRAINT_GT);
  add_limit(found.high, high, below_high, SQLITE_INDEX_CONSTRAINT_LT);
  info.idxNum = plan;
  // SQLite does not write to it.
  info.idxStr = const_cast<char*>(word_for(choice.access, found));
  if (found.id >= 0) info.idxFlags = SQLITE_INDEX_SCAN_UNIQUE;
  const bool by_name_or_function =
      choice.access == Access::function_by_function || choice.access == Access::name_by_name;
  info.orderByConsumed = by_name_or_function || is_ordered_by(table, info, 0, Key::id) ? 1 : 0;
  info.estimatedRows = static_cast<sqlite3_int64>(choice.rows) + 1;
  info.estimatedCost = choice.rows + 1;
  return SQLITE_OK;
}

namespace {

// The least and the greatest whole number that a comparison leaves.
void limit_low(sqlite3_value* value, bool is_strict, Search& search) {
  switch (sqlite3_value_numeric_type(value)) {
    case SQLITE_INTEGER: {
      const std::int64_t limit = sqlite3_value_int64(value);
      if (limit > search.high) return search.make_empty();
      search.low = std::max(search.low, limit + (is_strict ? 1 : 0));
      break;
    }
    case SQLITE_FLOAT: {
      const double limit = sqlite3_value_double(value);
      if (!(limit <= static_cast<double>(search.high))) return search.make_empty();
      if (limit > 0) search.low = std::max(search.low, static_cast<std::int64_t>(limit));
      break;
    }
    case SQLITE_NULL: search.make_empty(); break;
    default: break;
  }
}

void limit_high(sqlite3_value* value, bool is_strict, Search& search) {
  switch (sqlite3_value_numeric_type(value)) {
    case SQLITE_INTEGER: {
      const std::int64_t limit = sqlite3_value_int64(value);
      if (limit < search.low) return search.make_empty();
      search.high = std::min(search.high, limit - (is_strict ? 1 : 0));
      break;
    }
    case SQLITE_FLOAT: {
      const double limit = sqlite3_value_double(value);
      if (!(limit >= static_cast<double>(search.low))) return search.make_empty();
      if (limit < static_cast<double>(search.high)) {
        search.high = static_cast<std::int64_t>(limit);
      }
      break;
    }
    case SQLITE_NULL: search.make_empty(); break;
    default: break;
  }
}

// The number that a value is equal to; -1 if to none that a row has.
std::int64_t number_of(sqlite3_value* value) {
  const int type = sqlite3_value_numeric_type(value);
  if (type == SQLITE_INTEGER) return std::max<std::int64_t>(-1, sqlite3_value_int64(value));
  if (type != SQLITE_FLOAT) return -1;
  const double number = sqlite3_value_double(value);
  const bool is_whole = number >= 0 && number <= std::numeric_limits<std::int32_t>::max() &&
                        std::floor(number) == number;
  return is_whole ? static_cast<std::int64_t>(number) : -1;
}

// Only a text is certain to be compared as text.
void read_name(sqlite3_value* value, Search& search) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_TEXT: search.name = text_of(value); break;
    case SQLITE_NULL: search.make_empty(); break;
    default: search.access = Access::all;
  }
}

}  // namespace

Search read_search(int plan, int count, sqlite3_value** values) {
  Search search;
  search.access = static_cast<Access>(plan & access_bits);
  const std::span arguments(values, static_cast<std::size_t>(count));
  auto next = arguments.begin();
  switch (search.access) {
    case Access::all:
    case Access::function_by_function:
    case Access::name_by_name: break;
    case Access::of_name: read_name(*next++, search); break;
    case Access::of_parent:
    case Access::of_function:
    case Access::above:
      search.key = number_of(*next++);
      if (search.key < 0) search.make_empty();
      break;
  }
  if ((plan & equal) != 0) {
    search.low = search.high = number_of(*next++);
    if (search.low < 0) search = {.low = 0, .high = -1};
  }
  if ((plan & low) != 0) limit_low(*next++, (plan & above_low) != 0, search);
  if ((plan & high) != 0) limit_high(*next++, (plan & below_high) != 0, search);
  return search;
}

}  // namespace CT::Sql
