// SPDX-License-Identifier: MIT
#include "ctreport/ct_base64.h"

#include <algorithm>
#include <cstring>

namespace CT::Report {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two digits for each number of twelve bits.
constexpr std::array<std::array<char, 2>, 4096> pairs = [] {
  std::array<std::array<char, 2>, 4096> all{};
  for (std::size_t bits = 0; bits != all.size(); ++bits) {
    all[bits] = {alphabet[bits >> 6], alphabet[bits & 0x3F]};
  }
  return all;
}();

char* write_group(char* at, const unsigned char* bytes) {
  const unsigned bits = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
  std::memcpy(at, pairs[bits >> 12].data(), 2);
  std::memcpy(at + 2, pairs[bits & 0xFFF].data(), 2);
  return at + 4;
}

char digit(unsigned bits) { return alphabet[bits & 0x3F]; }

}  // namespace

void Base64::put(std::string_view bytes) {
  const void* const data = bytes.data();
  const auto* at = static_cast<const unsigned char*>(data);
  const unsigned char* const end = at + bytes.size();
  while (rest_size_ != 0 && at != end) {
    rest_[rest_size_++] = *at++;
    if (rest_size_ != rest_.size()) continue;
    out_.advance(write_group(out_.room(4), rest_.data()));
    rest_size_ = 0;
  }
  while (end - at >= 3) {
    constexpr std::ptrdiff_t most = Writer::max_room / 4 * 3;
    const unsigned char* const stop = at + std::min(most, (end - at) / 3 * 3);
    char* to = out_.room(Writer::max_room);
    for (; at != stop; at += 3) to = write_group(to, at);
    out_.advance(to);
  }
  while (at != end) rest_[rest_size_++] = *at++;
}

void Base64::finish() {
  if (rest_size_ == 0) return;
  std::fill(rest_.begin() + static_cast<std::ptrdiff_t>(rest_size_), rest_.end(), 0);
  const unsigned bits = unsigned{rest_[0]} << 16 | unsigned{rest_[1]} << 8;
  out_.put(digit(bits >> 18));
  out_.put(digit(bits >> 12));
  out_.put(rest_size_ == 2 ? digit(bits >> 6) : '=');
  out_.put('=');
  rest_size_ = 0;
}

}  // namespace CT::Report
