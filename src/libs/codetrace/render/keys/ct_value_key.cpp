// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key.h"

#include <algorithm>
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_text.h"

namespace CT::Checkpoint {

namespace {

// Names up to here are copied.
constexpr std::size_t short_name = 64;

bool is_short(const File& file, const unsigned char* place) {
  const auto room = static_cast<std::size_t>(file.add_data().end() - place);
  return std::memchr(place, 0, std::min(room, short_name)) != nullptr || room <= short_name;
}

}  // namespace

void KeyTexts::NameNoter::write_name(const File& file, const unsigned char* place, Writer& out) {
  if (place == nullptr || is_short(file, place)) {
    ValueTextWriter::write_name(file, place, out);
  } else {
    texts_.names_.push_back({texts_.bytes_.size(), &file, place});
  }
}

KeyTexts::Key KeyTexts::add(const ValueTape& tape, ValueTape::Index item) {
  const Mark before = mark();
  noter_.write(tape, item, bytes_);
  return {before.bytes, bytes_.size(), before.names, names_.size()};
}

void KeyTexts::truncate(const Mark& mark) {
  bytes_.truncate(mark.bytes);
  names_.truncate(mark.names);
}

// The decoded text of a key in pieces, from bytes and names in turn.
class KeyTexts::Reader {
 public:
  Reader(const KeyTexts& texts, const Key& key)
      : texts_(texts), at_(key.begin), end_(key.end), name_(key.first_name), last_(key.last_name) {}

  // The name that stands here, before any of it is read; null for bytes.
  [[nodiscard]] const unsigned char* name_here() const {
    return piece_.empty() && is_at_name() ? texts_.names_[name_].place : nullptr;
  }
  void skip_name() { ++name_; }

  // The next character; empty at the end.
  std::string_view next() {
    while (piece_.empty()) {
      if (is_at_name()) {
        const Name& name = texts_.names_[name_++];
        piece_ = without_byte_order_mark(name.file->add_data().text(name.place));
      } else if (at_ != end_) {
        const std::size_t until = name_ != last_ ? texts_.names_[name_].at : end_;
        piece_ = texts_.bytes_.view().substr(at_, until - at_);
        at_ = until;
      } else {
        return {};
      }
    }
    return take_character(piece_);
  }

 private:
  [[nodiscard]] bool is_at_name() const { return name_ != last_ && texts_.names_[name_].at == at_; }

  const KeyTexts& texts_;
  std::size_t at_;
  std::size_t end_;
  std::size_t name_;
  std::size_t last_;
  std::string_view piece_;
};

int KeyTexts::compare(const Key& a, const Key& b) const {
  if (a.first_name == a.last_name && b.first_name == b.last_name) {
    const std::string_view left = bytes_of(a);
    const std::string_view right = bytes_of(b);
    return left == right ? 0 : json_key_less(left, right) ? -1 : 1;
  }
  Reader left(*this, a);
  Reader right(*this, b);
  while (true) {
    const unsigned char* name = left.name_here();
    if (name != nullptr && name == right.name_here()) {
      left.skip_name();
      right.skip_name();
      continue;
    }
    const std::string_view x = left.next();
    const std::string_view y = right.next();
    if (x != y) return json_key_less(x, y) ? -1 : 1;
    if (x.empty()) return 0;
  }
}

std::uint64_t KeyTexts::hash(const Key& key) {
  TextHash hash;
  std::size_t at = key.begin;
  for (std::size_t i = key.first_name; i != key.last_name; ++i) {
    const Name& name = names_[i];
    hash = join(hash, hash_text(bytes_.view().substr(at, name.at - at)));
    hash = join(hash, hashes_.of(*name.file, name.place));
    at = name.at;
  }
  return join(hash, hash_text(bytes_.view().substr(at, key.end - at))).value;
}

int KeyTexts::compare_identity(const Key& a, const Key& b) const {
  if (const int order = bytes_of(a).compare(bytes_of(b)); order != 0) return order;
  const std::size_t count = a.last_name - a.first_name;
  if (count != b.last_name - b.first_name) return count < b.last_name - b.first_name ? -1 : 1;
  for (std::size_t i = 0; i != count; ++i) {
    const Name& left = names_[a.first_name + i];
    const Name& right = names_[b.first_name + i];
    if (left.place != right.place) return left.place < right.place ? -1 : 1;
    if (left.at - a.begin != right.at - b.begin) {
      return left.at - a.begin < right.at - b.begin ? -1 : 1;
    }
  }
  return 0;
}

void KeyTexts::write(const Key& key, JsonWriter& out) const {
  out.begin_key();
  std::size_t at = key.begin;
  for (std::size_t i = key.first_name; i != key.last_name; ++i) {
    const Name& name = names_[i];
    put_json_text(out.out(), bytes_.view().substr(at, name.at - at));
    put_json_text(out.out(), name.file->add_data().text(name.place));
    at = name.at;
  }
  put_json_text(out.out(), bytes_.view().substr(at, key.end - at));
  out.end_key();
}

}  // namespace CT::Checkpoint
