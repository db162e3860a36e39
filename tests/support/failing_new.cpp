// SPDX-License-Identifier: MIT
#include "failing_new.h"

#include <cstdlib>
#include <new>

namespace {

struct State {
  bool armed = false;
  bool failed = false;
  std::size_t left = 0;
};

thread_local State state;

}  // namespace

// All forms but those for over-aligned types, so that sanitizers see one allocator and not two.
void* operator new(std::size_t size) {
  if (state.armed && !state.failed && state.left-- == 0) {
    state.failed = true;
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size != 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace CT::Test {

FailingNew::FailingNew(std::size_t after) { state = {true, false, after}; }
FailingNew::~FailingNew() { state.armed = false; }
bool FailingNew::has_failed() { return state.failed; }

}  // namespace CT::Test
