// SPDX-License-Identifier: MIT
#include "tools/common/ct_process.h"

#include <cxxabi.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <typeinfo>

#include "kcommon/k_logger.h"

namespace CT::Tool {

namespace {

// A file-size limit and a reader that leaves show as failed writes, not as signals.
void ignore_signals() {
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

void log_to_standard_error() {
  KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 1);
}

constexpr std::string_view no_memory = "Out of memory\n";
int status_without_memory = 1;

// Where a std::bad_alloc cannot be caught: it left a function that may not throw, or there was not
// even memory for the exception, and then none is in flight. Nothing here allocates.
[[noreturn]] void end_terminated() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type != nullptr && *type != typeid(std::bad_alloc)) std::abort();
  static_cast<void>(!write(STDERR_FILENO, no_memory.data(), no_memory.size()));
  _exit(status_without_memory);
}

}  // namespace

int run_tool(Run run, int argc, char** argv, int no_memory_status) {
  status_without_memory = no_memory_status;
  std::set_terminate(end_terminated);
  StandardDescriptors standard;
  ignore_signals();
  int status = no_memory_status;
  try {
    log_to_standard_error();
    status = run(argc, argv, standard);
  } catch (const std::bad_alloc&) {
    std::fputs(no_memory.data(), stderr);
  }
  KLogger::destroyInstance();
  return status;
}

void log_line(int level, std::string_view text, const char* source_file, int line) {
  KLogger::instance().println(static_cast<KLogger::Level>(level), source_file, line, text);
}

}  // namespace CT::Tool
