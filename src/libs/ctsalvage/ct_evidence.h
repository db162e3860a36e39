// SPDX-License-Identifier: MIT
//
// What the checkpoints themselves tell of a trace: its byte order, and where its sections lay.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ctsalvage/ct_layout.h"

namespace CT::Salvage {

// What the first checkpoints say if the file is read in one order and nothing else is known of it.
class Evidence {
 public:
  Evidence(Bytes data, std::uint64_t from, Order order);

  [[nodiscard]] Order order() const { return looker_.order(); }
  [[nodiscard]] std::uint64_t checkpoints() const { return checkpoints_; }
  // Where the first of them begins, if there is one.
  [[nodiscard]] std::optional<std::uint64_t> first() const;

  // The writer's address of the offset 0 by the first calls that follow the first checkpoint
  // without a gap, and by all.
  [[nodiscard]] Votes first_votes() const;
  [[nodiscard]] Votes votes() const { return vote(looker_, chains_); }

  // Whether calls say that it is this one.
  [[nodiscard]] bool supports(std::uint64_t base) const;

  // How many references into ADD DATA they have.
  [[nodiscard]] std::uint64_t references() const { return references_.size(); }
  // Of these the share that lies in a range; 0 if there are none.
  [[nodiscard]] double share(const Range& range) const;
  // The lowest of them that are near to most; none if there are none.
  [[nodiscard]] std::optional<std::uint64_t> lowest_reference() const;
  // How many functions that are mentioned would be there if this were ADD DATA.
  [[nodiscard]] std::uint64_t functions_in(Bytes add_data, std::uint64_t origin) const;
  // The origin at which most functions are where they should be, beginning with `guess`.
  [[nodiscard]] std::uint64_t best_origin(Bytes add_data, std::uint64_t guess) const;

 private:
  Looker looker_;
  std::vector<Chain> chains_;
  std::uint64_t checkpoints_ = 0;
  std::vector<std::uint64_t> references_;  // into ADD DATA; sorted
  std::vector<std::uint64_t> functions_;   // different ones, sorted
};

}  // namespace CT::Salvage
