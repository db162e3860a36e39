// SPDX-License-Identifier: MIT
//
// Which calls the user asks for, by what they were given, gave back and took.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_value_text.h"
#include "ctmeasure/ct_measures.h"
#include "tools/common/ct_expression.h"
#include "tools/common/ct_name_pattern.h"
#include "tools/cttool/ct_names.h"

namespace CT::Tool {

// A piece of text that must be there, or /a regular expression/. Capitals matter.
class TextCondition {
 public:
  explicit TextCondition(const std::string& text);
  // Why it is none; empty for a good one.
  [[nodiscard]] std::string error() const { return expression_ ? expression_->error() : ""; }
  [[nodiscard]] bool holds(std::string_view text) const;

 private:
  std::string piece_;
  std::optional<Expression> expression_;
};

// As the command line has them.
struct CallConditions {
  std::vector<std::string> patterns = {};   // one of them; none: any
  std::vector<std::string> arguments = {};  // all of them: TEXT or N=TEXT
  std::string returned = {};                // empty: anything
  bool threw = false;
  std::string thrown_class = {};  // empty: any
  bool open = false;              // never ended
  std::string least = {};         // time; empty: any
  std::string file = {};          // glob of the calling file; empty: any
};

class CallFilter {
 public:
  // Borrows both.
  CallFilter(const Trace& trace, const Measures& measures) : trace_(trace), measures_(measures) {}

  // False, after it was said why, if one of the conditions is none.
  [[nodiscard]] bool set(const CallConditions& conditions);

  [[nodiscard]] bool takes(NodeId id);

  // If a class of exceptions was asked for that nothing threw: says so, and what was thrown.
  void say_other_classes() const;

 private:
  struct Argument {
    std::uint32_t number;  // from 1; 0 for any
    TextCondition text;
  };

  [[nodiscard]] bool add_argument(const std::string& text);
  [[nodiscard]] bool has_arguments(const Checkpoint::FunctionCall& call);
  [[nodiscard]] bool ends_so(const Node::Base& node);
  [[nodiscard]] bool is_thrown_class(std::string_view name) const;
  [[nodiscard]] std::string_view text_of(Checkpoint::ValueCursor& values);

  const Trace& trace_;
  const Measures& measures_;
  NamedFunctions named_;
  std::vector<Argument> arguments_;
  std::optional<TextCondition> returned_;
  bool threw_ = false;
  std::string wanted_class_;
  NamePattern thrown_class_;
  bool open_ = false;
  std::int64_t least_ns_ = 0;
  std::optional<NamePattern> file_;
  Checkpoint::ValueTextWriter writer_;
  MemoryWriter text_;
};

}  // namespace CT::Tool
