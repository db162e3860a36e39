// SPDX-License-Identifier: MIT
#include "ctreport/ct_report.h"

#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "codetrace/ct_version.h"
#include "codetrace/render/ct_json.h"
#include "ctexport/ct_export_origin.h"
#include "ctexport/ct_span_walk.h"
#include "ctreport/ct_columns.h"
#include "ctreport/ct_value_blocks.h"

namespace CT::Report {

namespace {

constexpr std::string_view data_mark = "<!-- data -->\n";

// What every report says of itself.
void write_meta(const Export::Source& source, std::uint64_t nodes, const ValueBlocks& values,
                std::uint64_t max_size, Writer& out) {
  JsonWriter json(out, JsonWriter::Form::compact);
  const Export::Origin origin = Export::origin_of(source);
  const auto number = [&](const char* name, std::int64_t value) {
    json.key(name);
    json.number(value);
  };
  json.begin_object();
  json.key("schema");
  json.word("cttool.report/1");
  json.key("trace");
  json.text(source.path);
  json.key("title");
  json.text(Export::request_title(source.trace));
  json.key("made_by");
  json.word("cttool " CODETRACE_VERSION_STRING);
  json.key("started_ns");
  json.word(origin.started_ns);
  number("nodes", static_cast<std::int64_t>(nodes));
  number("damaged", origin.damaged);
  number("untimed", origin.untimed);
  number("moved", origin.moved);
  json.key("blocks");
  json.begin_array();
  for (const std::int64_t entries : values.entries) {
    json.element();
    json.number(entries);
  }
  json.end_array();
  json.key("left_out");
  json.begin_object();
  number("nodes", values.left_out);
  number("longest_ns", values.longest_ns);
  number("max_size", static_cast<std::int64_t>(max_size));
  json.end_object();
  json.end_object();
}

}  // namespace

void Report::add_document(const char* name, const Put& put) {
  blocks_.push_back({name, packed(put)});
}

bool Report::add_nodes(const Export::Source& source) {
  // What it takes to make columns is given back before the values need room.
  auto columns = std::make_unique<Columns>(source);
  Export::walk_spans(source, *columns);
  std::vector<Block> nodes = columns->finish();
  const ValueOrder order = columns->values();
  const std::uint64_t count = columns->node_count();
  columns.reset();
  std::move(nodes.begin(), nodes.end(), std::back_inserter(blocks_));
  const auto meta = [&](const ValueBlocks& values) {
    return packed([&](Writer& out) { write_meta(source, count, values, max_size_, out); });
  };
  // What is said of the values is accounted for with them, but for a little.
  constexpr std::uint64_t figures = 128;
  const std::uint64_t without_values = size() + Block::size_of("meta", meta({}).size()) + figures;
  const bool fits = without_values <= max_size_;
  ValueBlocks values;
  if (fits) values = value_blocks(source, order, max_size_ - without_values);
  blocks_.insert(blocks_.begin(), {"meta", meta(values)});
  std::move(values.blocks.begin(), values.blocks.end(), std::back_inserter(blocks_));
  left_out_ = values.left_out;
  longest_ns_ = values.longest_ns;
  return fits;
}

std::uint64_t Report::size() const {
  std::uint64_t size = page_.size() - data_mark.size();
  for (const Block& block : blocks_) size += block.size();
  return size;
}

void Report::write(Writer& out) const {
  const std::size_t mark = page_.find(data_mark);
  out.put(page_.substr(0, mark));
  Base64 base64(out);
  for (const Block& block : blocks_) {
    out.put(Block::begin);
    out.put(block.name);
    out.put(Block::middle);
    base64.put(block.packed);
    base64.finish();
    out.put(Block::end);
    if (!out.ok()) return;
  }
  out.put(page_.substr(mark + data_mark.size()));
}

}  // namespace CT::Report
