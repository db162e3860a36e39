// SPDX-License-Identifier: MIT
//
// What rules say of a text by itself: shapes, and values that have a telling name before them.
#pragma once

#include <string_view>
#include <vector>

#include "ctredact/ct_named_values.h"
#include "ctredact/ct_rules.h"

namespace CT::Redact {

// A secret in a text.
struct FoundSecret {
  Part part;
  RuleId rule;
  bool spreads;  // it is a secret wherever else it stands; else only here
};

class TextRules {
 public:
  // Borrows: the rules.
  explicit TextRules(const Rules& rules) : rules_(rules) { make_triggers(); }

  // Appends what a text has, in no order; they may overlap. Linear in its size.
  void find(std::string_view text, std::vector<FoundSecret>& out) const;
  // The same for one header line: what its rule says comes first.
  void find_in_header(std::string_view line, std::vector<FoundSecret>& out) const;
  // The parts of a value that is secret as a whole which are secrets by themselves: what is behind
  // the scheme in "Bearer ...", the values of cookies, the password of "user:password".
  void find_parts(std::string_view value, RuleId rule, std::vector<FoundSecret>& out) const;

 private:
  class Scan;

  void make_triggers();
  void add_header(std::string_view text, const Part& value, const HeaderRule& rule,
                  std::vector<FoundSecret>& out) const;

  const Rules& rules_;
  bool triggers_[256] = {};  // bytes at which something is to be looked at
};

}  // namespace CT::Redact
