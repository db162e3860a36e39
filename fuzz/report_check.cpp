// SPDX-License-Identifier: MIT
#include "report_check.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "ctexport/ct_node_members.h"
#include "ctreport/ct_columns.h"
#include "ctreport/ct_report.h"
#include "ctreport/ct_value_order.h"
#include "report_blocks.h"
#include "support.h"
#include "tools/cttool/ct_json_check.h"
#include "value_lines.h"

namespace CT::Fuzz {

namespace {

using Test::block_of;
using Test::varints;

// A trace may name what is long again and again.
constexpr std::size_t most_nodes = 2000;

class CheckedPage {
 public:
  CheckedPage(const Export::Source& source, std::uint64_t max_size)
      : report_("<\n<!-- data -->\n>\n", max_size), fits_(report_.add_nodes(source)) {
    report_.write(text_);
    expect(text_.size() == report_.size(), "the size is that of the page");
    if (fits_) expect(text_.size() <= max_size, "the page is no larger than it may be");
  }

  [[nodiscard]] bool fits() const { return fits_; }
  [[nodiscard]] std::int64_t left_out() const { return report_.left_out(); }
  [[nodiscard]] std::uint64_t size() const { return report_.size(); }
  [[nodiscard]] std::string block(std::string_view name) const {
    return block_of(text_.view(), name);
  }
  [[nodiscard]] bool has(const std::string& name) const {
    return text_.view().find("id=\"" + name + "\"") != std::string_view::npos;
  }
  // Texts of a block that is an array of them: quotes that are no part of one.
  [[nodiscard]] std::size_t texts(std::string_view name) const {
    const std::string array = block(name);
    expect(Tool::is_json(array), "texts are JSON");
    std::size_t quotes = 0;
    for (std::size_t at = 0; at < array.size(); ++at) {
      if (array[at] == '\\') {
        ++at;
      } else if (array[at] == '"') {
        ++quotes;
      }
    }
    return quotes / 2;
  }

 private:
  Report::Report report_;
  MemoryWriter text_;
  bool fits_;
};

std::size_t with_flag(const std::string& flags, Report::Flag flag) {
  return static_cast<std::size_t>(std::count_if(flags.begin(), flags.end(), [&](char bits) {
    return (static_cast<unsigned char>(bits) & flag) != 0;
  }));
}

void check_columns(const CheckedPage& page, std::size_t count) {
  const std::string flags = page.block("nodes-flags");
  const auto has = [&](std::string_view name, std::size_t entries) {
    expect(varints(page.block(name)).size() == entries, "a column has an entry for each node");
  };
  expect(flags.size() == count && page.block("nodes-kind").size() == count, "bytes for each node");
  for (const char* name : {"nodes-id", "nodes-depth", "nodes-start", "nodes-total"}) {
    has(name, count);
  }
  has("nodes-name", count);
  has("nodes-memory", with_flag(flags, Report::has_memory));
  has("nodes-growth", with_flag(flags, Report::has_delta));
  const std::vector<std::uint64_t> files = varints(page.block("nodes-file"));
  const auto named =
      files.size() - static_cast<std::size_t>(std::count(files.begin(), files.end(), 0U));
  expect(files.size() == count, "a file, or none, for each node");
  has("nodes-line", named);
  const std::size_t texts = page.texts("files");
  expect(std::all_of(files.begin(), files.end(), [&](auto file) { return file <= texts; }),
         "files are there");
}

void check_names(const CheckedPage& page, const Export::Source& source) {
  const std::string kinds = page.block("nodes-kind");
  const std::vector<std::uint64_t> names = varints(page.block("nodes-name"));
  const std::size_t labels = page.texts("labels");
  const std::size_t functions = source.trace.functions().size();
  expect(Tool::is_json(page.block("functions")), "functions are JSON");
  for (std::size_t node = 0; node != names.size(); ++node) {
    expect(names[node] <= (kinds[node] == 1 ? functions : labels), "names are there");
  }
}

// The nodes in the order of their values.
std::vector<NodeId> order_of_values(const Export::Source& source) {
  Report::ValueOrder order(source.measures.node_count());
  NodeReader reader(source.trace.storage());
  for (NodeId id = 0; id != source.measures.node_count(); ++id) {
    if (!source.chosen.has(id)) continue;
    const Measure& measure = source.measures[id];
    const Node::Base& node = reader.read(id);
    const unsigned flags = Report::flags_of(node, measure);
    if ((flags & Report::has_values) != 0) order.add(id, node.type(), measure);
  }
  return order.sorted(source.trace, source.measures);
}

// Each node that has values has them as all plain JSON does.
void check_values(const CheckedPage& page, const Export::Source& source) {
  const std::vector<NodeId> nodes = order_of_values(source);
  const std::string classes = page.block("classes");
  Export::NodeMembers members(Export::Values::full);
  std::size_t at = 0;
  for (std::size_t number = 0; page.has("values-" + std::to_string(number)); ++number) {
    const std::string block = page.block("values-" + std::to_string(number));
    for (const std::string& line : Test::value_lines(block, classes)) {
      expect(at != nodes.size(), "no more values than nodes that have some");
      MemoryWriter wanted;
      JsonWriter json(wanted, JsonWriter::Form::compact);
      const Node::Base node = source.trace.node(nodes[at++]);
      json.begin_object();
      members.write_details(node, json);
      members.write_values(node, json);
      json.end_object();
      expect(line == wanted.view(), "values are those of the node");
    }
  }
  expect(at == nodes.size(), "each node that has values has an entry");
}

}  // namespace

void check_report(const Export::Source& source) {
  std::size_t count = 0;
  for (NodeId id = 0; id != source.measures.node_count(); ++id)
    count += source.chosen.has(id) ? 1U : 0U;
  if (count > most_nodes) return;
  constexpr std::uint64_t much = std::uint64_t{1} << 40;
  const CheckedPage whole(source, much);
  expect(whole.fits() && whole.left_out() == 0, "a page that may be large has everything");
  check_columns(whole, count);
  check_names(whole, source);
  check_values(whole, source);
  const CheckedPage half(source, whole.size() * 3 / 4);
  if (half.fits()) {
    check_columns(half, count);
    expect(half.left_out() != 0, "of less room something is left out");
  }
}

}  // namespace CT::Fuzz
