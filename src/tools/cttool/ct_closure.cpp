// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_closure.h"

#include <string_view>

namespace CT::Tool {

namespace {
constexpr std::string_view closure = "{closure}";
}  // namespace

std::string closure_place(const std::string& name, const std::string& file, std::uint32_t line) {
  if (!name.ends_with(closure) || file.empty()) return {};
  std::string place = file.substr(file.rfind('/') + 1);
  if (line != 0) place.append(":").append(std::to_string(line));
  return place;
}

std::string closure_name(const std::string& name) {
  constexpr std::string_view member = "::";
  const std::size_t at = name.find(member);
  if (at == std::string::npos || !name.ends_with(closure)) return name;
  return name.substr(0, at + member.size()).append(closure);
}

}  // namespace CT::Tool
