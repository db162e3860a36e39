// SPDX-License-Identifier: MIT
#include "api_world.h"

#include <iterator>

namespace CT::Fuzz {

using Checkpoint::Base;
using Checkpoint::KVal;

namespace {

const unsigned char* as_bytes(std::string_view text) {
  return static_cast<const unsigned char*>(static_cast<const void*>(text.data()));
}

}  // namespace

World::World(std::string_view trace, std::string_view moves)
    : bytes_(trace),
      moves_(moves),
      file_(QStringLiteral("fuzz")),
      other_file_(QStringLiteral("other")),
      no_file_(QString()) {
  const bool is_open = file_.open(as_bytes(bytes_), bytes_.size());
  expect(other_file_.open(as_bytes(bytes_), bytes_.size()) == is_open, "the same answer twice");
  expect(is_open == file_.error_message().isEmpty(), "a reason for the refusal");
  expect(!no_file_.open(as_bytes(bytes_), 3), "no trace in three bytes");
  storages_.push_back(std::make_unique<Storage>(file_, &words_));
  storages_.push_back(std::make_unique<Storage>(other_file_));
  storages_.push_back(std::make_unique<Storage>(no_file_, &words_));
}

void World::run() {
  using Move = void (World::*)();
  static constexpr Move all[] = {
      &World::view_a_file,     &World::view_at,         &World::step,
      &World::make_records,    &World::sight_record,    &World::use_a_record,
      &World::take_values,     &World::decode_value,    &World::use_a_value,
      &World::keep_part,       &World::add_to_storage,  &World::add_wrong_kind,
      &World::read_whole_file, &World::new_storage,     &World::take_node,
      &World::make_any_node,   &World::use_a_node,      &World::read_nodes,
      &World::write_outputs,   &World::use_entities,    &World::open_trace,
      &World::move_trace,      &World::take_from_trace, &World::write_trace,
      &World::shuffle};
  constexpr int most = 100;
  for (int left = most; left != 0 && !moves_.done(); --left)
    (this->*all[moves_.byte() % std::size(all)])();
}

void World::view_a_file() {
  const File& file = moves_.byte() % 8 == 0 ? no_file_ : any_file();
  keep(views_, {CheckpointView(file), files, {}, {}});
}

void World::view_at() {
  const File& file = any_file();
  // Mostly where a checkpoint can be, now and then anywhere.
  const std::uint32_t place = moves_.number();
  const std::uint32_t offset = moves_.flag() ? place : place << 16 | moves_.number();
  const CheckpointView view = CheckpointView::at(file, offset);
  expect(!view.is_valid() || view.offset() == offset, "the view of an offset");
  expect(view.is_valid() || view.cursor().left() == 0, "nothing to read where there is nothing");
  keep(views_, {view, files, {}, {}});
}

// On, also behind the end and where a step was refused.
void World::step() {
  auto* kept = any(views_);
  if (kept == nullptr) return;
  CheckpointView& view = kept->thing;
  for (std::size_t left = 1 + moves_.below(4); left != 0; --left) {
    const bool goes_on = view.step();
    expect(goes_on == view.is_valid(), "a step that is refused stands on nothing");
    expect(!goes_on || view.cursor().left() == view.size(), "the payload is there");
  }
}

void World::make_records() {
  const auto* kept = any(views_);
  if (kept == nullptr) return;
  const CheckpointView& view = kept->thing;
  std::shared_ptr<Entities> table;
  switch (moves_.byte() % 3) {
    case 0: table = Entities::make(view.file()); break;
    case 1:
      for (const auto& storage : storages_) {
        if (&storage->file() == &view.file()) table = storage->entities().shared_from_this();
      }
      break;
    default: break;
  }
  const auto record = Checkpoint::make_record(view, table.get());
  if (record != nullptr) keep(records_, {*record, kept->owner, record, {}});
}

// With a table that has all of its functions and classes, or perhaps none.
void World::sight_record() {
  const auto* kept = any(views_);
  if (kept == nullptr) return;
  const CheckpointView& view = kept->thing;
  const auto table = Entities::make(
      view.file(), moves_.flag() ? Entities::Numbering::none : Entities::Numbering::by_sighting);
  const Base record = moves_.flag() ? Base::sighted(view, *table) : Base(view, *table);
  keep(records_, {record, kept->owner, table, {}});
}

void World::use_a_record() {
  if (moves_.byte() % 16 == 0) use(Base());
  if (const auto* kept = any(records_)) use(kept->thing);
}

void World::keep_value(const KVal& value, Owner owner) {
  keep(values_, {value, owner, {}, use(value)});
}

void World::take_values() {
  const auto* kept = any(records_);
  if (kept == nullptr) return;
  const Owner owner = kept->owner;
  if (const auto call = Checkpoint::record_as<Checkpoint::FunctionCall>(kept->thing)) {
    keep_value(call->this_value(), owner);
    const std::vector<KVal> args = call->args();
    if (!args.empty()) keep_value(args[moves_.below(args.size())], owner);
  } else if (const auto end = Checkpoint::record_as<Checkpoint::EndWithValue>(kept->thing)) {
    keep_value(end->value(), owner);
  }
}

// A value at any place of a payload.
void World::decode_value() {
  const auto* kept = any(views_);
  if (kept == nullptr) return;
  Cursor cursor = kept->thing.cursor_at(moves_.number());
  if (!cursor.ok()) return;
  const auto table = moves_.flag() ? Entities::make(kept->thing.file()) : nullptr;
  keep_value(KVal(kept->thing, cursor, table.get()), kept->owner);
}

// It shows what it showed when it was taken, whatever has gone since.
void World::use_a_value() {
  if (const auto* kept = any(values_)) expect_equal("a kept value", use(kept->thing), kept->text);
}

void World::keep_part() {
  const auto* kept = any(values_);
  if (kept == nullptr) return;
  const Checkpoint::Elements elements = kept->thing.elements();
  if (elements.empty()) return;
  auto at = elements.begin();
  for (std::size_t left = moves_.below(4); left != 0 && std::next(at) != elements.end(); --left) {
    ++at;
  }
  const auto [key, value] = *at;
  const KVal part = kept->thing.keep(moves_.flag() ? key : value);
  keep_value(part, kept->owner);
}

// Copied, moved, assigned to itself, exchanged, forgotten.
template <class Thing>
void World::shuffle(Shelf<Thing>& shelf) {
  if (shelf.empty()) return;
  Kept<Thing>& a = shelf[moves_.below(shelf.size())];
  Kept<Thing>& b = shelf[moves_.below(shelf.size())];
  const Kept<Thing> copy = a;
  switch (moves_.byte() % 5) {
    case 0: a = b; break;
    case 1: b = std::move(a), a = copy; break;
    case 2: std::swap(a, b); break;
    case 3: static_cast<void>(Kept<Thing>(std::move(a))), a = copy; break;
    default: shelf.erase(shelf.begin() + (&b - shelf.data())); break;
  }
}

void World::shuffle() {
  switch (moves_.byte() % 4) {
    case 0: shuffle(views_); break;
    case 1: shuffle(records_); break;
    case 2: shuffle(nodes_); break;
    default: shuffle(values_); break;
  }
}

}  // namespace CT::Fuzz
