// SPDX-License-Identifier: MIT
//
// A piece of a report's data, as it stands in the page.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ctreport/ct_base64.h"

namespace CT::Report {

struct Block {
  static constexpr std::string_view begin = R"(<script type="application/octet-stream" id=")";
  static constexpr std::string_view middle = R"(">)";
  static constexpr std::string_view end = "</script>\n";

  std::string name;    // plain ASCII
  std::string packed;  // a zlib stream

  // Bytes of the block in the page.
  [[nodiscard]] std::uint64_t size() const { return size_of(name, packed.size()); }
  static std::uint64_t size_of(std::string_view name, std::size_t packed) {
    return begin.size() + name.size() + middle.size() + Base64::size_of(packed) + end.size();
  }
};

}  // namespace CT::Report
