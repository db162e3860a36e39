// SPDX-License-Identifier: MIT
#include "short_inline_text.h"

#include <algorithm>

#include "trace_parts.h"

namespace CT::Test {

namespace {

constexpr std::uint8_t send_headers = 13;
constexpr std::uint8_t script_error = 15;

// The common fields and the number in front of the text's length.
std::size_t size_before_text(const Frame& frame) {
  std::size_t size = 4;
  if ((frame.flags & 1U) != 0) size += 12;
  if ((frame.flags & 2U) != 0) size += 8;
  if ((frame.flags & 4U) != 0) size += 12;
  return size;
}

}  // namespace

bool is_short_inline_text(std::uint64_t declared, std::string_view bytes) {
  return declared > bytes.size() && bytes.find('\0') != std::string_view::npos;
}

bool has_short_inline_text(std::string_view file) {
  const std::optional<TraceParts> parts = TraceParts::of(file);
  if (!parts) return false;
  const auto frames = parts->frames();
  return std::any_of(frames.begin(), frames.end(), [&](const Frame& frame) {
    const std::size_t before = size_before_text(frame);
    if (frame.type != send_headers && frame.type != script_error) return false;
    if (frame.size < before + 8) return false;
    const auto payload = std::string_view(parts->data).substr(frame.payload(), frame.size);
    const std::uint64_t declared = number_at(payload.substr(before), 8, parts->order());
    return is_short_inline_text(declared, payload.substr(before + 8));
  });
}

}  // namespace CT::Test
