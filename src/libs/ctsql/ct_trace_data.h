// SPDX-License-Identifier: MIT
//
// What all tables over one trace share. The parts that not every query needs are made when they are
// first asked for, and kept. For one connection at a time: nothing here is locked.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_exceptions.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_profile.h"
#include "ctmeasure/ct_repeats.h"
#include "ctmeasure/ct_request_facts.h"
#include "ctmeasure/ct_response.h"
#include "ctsql/ct_call_index.h"
#include "ctsql/ct_function_names.h"

namespace CT::Sql {

class TraceData {
 public:
  // Borrows trace and measures. `path`: what the table `request` says.
  TraceData(const Trace& trace, const Measures& measures, std::string path)
      : trace_(trace), measures_(measures), path_(std::move(path)) {}
  TraceData(const TraceData&) = delete;
  TraceData& operator=(const TraceData&) = delete;

  [[nodiscard]] const Trace& trace() const { return trace_; }
  [[nodiscard]] const Measures& measures() const { return measures_; }
  [[nodiscard]] const std::string& path() const { return path_; }

  const FunctionNames& names();
  const CallIndex& calls();
  const std::vector<ProfileRow>& profile();
  const RequestFacts& facts();
  // How many calls and includes an exception ended.
  std::int32_t thrown();
  const Response& response();
  const std::vector<Repeat>& repeats();
  const std::vector<Exception>& exceptions();
  // The nodes of a type other than calls, in rising order.
  std::span<const NodeId> nodes_of(Node::Type type);

  // How many rows cursors have stood on so far, for tests of how queries are answered.
  void count_row() { ++rows_touched_; }
  [[nodiscard]] std::uint64_t rows_touched() const { return rows_touched_; }

 private:
  using Lists = std::array<std::vector<NodeId>, Node::node_infos.size()>;

  const Trace& trace_;
  const Measures& measures_;
  std::string path_;
  std::unique_ptr<const FunctionNames> names_;
  std::optional<CallIndex> calls_;
  std::optional<std::vector<ProfileRow>> profile_;
  std::optional<RequestFacts> facts_;
  std::optional<std::int32_t> thrown_;
  std::optional<Response> response_;
  std::optional<std::vector<Repeat>> repeats_;
  std::optional<std::vector<Exception>> exceptions_;
  std::unique_ptr<const Lists> lists_;
  std::uint64_t rows_touched_ = 0;
};

}  // namespace CT::Sql
