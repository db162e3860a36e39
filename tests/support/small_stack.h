// SPDX-License-Identifier: MIT
//
// Runs code on a thread with little stack, to show that it does not recurse with its input.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <system_error>

namespace CT::Test {

inline constexpr std::size_t small_stack = 128 * 1024;

// Calls `work`, which must not throw, on such a thread and waits for its end.
template <class Work>
void on_small_stack(Work work) {
  const auto check = [](int error) {
    if (error != 0) throw std::system_error(error, std::generic_category());
  };
  pthread_attr_t attributes;
  check(pthread_attr_init(&attributes));
  check(pthread_attr_setstacksize(&attributes, small_stack));
  pthread_t thread;
  const auto run = [](void* call) -> void* {
    (*static_cast<Work*>(call))();
    return nullptr;
  };
  check(pthread_create(&thread, &attributes, run, &work));
  check(pthread_join(thread, nullptr));
  pthread_attr_destroy(&attributes);
}

}  // namespace CT::Test
