// SPDX-License-Identifier: MIT
//
// slowest_calls TRACE: the ten calls that took the most time, with their arguments. A call's time
// includes what it called.
#include <algorithm>
#include <functional>
#include <vector>

#include "trace.h"

struct Call {
  double ms;
  CT::NodeId node;
};

std::string arguments_of(const CT::Checkpoint::FunctionCall& call) {
  std::string text;
  for (const CT::Checkpoint::KVal& argument : call.args()) {
    if (!text.empty()) text += ", ";
    text += argument.to_escaped_string(true).toStdString();
  }
  return text;
}

int main(int argc, char** argv) {
  if (argc != 2) return usage("slowest_calls TRACE");
  const CT::Trace trace = open_trace(argv[1]);

  std::vector<Call> calls;
  for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
    const CT::Node::Base node = trace.node(id);
    if (node.begin_as<CT::Checkpoint::FunctionCall>()) calls.push_back({node.ms_delta(), id});
  }
  std::ranges::stable_sort(calls, std::greater(), &Call::ms);
  if (calls.size() > 10) calls.resize(10);

  for (const auto& [ms, id] : calls) {
    const auto call = trace.node(id).begin_as<CT::Checkpoint::FunctionCall>();
    fmt::print("{:10.3f} ms  {}({})\n", ms, name_of(*call->function()), arguments_of(*call));
  }
  return 0;
}
