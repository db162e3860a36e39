// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_response_json.h"

#include "tools/cttool/ct_body.h"
#include "tools/cttool/ct_response_page.h"

namespace CT::Tool {

void ResponseJson::put_id(NodeId id) {
  id == Storage::no_node ? json_.null() : json_.number(std::int64_t{id});
}

void ResponseJson::put_size(std::string_view key, std::uint64_t size) {
  json_.key(key);
  put_unsigned(json_.out(), size);
}

// The call that a node lies under, and the place that made it.
void ResponseJson::write_maker(NodeId id) {
  const NodeId by = trace_.parent(id);
  json_.key("id");
  json_.number(std::int64_t{id});
  json_.key("parent");
  put_id(by);
  json_.key("name");
  by == Storage::no_node ? json_.null() : json_.text(lines_.label(by));
  const Node::Base node = trace_.node(id);
  const Node::Base above = by == Storage::no_node ? node : trace_.node(by);
  const Checkpoint::Base& placed = node.begin().has_location() ? node.begin() : above.begin();
  json_.key("file");
  placed.has_location() ? json_.text(placed.filename().view()) : json_.null();
  json_.key("line");
  placed.has_location() ? json_.number(std::int64_t{placed.line_no()}) : json_.null();
}

void ResponseJson::write_step(const HeaderStep& step) {
  json_.begin_object();
  write_maker(step.id);
  json_.key("operation");
  json_.word(operation_of(step));
  json_.key("header");
  step.line.data == nullptr ? json_.null() : json_.text(step.line.view());
  json_.key("cut");
  json_.boolean(step.line.is_cut());
  json_.key("fate");
  json_.word(word_of(step));
  json_.key("ended_by");
  put_id(step.ended_by);
  json_.end_object();
}

void ResponseJson::write_headers() {
  json_.key("headers");
  json_.begin_array();
  for (const HeaderStep& header : response_.headers()) {
    json_.element();
    json_.begin_object();
    json_.key("id");
    json_.number(std::int64_t{header.id});
    json_.key("name");
    json_.text(header_name(header.line.view()));
    json_.key("value");
    json_.text(header_value(header.line.view()));
    json_.key("cut");
    json_.boolean(header.line.is_cut());
    json_.end_object();
  }
  json_.end_array();
  json_.key("operations");
  json_.begin_array();
  for (const HeaderStep& step : response_.steps()) {
    json_.element();
    write_step(step);
  }
  json_.end_array();
}

void ResponseJson::write_body() {
  put_size("bytes_out", response_.bytes_out());
  put_size("bytes_recorded", response_.bytes_recorded());
  if (body_ == Body::whole) {
    json_.key("body");
    put_body_json(response_, json_.out());
    if (!is_exact_as_text(response_)) {
      json_.key("body_base64");
      put_body_base64(response_, json_.out());
    }
  }
  json_.key("writes");
  json_.begin_array();
  for (const BodyPart& write : response_.writes()) {
    json_.element();
    json_.begin_object();
    write_maker(write.id);
    put_size("offset", write.offset);
    put_size("size", write.size());
    put_size("recorded", write.body.view().size());
    json_.end_object();
  }
  json_.end_array();
}

void ResponseJson::write_found(const Sighting& sighting) {
  const auto put_path = [&](NodeId id) {
    json_.key("path");
    json_.begin_array();
    for (const NodeId above : lines_.way_to(id)) {
      json_.element();
      json_.number(std::int64_t{above});
    }
    json_.end_array();
  };
  json_.key("found");
  json_.begin_object();
  json_.key("text");
  json_.text(sighting.text);
  put_size("in_headers", sighting.headers.size());
  put_size("in_body", sighting.body.count);
  json_.key("headers");
  json_.begin_array();
  for (const std::size_t step : sighting.headers) {
    json_.element();
    json_.begin_object();
    json_.key("id");
    json_.number(std::int64_t{response_.steps()[step].id});
    put_path(response_.steps()[step].id);
    json_.end_object();
  }
  json_.end_array();
  json_.key("body");
  json_.begin_array();
  for (const BodyMatch& match : sighting.body.found) {
    json_.element();
    json_.begin_object();
    put_size("offset", match.offset);
    json_.key("first_write");
    json_.number(std::int64_t{response_.writes()[match.first].id});
    json_.key("last_write");
    json_.number(std::int64_t{response_.writes()[match.last].id});
    put_path(response_.writes()[match.first].id);
    json_.end_object();
  }
  json_.end_array();
  json_.end_object();
}

void ResponseJson::write(const std::string& file, const Sighting* sighting) {
  json_.begin_object();
  json_.key("schema");
  json_.word("cttool.response/1");
  json_.key("trace");
  json_.text(file);
  json_.key("status");
  response_.status() ? json_.number(std::int64_t{*response_.status()}) : json_.null();
  json_.key("status_line");
  response_.status_line().is_empty() ? json_.null() : json_.text(response_.status_line().view());
  json_.key("status_set_by");
  put_id(response_.status_set_by());
  json_.key("sent_by");
  put_id(response_.sent_by());
  json_.key("sent_again");
  json_.begin_array();
  for (const NodeId id : response_.sent_again()) {
    json_.element();
    json_.number(std::int64_t{id});
  }
  json_.end_array();
  write_headers();
  write_body();
  if (sighting != nullptr) write_found(*sighting);
  json_.end_object();
  json_.out().put('\n');
}

}  // namespace CT::Tool
