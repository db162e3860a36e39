// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "ctwrite/ct_record_writer.h"

namespace CT::Write {

using Checkpoint::ValueType;
using Format::Field;

// Where the next value goes when what took the last one takes no more. False if it goes nowhere.
bool RecordWriter::find_place() noexcept {
  if (payload_.is_closed() || current_.kind == Kind::dropped || current_.kind == Kind::array_cut) {
    return false;
  }
  if (current_.kind == Kind::array) {
    cut_rest();
    return false;
  }
  if (coming_field() == Field::value) {
    if (!next_field(Field::value)) return false;
    current_ = {Kind::field, 0, 1, 0};
    return true;
  }
  arguments();
  return !payload_.is_closed();
}

void RecordWriter::arguments() noexcept {
  if (!next_field(Field::arguments)) return;
  unsigned char* const count = payload_.room(sizeof(std::uint32_t));
  if (count == nullptr) return;
  encoding_.put(count, 0U);
  current_ = {Kind::arguments, 0, no_limit, payload_.offset_of(count)};
}

void RecordWriter::string(std::string_view text, std::uint64_t original_size) noexcept {
  const Stored kept = stored(text, original_size);
  if (unsigned char* const to = value(ValueType::string, kept.size())) put_text(to, kept);
}

void RecordWriter::object(Reference class_entry, std::uint32_t handle) noexcept {
  unsigned char* const to = value(ValueType::object, sizeof class_entry + sizeof handle);
  if (to != nullptr) encoding_.put(encoding_.put(to, class_entry), handle);
}

void RecordWriter::resource(Reference type_name, std::int64_t handle) noexcept {
  unsigned char* const to = value(ValueType::resource, sizeof type_name + sizeof handle);
  if (to != nullptr) {
    encoding_.put(encoding_.put(to, type_name), static_cast<std::uint64_t>(handle));
  }
}

void RecordWriter::begin_array() noexcept {
  constexpr Container left_out = {Kind::dropped, 0, 0, 0};
  if (current_.kind == Kind::dropped) {
    ++current_.count_at;
    return;
  }
  if (depth_ >= limits_.depth) {
    cut_array();
    push(left_out);
    return;
  }
  unsigned char* const count = value(ValueType::array, sizeof(std::uint32_t));
  if (count == nullptr) {
    push(left_out);
    return;
  }
  encoding_.put(count, 0U);
  const std::uint32_t most = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(2 * std::uint64_t{limits_.array_elements}, no_limit - 1));
  if (push({Kind::array, 0, most, payload_.offset_of(count)})) ++depth_;
}

void RecordWriter::end_array() noexcept {
  if (payload_.is_closed()) return;
  if (current_.kind == Kind::dropped) {
    if (current_.count_at == 0) return pop();
    --current_.count_at;
    return;
  }
  if (!is_in_array()) return payload_.fail(Error::unbalanced);
  if (current_.items % 2 != 0) return payload_.fail(Error::key_alone);
  put_count(current_.items / 2 + (current_.kind == Kind::array_cut ? 1 : 0));
  pop();
  --depth_;
}

void RecordWriter::cut_array() noexcept {
  if (current_.kind == Kind::array && current_.items % 2 != 0) {
    constexpr std::size_t marker_size = Format::cut_marker.size();
    unsigned char* const to = value(ValueType::string, sizeof(std::uint32_t) + marker_size);
    if (to != nullptr) put_text(to, {Format::cut_marker, marker_size});
    return;
  }
  unsigned char* const count = value(ValueType::array, sizeof(std::uint32_t));
  if (count == nullptr) return;
  encoding_.put(count, 1U);
  put_marker_pair();
}

void RecordWriter::cut_rest() noexcept {
  if (payload_.is_closed() || is_dropping()) return;
  if (current_.kind != Kind::array) return payload_.fail(Error::unbalanced);
  if (current_.items % 2 != 0) return payload_.fail(Error::key_alone);
  put_marker_pair();
  current_.kind = Kind::array_cut;
  current_.most = current_.items;
}

// The marker as a key, with null, behind the pairs that are kept.
void RecordWriter::put_marker_pair() noexcept {
  constexpr std::size_t size_of_size = sizeof(std::uint32_t);
  constexpr std::size_t marker_size = Format::cut_marker.size();
  unsigned char* to = payload_.room(1 + size_of_size + marker_size + 1);
  if (to == nullptr) return;
  *to++ = static_cast<unsigned char>(ValueType::string);
  to = encoding_.put(to, static_cast<std::uint32_t>(marker_size));
  std::memcpy(to, Format::cut_marker.data(), marker_size);
  to[marker_size] = static_cast<unsigned char>(ValueType::null);
}

bool RecordWriter::push(Container inner) noexcept {
  if (payload_.is_closed()) return false;
  if (!outer_.reserve(sizeof current_)) {
    payload_.fail(Error::no_memory);
    return false;
  }
  std::memcpy(outer_.data() + outer_.size(), &current_, sizeof current_);
  outer_.resize(outer_.size() + sizeof current_);
  current_ = inner;
  return true;
}

void RecordWriter::pop() noexcept {
  outer_.resize(outer_.size() - sizeof current_);
  std::memcpy(&current_, outer_.data() + outer_.size(), sizeof current_);
}

void RecordWriter::put_count(std::uint32_t count) noexcept {
  encoding_.put(payload_.at(current_.count_at), count);
}

void RecordWriter::close_arguments() noexcept {
  if (current_.kind != Kind::arguments) return;
  put_count(current_.items);
  current_ = {};
}

}  // namespace CT::Write
