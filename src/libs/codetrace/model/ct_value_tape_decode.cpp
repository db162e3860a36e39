// SPDX-License-Identifier: MIT
//
// How values are decoded, and how they are stepped over.
#include <functional>

#include "codetrace/model/ct_value_tape.h"

namespace CT::Checkpoint {

namespace {

// What stands before the elements of an array, or the whole of any other value.
struct Header {
  ValueType type;
  std::int32_t count = 0;  // of an array: the pairs it declares
  String string = {};
};

// Steps over it; the cursor fails at the field that is not whole.
inline Header read_header(Cursor& cursor) {
  Header header = {value_type_of_code(cursor.u8())};
  if (const std::size_t size = value_type_info(header.type).body_size; size <= cursor.left()) {
    cursor.bytes(size);
  } else if (header.type == ValueType::string) {
    header.string = get_cut_str(cursor);
  } else if (header.type == ValueType::array) {
    header.count = cursor.i32();
  } else {
    // Cut; of an object its class may be whole.
    if (header.type == ValueType::object) cursor.bytes(Format::reference_size);
    cursor.bytes(size);
  }
  return header;
}

}  // namespace

// Decodes values to a tape. Arrays that are open stand on an explicit stack, so nesting is
// followed as deep as the data goes.
class TapeDecoder {
 public:
  // Takes a copy of the cursor, which the compiler keeps in registers.
  TapeDecoder(ValueTape& tape, const Cursor& cursor)
      : tape_(tape), items_(tape.items_), frames_(tape.frames_), cursor_(cursor) {}

  // Decodes one value.
  void run() {
    while (true) {
      const bool is_open = read_value();
      if (frames_.empty()) return;
      if (is_open) continue;
      deliver();
      if (frames_.empty()) return;
    }
  }
  // Behind what was decoded.
  [[nodiscard]] const Cursor& cursor() const { return cursor_; }

 private:
  // True when the value is an array with pairs, which is now open.
  bool read_value() {
    const unsigned char* place = cursor_.position();
    const Header value = read_header(cursor_);
    if (!cursor_.ok()) {
      add(ValueType::undef, place, false);
      return false;
    }
    add(value.type, place, value.string.is_cut_marker());
    if (value.count < 1) return false;
    frames_.push_back(
        {tape_.size() - 1, tape_.size(), static_cast<std::uint32_t>(value.count), 0, false});
    return true;
  }

  // Hands a finished value to the array around it, which may be finished by it in turn.
  void deliver() {
    while (!frames_.empty()) {
      ArrayFrame& frame = frames_.back();
      if (!frame.has_key) {
        if (cursor_.ok()) {
          frame.has_key = true;
          return;
        }
        tape_.truncate(frame.pair);
      } else {
        finish_pair(frame);
        frame.has_key = false;
        frame.left -= 1;
        frame.pair = tape_.size();
        if (frame.left != 0 && cursor_.ok()) return;
      }
      items_[frame.array].link = tape_.size();
      frames_.pop_back();
    }
  }

  void add(ValueType type, const unsigned char* place, bool is_marker) {
    const bool is_array = type == ValueType::array;
    items_.push_back({static_cast<std::uint32_t>(place - tape_.payload_) & 0xFFFFFF,
                      static_cast<std::uint32_t>(type) & 0xF, 0, is_array ? 1U : 0U,
                      is_marker ? 1U : 0U, is_array ? tape_.size() + 1 : 0});
  }

  void finish_pair(ArrayFrame& frame) {
    ValueTape::Item& array = items_[frame.array];
    const std::uint32_t key = frame.pair;
    if (items_[key].marker != 0) array.cut = 1;
    if (array.cut != 0) {
      tape_.truncate(key);
      return;
    }
    if (array.list != 0) {
      const bool follows =
          tape_.type(key) == ValueType::long_ && tape_.as_long(key) == std::int64_t{frame.kept};
      if (follows) {
        ++frame.kept;
      } else {
        array.list = 0;
      }
    }
    // The tracer puts the marker in place of a nested array that it did not descend into.
    const std::uint32_t value = tape_.end(key);
    if (ValueTape::Item& item = items_[value]; item.marker != 0) {
      item.type = static_cast<std::uint32_t>(ValueType::array) & 0xF;
      item.marker = 0;
      item.cut = item.list = 1;
      item.link = value + 1;
    }
  }

  ValueTape& tape_;
  PlainArray<ValueTape::Item>& items_;
  PlainArray<ArrayFrame>& frames_;
  Cursor cursor_;
};

// Whether it is whole and lies in the payload.
bool ValueTape::takes(const Cursor& cursor) const {
  return cursor.ok() && std::greater_equal<>()(cursor.position(), payload_) &&
         std::less_equal<>()(cursor.position(), payload_end_);
}

ValueTape::Index ValueTape::decode(Cursor& cursor) {
  const Index root = size();
  if (!takes(cursor)) {
    items_.push_back({0, 0, 0, 0, 0, 0});
    return root;
  }
  TapeDecoder decoder(*this, cursor);
  decoder.run();
  cursor = decoder.cursor();
  return root;
}

void ValueTape::decode_all(const Cursor& cursor, std::uint32_t count) {
  if (!takes(cursor)) return;
  TapeDecoder decoder(*this, cursor);
  for (std::uint32_t i = 0; i != count && decoder.cursor().ok(); ++i) {
    const Index value = size();
    decoder.run();
    if (!decoder.cursor().ok() && type(value) != ValueType::array) truncate(value);
  }
}

// Nothing is kept, so of the arrays that are open it is enough to know how many values they still
// want all together: fewer than 2^32 for each of less than 2^24 arrays.
void scan_values(Cursor& cursor, std::uint32_t count, Entities* entities) {
  Cursor at = cursor;
  for (std::uint64_t wanted = count; wanted != 0; --wanted) {
    Cursor body = at;
    const Header value = read_header(at);
    if (!at.ok()) break;
    if (value.type == ValueType::object && entities != nullptr) {
      body.bytes(1);
      entities->add_class(body.u64());
    }
    if (value.count > 0) wanted += 2 * static_cast<std::uint64_t>(value.count);
  }
  cursor = at;
}

}  // namespace CT::Checkpoint
