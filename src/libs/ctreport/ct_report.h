// SPDX-License-Identifier: MIT
//
// A trace as one page to look at: the built page of `web`, with the trace's data in it as blocks.
// What the blocks are called and made of is told in web/README.md.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "ctexport/ct_export_source.h"
#include "ctreport/ct_block.h"

namespace CT::Report {

// The page without data. It has a line `<!-- data -->` where the data goes.
std::string_view built_page();

class Report {
 public:
  // Writes a document of JSON.
  using Put = std::function<void(Writer& out)>;

  // Borrows: the page. `max_size`: bytes that the whole report may have.
  Report(std::string_view page, std::uint64_t max_size) : page_(page), max_size_(max_size) {}

  // A document that the page shows. To be called in the order of the page, before add_nodes().
  void add_document(const char* name, const Put& put);
  // The nodes, and of their values those of the dearest calls, as many as there is room for. False
  // if there is no room for the nodes: then size() is what the report would have without values.
  [[nodiscard]] bool add_nodes(const Export::Source& source);
  // Requires: add_nodes().
  void write(Writer& out) const;

  // Bytes of the page.
  [[nodiscard]] std::uint64_t size() const;
  // Nodes whose values were left out, and the greatest total time of one of them.
  [[nodiscard]] std::int64_t left_out() const { return left_out_; }
  [[nodiscard]] std::int64_t longest_left_out_ns() const { return longest_ns_; }

 private:
  std::string_view page_;
  std::uint64_t max_size_;
  std::vector<Block> blocks_;
  std::int64_t left_out_ = 0;
  std::int64_t longest_ns_ = 0;
};

}  // namespace CT::Report
