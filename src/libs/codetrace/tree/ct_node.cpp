// SPDX-License-Identifier: MIT
#include "codetrace/tree/ct_node.h"

#include <memory>

namespace CT::Node {

namespace {

// Differences of unsigned byte counts; they wrap.
std::int64_t difference(std::uint64_t later, std::uint64_t earlier) {
  return static_cast<std::int64_t>(later - earlier);
}

constexpr std::uint8_t timed = 1;
constexpr std::uint8_t measured = 2;

}  // namespace

std::int64_t Base::mem() const {
  return begin_.has_memory() ? difference(begin_.memory(), start_memory_) : 0;
}

std::int64_t Base::mem_delta() const {
  return both_have(measured) ? difference(end_.memory(), begin_.memory()) : kept_mem_delta_;
}

double Base::ms() const {
  return begin_.has_timestamp() ? KTime::elapsed_ms(start_time_, begin_.timestamp()) : 0;
}

double Base::ms_delta() const {
  return both_have(timed) ? KTime::elapsed_ms(begin_.timestamp(), end_.timestamp())
                          : kept_ms_delta_;
}

inline void Base::keep_figures() {
  if (!has_end_) return;
  kept_ms_delta_ = ms_delta();
  kept_mem_delta_ = mem_delta();
}

void Base::add_end(const Record& end) {
  keep_figures();
  end_ = end;
  has_end_ = true;
}

void Base::add_end(const CheckpointView& end, const Entities& entities) {
  keep_figures();
  std::construct_at(&end_, end, entities);
  has_end_ = true;
}

bool Base::is_span() const { return node_info(type_).is_span; }

}  // namespace CT::Node
