// SPDX-License-Identifier: MIT
//
// Begins and ends, paired as the reader pairs them, and everything about their order that is not as
// it should be. It counts what the reader counts, and keeps twelve bytes for each begin.
#pragma once

#include <cstdint>

#include "codetrace/bytes/ct_plain_array.h"
#include "ctcheck/ct_bit_set.h"
#include "ctcheck/ct_record_check.h"

namespace CT::Check {

class Pairing {
 public:
  // Borrows all; `reader` gets what the reader rejects and repairs.
  Pairing(const FileLayout& layout, DefectList& defects, Summary& reader)
      : layout_(layout), defects_(defects), reader_(reader), frames_(layout.data.size()) {}

  // Notes that a checkpoint begins there, whatever it is.
  void see(std::uint32_t offset) { frames_.add(offset); }
  // Takes a record that is valid. In the order of the file.
  void add(std::uint32_t offset, const Verdict& record);
  // Reports what only the end of DATA tells.
  void finish();

 private:
  using Index = std::int32_t;
  static constexpr Index none = -1;
  // In place of the offset of an end.
  static constexpr std::uint32_t is_open = 0xFFFFFFFF;
  static constexpr std::uint32_t is_left = 0xFFFFFFFE;  // without an end; something around it ended

  struct Begin {
    std::uint32_t begin;  // offsets in DATA
    std::uint32_t end;
    Index parent;
  };
  // Why nothing is taken any more.
  struct Corruption {
    Code code;
    Spot spot;
    Words words;
    std::uint64_t left_out = 0;
  };

  void startup(const Spot& spot);
  void shutdown(const Spot& spot);
  void open(const Spot& spot);
  void close(const Spot& spot, std::uint64_t start);
  void close_inner(Index index, const Spot& spot);
  void corrupt(Index index, const Spot& spot);
  void leave(Index index);
  void reject(const Spot& spot);
  void report_no_begin(const Spot& spot, std::uint64_t start);
  [[nodiscard]] std::string why_no_begin(const Spot& spot, std::uint64_t start) const;
  [[nodiscard]] Index find(std::uint64_t offset) const;
  [[nodiscard]] Checkpoint::Type type_at(std::uint64_t offset) const;
  [[nodiscard]] std::string name_at(std::uint64_t offset) const;
  [[nodiscard]] bool has_kind(Checkpoint::Type end, Checkpoint::Type begin) const;
  Begin& at(Index index) { return begins_[static_cast<std::size_t>(index)]; }

  const FileLayout& layout_;
  DefectList& defects_;
  Summary& reader_;
  BitSet frames_;
  PlainArray<Begin> begins_;
  Index top_ = none;        // the innermost one that is open
  bool has_ended_ = false;  // by a SHUTDOWN
  std::uint64_t records_ = 0;
  std::optional<Corruption> corruption_;
};

}  // namespace CT::Check
