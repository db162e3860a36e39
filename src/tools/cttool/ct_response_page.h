// SPDX-License-Identifier: MIT
//
// A response as text, and who made which part of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_response.h"
#include "tools/cttool/ct_body_search.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_printer.h"

namespace CT::Tool {

// Where a text stands in a response: header operations, as places in Response::steps(), and the
// body.
struct Sighting {
  std::string text;  // not empty
  std::vector<std::size_t> headers;
  BodyMatches body;

  [[nodiscard]] bool is_none() const { return headers.empty() && body.count == 0; }
};

// At most `limit` places of the body are kept; 0 for all.
Sighting look_for(const std::string& text, const Response& response, std::size_t limit);

class ResponsePage {
 public:
  // Borrows all.
  ResponsePage(const Trace& trace, const Measures& measures, const Response& response,
               Printer& printer)
      : trace_(trace),
        response_(response),
        printer_(printer),
        out_(printer.out()),
        lines_(trace, measures) {}

  // Status, headers, body, as the client saw them.
  void write_text();
  // All that the response is made of, with who made it.
  void write_makers(bool each);
  // Where a text is and the way down to who wrote it.
  void write_sighting(const Sighting& sighting);

 private:
  void write_head();
  void write_notes(bool ends_line);
  void write_way(NodeId id);
  void write_body_matches(const Sighting& sighting);

  [[nodiscard]] std::string status_text() const;
  [[nodiscard]] std::string status_and_maker();
  // The call that made a node, with the one around it if PHP itself did.
  [[nodiscard]] std::string maker(NodeId id);
  // From where; that of the call if the node has none.
  [[nodiscard]] std::string place(NodeId id) const;
  [[nodiscard]] std::string fitted_place(NodeId id) const;
  [[nodiscard]] std::string fitted_maker(NodeId id);

  const Trace& trace_;
  const Response& response_;
  Printer& printer_;
  Writer& out_;
  NodeLines lines_;
};

// What became of a header operation, in a word: sent, replaced, deleted, delete, too_late ...
std::string_view word_of(const HeaderStep& step);
// What an operation is called: replace, add, delete, delete_all, set_status, unknown.
std::string_view operation_of(const HeaderStep& step);

}  // namespace CT::Tool
