// SPDX-License-Identifier: MIT
//
// The one machine that decodes values, with two targets: a tape, and nothing at all. Arrays that
// are open stand on an explicit stack, so nesting is followed as deep as the data goes.
#include "ct_text.h"
#include "ct_value_tape.h"

namespace CT::Checkpoint {

namespace {

constexpr std::uint8_t last_type = static_cast<std::uint8_t>(ValueType::resource);

template <class Target>
class Machine {
 public:
  Machine(Cursor& cursor, std::vector<ArrayFrame>& frames, Target& target)
      : cursor_(cursor), frames_(frames), target_(target) {}

  void run() {
    do {
      if (!read_value()) deliver();
    } while (!frames_.empty());
  }

 private:
  // True when the value is an array with pairs, which is now open.
  bool read_value() {
    const unsigned char* place = cursor_.position();
    std::uint8_t code = cursor_.u8();
    // Kept: a code that does not exist is undef, and reading goes on behind it, out of step.
    if (code > last_type) code = 0;
    const auto type = static_cast<ValueType>(code);
    std::int32_t count = 0;
    std::uint64_t reference = 0;
    switch (type) {
      case ValueType::undef:
      case ValueType::null:
      case ValueType::false_:
      case ValueType::true_: break;
      case ValueType::long_:
      case ValueType::double_: cursor_.bytes(8); break;
      case ValueType::string: get_cut_str(cursor_); break;
      case ValueType::array: count = cursor_.i32(); break;
      case ValueType::object:
        reference = cursor_.u64();
        cursor_.bytes(4);
        break;
      case ValueType::resource: cursor_.bytes(16); break;
    }
    if (!cursor_.ok()) {
      target_.add(ValueType::undef, place);
      return false;
    }
    const std::uint32_t item = target_.add(type, place);
    if (type == ValueType::object) target_.set_class(reference);
    if (count < 1) return false;
    frames_.push_back({item, target_.size(), static_cast<std::uint32_t>(count), 0, false});
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
        target_.truncate(frame.pair);
      } else {
        target_.finish_pair(frame);
        frame.has_key = false;
        frame.left -= 1;
        frame.pair = target_.size();
        if (frame.left != 0 && cursor_.ok()) return;
      }
      target_.finish_array(frame.array);
      frames_.pop_back();
    }
  }

  Cursor& cursor_;
  std::vector<ArrayFrame>& frames_;
  Target& target_;
};

class NoTarget {
 public:
  NoTarget(const CheckpointView& view, EntityCache* cache) : view_(view), cache_(cache) {}

  static std::uint32_t add(ValueType, const unsigned char*) { return 0; }
  void set_class(std::uint64_t reference) {
    if (cache_ == nullptr) return;
    const CT::ClassEntry* record = resolve_class(view_.file(), reference);
    if (record != nullptr) cache_->get_class_entry(view_, record);
  }
  static std::uint32_t size() { return 0; }
  static void truncate(std::uint32_t) {}
  static void finish_pair(const ArrayFrame&) {}
  static void finish_array(std::uint32_t) {}

 private:
  const CheckpointView& view_;
  EntityCache* cache_;
};

}  // namespace

class TapeTarget {
 public:
  TapeTarget(ValueTape& tape, EntityCache* cache) : tape_(tape), cache_(cache) {}

  std::uint32_t add(ValueType type, const unsigned char* place) {
    const std::uint32_t item = tape_.size();
    const bool is_array = type == ValueType::array;
    tape_.items_.push_back({static_cast<std::uint32_t>(place - tape_.payload_) & 0xFFFFFF,
                            static_cast<std::uint32_t>(type) & 0xF, 0, is_array ? 1U : 0U,
                            is_array ? item + 1 : ValueTape::no_class});
    return item;
  }

  // For the item added last.
  void set_class(std::uint64_t reference) {
    const CT::ClassEntry* record = resolve_class(*tape_.file_, reference);
    if (record == nullptr) return;
    const CheckpointView view(*tape_.file_);
    tape_.items_.back().link = static_cast<std::uint32_t>(tape_.classes_.size());
    tape_.classes_.push_back(cache_ != nullptr
                                 ? cache_->get_class_entry(view, record)
                                 : std::make_shared<ClassEntry>(view, record, nullptr, -1));
  }

  [[nodiscard]] std::uint32_t size() const { return tape_.size(); }
  void truncate(std::uint32_t size) { tape_.truncate(size); }

  void finish_pair(ArrayFrame& frame) {
    ValueTape::Item& array = tape_.items_[frame.array];
    const std::uint32_t key = frame.pair;
    if (array.cut == 0 && is_cut_marker(key)) array.cut = 1;
    if (array.cut != 0) {
      truncate(key);
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
    if (const std::uint32_t value = tape_.end(key); is_cut_marker(value)) {
      ValueTape::Item& item = tape_.items_[value];
      item.type = static_cast<std::uint32_t>(ValueType::array) & 0xF;
      item.cut = item.list = 1;
      item.link = value + 1;
    }
  }

  void finish_array(std::uint32_t item) { tape_.items_[item].link = tape_.size(); }

 private:
  [[nodiscard]] bool is_cut_marker(std::uint32_t item) const {
    return tape_.type(item) == ValueType::string &&
           decodes_to(tape_.string(item).view(), String::cut_marker);
  }

  ValueTape& tape_;
  EntityCache* cache_;
};

ValueTape::Index ValueTape::decode(Cursor& cursor, EntityCache* cache) {
  const Index root = size();
  if (!cursor.ok()) {
    items_.push_back({0, 0, 0, 0, no_class});
    return root;
  }
  TapeTarget target(*this, cache);
  Machine machine(cursor, frames_, target);
  machine.run();
  return root;
}

void scan_value(Cursor& cursor, const CheckpointView& view, EntityCache* cache) {
  if (!cursor.ok()) return;
  std::vector<ArrayFrame> frames;
  NoTarget target(view, cache);
  Machine machine(cursor, frames, target);
  machine.run();
}

}  // namespace CT::Checkpoint
