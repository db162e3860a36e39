// SPDX-License-Identifier: MIT
//
// A response as a document of JSON, with who made which part of it.
#pragma once

#include <string>

#include "codetrace/render/ct_json.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_response.h"
#include "tools/cttool/ct_body_search.h"
#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {

struct Sighting;

class ResponseJson {
 public:
  enum class Body { whole, left_out };

  // Borrows all. With the body as text, and in base64 where that is not the body exactly; or
  // without both.
  ResponseJson(const Trace& trace, const Measures& measures, const Response& response, Body body,
               JsonWriter::Form form, Writer& out)
      : trace_(trace),
        response_(response),
        lines_(trace, measures),
        body_(body),
        json_(out, form) {}

  // `file`: the trace as the user named it. With where a text is, unless that is null.
  void write(const std::string& file, const Sighting* sighting);

 private:
  void write_step(const HeaderStep& step);
  void write_maker(NodeId id);
  void write_headers();
  void write_body();
  void write_found(const Sighting& sighting);
  void put_id(NodeId id);
  void put_size(std::string_view key, std::uint64_t size);

  const Trace& trace_;
  const Response& response_;
  NodeLines lines_;
  Body body_;
  JsonWriter json_;
};

}  // namespace CT::Tool
