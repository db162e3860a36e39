// SPDX-License-Identifier: MIT
//
// A whole file: all five outputs and every finding in words, then what programs use that link the
// library. Small files' JSON is held equal to Qt's.
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <algorithm>
#include <string>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_records_dump.h"
#include "support.h"
#include "written.h"

namespace {

using namespace CT;

// One output into a sink of its own, so that a large one does not hide the next.
template <class Write>
void discard(Write write) {
  Fuzz::LimitedSink sink;
  StreamWriter out(sink);
  write(out);
  out.flush();
}

// Puts every finding in words, as the tool's log does.
class Lines final : public FindingSink {
 public:
  explicit Lines(Writer& out) : out_(out) {}
  void report(const Finding& finding) override { write_text(finding, out_); }

 private:
  Writer& out_;
};

void use_records(const File& file) {
  QString text;
  QTextStream stream(&text);
  CheckpointView view(file);
  for (int left = 64; left != 0 && view.step(); --left) {
    const auto record = Checkpoint::make_record(view, nullptr);
    if (record == nullptr) continue;
    record->dump(stream);
    if (const auto call = Checkpoint::record_as<Checkpoint::FunctionCall>(*record)) {
      static_cast<void>(call->this_value().to_string(false));
      for (const Checkpoint::KVal& value : call->args()) static_cast<void>(value.to_string(true));
    } else if (const auto end = Checkpoint::record_as<Checkpoint::EndWithValue>(*record)) {
      static_cast<void>(end->value().as_json());
    }
  }
}

void use_nodes(const File& file) {
  Storage storage(file);
  CheckpointView view(file);
  while (view.step()) {
    storage.add_checkpoint(Checkpoint::make_record(view, &storage.entities()));
  }
  const Storage::NodeId count = std::min(storage.node_count(), Storage::NodeId{64});
  for (Storage::NodeId id = 0; id != count; ++id) {
    QString text;
    QJsonObject object;
    storage.node(id)->to_text(text);
    storage.node(id)->to_json(object);
  }
}

void compare_json(const Storage& storage) {
  const std::string ours = Test::written([&](Writer& out) { write_json(storage, out); });
  const QByteArray expected = QJsonDocument(as_json(storage)).toJson();
  Fuzz::expect_equal("the JSON document", ours, expected.toStdString() + "\n");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // What Qt's classes hold in memory grows with the square of the size at worst.
  constexpr std::size_t largest_for_adapters = 8192;
  constexpr std::size_t largest_to_compare = 4096;
  Fuzz::silence_log();
  File file{QStringLiteral("fuzz")};
  if (!file.open(data, size)) {
    Fuzz::expect(!file.is_open() && !file.error_message().isEmpty(), "a reason for the refusal");
    return 0;
  }
  discard([&](Writer& out) { write_headers(file, out); });
  discard([&](Writer& out) { write_binary(file, out); });
  Fuzz::LimitedSink ignored;
  StreamWriter words(ignored);
  Lines lines(words);
  Storage storage(file, &lines);
  discard([&](Writer& out) {
    RecordDumper dumper;
    read_checkpoints(file, storage, [&](const Checkpoint::Base& record) {
      if (out.ok()) dumper.write(record, out);
      return true;
    });
  });
  discard([&](Writer& out) { write_json(storage, out); });
  discard([&](Writer& out) { write_text(storage, out); });
  if (size <= largest_to_compare) compare_json(storage);
  if (size <= largest_for_adapters) {
    use_records(file);
    use_nodes(file);
  }
  return 0;
}
