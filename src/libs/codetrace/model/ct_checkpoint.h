// SPDX-License-Identifier: MIT
//
// What every decoded checkpoint record has in common: its type, its place, and the three common
// fields that it may carry.
//
// A record says where it lies and little more; fields are read when somebody asks. It is a value,
// cheap to make and to copy, that borrows the file and the table of functions and classes;
// make_record() gives one that keeps the table alive. A record that lacks what places it in the
// tree is kept but not valid; damage behind those fields leaves it valid and is told by damage().
#pragma once

#include <cassert>
#include <cstdint>
#include <memory>
#include <optional>

#include "codetrace/model/ct_entity.h"
#include "codetrace/model/ct_types.h"
#include "codetrace/model/ct_view.h"
#include "kcommon/k_export.h"
#include "kcommon/k_timestamp.h"

class QTextStream;

namespace CT::Checkpoint {

class ValueTape;

class CODETRACE_EXPORT Base {
 public:
  // Of no checkpoint: not valid, of type INVALID.
  Base() = default;

  // The record of the view's checkpoint. Functions are found in `entities`; a call of one that is
  // not there, like a record without what its type needs, is not valid. On a view that stands on no
  // checkpoint, or on one of a type that has no name, it is the record of no checkpoint.
  Base(const CheckpointView& view, const Entities& entities);

  // The same after its function and the classes of its values are entered into `entities`, and with
  // its damage noted.
  static Base sighted(const CheckpointView& view, Entities& entities);

  [[nodiscard]] bool is_valid() const { return valid_; }
  // The address of the header word in DATA: the record's identity. Null for no checkpoint.
  [[nodiscard]] const unsigned char* checkpoint() const { return checkpoint_; }
  // The same as an offset in DATA. Requires: a checkpoint.
  [[nodiscard]] std::uint32_t offset() const {
    assert(checkpoint_ != nullptr);
    return static_cast<std::uint32_t>(checkpoint_ - file_->data().data());
  }
  // Null for no checkpoint.
  [[nodiscard]] const File* file() const { return file_; }
  [[nodiscard]] const Entities* entities() const { return entities_; }
  // Requires: a checkpoint.
  [[nodiscard]] CheckpointView view() const { return CheckpointView::at(*file_, offset()); }
  [[nodiscard]] Type type() const { return type_; }
  [[nodiscard]] std::uint32_t payload_size() const { return size_; }

  [[nodiscard]] bool has_timestamp() const { return (flags_ & 1) != 0; }
  [[nodiscard]] bool has_memory() const { return (flags_ & 2) != 0; }
  [[nodiscard]] bool has_location() const { return (flags_ & 4) != 0; }
  // The three bits above, timestamp lowest.
  [[nodiscard]] std::uint8_t flags() const { return flags_; }

  // 0 and absent where the record carries none.
  [[nodiscard]] KTime::Timestamp timestamp() const {
    Cursor cursor = common(1);
    const std::int64_t seconds = cursor.i64();
    return {seconds, cursor.u32()};
  }
  [[nodiscard]] std::uint64_t memory() const { return common(2).u64(); }
  [[nodiscard]] String filename() const { return section_str_at(filename_place()); }
  // Where the file's name begins in ADD DATA, not measured; null for none.
  [[nodiscard]] const unsigned char* filename_place() const {
    return has_location() ? file_->add_data().resolve(common(4).u64()) : nullptr;
  }
  [[nodiscard]] std::uint32_t line_no() const {
    Cursor cursor = common(4);
    cursor.bytes(Format::reference_size);
    return cursor.u32();
  }

  // The offset in the payload of the first field that is not whole, if there is one. Looks at the
  // whole record.
  [[nodiscard]] std::optional<std::uint32_t> damage() const {
    const std::uint32_t found = damage_ != not_looked_for ? damage_ : look_for_damage();
    return found != no_damage ? std::optional(found) : std::nullopt;
  }

  // The record as a block of lines, the second into a stream of Qt's.
  void dump(Writer& out) const;
  QTextStream& dump(QTextStream& out) const;

  // Makes a tape ready for values of this record.
  void reset(ValueTape& tape) const;

 protected:
  // Over the fields behind the common ones; failed if the record is not valid.
  [[nodiscard]] Cursor own() const { return valid_ && !cut_ ? cursor_at(own_) : Cursor(); }
  // Of a valid call.
  [[nodiscard]] const Function* called() const { return function_; }
  // The text that the reference at an offset in its own fields means.
  [[nodiscard]] String referenced_text(std::size_t offset) const;
  [[nodiscard]] String section_str_at(const unsigned char* place) const {
    return place != nullptr ? section_str(*file_, place) : String();
  }

 private:
  // In place of an offset.
  static constexpr std::uint32_t no_damage = 0xFFFFFFFF;
  static constexpr std::uint32_t not_looked_for = 0xFFFFFFFE;

  Base(const CheckpointView& view, const Entities* entities);
  [[nodiscard]] std::uint32_t look_for_damage() const;
  void place_common_fields(std::uint8_t presence);
  CODETRACE_HIDDEN void place_cut_fields(std::uint8_t presence);
  template <class Find>
  void place_in_tree(Cursor& cursor, Find find);
  [[nodiscard]] CODETRACE_HIDDEN std::uint32_t scan(Cursor& cursor, bool is_placed,
                                                    Entities* entities) const;
  [[nodiscard]] const unsigned char* payload() const {
    return checkpoint_ + Format::header_word_size;
  }
  // At one of the common fields, by its bit; failed if it is not there.
  [[nodiscard]] Cursor common(std::uint8_t bit) const {
    return (flags_ & bit) != 0 ? cursor_at(Format::common_sizes[flags_ & (bit - 1)]) : Cursor();
  }
  // From an offset in the payload to its end; failed if there is no payload or not so much of it.
  [[nodiscard]] Cursor cursor_at(std::uint32_t offset) const {
    if (size_ == 0 || offset > size_) return {};
    return {payload() + offset, payload() + size_, file_->big_endian()};
  }

  const File* file_ = nullptr;
  const unsigned char* checkpoint_ = nullptr;
  const Entities* entities_ = nullptr;
  const Function* function_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t own_ = 0;  // where its own fields begin, or the common field that is cut
  std::uint32_t damage_ = not_looked_for;
  Type type_ = Type::INVALID;
  std::uint8_t flags_ = 0;
  bool valid_ = false;
  bool cut_ = false;  // in its common fields
};

// A record to keep: its table of functions and classes lives as long as it does, the file must
// outlive it. With `entities` functions and classes are entered there, without it they get a table
// of the record's own, with ids -1. Null for a type that has no record.
CODETRACE_EXPORT std::shared_ptr<const Base> make_record(const CheckpointView& view,
                                                         Entities* entities);

}  // namespace CT::Checkpoint
