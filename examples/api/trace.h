// SPDX-License-Identifier: MIT
//
// A trace that is read whole: how all of these programs begin.
#pragma once

#include <codetrace/codetrace.h>
#include <fmt/core.h>

#include <QFile>
#include <memory>

struct Trace {
  CT::File file;  // owns the bytes, so it comes first and goes last
  CT::Storage storage;

  explicit Trace(const char* path) : file(QFile::decodeName(path)), storage(file) {}
};

// Null, after a message on standard error, if the file is no trace. Damage inside of a trace ends
// nothing; the log says what it is.
inline std::unique_ptr<Trace> open_trace(const char* path) {
  auto trace = std::make_unique<Trace>(path);
  if (!trace->file.open()) {
    fmt::print(stderr, "{}: {}\n", path, trace->file.error_message().toStdString());
    return nullptr;
  }
  if (!KLogger::instance().enabled(0)) {
    KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 0);
  }
  CT::read_checkpoints(trace->file, trace->storage);
  return trace;
}
