// SPDX-License-Identifier: MIT
//
// response TRACE: what the client got: status, headers, body. What the tracer cut off is marked.
#include <QByteArray>
#include <vector>

#include "trace.h"

using namespace CT::Checkpoint;

QByteArray bytes_of(const String& text) {
  QByteArray bytes(text.view().data(), static_cast<qsizetype>(text.view().size()));
  if (text.is_cut()) {
    bytes += "[" + QByteArray::number(text.orig_sz - std::int64_t{text.length}) + " bytes cut off]";
  }
  return bytes;
}

QByteArray name_of(const QByteArray& header) { return header.split(':').first().toLower(); }

// What PHP's header() and header_remove() did.
void apply(const SapiHeader& change, std::vector<QByteArray>& headers) {
  const auto op = static_cast<HeaderOp>(change.op());
  const QByteArray line = bytes_of(change.header());
  if (op == HeaderOp::delete_all) headers.clear();
  if (op == HeaderOp::replace || op == HeaderOp::delete_) {
    std::erase_if(headers, [&](const QByteArray& old) { return name_of(old) == name_of(line); });
  }
  if (op == HeaderOp::replace || op == HeaderOp::add) headers.push_back(line);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "Usage: response TRACE\n");
    return 1;
  }
  const auto trace = open_trace(argv[1]);
  if (trace == nullptr) return 1;

  QByteArray status = "(headers were not sent)";
  std::vector<QByteArray> headers;
  QByteArray body;
  CT::NodeReader nodes(trace->storage);
  for (CT::Storage::NodeId id = 0; id != trace->storage.node_count(); ++id) {
    const CT::Node::Base& node = nodes.read(id);
    if (const auto* change = node.begin_as<SapiHeader>()) apply(*change, headers);
    if (const auto* sent = node.begin_as<SapiSendHeaders>()) {
      status = "Status: " + QByteArray::number(sent->code());
      if (sent->status().is_present()) status = bytes_of(sent->status());
    }
    if (const auto* write = node.begin_as<SapiWriteStart>()) body += bytes_of(write->body());
  }
  fmt::print("{}\n", status.toStdString());
  for (const QByteArray& header : headers) fmt::print("{}\n", header.toStdString());
  fmt::print("\n{}", body.toStdString());
  return 0;
}
