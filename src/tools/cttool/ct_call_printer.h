// SPDX-License-Identifier: MIT
//
// Calls one after the other in one of the forms of `cttool calls`.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "codetrace/render/ct_json.h"
#include "ctmeasure/ct_exceptions.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_node_json.h"
#include "tools/cttool/ct_printer.h"

namespace CT::Tool {

enum class CallForm : std::uint8_t { text, json, jsonl, csv };

// How they are printed.
struct CallFormat {
  CallForm form = CallForm::text;
  bool path = false;      // with the way down to each
  bool messages = false;  // with what exceptions say, in text; the beginning of it
};

class CallPrinter {
 public:
  // Borrows trace, measures and printer. `file`: the trace's name for documents.
  CallPrinter(const CallFormat& format, std::string file, const Trace& trace,
              const Measures& measures, Printer& printer);

  // Before the first, and behind the last; of JSON also if there is none.
  void begin();
  void print(NodeId id);
  void end();

 private:
  void print_text(NodeId id);
  void print_json(NodeId id);
  void print_csv(NodeId id);
  void find_messages();

  CallFormat format_;
  std::string file_;
  const Trace& trace_;
  const Measures& measures_;
  Writer& out_;
  std::size_t width_;
  NodeLines lines_;
  NodeJson nodes_;
  JsonWriter json_;
  std::vector<std::string> messages_;         // of the exceptions
  std::map<NodeId, std::size_t> message_of_;  // of the calls that they ended
};

}  // namespace CT::Tool
