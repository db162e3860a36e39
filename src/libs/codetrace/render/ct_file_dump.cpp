// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_file_dump.h"

#include <array>
#include <cassert>

#include "codetrace/render/ct_number.h"

namespace CT {

namespace {

// "0xNN, " for every byte.
constexpr std::size_t item_size = 6;
using HexItems = std::array<std::array<char, item_size>, 256>;

constexpr HexItems make_hex_items(std::string_view digits) {
  HexItems items = {};
  for (unsigned i = 0; i != 256; ++i) {
    items[i] = {'0', 'x', digits[i >> 4], digits[i & 15], ',', ' '};
  }
  return items;
}

constexpr HexItems hex_items = make_hex_items("0123456789abcdef");

void line(Writer& out, std::string_view label, std::uint64_t value) {
  out.put(label);
  put_unsigned(out, value);
  out.put('\n');
}

}  // namespace

void write_headers(const File& file, Writer& out) {
  assert(file.is_open());
  const FileHeader& header = file.header();
  line(out, "VERSION: ", header.version);
  constexpr HexItems upper = make_hex_items("0123456789ABCDEF");
  out.put("FLAGS: ");
  out.put(std::string_view(upper[header.flags].data(), 4));
  out.put('\n');
  line(out, "REQUEST ID: ", header.request_id);
  line(out, "PHP API VERSION: ", header.php_api_version);
  line(out, "DATA SIZE: ", header.data_size);
  line(out, "ADD DATA SIZE: ", header.add_data_size);
  // Kept: addresses, yet in decimal.
  line(out, "ORIG DATA: ", header.orig_data);
  line(out, "ORIG ADD DATA: ", header.orig_add_data);
}

void write_binary(const File& file, Writer& out) {
  assert(file.is_open());
  out.put("\nDATA[");
  put_unsigned(out, file.data().size());
  out.put("]:\n");
  hexdump(file.data().data(), file.data().size(), out);
  out.put("\nADD DATA[");
  put_unsigned(out, file.add_data().size());
  out.put("]:\n");
  hexdump(file.add_data().data(), file.add_data().size(), out);
}

void hexdump(const unsigned char* bytes, std::uint64_t size, Writer& out) {
  constexpr std::uint64_t line_bytes = 16;
  while (size != 0 && out.ok()) {
    const std::uint64_t count = size < line_bytes ? size : line_bytes;
    char* at = out.room(line_bytes * item_size + 1);
    for (std::uint64_t i = 0; i != count; ++i, at += item_size) {
      std::memcpy(at, hex_items[bytes[i]].data(), item_size);
    }
    bytes += count;
    size -= count;
    // Kept: a line that is not the last ends in ", " before its newline.
    if (size == 0) at -= 2;
    *at++ = '\n';
    out.advance(at);
  }
}

}  // namespace CT
