// SPDX-License-Identifier: MIT
//
// CheckpointText: the statements of a trace text that stand for checkpoints. Each is the type's
// word, the common fields (@time, mem, at), the type's own fields, and what is to be wrong with it
// (keep, size, more). Borrows the scanner and the values.
#pragma once

#include <map>
#include <string>

#include "checkpoint_draft.h"
#include "text_scanner.h"
#include "trace_values.h"

namespace CT::Test {

class CheckpointText {
 public:
  CheckpointText(TextScanner& scanner, TraceValues& values) : in_(scanner), values_(values) {}

  static bool knows(const std::string& word) { return types().contains(word); }
  // Requires: knows(word); the scanner stands behind the word.
  CheckpointDraft read(const std::string& word);

 private:
  using Maker = CheckpointDraft (CheckpointText::*)();
  static const std::map<std::string, Maker>& types();

  struct Time {
    std::uint64_t seconds;
    std::uint32_t nanoseconds;
  };
  Time time();
  void read_end(CheckpointDraft& draft);

  CheckpointDraft startup();
  CheckpointDraft shutdown();
  CheckpointDraft call();
  CheckpointDraft method();
  CheckpointDraft any_call(bool is_method);
  CheckpointDraft function_return();
  CheckpointDraft function_exception();
  CheckpointDraft include();
  CheckpointDraft include_return();
  CheckpointDraft include_exception();
  CheckpointDraft write();
  CheckpointDraft write_end();
  CheckpointDraft flush();
  CheckpointDraft header();
  CheckpointDraft send_headers();
  CheckpointDraft exit();
  CheckpointDraft error();
  CheckpointDraft event();
  CheckpointDraft raw();

  Ref optional_ref(std::string_view keyword);
  std::string optional_string();
  Ref start();      // of REF
  Fields thrown();  // value VALUE
  std::uint8_t u8(std::uint8_t largest) { return static_cast<std::uint8_t>(in_.number(largest)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(in_.number(UINT32_MAX)); }

  TextScanner& in_;
  TraceValues& values_;
};

}  // namespace CT::Test
