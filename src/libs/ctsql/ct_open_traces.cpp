// SPDX-License-Identifier: MIT
#include "ctsql/ct_open_traces.h"

#include <sys/stat.h>

namespace CT::Sql {

namespace {

struct OpenedTrace {
  OpenedTrace(Trace&& opened, const std::string& path)
      : trace(std::move(opened)), measures(trace), data(trace, measures, path) {}

  Trace trace;
  Measures measures;
  TraceData data;
};

}  // namespace

std::shared_ptr<TraceData> OpenTraces::open(const std::string& path, std::string& error) {
  struct stat found = {};
  const bool is_file = stat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
  const Identity identity = {found.st_dev, found.st_ino, found.st_size, found.st_mtim.tv_sec,
                             found.st_mtim.tv_nsec};
  std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
  if (const auto known = known_.find(identity); is_file && known != known_.end()) {
    return known->second.lock();
  }
  Trace trace;
  if (!trace.open(path)) {
    error = path;
    error += ": ";
    error += trace.error_message();
    return nullptr;
  }
  const auto opened = std::make_shared<OpenedTrace>(std::move(trace), path);
  std::shared_ptr<TraceData> data(opened, &opened->data);
  if (is_file) known_[identity] = data;
  return data;
}

}  // namespace CT::Sql
