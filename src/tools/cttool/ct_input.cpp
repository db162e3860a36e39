// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_input.h"

#include <CLI/CLI.hpp>
#include <QString>
#include <cstdio>
#include <utility>

#include "codetrace/render/ct_document.h"
#include "ctmeasure/ct_request_facts.h"
#include "tools/common/ct_failure.h"
#include "tools/common/ct_progress.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

// Each finding as a line on standard error.
class Lister final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    MemoryWriter line;
    write_text(finding, line);
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.view().data());
  }
};

}  // namespace

bool Input::open(const std::string& name) {
  name_ = name;
  File file(QString::fromStdString(name));
  if (open(file)) {
    read(std::move(file));
    return true;
  }
  fail(open_failed, QString::fromStdString(name), QString::fromStdString(failure_));
  return false;
}

bool Input::open(File& file) {
  ByteInput bytes;
  bool is_open = false;
  const bool is_ours = bytes.open(name_);
  const Archive kind = is_ours ? archive_of(bytes.first(archive_mark_size)) : Archive::none;
  if (kind != Archive::none) return unpack(file, bytes, kind);
  if (!is_ours || bytes.is_named_file()) {
    is_open = file.open();
  } else {
    is_open =
        file.open([&bytes](unsigned char* to, std::size_t size) { return bytes.read(to, size); });
  }
  failure_ = file.error_message().toStdString();
  if (is_ours && bytes.error() != 0) failure_ = qt_error_string(bytes.error()).toStdString();
  return is_open;
}

bool Input::unpack(File& file, ByteInput& bytes, Archive kind) {
  const auto unpacker = Decompressor::make(
      kind, [&bytes](unsigned char* to, std::size_t size) { return bytes.read(to, size); },
      session_.max_size);
  const bool is_open = file.open(
      [&unpacker](unsigned char* to, std::size_t size) { return unpacker->read(to, size); });
  archive_damage_ = unpacker->error();
  failure_ = file.error_message().toStdString();
  if (unpacker->is_too_large()) {
    failure_ = beyond_max_size("what is in the archive", session_.max_size);
  } else if (bytes.error() != 0) {
    failure_ = qt_error_string(bytes.error()).toStdString();
  } else if (!archive_damage_.empty()) {
    failure_ = "the archive is damaged, " + archive_damage_ + ": " + failure_;
  }
  return is_open;
}

// A walk that somebody watches takes a little longer.
void Input::read(File file) {
  constexpr std::uint64_t now_and_then = 1024;
  Lister lister;
  FindingSink* const sink = session_.lists_findings ? &lister : nullptr;
  constexpr int no_output = -1;
  Progress progress(no_output);
  if (!progress.is_wanted()) return trace_.read(std::move(file), sink);
  const std::uint64_t size = file.data().size();
  std::uint64_t count = 0;
  trace_.read(std::move(file), sink, [&](const Checkpoint::Base& record) {
    if (count++ % now_and_then == 0) progress.show("reading", record.offset(), size);
    return true;
  });
}

void Input::say_damage() const {
  if (!archive_damage_.empty()) {
    std::fprintf(stderr, "%s: the archive is damaged, %s; the trace in it is all there\n",
                 shown_text(name_).c_str(), archive_damage_.c_str());
  }
  const Summary& found = trace_.summary();
  if (found.is_clean() || session_.lists_findings) return;
  const std::int64_t places = damaged_places(found);
  std::fprintf(stderr, "%s: %lld %s damaged or odd; -v lists %s\n", name_.c_str(),
               static_cast<long long>(places), places == 1 ? "place is" : "places are",
               places == 1 ? "it" : "them");
}

void add_file(CLI::App& command, std::string& name) {
  command.add_option("FILE", name, "The trace; - is standard input.")->required();
}

}  // namespace CT::Tool
