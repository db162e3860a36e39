// SPDX-License-Identifier: MIT
//
// TraceValues: the parts of a trace text's statements that more than one of them uses: references,
// values of the script, strings that can be cut, and lists of fields. It holds the labels, and
// appends texts to the trace as references to them are met. Borrows the scanner and the builder.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "text_scanner.h"
#include "trace_builder.h"

namespace CT::Test {

class TraceValues {
 public:
  TraceValues(TextScanner& scanner, TraceBuilder& trace) : in_(scanner), trace_(trace) {}

  void define(const std::string& label, Ref ref);

  Ref ref();                         // "text", none, a number, or label [+ number]
  Fields value();                    // null, 1, "a", [1, "k" => 2, ...], obj(C, 7), ...
  Fields cut_string();               // "abc" or cut("abc", 10)
  Fields fields();                   // u32(1) ref("x") hex(00 ff) ... up to the end of the line
  std::vector<Fields> value_list();  // [1, 2]

 private:
  Fields number();
  Fields elements(bool own_count);
  Fields named_value(const std::string& name);
  Fields field(const std::string& name);

  TextScanner& in_;
  TraceBuilder& trace_;
  std::map<std::string, Ref> labels_;
};

}  // namespace CT::Test
