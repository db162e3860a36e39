// SPDX-License-Identifier: MIT
#include "tools/common/ct_process.h"

#include <csignal>
#include <cstdio>
#include <memory>
#include <new>

#include "kcommon/k_logger.h"
#include "tools/common/ct_descriptors.h"

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

}  // namespace

int run_tool(int (*run)(int argc, char** argv), int argc, char** argv) {
  const StandardDescriptors standard;
  ignore_signals();
  log_to_standard_error();
  int status = 1;
  try {
    status = run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("Out of memory\n", stderr);
  }
  KLogger::destroyInstance();
  return status;
}

}  // namespace CT::Tool
