// SPDX-License-Identifier: MIT
//
// How many values which rule masked, in which kind of place, and in which nodes; never a value.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "ctredact/ct_key_words.h"

namespace CT::Redact {

// Where something is masked.
enum class Place : std::uint8_t {
  argument,
  object,  // $this
  result,
  exception,
  request,  // its URL, host and method
  include,
  output,
  header,
  status,
  error,
  event,
  function_name,
  class_name,
  resource_type,
  path,  // of a file of the source
};
inline constexpr std::array<std::string_view, 15> place_names = {
    "argument", "object",        "result",     "exception",     "request",
    "include",  "output",        "header",     "status",        "error",
    "event",    "function name", "class name", "resource type", "path"};

class Tally {
 public:
  static constexpr std::size_t most_nodes = 8;
  static constexpr std::int32_t no_node = -1;

  struct Row {
    std::uint64_t count = 0;
    std::vector<std::int32_t> nodes;  // the first, rising, each once
  };
  using Rows = std::map<std::pair<RuleId, Place>, Row>;

  // Counts one mask. It is not sure of it until commit(); forget() drops what is not.
  void add(RuleId rule, Place place, std::int32_t node) { pending_.push_back({rule, place, node}); }
  void commit();
  void forget() { pending_.clear(); }

  // By rule, in the order of the rules, then by place.
  [[nodiscard]] const Rows& rows() const { return rows_; }
  [[nodiscard]] std::uint64_t total() const { return total_; }

 private:
  struct Mask {
    RuleId rule;
    Place place;
    std::int32_t node;
  };
  std::vector<Mask> pending_;
  Rows rows_;
  std::uint64_t total_ = 0;
};

}  // namespace CT::Redact
