// SPDX-License-Identifier: MIT
//
// Loaded into a program by LD_PRELOAD, this makes calls of it fail, as the environment says:
//
//   FAULTS_ALLOCATION=N  the Nth allocation from the beginning of main() on finds no memory
//   FAULTS_ALL=1         and so do all that follow
//   FAULTS_WRITE=1       write() takes nothing, but for standard error
//
// Each allocation that is refused is told by a byte on descriptor 9, if there is one.
#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

using Main = int (*)(int, char**, char**);
using Hook = void (*)();
using StartMain = int (*)(Main, int, char**, Hook, Hook, Hook, void*);

// Nothing before main() is refused, so that a test knows whose allocations they are.
bool counting = false;
long until_failure = 0;
bool goes_on = false;
bool takes_nothing = false;
Main real_main = nullptr;

bool refuses() {
  if (!counting || until_failure <= 0) return false;
  if (--until_failure != 0) return false;
  if (goes_on) until_failure = 1;
  static_cast<void>(syscall(SYS_write, 9, "x", 1));
  errno = ENOMEM;
  return true;
}

int counted_main(int argc, char** argv, char** environment) {
  const char* const number = std::getenv("FAULTS_ALLOCATION");
  until_failure = number != nullptr ? std::strtol(number, nullptr, 10) : 0;
  goes_on = std::getenv("FAULTS_ALL") != nullptr;
  takes_nothing = std::getenv("FAULTS_WRITE") != nullptr;
  counting = true;
  return real_main(argc, argv, environment);
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int argc, char** argv, Hook init, Hook fini, Hook loader_fini,
                      void* stack_end) {
  real_main = main;
  const auto start = std::bit_cast<StartMain>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(counted_main, argc, argv, init, fini, loader_fini, stack_end);
}

void* malloc(std::size_t size) { return refuses() ? nullptr : __libc_malloc(size); }

void* calloc(std::size_t count, std::size_t size) {
  return refuses() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  return refuses() ? nullptr : __libc_realloc(memory, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return refuses() ? nullptr : __libc_memalign(alignment, size);
}

ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  if (takes_nothing && descriptor != STDERR_FILENO) return 0;
  return syscall(SYS_write, descriptor, bytes, size);
}

}  // extern "C"
