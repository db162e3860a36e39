// SPDX-License-Identifier: MIT
//
// A program of somebody else: prints how many calls, arguments and nodes a trace has, then the
// trace as text. It goes through as much of the library as fits into a page.
#include <codetrace/codetrace.h>

#include <QJsonArray>
#include <QJsonObject>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#if CODETRACE_VERSION_MAJOR != 3
#error "made for another version"
#endif

namespace {

// To standard output, through a sink of the program's own.
class Printer final : public CT::Sink {
 public:
  bool write(std::string_view bytes) override {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  }
};

class Complaints final : public CT::FindingSink {
 public:
  void report(const CT::Finding& finding) override {
    CT::MemoryWriter line;
    CT::write_text(finding, line);
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.view().data());
  }
};

// From disk, and the same bytes from memory.
bool open(CT::Trace& trace, const char* path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  Complaints complaints;
  CT::Trace in_memory;
  const auto* first = reinterpret_cast<const unsigned char*>(bytes.data());
  return trace.open(path, &complaints) && in_memory.open(first, bytes.size()) &&
         in_memory.node_count() == trace.node_count();
}

// Calls and arguments, told by the tree; -1 if the checkpoints or the fields tell another number.
int count_calls(const CT::Trace& trace, std::size_t& arguments) {
  using CT::Checkpoint::FunctionCall;
  int calls = 0;
  int with_function = 0;
  CT::ValueRoom room;
  for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
    const CT::Node::Base node = trace.node(id);
    CT::Fields fields;
    node.collect(fields, room);
    if (fields.has(CT::FieldName::function)) ++with_function;
    const auto call = node.begin_as<FunctionCall>();
    if (!call) continue;
    ++calls;
    for (const CT::Checkpoint::KVal& value : call->args()) {
      if (!value.to_string(true).isEmpty()) ++arguments;
    }
  }
  int records = 0;
  CT::CheckpointView view(trace.file());
  while (view.step()) {
    const auto record = CT::Checkpoint::make_record(view, nullptr);
    if (record != nullptr && CT::Checkpoint::record_as<FunctionCall>(*record)) ++records;
  }
  return records == calls && with_function == calls ? calls : -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  CT::Trace trace;
  if (!open(trace, argv[1])) {
    std::fprintf(stderr, "%s: %s\n", argv[1], trace.error_message().c_str());
    return 1;
  }
  std::size_t arguments = 0;
  const int calls = count_calls(trace, arguments);
  const auto nodes = CT::as_json(trace.storage()).value(QStringLiteral("cp")).toArray();
  std::printf("%d calls, %zu arguments, %td nodes\n", calls, arguments,
              static_cast<std::ptrdiff_t>(nodes.size()));
  Printer printer;
  CT::StreamWriter out(printer);
  CT::write_text(trace.storage(), out);
  return out.flush() ? 0 : 1;
}
