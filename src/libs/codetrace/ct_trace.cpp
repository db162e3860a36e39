// SPDX-License-Identifier: MIT
#include "codetrace/ct_trace.h"

#include <QString>
#include <algorithm>
#include <cassert>
#include <mutex>
#include <utility>

namespace CT {

namespace {

// A finding about a checkpoint that is no record, noted together with the place of the call.
Finding finding(Finding::Kind kind, std::uint8_t code, std::uint32_t offset, std::uint64_t first,
                std::uint64_t second, const char* source_file = __builtin_FILE(),
                int source_line = __builtin_LINE()) {
  Finding made{kind};
  made.type = Checkpoint::type_of_code(code);
  made.offset = offset;
  made.first = first;
  made.second = second;
  made.source_file = source_file;
  made.source_line = source_line;
  return made;
}

void report_broken(const CheckpointView::Broken& broken, Storage& storage) {
  if (broken.in_header_word) {
    storage.report(finding(Finding::Kind::broken_header_word, Checkpoint::type_count, broken.offset,
                           broken.wanted, broken.left));
  } else {
    storage.report(finding(Finding::Kind::broken_payload, broken.type, broken.offset, broken.wanted,
                           broken.left));
  }
}

}  // namespace

void read_checkpoints(const File& file, Storage& storage, const RecordVisitor& visit) {
  assert(&storage.file() == &file);
  CheckpointView view(file);
  while (view.step()) {
    const Checkpoint::Type type = Checkpoint::type_of_code(view.type());
    if (type_info(type).role == Checkpoint::Role::none) {
      // Kept: every code without a name goes by the same number.
      storage.report(finding(Finding::Kind::unknown_code, view.type(), view.offset(),
                             static_cast<std::uint64_t>(type), 0));
      continue;
    }
    const auto record = Checkpoint::Base::sighted(view, storage.entities());
    storage.count_record();
    if (const auto damage = record.damage()) {
      storage.report(
          finding(Finding::Kind::damaged_record, view.type(), view.offset(), *damage, view.size()));
    }
    storage.add_checkpoint(record);
    if (visit && !visit(record)) return;
  }
  if (view.broken()) report_broken(*view.broken(), storage);
}

// Behind a pointer, so that what points at the file or at the storage stays right when the trace is
// moved.
struct Trace::State {
  explicit State(File opened, FindingSink* sink) : file(std::move(opened)), storage(file, sink) {}

  File file;
  Storage storage;
  std::string error;
  std::once_flag shape_found;
  Shape shape;
};

Trace::Trace() : state_(std::make_unique<State>(File(QString()), nullptr)) {}
Trace::~Trace() = default;
Trace::Trace(Trace&& other) noexcept = default;
Trace& Trace::operator=(Trace&& other) noexcept = default;

bool Trace::open(std::string_view name, FindingSink* sink) {
  File file(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
  if (file.open()) {
    read(std::move(file), sink);
    return true;
  }
  *this = Trace();
  state_->error = file.error_message().toStdString();
  return false;
}

bool Trace::open(const unsigned char* bytes, std::size_t size, FindingSink* sink) {
  File file{QString()};
  if (file.open(bytes, size)) {
    read(std::move(file), sink);
    return true;
  }
  *this = Trace();
  state_->error = file.error_message().toStdString();
  return false;
}

void Trace::read(File file, FindingSink* sink, const RecordVisitor& visit) {
  auto state = std::make_unique<State>(std::move(file), sink);
  read_checkpoints(state->file, state->storage, visit);
  state->storage.forget_sink();
  state_ = std::move(state);
}

bool Trace::is_open() const { return state_->file.is_open(); }
const std::string& Trace::error_message() const { return state_->error; }
const File& Trace::file() const { return state_->file; }
const Storage& Trace::storage() const { return state_->storage; }

NodeId Trace::next_sibling(NodeId id) const {
  const NodeId next = last(id) + 1;
  return next != node_count() && parent(next) == parent(id) ? next : Storage::no_node;
}

const Trace::Shape& Trace::shape() const {
  std::call_once(state_->shape_found, [this] {
    Shape found;
    const NodeId count = node_count();
    for (NodeId id = 0; id != count; ++id) {
      const NodeId above = parent(id);
      found.depth.push_back(above == Storage::no_node ? 0 : found.depth[index(above)] + 1);
      found.last.push_back(id);
    }
    // From the end, a node has told its last before its parent is asked.
    for (NodeId id = count - 1; id > 0; --id) {
      const NodeId above = parent(id);
      if (above == Storage::no_node) continue;
      NodeId& last = found.last[index(above)];
      last = std::max(last, found.last[index(id)]);
    }
    std::swap(state_->shape, found);
  });
  return state_->shape;
}

}  // namespace CT
