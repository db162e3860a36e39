// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_plain_json.h"

#include <algorithm>
#include <cmath>

#include "codetrace/render/ct_text.h"

namespace CT::Checkpoint {

namespace {

void write_text(const String& text, JsonWriter& out) {
  out.text(text.view(), text.is_cut() ? String::cut_marker : std::string_view());
}

void write_object(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  out.begin_object();
  if (const ClassEntry* entry = tape.class_entry(i); entry != nullptr) {
    out.key("class");
    out.text(entry->name().view());
  }
  out.key("handle");
  out.number(std::int64_t{tape.object_handle(i)});
  out.end_object();
}

}  // namespace

void write_exact(std::int64_t value, JsonWriter& out) {
  constexpr std::int64_t exact = std::int64_t{1} << 53;
  if (value >= -exact && value <= exact) return out.number(value);
  out.out().put('"');
  out.number(value);
  out.out().put('"');
}

void PlainJsonWriter::write(const ValueRef& value, JsonWriter& out) {
  if (value.tape() == nullptr) return out.null();
  // Not empty if an output failed in the middle of an array.
  open_.clear();
  members_.clear();
  texts_.clear();
  const ValueTape& tape = *value.tape();
  begin_value(tape, value.item(), out);
  while (!open_.empty() && out.ok()) {
    ValueTape::Index next = 0;
    if (begin_next(tape, out, next)) {
      begin_value(tape, next, out);
    } else {
      close_array(tape, out);
    }
  }
}

// Writes a value whole, or opens it if it is an array.
void PlainJsonWriter::begin_value(const ValueTape& tape, ValueTape::Index i, JsonWriter& out) {
  switch (tape.type(i)) {
    case ValueType::undef:
    case ValueType::null: out.null(); break;
    case ValueType::false_: out.boolean(false); break;
    case ValueType::true_: out.boolean(true); break;
    case ValueType::long_: write_whole(tape.as_long(i), out); break;
    case ValueType::double_: write_double(tape.as_double(i), out); break;
    case ValueType::string: write_text(tape.string(i), out); break;
    case ValueType::object: write_object(tape, i, out); break;
    case ValueType::resource: write_resource(tape, i, out); break;
    case ValueType::array:
      if (tape.is_list(i)) {
        open_.push_back({i, i + 1, 0, 0});
        out.begin_array();
      } else {
        open_map(tape, i);
        out.begin_object();
      }
      break;
  }
}

void PlainJsonWriter::write_whole(std::int64_t value, JsonWriter& out) const {
  large_as_text_ ? write_exact(value, out) : out.number(value);
}

void PlainJsonWriter::write_resource(const ValueTape& tape, ValueTape::Index i,
                                     JsonWriter& out) const {
  out.begin_object();
  out.key("resource");
  out.text(tape.resource_name(i).view());
  out.key("handle");
  write_whole(tape.resource_handle(i), out);
  out.end_object();
}

void PlainJsonWriter::open_map(const ValueTape& tape, ValueTape::Index i) {
  const auto first = static_cast<std::uint32_t>(members_.size());
  const auto texts = static_cast<std::uint32_t>(texts_.size());
  open_.push_back({i, first, first, texts});
  for (const auto& [key, value] : ValueRef(tape, i).elements()) {
    const auto begin = static_cast<std::uint32_t>(texts_.size());
    put_key(tape, key.item());
    const auto size = static_cast<std::uint32_t>(texts_.size()) - begin;
    members_.push_back({begin, size, value.item(), false});
  }
  drop_repeated(first);
}

void PlainJsonWriter::drop_repeated(std::uint32_t first) {
  by_text_.clear();
  for (std::uint32_t i = first; i != members_.size(); ++i) by_text_.push_back(i);
  std::sort(by_text_.begin(), by_text_.end(), [this](std::uint32_t a, std::uint32_t b) {
    const int order = key_of(members_[a]).compare(key_of(members_[b]));
    return order != 0 ? order < 0 : a < b;
  });
  for (std::size_t i = 1; i < by_text_.size(); ++i) {
    Member& earlier = members_[by_text_[i - 1]];
    earlier.is_dropped = key_of(earlier) == key_of(members_[by_text_[i]]);
  }
}

// Names are left out of the texts of odd keys: many could share a long one.
void PlainJsonWriter::put_key(const ValueTape& tape, ValueTape::Index key) {
  switch (tape.type(key)) {
    case ValueType::undef:
    case ValueType::null: break;
    case ValueType::false_: texts_.put('0'); break;
    case ValueType::true_: texts_.put('1'); break;
    case ValueType::long_: put_signed(texts_, tape.as_long(key)); break;
    case ValueType::double_: put_double_text(texts_, tape.as_double(key)); break;
    case ValueType::string:
      put_json_text(texts_, tape.string(key).view());
      if (tape.string(key).is_cut()) texts_.put(String::cut_marker);
      break;
    case ValueType::array: texts_.put("array"); break;
    case ValueType::object:
      texts_.put("object#");
      put_unsigned(texts_, tape.object_handle(key));
      break;
    case ValueType::resource:
      texts_.put("resource#");
      put_signed(texts_, tape.resource_handle(key));
      break;
  }
}

// Starts the next item or member of the innermost array; false when there is none.
bool PlainJsonWriter::begin_next(const ValueTape& tape, JsonWriter& out, ValueTape::Index& value) {
  OpenArray& array = open_.back();
  if (tape.is_list(array.item)) {
    if (array.next == tape.end(array.item)) return false;
    value = tape.end(array.next);
    array.next = tape.end(value);
    out.element();
    return true;
  }
  while (array.next != members_.size() && members_[array.next].is_dropped) ++array.next;
  if (array.next == members_.size()) return false;
  const Member& member = members_[array.next++];
  value = member.value;
  out.begin_key();
  out.out().put(key_of(member));
  out.end_key();
  return true;
}

void PlainJsonWriter::close_array(const ValueTape& tape, JsonWriter& out) {
  const OpenArray array = open_.back();
  const bool is_cut = tape.is_cut(array.item);
  if (tape.is_list(array.item)) {
    if (is_cut) {
      out.element();
      out.word(String::cut_marker);
    }
    out.end_array();
  } else {
    if (is_cut) {
      out.key(String::cut_marker);
      out.boolean(true);
    }
    out.end_object();
    members_.truncate(array.first);
    texts_.truncate(array.texts);
  }
  open_.pop_back();
}

void PlainJsonWriter::write_double(double value, JsonWriter& out) {
  if (std::isnan(value)) return out.word("NaN");
  if (std::isinf(value)) return out.word(value < 0 ? "-Infinity" : "Infinity");
  digits_.clear();
  // The other outputs drop the sign of a zero.
  if (value == 0 && std::signbit(value)) digits_.put('-');
  put_double_json(digits_, value);
  out.out().put(digits_.view());
  if (digits_.view().find_first_of(".e") == std::string_view::npos) out.out().put(".0");
}

}  // namespace CT::Checkpoint
