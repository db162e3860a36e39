// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tools/cttool/ct_body.h"
#include "tools/cttool/ct_response_page.h"

namespace CT::Tool {

namespace {

void put_id(NodeId id, JsonWriter& json) {
  id == Storage::no_node ? json.null() : json.number(std::int64_t{id});
}

void put_size(std::string_view key, std::uint64_t size, JsonWriter& json) {
  json.key(key);
  put_unsigned(json.out(), size);
}

}  // namespace

// The call that a node lies under, and the place that made it.
void ResponsePage::write_maker(NodeId id, JsonWriter& json) {
  const NodeId by = trace_.parent(id);
  json.key("id");
  json.number(std::int64_t{id});
  json.key("parent");
  put_id(by, json);
  json.key("name");
  by == Storage::no_node ? json.null() : json.text(lines_.label(by));
  const Node::Base node = trace_.node(id);
  const Node::Base above = by == Storage::no_node ? node : trace_.node(by);
  const Checkpoint::Base& placed = node.begin().has_location() ? node.begin() : above.begin();
  json.key("file");
  placed.has_location() ? json.text(placed.filename().view()) : json.null();
  json.key("line");
  placed.has_location() ? json.number(std::int64_t{placed.line_no()}) : json.null();
}

void ResponsePage::write_step(const HeaderStep& step, JsonWriter& json) {
  json.begin_object();
  write_maker(step.id, json);
  json.key("operation");
  json.word(operation_of(step));
  json.key("header");
  step.line.data == nullptr ? json.null() : json.text(step.line.view());
  json.key("cut");
  json.boolean(step.line.is_cut());
  json.key("fate");
  json.word(word_of(step));
  json.key("ended_by");
  put_id(step.ended_by, json);
  json.end_object();
}

void ResponsePage::write_headers(JsonWriter& json) {
  json.key("headers");
  json.begin_array();
  for (const HeaderStep& header : response_.headers()) {
    json.element();
    json.begin_object();
    json.key("id");
    json.number(std::int64_t{header.id});
    json.key("name");
    json.text(header_name(header.line.view()));
    json.key("value");
    json.text(header_value(header.line.view()));
    json.key("cut");
    json.boolean(header.line.is_cut());
    json.end_object();
  }
  json.end_array();
  json.key("operations");
  json.begin_array();
  for (const HeaderStep& step : response_.steps()) {
    json.element();
    write_step(step, json);
  }
  json.end_array();
}

void ResponsePage::write_body(JsonWriter& json) {
  put_size("bytes_out", response_.bytes_out(), json);
  put_size("bytes_recorded", response_.bytes_recorded(), json);
  json.key("body");
  put_body_json(response_, json.out());
  if (!is_exact_as_text(response_)) {
    json.key("body_base64");
    put_body_base64(response_, json.out());
  }
  json.key("writes");
  json.begin_array();
  for (const BodyPart& write : response_.writes()) {
    json.element();
    json.begin_object();
    write_maker(write.id, json);
    put_size("offset", write.offset, json);
    put_size("size", write.size(), json);
    put_size("recorded", write.body.view().size(), json);
    json.end_object();
  }
  json.end_array();
}

void ResponsePage::write_found(const Sighting& sighting, JsonWriter& json) {
  const auto put_path = [&](NodeId id) {
    json.key("path");
    json.begin_array();
    for (const NodeId above : lines_.way_to(id)) {
      json.element();
      json.number(std::int64_t{above});
    }
    json.end_array();
  };
  json.key("found");
  json.begin_object();
  json.key("text");
  json.text(sighting.text);
  put_size("in_headers", sighting.headers.size(), json);
  put_size("in_body", sighting.body.count, json);
  json.key("headers");
  json.begin_array();
  for (const std::size_t step : sighting.headers) {
    json.element();
    json.begin_object();
    json.key("id");
    json.number(std::int64_t{response_.steps()[step].id});
    put_path(response_.steps()[step].id);
    json.end_object();
  }
  json.end_array();
  json.key("body");
  json.begin_array();
  for (const BodyMatch& match : sighting.body.found) {
    json.element();
    json.begin_object();
    put_size("offset", match.offset, json);
    json.key("first_write");
    json.number(std::int64_t{response_.writes()[match.first].id});
    json.key("last_write");
    json.number(std::int64_t{response_.writes()[match.last].id});
    put_path(response_.writes()[match.first].id);
    json.end_object();
  }
  json.end_array();
  json.end_object();
}

void ResponsePage::write_json(const std::string& file, const Sighting* sighting) {
  JsonWriter json(out_);
  json.begin_object();
  json.key("schema");
  json.word("cttool.response/1");
  json.key("trace");
  json.text(file);
  json.key("status");
  response_.status() ? json.number(std::int64_t{*response_.status()}) : json.null();
  json.key("status_line");
  response_.status_line().is_empty() ? json.null() : json.text(response_.status_line().view());
  json.key("status_set_by");
  put_id(response_.status_set_by(), json);
  json.key("sent_by");
  put_id(response_.sent_by(), json);
  json.key("sent_again");
  json.begin_array();
  for (const NodeId id : response_.sent_again()) {
    json.element();
    json.number(std::int64_t{id});
  }
  json.end_array();
  write_headers(json);
  write_body(json);
  if (sighting != nullptr) write_found(*sighting, json);
  json.end_object();
  out_.put('\n');
}

}  // namespace CT::Tool
