// SPDX-License-Identifier: MIT
//
// OpenTrace: a trace opened from memory, with a storage for its tree and short ways to its views,
// records and outputs. It owns the bytes, so nothing that it returns may outlive it.
//
//   for_both_orders("startup @10\nshutdown\n", [](OpenTrace& trace) {
//     trace.read();
//     EXPECT_EQ(trace.text(), "REQUEST STARTUP: REQUEST: , URL: \n");
//   });
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_document.h"
#include "finding_recorder.h"
#include "trace_builder.h"
#include "trace_text.h"
#include "written.h"

namespace CT::Test {

inline constexpr ByteOrder both_orders[] = {ByteOrder::little, ByteOrder::big};

inline const unsigned char* as_bytes(std::string_view text) {
  return static_cast<const unsigned char*>(static_cast<const void*>(text.data()));
}

// A record as one of its class, with what it needs to stay; it must be of this class.
template <class Class>
std::shared_ptr<const Class> kept_as(std::shared_ptr<const Checkpoint::Base> made) {
  if constexpr (std::is_same_v<Class, Checkpoint::Base>) {
    return made;
  } else {
    const auto record = Checkpoint::record_as<Class>(*made);
    if (!record) throw std::runtime_error("a record of another class");
    struct Kept {
      std::shared_ptr<const Checkpoint::Base> made;
      Class record;
    };
    const auto kept = std::make_shared<const Kept>(Kept{std::move(made), *record});
    return {kept, &kept->record};
  }
}

class OpenTrace {
 public:
  explicit OpenTrace(std::string_view bytes) : file_(QString()), storage_(file_, &findings_) {
    if (!file_.open(as_bytes(bytes), bytes.size())) {
      throw std::runtime_error(file_.error_message().toStdString());
    }
  }
  explicit OpenTrace(const TraceBuilder& trace) : OpenTrace(trace.build()) {}
  OpenTrace(const OpenTrace&) = delete;
  OpenTrace& operator=(const OpenTrace&) = delete;

  const File& file() const { return file_; }
  Storage& storage() { return storage_; }
  // What the storage reported so far, as "LEVEL TEXT".
  const std::vector<std::string>& findings() const { return findings_.lines(); }
  void forget_findings() { findings_.clear(); }

  // A view on the checkpoint of this number, which must exist.
  CheckpointView view(std::size_t number = 0) const {
    CheckpointView view(file_);
    for (std::size_t i = 0; i <= number; ++i) {
      if (!view.step()) throw std::runtime_error("no such checkpoint");
    }
    return view;
  }
  // Its record, with functions and classes entered into the storage; it must be of this class.
  template <class Class = Checkpoint::Base>
  std::shared_ptr<const Class> record(std::size_t number = 0) {
    auto made = Checkpoint::make_record(view(number), &storage_.entities());
    if (made == nullptr) throw std::runtime_error("a checkpoint that has no record");
    return kept_as<Class>(std::move(made));
  }
  // Hands it to the storage; null when it is rejected.
  std::shared_ptr<const Node::Base> add(std::size_t number) {
    return storage_.add_checkpoint(record(number));
  }
  // Hands all checkpoints to the storage.
  void read(const RecordVisitor& visit = {}) { read_checkpoints(file_, storage_, visit); }

  std::string text() {
    return written([&](Writer& out) { write_text(storage_, out); });
  }
  std::string json() {
    return written([&](Writer& out) { write_json(storage_, out); });
  }

 private:
  File file_;
  FindingRecorder findings_;
  Storage storage_;
};

// Calls `check` with the trace of this text in each byte order that the text asks for.
template <class Check>
void for_both_orders(std::string_view text, Check check) {
  for (const BuiltTrace& built : build_traces(text)) {
    SCOPED_TRACE(built.order == ByteOrder::big ? "big-endian" : "little-endian");
    OpenTrace trace(built.bytes);
    check(trace);
  }
}

// The text of a stored string; "(absent)" where there is none.
inline std::string text_of(const Checkpoint::String& string) {
  return string.data == nullptr ? "(absent)" : std::string(string.view());
}

}  // namespace CT::Test
