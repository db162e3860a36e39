// SPDX-License-Identifier: MIT
#include "ctreport/ct_base64.h"

#include <algorithm>

namespace CT::Report {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

char digit(unsigned bits) { return alphabet[bits & 0x3F]; }

}  // namespace

void Base64::put_group(const unsigned char* bytes) {
  char* const at = out_.room(4);
  const unsigned bits = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
  at[0] = digit(bits >> 18);
  at[1] = digit(bits >> 12);
  at[2] = digit(bits >> 6);
  at[3] = digit(bits);
  out_.advance(at + 4);
}

void Base64::put(std::string_view bytes) {
  const void* const data = bytes.data();
  const auto* at = static_cast<const unsigned char*>(data);
  const unsigned char* const end = at + bytes.size();
  while (rest_size_ != 0 && at != end) {
    rest_[rest_size_++] = *at++;
    if (rest_size_ != rest_.size()) continue;
    put_group(rest_.data());
    rest_size_ = 0;
  }
  for (; end - at >= 3; at += 3) put_group(at);
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
