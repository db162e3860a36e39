// SPDX-License-Identifier: MIT
#include "ctwrite/ct_record_writer.h"

#include <algorithm>
#include <cstring>

namespace CT::Write {

using Format::Field;

void RecordWriter::open_record(const Checkpoint::TypeInfo& type, const Common& common) noexcept {
  type_ = &type;
  current_ = {};
  outer_.resize(0);
  depth_ = 0;
  field_ = 0;
  raw_ = false;
  payload_.open();
  put_common(common);
}

void RecordWriter::put_common(const Common& common) noexcept {
  presence_ =
      (common.timestamp ? 1U : 0U) | (common.memory ? 2U : 0U) | (common.location ? 4U : 0U);
  unsigned char* to = payload_.room(Format::common_sizes[presence_]);
  if (to == nullptr) return;
  if (common.timestamp) {
    to = encoding_.put(to, common.timestamp->seconds);
    to = encoding_.put(to, common.timestamp->nanoseconds);
  }
  if (common.memory) to = encoding_.put(to, *common.memory);
  if (common.location) {
    to = encoding_.put(to, common.location->file);
    encoding_.put(to, common.location->line);
  }
}

Error RecordWriter::complete_record() noexcept {
  if (!payload_.is_closed() && is_in_array()) payload_.fail(Error::unbalanced);
  if (!payload_.is_closed() && !raw_) {
    close_arguments();
    if (coming_field() == Field::arguments) arguments();
    if (coming_field() != Field::none) payload_.fail(Error::wrong_field);
  }
  if (!payload_.is_closed() && type_->needs_payload && payload_.size() == 0) {
    // Of no meaning, but readers want it.
    if (unsigned char* const to = payload_.room(1)) *to = 0;
  }
  if (payload_.is_closed()) return payload_.error();
  encoding_.put_header(payload_.header_word(), static_cast<std::uint32_t>(type_->type), presence_,
                       payload_.size());
  return Error::none;
}

Field RecordWriter::coming_field() const noexcept {
  return field_ < type_->layout.size() ? type_->layout[field_] : Field::none;
}

// Leaves the field before, which has to be whole.
bool RecordWriter::next_field(Field field) noexcept {
  if (payload_.is_closed()) return false;
  if (is_in_array()) {
    payload_.fail(Error::unbalanced);
    return false;
  }
  close_arguments();
  current_ = {};
  if (raw_ || coming_field() != field) {
    payload_.fail(Error::wrong_field);
    return false;
  }
  ++field_;
  return true;
}

void RecordWriter::reference(Reference to) noexcept {
  if (!next_field(Field::reference)) return;
  if (unsigned char* const at = payload_.room(sizeof to)) encoding_.put(at, to);
}

void RecordWriter::u32(std::uint32_t number) noexcept {
  if (!next_field(Field::u32)) return;
  if (unsigned char* const at = payload_.room(sizeof number)) encoding_.put(at, number);
}

void RecordWriter::cut_text(std::string_view text, std::uint64_t original_size) noexcept {
  if (!next_field(Field::cut_text)) return;
  const Stored kept = stored(text, original_size);
  if (unsigned char* const at = payload_.room(kept.size())) put_text(at, kept);
}

void RecordWriter::inline_text(std::string_view text) noexcept {
  if (!next_field(Field::inline_text)) return;
  const std::uint64_t size = text.size();
  unsigned char* at = payload_.room(sizeof size + (size != 0 ? size + 1 : 0));
  if (at == nullptr) return;
  at = encoding_.put(at, size);
  if (size == 0) return;
  std::memcpy(at, text.data(), size);
  at[size] = 0;
}

void RecordWriter::header_line(std::uint8_t operation, std::string_view line,
                               std::uint64_t original_size) noexcept {
  if (!next_field(Field::header_line)) return;
  const bool has_line = operation < Format::first_operation_without_line;
  const Stored kept = stored(line, original_size);
  unsigned char* const at = payload_.room(1 + (has_line ? kept.size() : 0));
  if (at == nullptr) return;
  *at = operation;
  if (has_line) put_text(at + 1, kept);
}

void RecordWriter::raw(std::span<const unsigned char> bytes) noexcept {
  if (payload_.is_closed()) return;
  if (is_in_array()) return payload_.fail(Error::unbalanced);
  close_arguments();
  current_ = {};
  raw_ = true;
  unsigned char* const at = payload_.room(bytes.size());
  if (at != nullptr && !bytes.empty()) std::memcpy(at, bytes.data(), bytes.size());
}

// What is kept of a text. It ends between two characters if it is UTF-8.
RecordWriter::Stored RecordWriter::stored(std::string_view text,
                                          std::uint64_t original_size) const noexcept {
  constexpr std::uint64_t largest_size = std::numeric_limits<std::int32_t>::max();
  constexpr std::size_t longest_character = 4;
  const std::uint64_t size =
      std::min(std::max<std::uint64_t>(original_size, text.size()), largest_size);
  std::size_t kept = text.size();
  if (kept > limits_.string_bytes) {
    kept = limits_.string_bytes;
    const std::size_t least = kept - std::min(kept, longest_character - 1);
    const auto splits = [&](std::size_t at) {
      return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    std::size_t at = kept;
    while (at != least && splits(at)) --at;
    if (!splits(at)) kept = at;
  }
  return {{text.data(), kept}, static_cast<std::uint32_t>(size)};
}

void RecordWriter::put_text(unsigned char* to, const Stored& stored) const noexcept {
  const auto size = static_cast<std::uint32_t>(stored.text.size());
  to = encoding_.put(to, stored.is_cut() ? 0U - stored.original_size : size);
  if (stored.is_cut()) to = encoding_.put(to, size);
  if (size != 0) std::memcpy(to, stored.text.data(), size);
}

}  // namespace CT::Write
