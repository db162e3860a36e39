// SPDX-License-Identifier: MIT
//
// What a summary is made of: all measures of one trace, each found once.
#pragma once

#include <vector>

#include "ctmeasure/ct_areas.h"
#include "ctmeasure/ct_exceptions.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_profile.h"
#include "ctmeasure/ct_queries.h"
#include "ctmeasure/ct_repeats.h"
#include "ctmeasure/ct_request_facts.h"
#include "ctmeasure/ct_response.h"
#include "tools/cttool/ct_call_line.h"

namespace CT::Tool {

struct SummaryFacts {
  // What a line about the request takes, or all.
  enum class Of { a_line, all };

  // Borrows: the trace.
  SummaryFacts(const Trace& read, Of wanted)
      : trace(read),
        measures(read),
        repeated(wanted == Of::all ? repeats(read, measures) : std::vector<Repeat>()),
        request(request_facts(read, measures)),
        response(read),
        thrown(exceptions(read, measures)),
        said(queries(read, measures)),
        lines(read, measures) {}

  [[nodiscard]] std::int64_t total_ns() const { return request.total_ns; }
  [[nodiscard]] bool is_empty() const { return measures.node_count() == 0; }

  const Trace& trace;
  Measures measures;
  // Found before anybody asks for the shape of the tree, so that its table and that need not have
  // room beside each other.
  std::vector<Repeat> repeated;
  RequestFacts request;
  Response response;
  std::vector<Exception> thrown;
  std::vector<Query> said;
  mutable NodeLines lines;  // only keeps working memory
};

}  // namespace CT::Tool
