// SPDX-License-Identifier: MIT
#include "secret_spelling.h"

#include <cctype>
#include <cstdio>

namespace CT::Test {

std::string url_encoded(std::string_view text) {
  std::string made;
  for (const char c : text) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' || c == '.') {
      made += c;
    } else if (c == ' ') {
      made += '+';
    } else {
      char code[4];
      std::snprintf(code, sizeof code, "%%%02X",
                    static_cast<unsigned>(static_cast<unsigned char>(c)));
      made += code;
    }
  }
  return made;
}

// Requires: UTF-8 with no character beyond two bytes.
std::string json_escaped(std::string_view text) {
  std::string made;
  for (std::size_t i = 0; i != text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 0xC0 && i + 1 != text.size()) {
      const unsigned code = (byte & 0x1FU) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3FU);
      char escape[7];
      std::snprintf(escape, sizeof escape, "\\u%04x", code);
      made += escape;
    } else {
      if (text[i] == '"' || text[i] == '\\' || text[i] == '/') made += '\\';
      made += text[i];
    }
  }
  return made;
}

std::string html_escaped(std::string_view text) {
  std::string made;
  for (const char c : text) {
    switch (c) {
      case '&': made += "&amp;"; break;
      case '<': made += "&lt;"; break;
      case '>': made += "&gt;"; break;
      case '"': made += "&quot;"; break;
      case '\'': made += "&#039;"; break;
      default: made += c;
    }
  }
  return made;
}

std::string base64(std::string_view bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string made;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t k = 0; k != 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k != 4; ++k) {
      made += k <= bytes.size() - i ? digits[group >> (18 - 6 * k) & 63] : '=';
    }
  }
  return made;
}

std::string lines_of_76(std::string_view text) {
  std::string made;
  for (std::size_t i = 0; i < text.size(); i += 76) {
    made += text.substr(i, 76);
    made += "\r\n";
  }
  return made;
}

}  // namespace CT::Test
