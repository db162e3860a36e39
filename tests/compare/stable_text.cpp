// SPDX-License-Identifier: MIT
#include "stable_text.h"

#include <algorithm>
#include <charconv>

namespace CT::Test {

namespace {

constexpr std::string_view prefix = "0x";
constexpr std::string_view source = ".cpp:";

std::size_t run_length(std::string_view text, std::string_view characters) {
  return std::min(text.find_first_not_of(characters), text.size());
}

// "(src/a/b.cpp:123)" at the end of a line becomes "(b.cpp:N)".
std::string without_place(std::string_view line) {
  const std::size_t mark = line.rfind(source);
  if (mark == std::string_view::npos) return std::string(line);
  const std::string_view behind = line.substr(mark + source.size());
  const std::size_t digits = run_length(behind, "0123456789");
  const std::size_t open = line.rfind('(', mark);
  if (digits == 0 || behind.substr(digits) != ")\n" || open == std::string_view::npos) {
    return std::string(line);
  }
  std::string_view file = line.substr(open + 1, mark - open - 1);
  file.remove_prefix(file.rfind('/') + 1);  // all of it without a slash: npos is -1
  std::string result(line.substr(0, open + 1));
  return result.append(file).append(source).append("N)\n");
}

}  // namespace

std::string StableText::normalise(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const std::size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
    result += line(text.substr(0, size));
    text.remove_prefix(size);
  }
  return result;
}

// What stands in front of an address tells the section.
StableText::Base* StableText::base_of(std::string_view line) {
  line.remove_prefix(run_length(line, "\t"));
  if (line.starts_with("CE: ")) return &add_data_;
  if (line.starts_with("*** CHECKPOINT ") || line.starts_with("START: ") ||
      line.ends_with(" with address ")) {
    return &data_;
  }
  return nullptr;
}

std::string StableText::line(std::string_view line) {
  const std::size_t at = line.find(prefix);
  Base* const base = at != std::string_view::npos ? base_of(line.substr(0, at)) : nullptr;
  if (base == nullptr) return without_place(line);
  const std::string_view digits = line.substr(at + prefix.size());
  std::uint64_t address = 0;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), address, 16);
  if (error != std::errc() || address == 0) return without_place(line);
  if (!*base) *base = address;
  std::string result(line.substr(0, at));
  result += base == &data_ ? "DATA+" : "ADD+";
  result += std::to_string(address - **base);
  result += line.substr(static_cast<std::size_t>(end - line.data()));
  return without_place(result);
}

}  // namespace CT::Test
