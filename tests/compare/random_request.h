// SPDX-License-Identifier: MIT
//
// RandomRequest: the DATA of a random trace, a request of nested calls, includes and writes with
// what happens in between. Every checkpoint is whole; a rough request loses ends, repeats them,
// gives them of the wrong kind or to nothing, and has checkpoints where none belong. Timestamps and
// memory walk about, and jump to their extremes.
#pragma once

#include <cstdint>
#include <vector>

#include "awkward.h"
#include "random_entities.h"
#include "random_values.h"

namespace CT::Test {

struct RequestStyle {
  bool rough = false;
  // Inline texts as short_inline_text.h describes them.
  bool short_inline_texts = false;
};

class RandomRequest {
 public:
  // Borrows both.
  RandomRequest(Awkward& random, RandomEntities& entities, RequestStyle style);

  // About so many checkpoints.
  void write(std::size_t count);

 private:
  enum class Kind { call, include, body };
  struct Open {
    Ref begin;
    Kind kind;
  };

  void step();
  void begin();
  void call(bool method);
  void end();
  void wrong_end();
  void end_of(Ref start, Kind kind);
  void leaf();
  void header();
  void misplaced();
  void startup();
  Fields inline_text();
  Fields unread_bytes();
  Ref add(CheckpointDraft draft);
  void move_clock();
  void move_memory();

  Awkward& random_;
  RandomEntities& entities_;
  RandomValues values_;
  RequestStyle style_;
  std::size_t flags_;  // 0 to 7: always these; else of each checkpoint's own
  std::vector<Open> open_;
  std::vector<Open> seen_;
  std::uint64_t seconds_ = 1'700'000'000;
  std::uint32_t nanoseconds_ = 0;
  std::uint64_t memory_ = 400'000;
};

}  // namespace CT::Test
