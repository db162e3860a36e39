// SPDX-License-Identifier: MIT
#include "normalise.h"

#include <algorithm>

namespace CT::Test {

namespace {
std::size_t run_length(std::string_view text, std::string_view characters) {
  return std::min(text.find_first_not_of(characters), text.size());
}
}  // namespace

std::string AddressNames::normalise(std::string_view text) {
  constexpr std::string_view source = ".cpp:";
  std::string result;
  while (!text.empty()) {
    if (text.starts_with("0x")) {
      const std::size_t digits = run_length(text.substr(2), "0123456789abcdef");
      const std::string_view address = text.substr(0, 2 + digits);
      text.remove_prefix(address.size());
      if (digits < 6) {
        result += address;
      } else {
        const std::string name = "0xA" + std::to_string(names_.size() + 1);
        result += names_.try_emplace(std::string(address), name).first->second;
      }
    } else if (text.starts_with(source)) {
      result += source;
      text.remove_prefix(source.size());
      const std::size_t digits = run_length(text, "0123456789");
      if (digits > 0 && text.substr(digits, 1) == ")") {
        result += 'N';
        text.remove_prefix(digits);
      }
    } else {
      result += text.front();
      text.remove_prefix(1);
    }
  }
  return result;
}

}  // namespace CT::Test
