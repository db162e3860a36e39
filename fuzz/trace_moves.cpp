// SPDX-License-Identifier: MIT
#include "trace_moves.h"

#include <algorithm>

#include "checkpoint_draft.h"
#include "codetrace/ct_file.h"
#include "codetrace/model/ct_view.h"
#include "support.h"

namespace CT::Fuzz {

namespace {

// Places in the file header.
constexpr std::size_t flags_at = 3;
constexpr std::size_t sizes_at = 12;
constexpr std::size_t origins_at = 20;
constexpr std::size_t word_size = Format::header_word_size;
constexpr std::size_t reference_size = 8;

std::uint64_t number(std::string_view bytes, std::size_t width, bool big_endian) {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i != width; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[big_endian ? i : width - 1 - i]);
    result = result << 8 | byte;
  }
  return result;
}

void put_number(std::string& bytes, std::size_t at, std::size_t width, std::uint64_t value,
                bool big_endian) {
  for (std::size_t i = 0; i != width; ++i, value >>= 8) {
    bytes[at + (big_endian ? width - 1 - i : i)] = static_cast<char>(value & 0xFF);
  }
}

std::string header_word_of(std::uint32_t word, std::size_t payload_size, bool big_endian) {
  return Test::header_word(big_endian ? Test::ByteOrder::big : Test::ByteOrder::little, word & 0x1F,
                           word >> 5 & 7, static_cast<std::uint32_t>(payload_size));
}

}  // namespace

TraceMoves::TraceMoves(std::string_view bytes, unsigned seed, MutateBytes mutate)
    : header_(bytes.substr(0, FileHeader::disk_size)), random_(seed), mutate_(mutate) {
  const std::string_view rest = bytes.substr(header_.size());
  const auto data_size = static_cast<std::size_t>(number(header_.substr(sizes_at), 4, true));
  data_ = rest.substr(0, data_size);
  add_data_ = rest.substr(data_.size());
}

bool TraceMoves::big_endian() const {
  return (header_[flags_at] & FileHeader::big_endian_flag) != 0;
}

std::string TraceMoves::bytes() const {
  std::string header = header_;
  put_number(header, sizes_at, 4, data_.size(), true);
  put_number(header, sizes_at + 4, 4, add_data_.size(), true);
  return header + data_ + add_data_;
}

std::vector<TraceMoves::Frame> TraceMoves::frames() const {
  std::vector<Frame> result;
  for (std::size_t at = 0; data_.size() - at >= word_size;) {
    const void* const place = data_.data() + at;
    const std::uint32_t word =
        normalise_header(static_cast<const unsigned char*>(place), big_endian());
    const std::size_t size = std::min(word_size + (word >> 8), data_.size() - at);
    result.push_back({at, size, word});
    at += size;
  }
  return result;
}

void TraceMoves::move(std::size_t max_size) {
  const std::size_t room = max_size - std::min(size(), max_size);
  switch (below(16)) {
    case 0: mutate_(data_, data_.size() + room); break;
    case 1: mutate_(add_data_, add_data_.size() + room); break;
    case 2: repoint(add_data_); break;
    case 3: change_header(); break;
    default: change_checkpoint(room); break;
  }
}

void TraceMoves::change_header() {
  if (below(2) == 0) {
    header_[flags_at] = static_cast<char>(header_[flags_at] ^ FileHeader::big_endian_flag);
    return;
  }
  const std::size_t at = below(2) == 0 ? flags_at + below(sizes_at - flags_at)
                                       : origins_at + below(header_.size() - origins_at);
  header_[at] = static_cast<char>(below(256));
}

void TraceMoves::change_checkpoint(std::size_t room) {
  const std::vector<Frame> all = frames();
  if (all.empty()) {
    mutate_(data_, data_.size() + room);
    return;
  }
  const Frame& frame = any(all);
  const Frame& other = any(all);
  std::string payload = data_.substr(frame.offset + word_size, frame.size - word_size);
  switch (below(9)) {
    case 0:
      if (frame.size <= room) data_.insert(other.offset, data_.substr(frame.offset, frame.size));
      break;
    case 1: data_.erase(frame.offset, frame.size); break;
    case 2: swap_checkpoints(frame, other); break;
    case 3:
      payload.resize(below(payload.size() + 1));
      set_payload(frame, payload, frame.word);
      break;
    case 4:
      set_payload(frame, payload, (frame.word & ~0x1FU) | static_cast<std::uint32_t>(below(19)));
      break;
    case 5: set_payload(frame, payload, frame.word ^ 0x20U << below(3)); break;
    case 6:
      repoint(payload);
      set_payload(frame, payload, frame.word);
      break;
    default:
      mutate_(payload, payload.size() + room);
      set_payload(frame, payload, frame.word);
      break;
  }
}

void TraceMoves::swap_checkpoints(const Frame& a, const Frame& b) {
  const Frame& first = a.offset < b.offset ? a : b;
  const Frame& second = a.offset < b.offset ? b : a;
  if (first.offset == second.offset) return;
  const std::string moved = data_.substr(second.offset, second.size);
  const std::string kept = data_.substr(first.offset, first.size);
  data_.replace(second.offset, second.size, kept);
  data_.replace(first.offset, first.size, moved);
}

// The type and the flags are those of `word`; the size is true.
void TraceMoves::set_payload(const Frame& frame, const std::string& payload, std::uint32_t word) {
  data_.replace(frame.offset, frame.size,
                header_word_of(word, payload.size(), big_endian()) + payload);
}

// Points one of the references among the bytes at something else; where nothing looks like one, any
// eight bytes become one.
void TraceMoves::repoint(std::string& bytes) {
  if (bytes.size() < reference_size) return;
  const std::uint64_t data_origin = number(header_.substr(origins_at), reference_size, true);
  const std::uint64_t add_data_origin =
      number(header_.substr(origins_at + reference_size), reference_size, true);
  std::vector<std::size_t> places;
  for (std::size_t at = 0; at + reference_size <= bytes.size(); ++at) {
    const std::uint64_t value =
        number(std::string_view(bytes).substr(at), reference_size, big_endian());
    if (value - data_origin < data_.size() || value - add_data_origin < add_data_.size()) {
      places.push_back(at);
    }
  }
  const std::size_t at = places.empty() ? below(bytes.size() - reference_size + 1) : any(places);
  put_number(bytes, at, reference_size, any_reference(), big_endian());
}

std::uint64_t TraceMoves::any_reference() {
  const std::vector<Frame> all = frames();
  const std::uint64_t data_origin = number(header_.substr(origins_at), reference_size, true);
  const std::uint64_t add_data_origin =
      number(header_.substr(origins_at + reference_size), reference_size, true);
  const std::size_t kind = below(16);
  if (kind == 0) return 0;
  if (kind < 6 && !all.empty()) return data_origin + any(all).offset;
  return add_data_origin + below(add_data_.size() + 1);
}

}  // namespace CT::Fuzz
