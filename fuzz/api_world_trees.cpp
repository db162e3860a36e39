// SPDX-License-Identifier: MIT
//
// The moves that have to do with storages and traces.
#include <QJsonObject>
#include <iterator>

#include "api_world.h"

namespace CT::Fuzz {

using Checkpoint::Base;
using NodeId = Storage::NodeId;

namespace {

std::shared_ptr<const Entities> table_of(const Storage& storage) {
  return storage.entities().shared_from_this();
}

void expect_node(const Storage& storage, NodeId id) {
  expect(id == Storage::no_node || (id >= 0 && id < storage.node_count()), "a node or none");
}

}  // namespace

// Of its file or of another one, once or again, as a value or as an object of its own.
void World::add_to_storage() {
  Storage& storage = any_storage();
  const auto* kept = any(records_);
  if (kept == nullptr) {
    expect(storage.add_checkpoint(Base()) == Storage::no_node, "no node of no record");
    expect(storage.add_checkpoint(std::shared_ptr<const Base>()) == nullptr, "none of null");
    return;
  }
  const NodeId before = storage.node_count();
  const Base record = kept->thing;
  if (moves_.flag()) {
    const auto node = storage.add_checkpoint(std::make_shared<const Base>(record));
    if (node != nullptr) keep(nodes_, {*node, files, node, {}});
  } else {
    expect_node(storage, storage.add_checkpoint(record));
  }
  if (record.file() != &storage.file()) {
    expect(storage.node_count() == before, "no node from another file");
  }
}

void World::add_wrong_kind() {
  using Add = NodeId (Storage::*)(const Base&);
  static constexpr Add all[] = {&Storage::add_shutdown, &Storage::add_function_return,
                                &Storage::add_function_exception, &Storage::add_include_return,
                                &Storage::add_include_exception};
  Storage& storage = any_storage();
  const Add add = all[moves_.byte() % std::size(all)];
  const auto* kept = any(records_);
  expect_node(storage, (storage.*add)(kept != nullptr ? kept->thing : Base()));
}

// As a whole, or until somebody has enough; also again into a storage that has it already.
void World::read_whole_file() {
  Storage& storage = any_storage();
  std::uint32_t left = moves_.flag() ? moves_.byte() : 0xFFFF;
  read_checkpoints(storage.file(), storage, [&](const Base& record) {
    if (left % 16 == 1) keep(records_, {record, files, table_of(storage), {}});
    return left-- != 0;
  });
}

// In place of one that goes; what was taken from that stays.
void World::new_storage() {
  auto& place = storages_[moves_.below(storages_.size())];
  if (reader_ && reader_->storage == place.get()) reader_.reset();
  const File& file = place->file();
  place = std::make_unique<Storage>(file, moves_.flag() ? &words_ : nullptr);
}

void World::take_node() {
  const Storage& storage = any_storage();
  if (storage.node_count() == 0) return;
  const auto id = static_cast<NodeId>(moves_.below(static_cast<std::size_t>(storage.node_count())));
  if (moves_.flag()) {
    const auto node = storage.node(id);
    keep(nodes_, {*node, files, node, {}});
  } else {
    keep(nodes_, {storage.read(id), files, table_of(storage), {}});
  }
}

// Of any type, over any records.
void World::make_any_node() {
  const auto* begin = any(records_);
  const auto* end = any(records_);
  if (begin == nullptr) return;
  const auto type = static_cast<Node::Type>(moves_.byte() % 14);
  Node::Base node(type, begin->thing, end->thing.timestamp(), end->thing.memory(),
                  static_cast<std::int32_t>(moves_.byte()) - 1, moves_.byte() - 1);
  node.add_end(end->thing);
  use(node);
  use(Node::FunctionCall(begin->thing, {}, 0, 1, -1));
}

void World::use_a_node() {
  if (moves_.byte() % 16 == 0) use(Node::Base());
  const auto* kept = any(nodes_);
  if (kept == nullptr) return;
  use(kept->thing);
  Node::Base again = kept->thing;
  if (again.end() != nullptr) again.add_end(*again.end());
  again.add_end(again.begin());
  use(again);
}

// One after the other, in any order.
void World::read_nodes() {
  if (!reader_ || moves_.flag()) {
    const Storage& storage = any_storage();
    reader_.emplace(Reader{&storage, NodeReader(storage)});
  }
  const auto count = static_cast<std::size_t>(reader_->storage->node_count());
  if (count == 0) return;
  for (std::size_t left = 1 + moves_.below(4); left != 0; --left) {
    const auto id = static_cast<NodeId>(moves_.below(count));
    const Node::Base& node = reader_->reader.read(id);
    expect(node.id() == id, "the node that was asked for");
    expect(node.parent_id() == reader_->storage->parent(id), "and its parent");
    use(node);
  }
}

void World::write(const Storage& storage) {
  const std::size_t limit = moves_.flag() ? moves_.number() : std::size_t{1} << 21;
  const NodeCounter nothing = [](NodeId) {};
  write_to_failing(limit, [&](Writer& out) { write_text(storage, out, nothing); });
  write_to_failing(limit, [&](Writer& out) { write_json(storage, out, nothing); });
  if (storage.file().is_open()) {
    write_to_failing(limit, [&](Writer& out) { write_headers(storage.file(), out); });
    write_to_failing(limit, [&](Writer& out) { write_binary(storage.file(), out); });
  }
  constexpr NodeId most_for_qt = 100;
  if (storage.node_count() <= most_for_qt) expect(as_json(storage).size() == 3, "three lists");
}

void World::write_outputs() { write(any_storage()); }

void World::use_entities() {
  Storage& storage = any_storage();
  const Section& section = storage.file().add_data();
  const std::uint64_t reference = section.origin() + moves_.number();
  if (const auto* function = resolve_function(storage.file(), reference)) {
    const bool known = storage.entities().find(function) != nullptr;
    const auto count = storage.functions().size();
    const Checkpoint::Function& added = storage.get_function(function);
    expect(&added == &storage.get_function(function), "one entry for one descriptor");
    expect(storage.functions().size() == count + (known ? 0 : 1), "entered once");
  }
  if (const auto* record = resolve_class(storage.file(), reference)) {
    expect(storage.entities().find(record) == nullptr ||
               storage.entities().find(record) == &storage.get_class_entry(record),
           "the entry that is found");
  }
  int left = 20;
  for (const Checkpoint::Function& function : storage.functions()) {
    if (left-- == 0) break;
    use(function);
  }
}

void World::drop_trace(std::size_t place) {
  const Owner owner = traces_[place].number;
  drop(views_, owner);
  drop(records_, owner);
  drop(nodes_, owner);
  drop(values_, owner);
  traces_.erase(traces_.begin() + static_cast<std::ptrdiff_t>(place));
}

void World::open_trace() {
  constexpr std::size_t most = 3;
  if (traces_.size() == most) drop_trace(moves_.below(most));
  Trace trace;
  const void* const bytes = bytes_.data();
  const auto* first = static_cast<const unsigned char*>(bytes);
  FindingSink* sink = moves_.flag() ? &words_ : nullptr;
  switch (moves_.byte() % 4) {
    case 0: expect(!trace.open("/no/such/file", sink), "no trace of no file"); break;
    case 1: expect(!trace.open(first, 3, sink) && !trace.is_open(), "none of three bytes"); break;
    case 2: {
      File file{QString()};
      static_cast<void>(file.open(first, bytes_.size()));
      std::uint32_t left = moves_.byte();
      trace.read(std::move(file), sink, [&](const Base&) { return left-- != 0; });
      break;
    }
    default:
      expect(trace.open(first, bytes_.size(), sink) == file_.is_open(), "the file's answer");
      expect(trace.is_open() == trace.error_message().empty(), "a reason for the refusal");
  }
  traces_.push_back({next_owner_++, std::move(trace)});
}

// What was taken from it stays as it is.
void World::move_trace() {
  if (traces_.empty()) return;
  const std::size_t place = moves_.below(traces_.size());
  if (moves_.flag()) return drop_trace(place);
  Trace moved = std::move(traces_[place].trace);
  traces_[place].trace = std::move(moved);
  std::swap(traces_[place], traces_[moves_.below(traces_.size())]);
}

void World::take_from_trace() {
  if (traces_.empty()) return;
  const auto& [owner, trace] = traces_[moves_.below(traces_.size())];
  keep(views_, {CheckpointView(trace.file()), owner, {}, {}});
  if (trace.node_count() == 0) return;
  const auto id = static_cast<NodeId>(moves_.below(static_cast<std::size_t>(trace.node_count())));
  const Node::Base node = trace.node(id);
  keep(nodes_, {node, owner, {}, {}});
  keep(records_, {node.begin(), owner, {}, {}});
  if (node.end() != nullptr) keep(records_, {*node.end(), owner, {}, {}});
  if (const auto call = node.begin_as<Checkpoint::FunctionCall>()) {
    for (const Checkpoint::KVal& value : call->args()) keep_value(value, owner);
  }
}

void World::write_trace() {
  if (traces_.empty()) return;
  const Trace& trace = traces_[moves_.below(traces_.size())].trace;
  use_structure(trace);
  expect(trace.functions().size() == trace.storage().functions().size(), "the functions");
  expect(trace.is_open() || trace.node_count() == 0, "nothing in what is not open");
  static_cast<void>(trace.summary().is_clean());
  write(trace.storage());
}

}  // namespace CT::Fuzz
