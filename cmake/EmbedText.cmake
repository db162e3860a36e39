# SPDX-License-Identifier: MIT
# Writes a source in C++ whose function returns the bytes of a file: -D TEXT=... -D OUT=... -D HEADER=...
# -D NAMESPACE=... -D FUNCTION=...
file(READ ${TEXT} bytes HEX)
string(REGEX REPLACE "(................................)" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${OUT} "#include <cstddef>
#include <string_view>

#include \"${HEADER}\"

namespace ${NAMESPACE} {

namespace {

constexpr unsigned char text[] = {
${bytes}
};

}  // namespace

std::string_view ${FUNCTION}() {
  const void* const bytes = text;
  return {static_cast<const char*>(bytes), sizeof text};
}

}  // namespace ${NAMESPACE}
")
