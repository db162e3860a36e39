// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_name_hash_base.h"

#include <sys/random.h>

#include <algorithm>
#include <chrono>
#include <functional>

namespace CT {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr unsigned bits = 127;
constexpr std::uint64_t high_mask = ~std::uint64_t{0} >> 1;
constexpr Wide prime = (Wide{1} << bits) - 1;

constexpr Wide wide(const Residue& number) { return Wide{number.high()} << 64 | number.low(); }

constexpr Residue reduced(Wide number) {
  number = (number & prime) + (number >> bits);
  if (number >= prime) number -= prime;
  return {static_cast<std::uint64_t>(number >> 64), static_cast<std::uint64_t>(number)};
}

// Below 2^127, never 0 or 1.
Residue random_residue() {
  std::uint64_t words[2] = {0, 0};
  while (words[0] == 0) {
    if (getrandom(words, sizeof words, 0) == sizeof words) {
      words[0] &= high_mask;
      continue;
    }
    // A system without random numbers: when this runs, and where its memory lies.
    const auto now = std::chrono::high_resolution_clock::now().time_since_epoch().count();
    words[0] = (static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15) & high_mask;
    words[1] = std::hash<const void*>()(&words) * 0x9E3779B97F4A7C15;
  }
  return reduced(Wide{words[0]} << 64 | words[1]);
}

}  // namespace

Residue operator+(const Residue& a, const Residue& b) { return reduced(wide(a) + wide(b)); }

Residue operator-(const Residue& a, const Residue& b) {
  return reduced(wide(a) + (prime - wide(b)));
}

Residue operator*(const Residue& a, const Residue& b) {
  Wide low = Wide{a.low()} * b.low();
  const Wide middle = Wide{a.low()} * b.high() + Wide{a.high()} * b.low();
  Wide high = Wide{a.high()} * b.high() + (middle >> 64);
  low += middle << 64;
  if (low < middle << 64) ++high;
  // 2^128 is 2, and 2^127 is 1.
  return reduced((low & prime) + (high << 1 | low >> bits));
}

HashBase::HashBase(const Residue& base) {
  auto powers = std::make_unique<Powers>();
  Residue step = base;
  for (auto& place : powers->of) {
    place[0] = Residue(0, 1);
    for (std::size_t digit = 1; digit != digit_values; ++digit) {
      place[digit] = place[digit - 1] * step;
    }
    step = place[digit_values - 1] * step;
  }
  powers_ = std::move(powers);
}

const HashBase& HashBase::of_process() {
  static const HashBase base(random_residue());
  return base;
}

// A block at once: products of a byte and half a power, summed up before they are reduced.
Residue HashBase::append(Residue head, std::string_view decoded) const {
  constexpr std::size_t block = 64;
  while (!decoded.empty()) {
    const std::size_t size = std::min(block, decoded.size());
    const Residue* power = powers_->of[0] + size;
    head = head * *power;
    Wide low = 0;
    Wide high = 0;
    for (std::size_t i = 0; i != size; ++i) {
      --power;
      // No coefficient is 0, so that texts of different lengths are different polynomials.
      const std::uint64_t coefficient = static_cast<unsigned char>(decoded[i]) + std::uint64_t{1};
      low += Wide{power->low()} * coefficient;
      high += Wide{power->high()} * coefficient;
    }
    const Wide folded = ((high & high_mask) << 64) + (high >> 63) + low;
    head = reduced(wide(head) + wide(reduced(folded)));
    decoded.remove_prefix(size);
  }
  return head;
}

Residue HashBase::power(std::uint64_t exponent) const {
  const auto& of = powers_->of;
  Residue power = of[0][exponent % digit_values];
  for (std::size_t place = 1; (exponent >>= digit_bits) != 0; ++place) {
    power = power * of[place][exponent % digit_values];
  }
  return power;
}

}  // namespace CT
