// SPDX-License-Identifier: MIT
//
// A program against the library that is made up by the input: files, storages and traces, what was
// taken from them and kept, and the moves between. It keeps to the library's contract and to
// nothing else: a file outlives what borrows it, a table of functions and classes what was taken
// with it.
#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "api_use.h"

namespace CT::Fuzz {

// What a program does: a byte or a few each; at the end all bytes are 0.
class Moves {
 public:
  explicit Moves(std::string_view bytes) : bytes_(bytes) {}

  [[nodiscard]] bool done() const { return bytes_.empty(); }
  std::uint8_t byte() {
    if (bytes_.empty()) return 0;
    const auto first = static_cast<std::uint8_t>(bytes_.front());
    bytes_.remove_prefix(1);
    return first;
  }
  bool flag() { return (byte() & 1) != 0; }
  std::uint32_t number() {
    const std::uint32_t low = byte();
    return low | static_cast<std::uint32_t>(byte()) << 8;
  }
  // 0 for none.
  std::size_t below(std::size_t count) { return count != 0 ? number() % count : 0; }

 private:
  std::string_view bytes_;
};

// The input. Bytes 0 and 1, low byte first: how many bytes at the end are the moves; the bytes
// between are the trace.
struct ApiInput {
  static constexpr std::size_t header_size = 2;

  ApiInput(const std::uint8_t* data, std::size_t size) {
    if (size < header_size) return;
    const std::string_view rest = as_text(data, size).substr(header_size);
    const auto wanted = static_cast<std::size_t>(data[0] | data[1] << 8);
    trace = rest.substr(0, rest.size() - std::min(wanted, rest.size()));
    moves = rest.substr(trace.size());
  }

  std::string_view trace;
  std::string_view moves;
};

class World {
 public:
  World(std::string_view trace, std::string_view moves);
  void run();

 private:
  // What borrows a trace goes before it; what borrows one of the files may stay.
  using Owner = int;
  static constexpr Owner files = -1;

  template <class Thing>
  struct Kept {
    Thing thing;
    Owner owner;
    std::shared_ptr<const void> alive;  // the table that it borrows
    std::string text;                   // of a value: what it must show whenever it is asked
  };
  template <class Thing>
  using Shelf = std::vector<Kept<Thing>>;
  struct OwnedTrace {
    Owner number;
    Trace trace;
  };
  struct Reader {
    const Storage* storage;
    NodeReader reader;
  };

  void view_a_file();
  void view_at();
  void step();
  void make_records();
  void sight_record();
  void use_a_record();
  void take_values();
  void decode_value();
  void use_a_value();
  void keep_part();
  void add_to_storage();
  void add_wrong_kind();
  void read_whole_file();
  void new_storage();
  void take_node();
  void make_any_node();
  void use_a_node();
  void read_nodes();
  void write_outputs();
  void use_entities();
  void open_trace();
  void move_trace();
  void take_from_trace();
  void write_trace();
  void shuffle();

  File& any_file() { return moves_.flag() ? file_ : other_file_; }
  Storage& any_storage() { return *storages_[moves_.below(storages_.size())]; }
  // A full shelf loses one.
  template <class Thing>
  void keep(Shelf<Thing>& shelf, Kept<Thing> kept) {
    constexpr std::size_t most = 16;
    if (shelf.size() == most) {
      std::swap(shelf[moves_.below(most)], shelf.back());
      shelf.pop_back();
    }
    shelf.push_back(std::move(kept));
  }
  // Null if there is none.
  template <class Thing>
  Kept<Thing>* any(Shelf<Thing>& shelf) {
    return shelf.empty() ? nullptr : &shelf[moves_.below(shelf.size())];
  }
  template <class Thing>
  static void drop(Shelf<Thing>& shelf, Owner owner) {
    std::erase_if(shelf, [&](const auto& kept) { return kept.owner == owner; });
  }
  template <class Thing>
  void shuffle(Shelf<Thing>& shelf);
  void keep_value(const Checkpoint::KVal& value, Owner owner);
  void drop_trace(std::size_t place);
  void write(const Storage& storage);

  std::string bytes_;
  Moves moves_;
  Words words_;
  File file_;
  File other_file_;  // of the same bytes
  File no_file_;     // that was refused
  std::vector<OwnedTrace> traces_;
  Owner next_owner_ = 0;
  std::vector<std::unique_ptr<Storage>> storages_;
  std::optional<Reader> reader_;
  Shelf<CheckpointView> views_;
  Shelf<Checkpoint::Base> records_;
  Shelf<Node::Base> nodes_;
  Shelf<Checkpoint::KVal> values_;
};

}  // namespace CT::Fuzz
