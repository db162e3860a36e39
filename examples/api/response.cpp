// SPDX-License-Identifier: MIT
//
// response TRACE: what the client got: status, headers, body. What the tracer cut off is marked.
#include <QByteArray>
#include <vector>

#include "trace.h"

using namespace CT::Checkpoint;

std::string bytes_of(const String& text) {
  const std::int64_t lost = text.orig_sz - std::int64_t{text.length};
  return std::string(text.view()) + (text.is_cut() ? fmt::format("[{} bytes cut off]", lost) : "");
}

QByteArray key_of(const std::string& header) {
  return QByteArray::fromStdString(header.substr(0, header.find(':'))).toLower();
}

// What PHP's header() and header_remove() did.
void apply(const SapiHeader& change, std::vector<std::string>& headers) {
  const auto op = static_cast<HeaderOp>(change.op());
  const std::string line = bytes_of(change.header());
  if (op == HeaderOp::delete_all) headers.clear();
  if (op == HeaderOp::replace || op == HeaderOp::delete_) {
    std::erase_if(headers, [&](const auto& old) { return key_of(old) == key_of(line); });
  }
  if (op == HeaderOp::replace || op == HeaderOp::add) headers.push_back(line);
}

int main(int argc, char** argv) {
  if (argc != 2) return usage("response TRACE");
  const CT::Trace trace = open_trace(argv[1]);

  std::string head = "(headers were not sent)", body;
  std::vector<std::string> headers;
  for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
    const CT::Node::Base node = trace.node(id);
    if (const auto change = node.begin_as<SapiHeader>()) apply(*change, headers);
    if (const auto write = node.begin_as<SapiWriteStart>()) body += bytes_of(write->body());
    if (const auto sent = node.begin_as<SapiSendHeaders>()) {
      head = sent->status().is_present() ? bytes_of(sent->status())
                                         : fmt::format("Status: {}", sent->code());
    }
  }
  fmt::print("{}\n", head);
  for (const std::string& header : headers) fmt::print("{}\n", header);
  fmt::print("\n{}", body);
  return 0;
}
