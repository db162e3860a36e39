// SPDX-License-Identifier: MIT
//
// Secrets that are told by what they look like. Each function looks at one place of a text;
// together they look at every byte a bounded number of times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace CT::Redact {

// From a place on: how many bytes are of the shape, if any are, and how many need not be looked at
// again for the same shape.
struct Seen {
  std::size_t size = 0;
  std::size_t skip = 1;
};

// A signed token: three parts in base64 with points between them. Requires: "eyJ" at the place.
Seen see_jwt(std::string_view text, std::size_t at);
// A block of lines with a private key, or as much of it as there is. Requires: "-----" there.
Seen see_private_key(std::string_view text, std::size_t at);
// 13 to 19 digits of a payment card in groups, with a true check digit. `size` counts from `begin`.
// Requires: the first digit of a run.
struct SeenCard {
  std::size_t begin = 0;
  std::size_t size = 0;
  std::size_t skip = 1;
};
SeenCard see_card(std::string_view text, std::size_t at);
// The same of a number.
bool is_card(std::int64_t number);
// An account number with true check digits. Requires: two capitals and two digits there.
Seen see_iban(std::string_view text, std::size_t at);
// A salted hash as crypt() makes it. Requires: "$" there.
Seen see_password_hash(std::string_view text, std::size_t at);

// The address of mail around an @. Empty if there is none.
struct Part {
  std::size_t begin = 0;
  std::size_t end = 0;
  [[nodiscard]] bool is_empty() const { return begin == end; }
};
Part see_email(std::string_view text, std::size_t at);
// Of a URL, what stands between // and @: user and password, of which each may be empty. Requires:
// "://" at the place.
struct Login {
  Part user;
  Part password;
};
Login see_login(std::string_view text, std::size_t at);

}  // namespace CT::Redact
