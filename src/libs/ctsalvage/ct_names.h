// SPDX-License-Identifier: MIT
//
// What references into ADD DATA still find there, and names for what they do not find. A section
// that was cut off, overwritten or lost leaves references to nothing: each of them gets a text, a
// class or a function called "unknown#1", "unknown#2" and so on, in the order of their addresses,
// so that what was told apart still is. All of that is appended; the bytes that are there stay as
// they are, and whoever copies checkpoints asks where a reference leads now.
//
// Work and memory grow with the number of different references only.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ctsalvage/ct_payload_walk.h"

namespace CT::Salvage {

class Names {
 public:
  // Borrows: the section's bytes.
  Names(const Section& section, Order order) : section_(section), order_(order) {}

  // Whether what a reference points at is there and is no hole; what is not is remembered, with
  // what it refers to in turn. A text or class that is referred to by 0 is absent, and good.
  bool check(Refers kind, std::uint64_t reference);

  // Makes the names of all that was not good. Once, after the last check().
  void invent();

  // Where a reference of the trace leads now: mostly where it did.
  [[nodiscard]] std::uint64_t now(Refers kind, std::uint64_t reference) const;

  // Appends something to refer to.
  std::uint64_t add_text(std::string_view text);
  std::uint64_t add_function(std::string_view name);

  [[nodiscard]] const std::vector<unsigned char>& appended() const { return appended_; }
  // How many names were invented, by what has them.
  [[nodiscard]] std::uint64_t invented(Refers kind) const {
    return counts_[static_cast<std::size_t>(kind)];
  }

 private:
  struct Lost {
    std::uint64_t reference;
    Refers kind;
    std::uint64_t now;
    bool is_before(const Lost& other) const {
      return reference != other.reference ? reference < other.reference : kind < other.kind;
    }
  };
  struct Descriptor {
    bool is_there = false;
    bool is_user = false;
    std::uint64_t name = 0;
    std::uint64_t class_entry = 0;
    std::uint64_t filename = 0;
    std::uint32_t flags = 0;
    std::uint32_t line = 0;
  };

  bool look(Refers kind, std::uint64_t reference);
  bool look_at_text(std::uint64_t reference) const;
  bool look_at_descriptor(const Descriptor& found);
  [[nodiscard]] Descriptor describe(Refers kind, std::uint64_t reference) const;
  void remember(Refers kind, std::uint64_t reference);
  void unite();
  std::string next_name(Refers kind);
  void replace(Lost& lost);
  std::uint64_t add(Refers kind, const Descriptor& wanted);
  std::uint64_t address() const { return section_.origin() + section_.size() + appended_.size(); }
  void put(std::uint64_t value);
  void put(std::uint32_t value);
  void align();
  void end_last_text();

  Section section_;
  Order order_;
  // References that were good the last time; a slot each.
  struct Known {
    std::uint64_t reference = 0;
    Refers kind = Refers::begin;
  };
  std::array<Known, 4096> known_ = {};
  std::vector<Lost> lost_;
  std::size_t united_ = 0;  // of lost_, so many are sorted and different
  std::vector<unsigned char> appended_;
  std::array<std::uint64_t, 4> counts_ = {};
  std::uint64_t names_ = 0;
};

}  // namespace CT::Salvage
