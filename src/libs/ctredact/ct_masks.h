// SPDX-License-Identifier: MIT
//
// Pseudonyms for secrets: "[secret:a41f03c2]", of one length whatever stands behind them. Equal
// secrets have equal ones under one key, and without the key nobody can tell which secret would
// have which (HMAC with SHA-256).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace CT::Redact {

class Masks {
 public:
  // Any bytes are a key.
  explicit Masks(std::string_view key);

  // The pseudonym of a secret. It is valid until the next one is asked for.
  [[nodiscard]] std::string_view of(std::string_view secret);

  // What takes a byte at most, where there is no room for pseudonyms.
  static constexpr std::string_view tight = "*";

 private:
  std::string key_;
  std::string made_;
  // Secrets come again and again. It never holds more than a fixed number of them.
  std::unordered_map<std::string, std::string> known_;
};

}  // namespace CT::Redact
