// SPDX-License-Identifier: MIT
//
// Whether a checkpoint may begin at some byte. The writer leaves many signs: a type that there is,
// fields that fill the payload to its last byte, nanoseconds below a second, references that lead
// into their sections. What is looked at is bounded, so that a look costs the same wherever it is
// taken, in garbage that was made to look like checkpoints too.
#pragma once

#include <cstdint>
#include <optional>

#include "ctsalvage/ct_payload_walk.h"

namespace CT::Salvage {

// Where the writer had a section, as far as that is known: references into it differ from the
// origin by less than the reach.
struct Range {
  std::uint64_t origin = 0;
  std::uint64_t reach = 0;
  [[nodiscard]] bool has(std::uint64_t reference) const { return reference - origin < reach; }
};

class Looker {
 public:
  // `end`: bytes that there are. Ranges are not asked about where they are not known.
  Looker(const unsigned char* bytes, std::uint64_t end, Order order, std::optional<Range> data,
         std::optional<Range> add_data)
      : bytes_(bytes), end_(end), order_(order), data_(data), add_data_(add_data) {}

  enum class Verdict : std::uint8_t {
    none,     // no frame fits there
    frame,    // a frame, and something is wrong inside
    open,     // too many values to look at all of them
    perfect,  // all of it is as a writer leaves it
  };
  struct Look {
    Verdict verdict = Verdict::none;
    bool has_evidence = false;  // a reference that leads where it should
    std::uint64_t next = 0;     // behind it
  };

  [[nodiscard]] Look at(std::uint64_t offset) const;
  // Whether a checkpoint begins there, by itself or by those that follow it.
  [[nodiscard]] bool begins(std::uint64_t offset) const;
  // The same for one that follows another: its size may be right where its fields are not.
  [[nodiscard]] bool follows(std::uint64_t offset, const Look& look) const;

  [[nodiscard]] Frame frame(std::uint64_t offset) const {
    return frame_at(bytes_ + offset, order_);
  }
  [[nodiscard]] const unsigned char* bytes() const { return bytes_; }
  [[nodiscard]] Order order() const { return order_; }
  [[nodiscard]] std::uint64_t end() const { return end_; }

 private:
  [[nodiscard]] bool has_begin(std::uint64_t from, std::uint64_t to) const;
  [[nodiscard]] bool is_end_or_likely(std::uint64_t offset) const;

  const unsigned char* bytes_;
  std::uint64_t end_;
  Order order_;
  std::optional<Range> data_;
  std::optional<Range> add_data_;
};

}  // namespace CT::Salvage
