// SPDX-License-Identifier: MIT
#include "ctreport/ct_call_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/model/ct_view.h"
#include "codetrace/render/ct_json.h"
#include "ctreport/ct_varint.h"

namespace CT::Report {

namespace {

using Checkpoint::get_cut_str;
using Checkpoint::String;
using Checkpoint::Type;
using Checkpoint::ValueType;

constexpr std::int64_t exact = std::int64_t{1} << 53;

const unsigned char* as_bytes(std::string_view text) {
  return static_cast<const unsigned char*>(static_cast<const void*>(text.data()));
}

bool is_ascii(std::string_view text) {
  const char* at = text.data();
  std::size_t left = text.size();
  std::uint64_t all = 0;
  for (; left >= sizeof all; left -= sizeof all, at += sizeof all) {
    std::uint64_t eight = 0;
    std::memcpy(&eight, at, sizeof eight);
    all |= eight;
  }
  std::uint64_t rest = 0;
  if (left != 0) std::memcpy(&rest, at, left);  // an absent text has no bytes at all
  constexpr std::uint64_t high_bits = 0x8080808080808080;
  return ((all | rest) & high_bits) == 0;
}

bool is_utf8(std::string_view text) {
  const unsigned char* at = as_bytes(text);
  const unsigned char* const end = at + text.size();
  while (at != end) {
    const std::size_t length = *at < 0x80 ? 1 : utf8_sequence_length(at, end);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

Type type_of(const CheckpointView& view) { return Checkpoint::type_of_code(view.type()); }

// Calls and their ends refer to something before their values: to a function, or to the call.
Cursor behind_reference(const CheckpointView& view) {
  Cursor cursor = view.cursor_at(Format::common_sizes[view.presence()]);
  cursor.bytes(Format::reference_size);
  return cursor;
}

// The text of ADD DATA at a place, or nothing if it is longer than that. Of many long ones not all
// is looked at.
bool short_name(const File& file, const unsigned char* place, std::string_view& name) {
  name = {};
  if (place == nullptr) return true;
  const auto room = static_cast<std::size_t>(file.add_data().end() - place);
  const std::size_t most = std::min(room, CallBytes::longest_name + 1);
  const auto size = strnlen(Section::as_chars(place), most);
  name = {Section::as_chars(place), size};
  return size <= CallBytes::longest_name;
}

}  // namespace

CallBytes::CallBytes(const Trace& trace)
    : trace_(trace), file_(trace.file()), entities_(trace.storage().entities()) {
  std::string_view name;
  for (const Checkpoint::ClassEntry& entry : trace.classes()) {
    is_known_.push_back(short_name(file_, entry.name_place(), name));
  }
}

// What tells of a call lies far from what tells of the one before.
void CallBytes::expect(NodeId id) const {
  constexpr std::uint32_t cache_line = 64;
  const Section& data = file_.data();
  const auto fetch = [&](std::uint64_t offset) {
    if (offset < data.size()) __builtin_prefetch(data.data() + offset);
  };
  fetch(trace_.begin_offset(id));
  fetch(trace_.begin_offset(id) + cache_line);
  fetch(trace_.end_offset(id));
}

std::string_view CallBytes::of(NodeId id) {
  out_.clear();
  head_.clear();
  if (!put_call(id)) return {};
  put_varint(head_, out_.size());
  head_.put(out_.view());
  return head_.view();
}

bool CallBytes::put_call(NodeId id) {
  const auto begin = CheckpointView::at(file_, trace_.begin_offset(id));
  const bool is_method = type_of(begin) == Type::METHOD_CALL;
  if (!is_method && type_of(begin) != Type::FUNCTION_CALL) return false;
  const bool has_end = trace_.end_offset(id) != Storage::no_end;
  CheckpointView end(file_);
  if (has_end) end = CheckpointView::at(file_, trace_.end_offset(id));
  if (begin.size() + end.size() > longest) return false;
  unsigned parts = is_method ? unsigned{has_this} : 0U;
  if (has_end) {
    const bool threw = type_of(end) == Type::FUNCTION_EXCEPTION;
    if (!threw && type_of(end) != Type::FUNCTION_RETURN) return false;
    parts |= threw ? has_thrown : has_returned;
  }
  head_.put(static_cast<char>(parts));
  at_ = behind_reference(begin);
  if (is_method && !put_values(1)) return false;
  const std::uint32_t count = at_.u32();
  put_varint(out_, count);
  if (!put_values(count)) return false;
  if (!has_end) return true;
  at_ = behind_reference(end);
  return put_values(1);
}

// Arrays that are open stand on a stack of their own.
bool CallBytes::put_values(std::uint32_t count) {
  depth_ = 0;
  while (at_.ok() && (depth_ != 0 || count != 0)) {
    bool is_cut = false;
    if (depth_ == 0) {
      --count;
    } else if (Array& array = arrays_[depth_ - 1]; array.left == 0) {
      --depth_;
      continue;
    } else if (!begin_pair(array, is_cut)) {
      return false;
    }
    if (!is_cut && !put_value()) return false;
  }
  return at_.ok();
}

// The key, and what it says of the pair.
bool CallBytes::begin_pair(Array& array, bool& is_cut) {
  --array.left;
  const std::int64_t place = array.next++;
  const Checkpoint::ValueType type = Checkpoint::value_type_of_code(at_.u8());
  if (type == ValueType::long_) {
    const std::int64_t key = at_.i64();
    key == place ? put(Code::next) : put_whole(key);
    return true;
  }
  if (type != ValueType::string) return false;
  const String key = get_cut_str(at_);
  if (!key.is_cut_marker()) return put_text(key);
  // The tracer ends an array with it. Whatever its value is, it does not count.
  is_cut = true;
  put(Code::cut);
  Checkpoint::scan_values(at_, 1, nullptr);
  return array.left == 0;
}

bool CallBytes::put_value() {
  const std::uint8_t code = at_.u8();
  switch (static_cast<ValueType>(code)) {
    case ValueType::undef:
    case ValueType::null: put(Code::null); return true;
    case ValueType::false_: put(Code::false_); return true;
    case ValueType::true_: put(Code::true_); return true;
    case ValueType::long_: put_whole(at_.i64()); return true;
    case ValueType::double_: put_double(); return true;
    case ValueType::object: return put_object();
    case ValueType::resource: return put_resource();
    case ValueType::string: {
      const String string = get_cut_str(at_);
      if (depth_ == 0 || !string.is_cut_marker()) return put_text(string);
      put(Code::not_followed);
      return true;
    }
    case ValueType::array: {
      const std::int32_t count = std::max(at_.i32(), 0);
      put(Code::array);
      put_varint(out_, static_cast<std::uint32_t>(count));
      if (depth_ == deepest) return false;
      arrays_[depth_++] = {static_cast<std::uint32_t>(count), 0};
      return true;
    }
  }
  return false;  // no code that there is
}

bool CallBytes::put_object() {
  const Checkpoint::ClassEntry* entry = entities_.find_class(at_.u64());
  std::uint64_t number = 0;
  if (entry != nullptr) {
    const auto id = static_cast<std::size_t>(entry->id());
    if (id >= is_known_.size() || !is_known_[id]) return false;
    number = id + 1;
  }
  put(Code::object);
  put_varint(out_, number);
  put_varint(out_, at_.u32());
  return true;
}

bool CallBytes::put_resource() {
  std::string_view name;
  if (!short_name(file_, file_.add_data().resolve(at_.u64()), name)) return false;
  put(Code::resource);
  if (!put_text({name.data(), static_cast<std::uint32_t>(name.size())})) return false;
  put_whole(at_.i64());
  return true;
}

// As in all plain JSON, with a point or an exponent, or as a text.
void CallBytes::put_double() {
  const double value = at_.f64();
  if (std::isnan(value)) return put_digits(R"("NaN")");
  if (std::isinf(value)) return put_digits(value < 0 ? R"("-Infinity")" : R"("Infinity")");
  number_.clear();
  if (value == 0 && std::signbit(value)) number_.put('-');
  put_double_json(number_, value);
  if (number_.view().find_first_of(".e") == std::string_view::npos) number_.put(".0");
  put_digits(number_.view());
}

bool CallBytes::put_text(const String& string) {
  const std::string_view stored = string.view();
  const bool is_plain = is_ascii(stored);
  if (!is_plain && !is_utf8(stored)) return false;
  const Code whole = is_plain ? Code::ascii : Code::text;
  const Code shortened = is_plain ? Code::cut_ascii : Code::cut_text;
  put(string.is_cut() ? shortened : whole);
  put_varint(out_, stored.size());
  out_.put(stored);
  return true;
}

void CallBytes::put_whole(std::int64_t number) {
  number_.clear();
  const bool is_exact = number >= -exact && number <= exact;
  if (!is_exact) number_.put('"');
  put_signed(number_, number);
  if (!is_exact) number_.put('"');
  put_digits(number_.view());
}

void CallBytes::put_digits(std::string_view number) {
  put(Code::digits);
  out_.put(static_cast<char>(number.size()));
  out_.put(number);
}

void write_classes(const Trace& trace, Writer& out) {
  JsonWriter json(out, JsonWriter::Form::compact);
  json.begin_array();
  for (const Checkpoint::ClassEntry& entry : trace.classes()) {
    std::string_view name;
    json.element();
    json.text(short_name(trace.file(), entry.name_place(), name) ? name : std::string_view());
  }
  json.end_array();
}

}  // namespace CT::Report
