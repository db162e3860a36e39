// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_evidence.h"

#include <algorithm>
#include <memory>

#include "ctsalvage/ct_names.h"

namespace CT::Salvage {

namespace {

constexpr std::uint64_t enough_checkpoints = 4096;
constexpr std::uint64_t largest_section = std::uint64_t{1} << 32;

void make_unique(std::vector<std::uint64_t>& values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
}

}  // namespace

Evidence::Evidence(Bytes data, std::uint64_t from, Order order)
    : looker_(data.data(), data.size(), order, std::nullopt, std::nullopt),
      chains_(find_chains(looker_, from, enough_checkpoints)) {
  for (const Chain& chain : chains_) {
    each_checkpoint(data.data(), order, chain.begin, chain.end,
                    [&](const Frame& frame, std::uint64_t) {
                      ++checkpoints_;
                      constexpr std::uint64_t few_values = 64;
                      PayloadWalk walk(frame, order, few_values);
                      walk.run([&](Refers kind, const unsigned char* place) {
                        const std::uint64_t reference = order.u64(place);
                        if (reference == 0 || kind == Refers::begin) return;
                        references_.push_back(reference);
                        if (kind == Refers::function) functions_.push_back(reference);
                      });
                      return true;
                    });
  }
  std::sort(references_.begin(), references_.end());
  make_unique(functions_);
}

std::optional<std::uint64_t> Evidence::first() const {
  if (chains_.empty()) return std::nullopt;
  return chains_.front().begin;
}

Votes Evidence::first_votes() const {
  if (chains_.empty()) return {};
  constexpr std::uint64_t enough = 64;
  return vote(looker_, {chains_.front()}, enough);
}

bool Evidence::supports(std::uint64_t base) const {
  return count_votes(looker_, chains_, base).for_it >= 2;
}

double Evidence::share(const Range& range) const {
  if (references_.empty()) return 0;
  const auto inside = std::count_if(references_.begin(), references_.end(),
                                    [&](std::uint64_t each) { return range.has(each); });
  return static_cast<double>(inside) / static_cast<double>(references_.size());
}

std::optional<std::uint64_t> Evidence::lowest_reference() const {
  if (references_.empty()) return std::nullopt;
  const std::uint64_t middle = references_[references_.size() / 2];
  return *std::find_if(references_.begin(), references_.end(),
                       [&](std::uint64_t each) { return middle - each < largest_section; });
}

std::uint64_t Evidence::functions_in(Bytes add_data, std::uint64_t origin) const {
  const auto names =
      std::make_unique<Names>(Section(add_data.data(), add_data.size(), origin), order());
  constexpr std::size_t enough = 256;
  std::uint64_t found = 0;
  const std::size_t step = functions_.size() / enough + 1;
  for (std::size_t each = 0; each < functions_.size(); each += step) {
    if (names->check(Refers::function, functions_[each])) ++found;
  }
  return found;
}

// The first thing in ADD DATA is mostly mentioned. If it is not, or is lost, the first function is
// one of the first descriptors.
std::uint64_t Evidence::best_origin(Bytes add_data, std::uint64_t guess) const {
  if (functions_.empty() || add_data.empty()) return guess;
  constexpr std::uint64_t tries = 1024;
  std::uint64_t best = guess;
  std::uint64_t most = functions_in(add_data, guess);
  if (2 * most > std::min<std::uint64_t>(functions_.size(), 128)) return guess;
  for (std::uint64_t at = 0; at < tries && at + Format::Function::size <= add_data.size(); ++at) {
    const std::uint64_t origin = functions_.front() - at;
    const std::uint64_t name = order().u64(add_data.data() + at + Format::Function::name);
    if (name - origin >= add_data.size()) continue;
    const std::uint64_t found = functions_in(add_data, origin);
    if (found <= most) continue;
    most = found;
    best = origin;
  }
  return best;
}

}  // namespace CT::Salvage
