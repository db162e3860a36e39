// SPDX-License-Identifier: MIT
#include "ctsql/ct_trace_data.h"

#include "ctmeasure/ct_node_words.h"

namespace CT::Sql {

namespace {

bool is_call(Node::Type type) {
  return type == Node::Type::FUNCTION_CALL || type == Node::Type::METHOD_CALL;
}

std::int32_t count_thrown(const Trace& trace) {
  std::int32_t thrown = 0;
  NodeReader reader(trace.storage());
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    if (outcome_of(reader.read(id)) == "threw") ++thrown;
  }
  return thrown;
}

}  // namespace

const FunctionNames& TraceData::names() {
  if (!names_) names_ = std::make_unique<const FunctionNames>(trace_);
  return *names_;
}

const CallIndex& TraceData::calls() {
  if (!calls_) calls_.emplace(measures_, trace_.functions().size());
  return *calls_;
}

const std::vector<ProfileRow>& TraceData::profile() {
  if (!profile_) profile_ = profile_of_functions(trace_, measures_);
  return *profile_;
}

const RequestFacts& TraceData::facts() {
  if (!facts_) facts_ = request_facts(trace_, measures_);
  return *facts_;
}

std::int32_t TraceData::thrown() {
  if (!thrown_) thrown_ = count_thrown(trace_);
  return *thrown_;
}

const Response& TraceData::response() {
  if (!response_) response_.emplace(trace_);
  return *response_;
}

const std::vector<Repeat>& TraceData::repeats() {
  if (!repeats_) repeats_ = CT::repeats(trace_, measures_);
  return *repeats_;
}

const std::vector<Exception>& TraceData::exceptions() {
  if (!exceptions_) exceptions_ = CT::exceptions(trace_, measures_);
  return *exceptions_;
}

std::span<const NodeId> TraceData::nodes_of(Node::Type type) {
  if (!lists_) {
    auto lists = std::make_unique<Lists>();
    for (NodeId id = 0; id != trace_.node_count(); ++id) {
      if (measures_[id].function >= 0) continue;
      const Node::Type found = trace_.type(id);
      if (!is_call(found)) (*lists)[static_cast<std::size_t>(found)].push_back(id);
    }
    lists_ = std::move(lists);
  }
  return (*lists_)[static_cast<std::size_t>(type)];
}

}  // namespace CT::Sql
