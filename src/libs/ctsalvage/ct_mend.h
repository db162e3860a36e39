// SPDX-License-Identifier: MIT
//
// DATA anew: the checkpoints that were selected, with references that lead to where things are now,
// and with what had to be invented between them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ctsalvage/ct_names.h"
#include "ctsalvage/ct_pairing.h"
#include "ctsalvage/ct_salvage_report.h"
#include "ctsalvage/ct_selection.h"

namespace CT::Salvage {

class Mender {
 public:
  // Borrows all. `origin`: where the new DATA is said to have lain.
  Mender(const unsigned char* file, Order order, std::uint64_t origin, Names& names, Report& report)
      : file_(file), order_(order), origin_(origin), names_(names), report_(report) {}

  // Once, after the names were invented.
  std::vector<unsigned char> run(const Selection& selection, Ends& ends);

 private:
  // Goes through everything in the order of places; writes it only if it is told to.
  void go(const Selection& selection, Ends& ends, bool writes);
  void put_lost_begins(std::int64_t before, bool writes);
  bool has_room(std::uint64_t size);
  void put(const Frame& frame, std::uint64_t offset, std::optional<std::uint64_t> begin);
  void close(const Frame& frame, std::uint64_t offset, bool writes);
  void mend(std::size_t at, const Frame& frame, const PayloadWalk& walk);
  void put_startup(const Selection& selection);
  void put_begin(const LostBegin& begin);
  void put_u32(std::uint32_t value);
  void put_u64(std::uint64_t value);
  void put_text(std::string_view text);
  void put_lost_field(Format::Field field, const Frame& frame, const unsigned char* begin);
  void put_lost_arguments(const Frame& frame, const unsigned char* begin);

  const unsigned char* file_;
  Order order_;
  std::uint64_t origin_;
  Names& names_;
  Report& report_;
  std::optional<OpenStack> open_;
  std::vector<LostBegin>* lost_ = nullptr;
  std::size_t next_lost_ = 0;
  std::vector<unsigned char> out_;
  std::optional<std::uint64_t> call_name_;     // the function of calls that are invented
  std::optional<std::uint64_t> include_name_;  // their path, of includes
};

}  // namespace CT::Salvage
