// SPDX-License-Identifier: MIT
//
// A program of somebody else: prints how many calls, arguments and nodes a trace has, then the
// trace as text. It goes through as much of the library as fits into a page.
#include <codetrace/codetrace.h>

#include <QJsonArray>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace {

// To standard output, through a sink of the program's own.
class Printer final : public CT::Sink {
 public:
  bool write(std::string_view bytes) override {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size();
  }
};

// From disk, and the same bytes from memory.
bool open(CT::File& file, const char* path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  CT::File in_memory(QStringLiteral("memory"));
  return file.open() &&
         in_memory.open(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

// Calls and arguments, told by the tree; -1 if the checkpoints tell another number of calls.
int count_calls(const CT::File& file, CT::Storage& storage, std::size_t& arguments) {
  int calls = 0;
  CT::NodeReader nodes(storage);
  for (CT::Storage::NodeId id = 0; id < storage.node_count(); ++id) {
    const CT::Node::Base& node = nodes.read(id);
    const auto* call = dynamic_cast<const CT::Checkpoint::FunctionCall*>(node.begin().get());
    if (call == nullptr) continue;
    ++calls;
    for (const CT::Checkpoint::KVal& value : call->args()) {
      arguments += value.to_string(true).isEmpty() ? 0 : 1;
    }
  }
  int records = 0;
  CT::CheckpointView view(file);
  while (view.step()) {
    const auto record = CT::Checkpoint::make_record(view, nullptr);
    if (std::dynamic_pointer_cast<CT::Checkpoint::FunctionCall>(record) != nullptr) ++records;
  }
  return records == calls ? calls : -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 1);
  CT::File file(QString::fromLocal8Bit(argv[1]));
  if (!open(file, argv[1])) {
    klog(0, "{} cannot be read: {}", argv[1], file.error_message().toStdString());
    return 1;
  }
  CT::Storage storage(file);
  CT::read_checkpoints(file, storage);
  std::size_t arguments = 0;
  const int calls = count_calls(file, storage, arguments);
  const auto nodes = CT::as_json(storage).value(QStringLiteral("cp")).toArray();
  std::printf("%d calls, %zu arguments, %td nodes\n", calls, arguments,
              static_cast<std::ptrdiff_t>(nodes.size()));
  Printer printer;
  CT::StreamWriter out(printer);
  CT::write_text(storage, out);
  return out.flush() ? 0 : 1;
}
