// SPDX-License-Identifier: MIT
//
// Names of functions and files as callgrind's format compresses them: "(7) name" where a name comes
// first, "(7)" from then on. A function is known there by its name and its file, so where a file
// has several of one name, as closures are, the line is added: "{closure}:12".
//
// Viewers give up on functions that call each other in a cycle, and show it as one lump. There are
// no cycles here: the second call of a function inside of itself is a function "name'2", and so on,
// as callgrind itself separates recursions when it is asked to. So "name" is the outermost calls,
// and what is inside of it is the total of cttool top. Where functions still call each other, at
// different times, every way back around the cycle leads to functions "name'1.2", and so on; then
// the total is the sum of "name", "name'1.2" ...
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "ctexport/ct_frames.h"

namespace CT::Export {

class CallgrindNames {
 public:
  using Id = std::uint32_t;
  // The deepest recursion, and the most turns of a cycle, that are told apart.
  static constexpr std::int32_t deepest = 1000;

  // Borrows: the frames of this trace.
  CallgrindNames(const Trace& trace, const Frames& frames);

  // Of several frames that the format could not tell apart the first.
  [[nodiscard]] std::int32_t unit_of(std::int32_t frame);
  // A number for the calls of a unit that are inside of `level` - 1 others of it, from 0 in the
  // order in which they are first asked for.
  [[nodiscard]] Id entry(std::int32_t unit, std::int32_t level);
  // The function for such calls in this turn of a cycle, from 1.
  [[nodiscard]] Id function(Id entry, std::int32_t turn);

  // What stands behind "fn=", "cfn=", "fl=" and "cfi=" for a function.
  void put_function(Id function, Writer& out);
  void put_file(Id function, Writer& out);
  // The line where it is defined; 0 if that is not known.
  [[nodiscard]] std::uint32_t line(Id function) const {
    return Frames::line(frames_[unit_of_function(function)]);
  }

 private:
  struct Entry {
    std::int32_t unit;
    std::int32_t level;
  };
  struct Function {
    Id entry;
    std::int32_t turn;
    bool is_named;  // its name was written
  };
  struct Unit {
    std::int32_t frame = -1;  // the unit that a frame belongs to; -1 if nobody asked
    Id file = 0;
    bool has_file = false;
  };

  [[nodiscard]] std::int32_t unit_of_function(Id function) const {
    return entries_[functions_[function].entry].unit;
  }
  [[nodiscard]] bool has_namesakes(const Frame& frame) const;
  [[nodiscard]] std::string key_of(const Frame& frame) const;
  [[nodiscard]] Checkpoint::String file_of(const Frame& frame) const;
  [[nodiscard]] Id find_file(const Checkpoint::String& file, bool& is_new);

  const Frames& frames_;
  std::unordered_map<std::string, std::int32_t> namesakes_;  // how many functions have a name
  std::vector<Unit> units_;                                  // by frame
  std::unordered_map<std::string, std::int32_t> by_name_;
  std::vector<Entry> entries_;
  std::unordered_map<std::uint64_t, Id> by_level_;
  std::vector<Function> functions_;
  std::unordered_map<std::uint64_t, Id> by_turn_;
  std::unordered_map<std::string, Id> files_;
  std::unordered_map<const char*, Id> long_files_;  // by place
};

}  // namespace CT::Export
