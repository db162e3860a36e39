// SPDX-License-Identifier: MIT
#include "ctcheck/ct_defect_list.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>

namespace CT::Check {

void DefectList::keep(Code code, const Spot& spot, Words words) {
  if (words.cost.empty()) words.cost = code_info(code).cost;
  result_.defects.push_back({code, spot, 0, std::move(words.what), std::move(words.cost)});
}

void DefectList::forget(Code code) {
  result_.counts[static_cast<std::size_t>(code)] = 0;
  auto& all = result_.defects;
  all.erase(std::remove_if(all.begin(), all.end(),
                           [=](const Defect& defect) { return defect.code == code; }),
            all.end());
}

void DefectList::finish(std::uint64_t data_at, std::uint64_t add_data_at) {
  for (Defect& defect : result_.defects) {
    const std::array<std::uint64_t, 3> begins = {0, data_at, add_data_at};
    defect.file_offset = begins.at(static_cast<std::size_t>(defect.spot.part)) + defect.spot.offset;
  }
  std::stable_sort(result_.defects.begin(), result_.defects.end(),
                   [](const Defect& a, const Defect& b) {
                     return std::tie(a.file_offset, a.code) < std::tie(b.file_offset, b.code);
                   });
}

std::string place_name(Part part, std::uint64_t offset) {
  constexpr std::array names = {"byte 0x", "DATA+0x", "ADD DATA+0x"};
  std::array<char, 16> digits{};
  const auto written = std::to_chars(digits.begin(), digits.end(), offset, 16);
  return std::string(names.at(static_cast<std::size_t>(part))).append(digits.begin(), written.ptr);
}

std::string counted(std::uint64_t count, const char* what) {
  std::string digits = std::to_string(count);
  constexpr std::size_t group = 3;
  for (std::size_t at = digits.size(); at > group; at -= group) digits.insert(at - group, 1, ',');
  return digits.append(" ").append(what).append(count == 1 ? "" : "s");
}

}  // namespace CT::Check
