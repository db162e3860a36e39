# SPDX-License-Identifier: MIT
# Writes a source in C++ whose function returns the bytes of a file: -D PAGE=... -D OUT=...
file(READ ${PAGE} bytes HEX)
if(NOT bytes MATCHES "0a3c212d2d2064617461202d2d3e0a")
  message(FATAL_ERROR "${PAGE} has no line <!-- data -->")
endif()
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${OUT} "#include <cstddef>
#include <string_view>

#include \"ctreport/ct_report.h\"

namespace CT::Report {

namespace {

constexpr unsigned char page[] = {
${bytes}
};

}  // namespace

std::string_view built_page() {
  const void* const bytes = page;
  return {static_cast<const char*>(bytes), sizeof page};
}

}  // namespace CT::Report
")
