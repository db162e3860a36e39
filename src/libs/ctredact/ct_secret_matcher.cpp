// SPDX-License-Identifier: MIT
#include "ctredact/ct_secret_matcher.h"

#include <cassert>

namespace CT::Redact {

SecretMatcher::SecretMatcher()
    : slots_(64, no_node),
      parents_(1, no_node),
      bytes_(1, 0),
      depths_(1, 0),
      fails_(1, root),
      ends_(1, no_node),
      numbers_(1, no_node) {}

std::size_t SecretMatcher::slot_of(std::uint32_t node, unsigned char byte) const {
  const std::size_t mask = slots_.size() - 1;
  const std::uint64_t key = (std::uint64_t{node} << 8) | byte;
  std::size_t at = static_cast<std::size_t>((key * 0x9E3779B97F4A7C15U) >> 20) & mask;
  while (slots_[at] != no_node && (parents_[slots_[at]] != node || bytes_[slots_[at]] != byte)) {
    at = (at + 1) & mask;
  }
  return at;
}

std::uint32_t SecretMatcher::child(std::uint32_t node, unsigned char byte) const {
  return slots_[slot_of(node, byte)];
}

std::uint32_t SecretMatcher::add_child(std::uint32_t node, unsigned char byte,
                                       std::uint32_t number) {
  if (2 * (parents_.size() + 1) > slots_.size()) grow();
  std::uint32_t& slot = slots_[slot_of(node, byte)];
  if (slot != no_node) return slot;
  slot = static_cast<std::uint32_t>(parents_.size());
  parents_.push_back(node);
  bytes_.push_back(byte);
  depths_.push_back(depths_[node] + 1);
  fails_.push_back(root);
  ends_.push_back(no_node);
  numbers_.push_back(number);
  return slot;
}

void SecretMatcher::grow() {
  slots_.assign(slots_.size() * 2, no_node);
  for (std::uint32_t node = 1; node < parents_.size(); ++node) {
    slots_[slot_of(parents_[node], bytes_[node])] = node;
  }
}

void SecretMatcher::add(std::string_view secret, std::uint32_t number) {
  assert(!is_built_ && secret.size() >= shortest);
  std::uint32_t node = root;
  for (const char c : secret) node = add_child(node, static_cast<unsigned char>(c), number);
  if (ends_[node] == node) return;
  ends_[node] = node;
  numbers_[node] = number;
  set(starts_, load(secret.data()));
  for (std::size_t i = 0; i != 3; ++i) {
    const auto byte = [&](std::size_t at) {
      return std::uint32_t{static_cast<unsigned char>(secret[i + at])};
    };
    set(triples_, (byte(0) << 16) | (byte(1) << 8) | byte(2));
  }
}

// Shorter nodes first: where a node fails to is shorter than it.
void SecretMatcher::build() {
  std::vector<std::uint32_t> order;
  {
    std::vector<std::uint32_t> starts;
    for (const auto depth : depths_) {
      if (depth >= starts.size()) starts.resize(depth + std::size_t{1}, 0);
      ++starts[depth];
    }
    std::uint32_t sum = 0;
    for (std::uint32_t& start : starts) {
      const std::uint32_t count = start;
      start = sum;
      sum += count;
    }
    order.resize(depths_.size());
    for (std::uint32_t node = 0; node != depths_.size(); ++node) {
      order[starts[depths_[node]]++] = node;
    }
  }
  for (const std::uint32_t node : order) {
    if (depths_[node] < 2) continue;
    fails_[node] = step(fails_[parents_[node]], bytes_[node]);
    if (ends_[node] != node) ends_[node] = ends_[fails_[node]];
  }
  is_built_ = true;
}

std::uint32_t SecretMatcher::step(std::uint32_t state, unsigned char byte) const {
  for (;;) {
    const std::uint32_t next = child(state, byte);
    if (next != no_node) return next;
    if (state == root) return root;
    state = fails_[state];
  }
}

}  // namespace CT::Redact
