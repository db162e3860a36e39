// SPDX-License-Identifier: MIT
//
// The checkpoint dump: every record as a block of indented lines.
#pragma once

#include "codetrace/model/ct_checkpoint.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_rendered.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"

namespace CT {

// Writes blocks; keeps its working memory from one to the next.
class RecordDumper {
 public:
  void write(const Checkpoint::Base& record, Writer& out);

 private:
  struct Lines;

  void write_common(const Checkpoint::Base& record, Writer& out);

  Checkpoint::ValueTape tape_;
  Checkpoint::ValueTextWriter texts_;
  Checkpoint::ValueJsonWriter json_;
  RenderedTexts filenames_;  // by place
  RenderedTexts functions_;  // by function: its lines
};

}  // namespace CT
