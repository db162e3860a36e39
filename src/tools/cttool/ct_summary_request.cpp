// SPDX-License-Identifier: MIT
//
// What the request was.
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_summary_section.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

std::string asked_for(const RequestFacts& request) {
  std::string text = shown_text(request.method.view());
  const std::string url = shown_text(request.url.view());
  if (!text.empty() && !url.empty()) text += " ";
  text += url.empty() ? shown_text(request.uri.view()) : url;
  if (text.empty()) text = "a request that says nothing of itself";
  const std::string host = shown_text(request.host.view());
  if (!host.empty() && url.find(host) == std::string::npos) text += "  (host " + host + ")";
  return text;
}

std::string answered(const SummaryFacts& facts) {
  const Response& response = facts.response;
  if (response.is_empty()) return "nothing was sent";
  std::string text;
  if (!response.status_line().is_empty()) {
    text = shown_text(response.status_line().view());
  } else {
    const std::int32_t status = response.status().value_or(0);
    text = status != 0 ? "status " + std::to_string(status) : "status unknown";
  }
  text += ", " + as_bytes(static_cast<std::int64_t>(response.bytes_out())) + " of output in ";
  text += as_count(static_cast<std::int64_t>(response.writes().size()));
  text += response.writes().size() == 1 ? " write" : " writes";
  return text;
}

std::string wholeness(const SummaryFacts& facts) {
  const std::int64_t places = damaged_places(facts.trace.summary());
  std::string text = facts.request.open == 0
                         ? "complete"
                         : "NOT COMPLETE: " + as_count(facts.request.open) + " without end";
  if (facts.is_empty()) text = "EMPTY: no node is in it";
  if (places != 0) {
    text += ", DAMAGED: " + as_count(places) + (places == 1 ? " place" : " places") +
            " (-v lists them)";
  }
  if (has_cuts(facts)) text += ", but some texts in it are cut (see the end)";
  return text;
}

}  // namespace

SectionText request_text(const SummaryFacts& facts, const PageSize& /*page*/) {
  const RequestFacts& request = facts.request;
  SectionText text;
  text.lines.push_back(asked_for(request));
  text.lines.push_back(answered(facts));
  std::string took = as_ms(request.total_ns);
  took += " ms, ";
  if (request.memory_peak) {
    took += as_bytes(static_cast<std::int64_t>(*request.memory_peak)) + " of memory at most, ";
  }
  took += as_count(request.calls) + " calls, " + std::to_string(request.depth) + " deep";
  text.lines.push_back(took);
  std::string started;
  if (request.started) started = "started " + iso_time(*request.started) + ", ";
  started += "PHP API " + std::to_string(request.php_api);
  started += ", request " + std::to_string(request.request_id);
  text.lines.push_back(started);
  text.lines.push_back(wholeness(facts));
  text.least = text.lines.size();
  return text;
}

void request_json(const SummaryFacts& facts, JsonWriter& json) {
  const RequestFacts& request = facts.request;
  json.key("request");
  json.begin_object();
  put_text(json, "method", request.method);
  put_text(json, "url", request.url);
  put_text(json, "uri", request.uri);
  put_text(json, "host", request.host);
  json.key("status");
  facts.response.status() ? json.number(std::int64_t{*facts.response.status()}) : json.null();
  put_number(json, "bytes_out", static_cast<std::int64_t>(facts.response.bytes_out()));
  put_number(json, "php_api", request.php_api);
  put_number(json, "request_id", request.request_id);
  const std::string started = request.started ? iso_time(*request.started) : "";
  json.key("started");
  started.empty() ? json.null() : json.word(started);
  put_number(json, "total_ns", request.total_ns);
  json.key("memory_peak");
  request.memory_peak ? json.number(static_cast<std::int64_t>(*request.memory_peak)) : json.null();
  put_number(json, "nodes", facts.measures.node_count());
  put_number(json, "calls", request.calls);
  put_number(json, "depth", request.depth);
  put_number(json, "errors", request.errors);
  put_number(json, "thrown", static_cast<std::int64_t>(facts.thrown.size()));
  put_number(json, "open", request.open);
  json.key("complete");
  json.boolean(request.is_complete);
  put_number(json, "damaged", damaged_places(facts.trace.summary()));
  json.end_object();
}

}  // namespace CT::Tool
