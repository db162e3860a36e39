// SPDX-License-Identifier: MIT
#include "ctwrite/ct_keyed_hash.h"

#include <sys/random.h>

#include <bit>
#include <cerrno>
#include <cstring>

namespace CT::Write {

namespace {

struct State {
  std::uint64_t v0, v1, v2, v3;

  void round() noexcept {
    v0 += v1;
    v1 = std::rotl(v1, 13) ^ v0;
    v0 = std::rotl(v0, 32);
    v2 += v3;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 += v3;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 += v1;
    v1 = std::rotl(v1, 17) ^ v2;
    v2 = std::rotl(v2, 32);
  }
  void take(std::uint64_t word) noexcept {
    v3 ^= word;
    round();
    v0 ^= word;
  }
};

}  // namespace

KeyedHash::KeyedHash() noexcept {
  std::uint64_t key[2];
  const ssize_t got = ::getrandom(key, sizeof key, GRND_NONBLOCK);
  if (got != static_cast<ssize_t>(sizeof key)) {
    // Early after a start the system may have none; where this object lies is not known either.
    key[0] = std::bit_cast<std::uintptr_t>(this);
    key[1] = std::bit_cast<std::uintptr_t>(&errno);
  }
  key0_ = key[0];
  key1_ = key[1];
}

// The order of bytes in a word does not matter here: hashes never leave the process.
std::uint64_t KeyedHash::operator()(const unsigned char* bytes, std::size_t size) const noexcept {
  constexpr std::size_t word_size = 8;
  State state = {key0_ ^ 0x736f6d6570736575, key1_ ^ 0x646f72616e646f6d, key0_ ^ 0x6c7967656e657261,
                 key1_ ^ 0x7465646279746573};
  std::size_t left = size;
  std::uint64_t word = 0;
  for (; left >= word_size; left -= word_size, bytes += word_size) {
    std::memcpy(&word, bytes, word_size);
    state.take(word);
  }
  word = 0;
  if (left != 0) std::memcpy(&word, bytes, left);
  state.take(word ^ static_cast<std::uint64_t>(size) << 56);
  state.v2 ^= 0xff;
  state.round();
  state.round();
  state.round();
  return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

}  // namespace CT::Write
