// SPDX-License-Identifier: MIT
#include "codetrace/tree/ct_node.h"

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

void Base::add_end(const Record& end) {
  if (has_end_) {
    kept_ms_delta_ = ms_delta();
    kept_mem_delta_ = mem_delta();
  }
  end_ = end;
  has_end_ = true;
}

bool Base::is_span() const {
  return type_ == Type::STARTUP || type_ == Type::FUNCTION_CALL || type_ == Type::METHOD_CALL ||
         type_ == Type::INCLUDE_CALL || type_ == Type::SAPI_WRITE;
}

}  // namespace CT::Node
