// SPDX-License-Identifier: MIT
//
// A trace as one page to look at: the built page of `web`, with the trace's data in it.
//
// The data is blocks, each an element of its own: <script type="application/octet-stream"
// id="NAME"> with base64 of a zlib stream. In the order of the page they are:
//
//   meta       JSON: what the page is of, and what of it was left out
//   ...        documents of JSON: what summary and response say
//   functions  JSON: an object of columns, a function a place (ct_functions_json.h)
//   labels     JSON: an array of what nodes that are no calls are called
//   files      JSON: an array of the files that nodes and functions name
//   classes    JSON: an array of the names of classes, which values name by number
//   nodes-...  columns with an entry for each node in the order of the file: numbers as LEB128,
//              signed ones in zigzag
//     id       how far the number is from that of the node before, which for the first is -1
//     kind     a byte, as kind_number() says
//     flags    a byte, as ct_columns.h says
//     depth    signed: how many nodes of the page are around it, less those around the one before
//     name     0 for none; of a call the function's number + 1, of others the label's + 1
//     start    signed: nanoseconds since the node before began
//     total    nanoseconds
//     memory   signed, of nodes that have it: bytes, less those of the last one that has it
//     growth   signed, of nodes that have it: from begin to end
//     file     0 for none, else the file's number + 1
//     line     signed, of nodes with a file: less that of the last one with a file
//   values-N   entries, one for each node that has values, in the order of ct_value_order.h: of
//              most calls the bytes that ct_call_bytes.h describes; else a line of JSON, an object
//              with the members that export's jsonl has, but for the path of an include where
//              that is its label
//
// In `meta`, `blocks` has the entries of each block of values; the negative number of those that
// were left out instead, and then there is no such block.
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
