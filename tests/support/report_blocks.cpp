// SPDX-License-Identifier: MIT
#include "report_blocks.h"

#include <zlib.h>

#include <QByteArray>
#include <stdexcept>

namespace CT::Test {

std::string unpacked(std::string_view packed) {
  z_stream stream = {};
  if (inflateInit(&stream) != Z_OK) throw std::runtime_error("zlib");
  std::string input(packed);
  void* const bytes = input.data();
  stream.next_in = static_cast<Bytef*>(bytes);
  stream.avail_in = static_cast<uInt>(input.size());
  std::string all;
  std::string room(65536, '\0');
  int result = Z_OK;
  while (result == Z_OK) {
    void* const to = room.data();
    stream.next_out = static_cast<Bytef*>(to);
    stream.avail_out = static_cast<uInt>(room.size());
    result = inflate(&stream, Z_NO_FLUSH);
    all.append(room, 0, room.size() - stream.avail_out);
  }
  const bool is_whole = result == Z_STREAM_END && stream.avail_in == 0;
  inflateEnd(&stream);
  if (!is_whole) throw std::runtime_error("no whole stream");
  return all;
}

std::vector<std::uint64_t> varints(std::string_view bytes) {
  std::vector<std::uint64_t> numbers;
  std::uint64_t number = 0;
  unsigned shift = 0;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (shift > 63) throw std::runtime_error("a number of too many bytes");
    number |= std::uint64_t{byte & 0x7FU} << shift;
    shift += 7;
    if (byte >= 0x80) continue;
    numbers.push_back(number);
    number = 0;
    shift = 0;
  }
  if (shift != 0) throw std::runtime_error("half a number");
  return numbers;
}

std::vector<std::int64_t> signed_numbers(std::string_view bytes) {
  std::vector<std::int64_t> numbers;
  for (const std::uint64_t number : varints(bytes)) {
    numbers.push_back(static_cast<std::int64_t>(number >> 1 ^ (~(number & 1) + 1)));
  }
  return numbers;
}

std::vector<std::uint64_t> sums(std::string_view bytes) {
  std::vector<std::uint64_t> numbers;
  std::uint64_t before = 0;
  for (const std::int64_t difference : signed_numbers(bytes)) {
    numbers.push_back(before += static_cast<std::uint64_t>(difference));
  }
  return numbers;
}

std::string block_of(std::string_view page, std::string_view name) {
  std::string begin = "\n<script type=\"application/octet-stream\" id=\"";
  begin.append(name).append("\">");
  const std::size_t at = page.find(begin);
  if (at == std::string_view::npos || page.find(begin, at + 1) != std::string_view::npos) {
    throw std::runtime_error("the block is not there once: " + std::string(name));
  }
  page.remove_prefix(at + begin.size());
  const std::string_view text = page.substr(0, page.find('<'));
  const auto decoded = QByteArray::fromBase64Encoding(
      QByteArray(text.data(), static_cast<qsizetype>(text.size())),
      QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
  if (!decoded) throw std::runtime_error("no base64");
  return unpacked(decoded.decoded.toStdString());
}

}  // namespace CT::Test
