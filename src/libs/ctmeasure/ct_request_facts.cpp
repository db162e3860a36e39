// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_request_facts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "codetrace/bytes/ct_plain_array.h"

namespace CT {

namespace {

void look_at_memory(const Measure& measure, NodeId id, RequestFacts& facts) {
  if (!measure.has(Measure::has_memory)) return;
  const auto look_at = [&](std::uint64_t memory) {
    if (facts.memory_peak && *facts.memory_peak >= memory) return;
    facts.memory_peak = memory;
    facts.peak_node = id;
  };
  look_at(measure.memory);
  if (measure.has(Measure::has_delta)) {
    look_at(measure.memory + static_cast<std::uint64_t>(measure.memory_delta));
  }
}

void read_begin(const Trace& trace, RequestFacts& facts) {
  if (trace.node_count() == 0) return;
  const Node::Base request = trace.node(0);
  const auto begin = request.begin_as<Checkpoint::Startup>();
  if (!begin) return;
  facts.url = begin->url();
  facts.uri = begin->orig_uri();
  facts.host = begin->host();
  facts.method = begin->method();
  if (begin->has_timestamp()) facts.started = begin->timestamp();
  if (begin->has_memory()) facts.memory = begin->memory();
  facts.is_complete = request.end() != nullptr && trace.summary().is_clean();
}

// Of a node, and without the shape of the whole tree.
std::uint32_t greatest_depth(const Trace& trace) {
  PlainArray<NodeId> around;
  std::size_t depth = 0;
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    while (!around.empty() && around.back() != trace.parent(id)) around.pop_back();
    depth = std::max(depth, around.size());
    around.push_back(id);
  }
  return static_cast<std::uint32_t>(depth);
}

}  // namespace

RequestFacts request_facts(const Trace& trace, const Measures& measures) {
  RequestFacts facts;
  facts.request_id = trace.file().header().request_id;
  facts.php_api = trace.file().header().php_api_version;
  facts.open = measures.counts().open;
  read_begin(trace, facts);
  if (measures.node_count() != 0) facts.total_ns = measures[0].total_ns;
  facts.depth = greatest_depth(trace);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const Measure& measure = measures[id];
    look_at_memory(measure, id, facts);
    if (measure.function >= 0) {
      ++facts.calls;
    } else if (trace.type(id) == Node::Type::SCRIPT_ERROR) {
      ++facts.errors;
    }
  }
  return facts;
}

std::int64_t damaged_places(const Summary& found) {
  const std::uint64_t places =
      found.skipped + found.damaged + found.rejected + found.repaired + (found.is_broken ? 1 : 0);
  return static_cast<std::int64_t>(places);
}

std::string iso_time(const KTime::Timestamp& time) {
  constexpr std::uint32_t second = 1'000'000'000;
  constexpr std::int64_t first_second = -62'167'219'200;  // the year 0
  constexpr std::int64_t last_second = 253'402'300'799;   // 9999-12-31T23:59:59Z
  // A damaged file may have up to four whole seconds in the nanoseconds.
  const std::int64_t carried = time.nanoseconds / second;
  if (time.seconds < first_second || time.seconds > last_second - carried) return {};
  const std::chrono::sys_seconds point{std::chrono::seconds(time.seconds + carried)};
  const auto day = std::chrono::floor<std::chrono::days>(point);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(point - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%09uZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()), time.nanoseconds % second);
  return text.data();
}

}  // namespace CT
