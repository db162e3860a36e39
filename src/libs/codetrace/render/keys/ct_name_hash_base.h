// SPDX-License-Identifier: MIT
//
// The arithmetic of the hashes: a text is the polynomial of its bytes at one point, the base,
// modulo the prime 2^127 - 1. Two different texts of n bytes agree at no more than n of the 2^127
// points, so with a base that nobody can guess, no file makes hashes collide: docs/json-keys.md
// counts how unlikely it is. The base of a process is drawn at random when it is first asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace CT {

// A number below the prime.
class Residue {
 public:
  constexpr Residue() = default;
  // Of any 127 bits; `high` is below 2^63.
  constexpr Residue(std::uint64_t high, std::uint64_t low) : low_(low), high_(high) {}

  [[nodiscard]] constexpr std::uint64_t low() const { return low_; }
  [[nodiscard]] constexpr std::uint64_t high() const { return high_; }

  friend Residue operator+(const Residue& a, const Residue& b);
  friend Residue operator-(const Residue& a, const Residue& b);
  friend Residue operator*(const Residue& a, const Residue& b);
  friend bool operator==(const Residue&, const Residue&) = default;

 private:
  std::uint64_t low_ = 0;
  std::uint64_t high_ = 0;
};

class HashBase {
 public:
  explicit HashBase(const Residue& base);

  // The one drawn for this process.
  static const HashBase& of_process();

  // The hash of a text of which all before `decoded` has the hash `head`. An empty text has 0.
  [[nodiscard]] Residue append(Residue head, std::string_view decoded) const;
  // The base to the power of a number below 2^36, which no decoded name reaches.
  [[nodiscard]] Residue power(std::uint64_t exponent) const;

 private:
  static constexpr unsigned digit_bits = 9;
  static constexpr std::size_t digit_values = std::size_t{1} << digit_bits;
  static constexpr std::size_t digits = 4;
  struct Powers {
    Residue of[digits][digit_values];  // the base to the power of digit * 2^(9 * place)
  };
  std::unique_ptr<const Powers> powers_;
};

}  // namespace CT
