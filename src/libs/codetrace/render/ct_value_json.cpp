// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_json.h"

#include <algorithm>

#include "codetrace/render/ct_fields_json.h"

namespace CT::Checkpoint {

namespace {

void write_object(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  if (const auto* entry = tape.class_entry(i); entry != nullptr) {
    out.key("class");
    if (entry->id() >= 0) {
      out.number(std::int64_t{entry->id()});
    } else {
      CT::write_json(*entry, out);
    }
  }
  out.key("handle");
  out.number(std::int64_t{tape.object_handle(i)});
  out.end_object();
}

void write_resource(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  out.key("handle");
  out.number(tape.resource_handle(i));
  out.key("resource");
  tape.resource_name(i).write_json(out);
  out.end_object();
}

}  // namespace

void ValueJsonWriter::write(const ValueTape& tape, ValueTape::Index root, JsonWriter& out) {
  open_.clear();
  members_.clear();
  keys_.truncate({0, 0});
  if (!begin_value(tape, root, out)) return;
  while (!open_.empty() && out.ok()) {
    ValueTape::Index value = 0;
    if (begin_next(tape, out, value)) {
      begin_value(tape, value, out);
    } else {
      close_array(tape, out);
    }
  }
}

// True when the value is an array, which is then open; else it is written whole.
bool ValueJsonWriter::begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  switch (tape.type(i)) {
    case ValueType::undef:
    case ValueType::null: out.null(); break;
    case ValueType::false_: out.boolean(false); break;
    case ValueType::true_: out.boolean(true); break;
    case ValueType::long_: out.number(tape.as_long(i)); break;
    case ValueType::double_: out.number(tape.as_double(i)); break;
    case ValueType::string: tape.string(i).write_json(out); break;
    case ValueType::object: write_object(tape, i, out); break;
    case ValueType::resource: write_resource(tape, i, out); break;
    case ValueType::array:
      out.begin_object();
      out.key("array");
      open_.push_back({i, i + 1, members_.size(), members_.size(), keys_.mark()});
      if (tape.is_list(i)) {
        out.begin_array();
      } else {
        open_map(tape, i);
        out.begin_object();
      }
      return true;
  }
  return false;
}

// Of members with equal keys the last one counts, and it is left out if its value is undef.
void ValueJsonWriter::open_map(const ValueTape& tape, ValueTape::Index item) {
  const std::size_t first = members_.size();
  const KeyTexts::Mark mark = keys_.mark();
  for (ValueTape::Index key = item + 1; key != tape.end(item);) {
    const ValueTape::Index value = tape.end(key);
    members_.push_back({keys_.add(tape, key), value, 0});
    key = tape.end(value);
  }
  if (keys_.has_names_since(mark)) drop_repeated_names(tape, first);
  sort_and_keep_last(
      first, [this](const Member& a, const Member& b) { return keys_.compare(a.key, b.key); });
  drop_undef(tape, first);
}

// Leaves of members whose keys have long names only those that will be printed, so that the work of
// comparing them follows the output: equal keys are found by hash, and read only to make sure.
void ValueJsonWriter::drop_repeated_names(const ValueTape& tape, std::size_t first) {
  for (std::size_t i = first; i != members_.size(); ++i) {
    members_[i].hash = keys_.hash(members_[i].key);
  }
  sort_and_keep_last(first, [this](const Member& a, const Member& b) {
    return keys_.compare_identity(a.key, b.key);
  });
  sort_and_keep_last(first, [this](const Member& a, const Member& b) {
    if (a.hash != b.hash) return a.hash < b.hash ? -1 : 1;
    return keys_.compare(a.key, b.key);
  });
  drop_undef(tape, first);
}

template <class Compare>
void ValueJsonWriter::sort_and_keep_last(std::size_t first, Compare compare) {
  Member* const begin = members_.begin() + first;
  std::sort(begin, members_.end(), [&](const Member& a, const Member& b) {
    const int order = compare(a, b);
    return order != 0 ? order < 0 : a.value < b.value;
  });
  Member* kept = begin;
  for (const Member* member = begin; member != members_.end(); ++member) {
    const Member* next = member + 1;
    if (next == members_.end() || compare(*member, *next) != 0) *kept++ = *member;
  }
  members_.truncate(static_cast<std::size_t>(kept - members_.begin()));
}

void ValueJsonWriter::drop_undef(const ValueTape& tape, std::size_t first) {
  const auto is_undef = [&](const Member& member) {
    return tape.type(member.value) == ValueType::undef;
  };
  Member* const begin = members_.begin() + first;
  Member* const end = std::remove_if(begin, members_.end(), is_undef);
  members_.truncate(static_cast<std::size_t>(end - members_.begin()));
}

// Starts the next element or member of the innermost array; false when there is none.
bool ValueJsonWriter::begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value) {
  OpenArray& array = open_.back();
  if (tape.is_list(array.item)) {
    if (array.at == tape.end(array.item)) return false;
    value = tape.end(array.at);
    array.at = tape.end(value);
    out.element();
    return true;
  }
  if (array.next_member == members_.size()) return false;
  const Member& member = members_[array.next_member++];
  value = member.value;
  keys_.write(member.key, out);
  return true;
}

void ValueJsonWriter::close_array(const ValueTape& tape, JsonWriter& out) {
  const OpenArray& array = open_.back();
  tape.is_list(array.item) ? out.end_array() : out.end_object();
  if (tape.is_cut(array.item)) {
    out.key("cut");
    out.boolean(true);
  }
  out.end_object();
  members_.truncate(array.first_member);
  keys_.truncate(array.keys);
  open_.pop_back();
}

}  // namespace CT::Checkpoint
