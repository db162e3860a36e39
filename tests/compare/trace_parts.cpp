// SPDX-License-Identifier: MIT
#include "trace_parts.h"

namespace CT::Test {

namespace {

constexpr std::size_t file_header_size = 36;
constexpr std::size_t flags_at = 3;
constexpr std::size_t data_size_at = 12;
constexpr std::size_t add_data_size_at = 16;

std::size_t size_field(std::string_view header, std::size_t at) {
  return number_at(header.substr(at), 4, ByteOrder::big);
}

void set_size_field(std::string& header, std::size_t at, std::size_t size) {
  header.replace(at, 4, Fields().u32(static_cast<std::uint32_t>(size)).encode(ByteOrder::big));
}

Frame frame_at(std::string_view data, std::size_t offset, ByteOrder order) {
  const auto word = static_cast<std::uint32_t>(number_at(data.substr(offset), 4, order));
  const bool big = order == ByteOrder::big;
  const std::uint32_t type = (big ? word >> 27U : word) & 0x1FU;
  std::uint32_t flags = (big ? word >> 24U : word >> 5U) & 7U;
  // The same three bits, the other way round.
  if (big) flags = (flags & 2U) | (flags >> 2U) | ((flags & 1U) << 2U);
  return {offset, static_cast<std::uint8_t>(type), static_cast<std::uint8_t>(flags),
          big ? word & 0xFFFFFFU : word >> 8U};
}

}  // namespace

std::uint64_t number_at(std::string_view bytes, std::size_t width, ByteOrder order) {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i != width; ++i) {
    const std::size_t place = order == ByteOrder::big ? i : width - 1 - i;
    result = result << 8U | static_cast<unsigned char>(bytes[place]);
  }
  return result;
}

std::optional<TraceParts> TraceParts::of(std::string_view bytes) {
  if (bytes.size() < file_header_size || !bytes.starts_with("CT\x01")) return std::nullopt;
  const std::size_t data_size = size_field(bytes, data_size_at);
  const std::size_t add_data_size = size_field(bytes, add_data_size_at);
  if (bytes.size() != file_header_size + data_size + add_data_size) return std::nullopt;
  TraceParts parts;
  parts.header = bytes.substr(0, file_header_size);
  parts.data = bytes.substr(file_header_size, data_size);
  parts.add_data = bytes.substr(file_header_size + data_size);
  return parts;
}

std::string TraceParts::bytes() const {
  std::string true_header = header;
  set_size_field(true_header, data_size_at, data.size());
  set_size_field(true_header, add_data_size_at, add_data.size());
  return true_header + data + add_data;
}

ByteOrder TraceParts::order() const {
  return (static_cast<unsigned char>(header[flags_at]) & 2U) != 0 ? ByteOrder::big
                                                                  : ByteOrder::little;
}

std::vector<Frame> TraceParts::frames() const {
  std::vector<Frame> frames;
  std::size_t offset = 0;
  while (data.size() - offset >= header_word_size) {
    const Frame frame = frame_at(data, offset, order());
    if (frame.size > data.size() - frame.payload()) break;
    frames.push_back(frame);
    offset = frame.end();
  }
  return frames;
}

}  // namespace CT::Test
