// SPDX-License-Identifier: MIT
//
// KVal: one PHP value of the trace that may be kept. It shares the tape that it was decoded to, and
// keeps the classes of its objects alive, so copying it copies a few words and it outlives the
// record that it came from. Texts point into the file, which must outlive every value.
#pragma once

#include <memory>
#include <utility>

#include "codetrace/model/ct_value_ref.h"
#include "kcommon/k_export.h"

class QJsonValue;
class QString;

namespace CT::Checkpoint {

class CODETRACE_EXPORT KVal {
 public:
  // Undef.
  KVal() = default;

  // Decodes the value at the cursor, which lies in the payload of `view`, and leaves the cursor
  // behind it. Classes of objects are entered into `entities`; without it they get a table of their
  // own, with ids -1. A value that the payload's end cuts short is undef, or an array of its whole
  // pairs.
  KVal(const CheckpointView& view, Cursor& cursor, Entities* entities);

  // A value of a tape that is complete. The tape's table of classes must live as long as the tape.
  KVal(std::shared_ptr<const ValueTape> tape, ValueTape::Index item)
      : tape_(std::move(tape)), item_(item) {}

  // The value in place; it lives as long as this one or a copy of it.
  [[nodiscard]] ValueRef ref() const {
    return tape_ != nullptr ? ValueRef(*tape_, item_) : ValueRef();
  }
  // The same tape's value that `ref` stands for, kept. Requires: a part of this value.
  [[nodiscard]] KVal keep(const ValueRef& part) const {
    assert(part.tape() == tape_.get());
    return {tape_, part.item()};
  }

  // As ValueRef says.
  [[nodiscard]] ValueType type() const { return ref().type(); }
  [[nodiscard]] bool as_boolean() const { return ref().as_boolean(); }
  [[nodiscard]] std::int64_t as_long() const { return ref().as_long(); }
  [[nodiscard]] double as_double() const { return ref().as_double(); }
  [[nodiscard]] String string() const { return ref().string(); }
  [[nodiscard]] bool is_cut() const { return ref().is_cut(); }
  [[nodiscard]] bool is_list() const { return ref().is_list(); }
  [[nodiscard]] std::int32_t declared_count() const { return ref().declared_count(); }
  [[nodiscard]] Elements elements() const { return ref().elements(); }
  [[nodiscard]] const ClassEntry* class_entry() const { return ref().class_entry(); }
  [[nodiscard]] std::uint32_t object_handle() const { return ref().object_handle(); }
  [[nodiscard]] String resource_name() const { return ref().resource_name(); }
  [[nodiscard]] std::int64_t resource_handle() const { return ref().resource_handle(); }

  // Becomes undef.
  void reset() { *this = KVal(); }
  // Becomes equal to the other value, sharing what that holds.
  void copy(const KVal& other) { *this = other; }

  [[nodiscard]] QString to_string(bool quoted) const;
  [[nodiscard]] QString to_escaped_string(bool quoted) const;
  // Undefined for undef and for values of more than 1,000 levels, which Qt's classes cannot hold.
  [[nodiscard]] QJsonValue as_json() const;

 private:
  std::shared_ptr<const ValueTape> tape_;  // null: undef
  ValueTape::Index item_ = 0;
};

// A tape of its own that keeps its table of classes alive, for values that are kept.
CODETRACE_EXPORT std::shared_ptr<ValueTape> make_kept_tape(
    const CheckpointView& view, std::shared_ptr<const Entities> entities);

}  // namespace CT::Checkpoint
