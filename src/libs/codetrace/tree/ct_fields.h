// SPDX-License-Identifier: MIT
//
// What a node, a function or a class consists of, field by field: name, kind and value. This is the
// one list of fields; the members of the JSON document come from it, and so does whatever else
// shows a trace as names and values.
//
//   CT::Fields fields;
//   CT::ValueRoom room;
//   node.collect(fields, room);
//   fields.for_each([](CT::FieldName name, const CT::FieldValue& value) { ... });
//
// A value borrows: texts the file, values the room, classes their table.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <string_view>
#include <utility>
#include <variant>

#include "codetrace/model/ct_entity.h"
#include "codetrace/model/ct_value_ref.h"
#include "codetrace/model/ct_value_tape.h"
#include "kcommon/k_export.h"
#include "kcommon/k_timestamp.h"

namespace CT {

// In the order of their names.
enum class FieldName : std::uint8_t {
  arg_count,
  args,
  body,
  class_,
  code,
  error_message,
  error_num,
  event_name,
  event_sequence,
  exception,
  filename,
  function,
  header,
  host,
  id,
  include,
  incomplete,
  line_no,
  mem,
  mem_delta,
  method,
  ms,
  ms_delta,
  name,
  op,
  orig_uri,
  parent_id,
  return_,
  status,
  sys_mem,
  this_,
  ts,
  url,
};

// Their texts, each beside its name.
// clang-format off
inline constexpr auto field_names = [] {
  using F = FieldName;
  constexpr std::pair<F, std::string_view> rows[] = {
      {F::arg_count, "arg_count"},
      {F::args, "args"},
      {F::body, "body"},
      {F::class_, "class"},
      {F::code, "code"},
      {F::error_message, "error_message"},
      {F::error_num, "error_num"},
      {F::event_name, "event_name"},
      {F::event_sequence, "event_sequence"},
      {F::exception, "exception"},
      {F::filename, "filename"},
      {F::function, "function"},
      {F::header, "header"},
      {F::host, "host"},
      {F::id, "id"},
      {F::include, "include"},
      {F::incomplete, "incomplete"},
      {F::line_no, "line_no"},
      {F::mem, "mem"},
      {F::mem_delta, "mem_delta"},
      {F::method, "method"},
      {F::ms, "ms"},
      {F::ms_delta, "ms_delta"},
      {F::name, "name"},
      {F::op, "op"},
      {F::orig_uri, "orig_uri"},
      {F::parent_id, "parent_id"},
      {F::return_, "return"},
      {F::status, "status"},
      {F::sys_mem, "sys_mem"},
      {F::this_, "this"},
      {F::ts, "ts"},
      {F::url, "url"},
  };
  std::array<std::string_view, std::size(rows)> names;
  for (const auto& [name, text] : rows) names[static_cast<std::size_t>(name)] = text;
  return names;
}();
// clang-format on

static_assert(std::is_sorted(field_names.begin(), field_names.end()) &&
                  !field_names.front().empty(),
              "a name for each, in their order");

constexpr std::string_view field_name(FieldName name) {
  return field_names[static_cast<std::size_t>(name)];
}

// A word of the program's own, such as the name of a node's type; ASCII.
struct Word {
  std::string_view text;
};

// A text of ADD DATA that many nodes share, not measured yet.
struct SharedText {
  const File* file;
  const unsigned char* place;  // null: absent
  [[nodiscard]] Checkpoint::String text() const { return Checkpoint::section_str(*file, place); }
};

using FieldValue =
    std::variant<bool, std::int64_t, double, Word, Checkpoint::String, SharedText, KTime::Timestamp,
                 Checkpoint::ValueRef, Checkpoint::Values, const Checkpoint::ClassEntry*>;

class CODETRACE_EXPORT Fields {
 public:
  void clear() { present_ = 0; }

  // Each name at most once.
  template <class Value>
  void set(FieldName name, Value value) {
    present_ |= bit(name);
    values_[static_cast<std::size_t>(name)] = value;
  }
  // A text unless it is empty, a value unless it is undef.
  void set_if_present(FieldName name, Checkpoint::String text) {
    if (!text.is_empty()) set(name, text);
  }
  void set_if_present(FieldName name, Checkpoint::ValueRef value) {
    if (!value.is_undef()) set(name, value);
  }

  [[nodiscard]] bool has(FieldName name) const { return (present_ & bit(name)) != 0; }
  // Requires: a field that is there.
  [[nodiscard]] const FieldValue& operator[](FieldName name) const {
    assert(has(name));
    return values_[static_cast<std::size_t>(name)];
  }

  // Calls `visit` with each name and value, in the order of the names.
  template <class Visit>
  void for_each(Visit visit) const {
    for (std::uint64_t left = present_; left != 0; left &= left - 1) {
      const auto slot = static_cast<std::size_t>(std::countr_zero(left));
      visit(static_cast<FieldName>(slot), values_[slot]);
    }
  }

 private:
  static std::uint64_t bit(FieldName name) {
    return std::uint64_t{1} << static_cast<std::size_t>(name);
  }

  std::uint64_t present_ = 0;
  std::array<FieldValue, field_names.size()> values_;
};

static_assert(field_names.size() <= 64, "a bit for each");

namespace Node {

// Where the values of a node are decoded to.
struct CODETRACE_EXPORT ValueRoom {
  Checkpoint::ValueTape this_value;
  Checkpoint::ValueTape args;
  Checkpoint::ValueTape result;
};

}  // namespace Node

using Node::ValueRoom;

// The fields of a class or a function. A function's class is its number, or itself if it has none.
CODETRACE_EXPORT void collect(const Checkpoint::ClassEntry& entry, Fields& fields);
CODETRACE_EXPORT void collect(const Checkpoint::Function& function, Fields& fields);

}  // namespace CT
