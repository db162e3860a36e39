// SPDX-License-Identifier: MIT
//
// Rewriter: a trace, read by the library's cursor and written again, field by field and value by
// value, by TraceWriter.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "codetrace/ct_file.h"
#include "codetrace/model/ct_view.h"
#include "ctwrite/ct_trace_writer.h"
#include "entity_copies.h"

namespace CT::Test {

enum class Rewriting {
  anew,       // at other addresses, texts laid down once, in the order in which records need them
  as_before,  // at the same addresses, with ADD DATA in the same order
};

class Rewriter {
 public:
  // Borrows both.
  Rewriter(const File& file, Write::TraceWriter& writer)
      : file_(file), writer_(writer), entities_(file, writer) {}

  EntityCopies& entities() { return entities_; }
  // All checkpoints. False if a field is not whole: such a trace cannot be taken apart.
  bool write();

 private:
  bool checkpoint(const CheckpointView& view);
  Write::Common common(const CheckpointView& view, Cursor& at);
  void fields(const CheckpointView& view, const Checkpoint::TypeInfo& row, Cursor& at);
  void field(const Checkpoint::TypeInfo& row, Format::Field field, Cursor& at);
  Write::Reference reference(const Checkpoint::TypeInfo& row, std::uint64_t reference);
  void values(Cursor& at, std::uint32_t count);
  void value(Cursor& at);

  const File& file_;
  Write::TraceWriter& writer_;
  EntityCopies entities_;
  std::map<std::uint64_t, Write::Reference> begins_;  // by offset in the file's DATA
  std::vector<std::uint64_t> left_;                   // values still to come, of each open array
};

// For the writer: what the file's header says, but for the addresses of what is written anew.
Write::Options rewriting_options(const File& file, Rewriting how);

// The bytes of the file that comes of it; nothing where Rewriter::write is false.
std::optional<std::string> rewritten(const File& file, Rewriting how);

}  // namespace CT::Test
