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

namespace CT::Checkpoint {

// Everything that ValueRef says of a value, it says of its own.
class CODETRACE_EXPORT KVal : public ValueRef {
 public:
  // Undef.
  KVal() = default;
  KVal(const KVal&) = default;
  KVal& operator=(const KVal&) = default;
  // What is moved from is undef.
  KVal(KVal&& other) noexcept : KVal() { swap(other); }
  KVal& operator=(KVal&& other) noexcept {
    KVal(std::move(other)).swap(*this);
    return *this;
  }
  ~KVal() = default;

  // Decodes the value at the cursor, which lies in the payload of `view`, and leaves the cursor
  // behind it. Classes of objects are entered into `entities`; without it they get a table of their
  // own, with ids -1. A value that the payload's end cuts short is undef, or an array of its whole
  // pairs.
  KVal(const CheckpointView& view, Cursor& cursor, Entities* entities);

  // A value of a tape that is complete. The tape's table of classes must live as long as the tape.
  KVal(std::shared_ptr<const ValueTape> tape, ValueTape::Index item)
      : ValueRef(*tape, item), kept_(std::move(tape)) {}

  // The value in place and its parts; they live as long as this one or a copy of it, so a temporary
  // has none.
  [[nodiscard]] const ValueRef& ref() const& { return *this; }
  const ValueRef& ref() const&& = delete;
  [[nodiscard]] Elements elements() const& { return ValueRef::elements(); }
  Elements elements() const&& = delete;
  template <class Key>
  [[nodiscard]] ValueRef find(Key key) const& {
    return ValueRef::find(key);
  }
  template <class Key>
  ValueRef find(Key key) const&& = delete;
  // The same tape's value that `part` stands for, kept. Requires: a part of this value.
  [[nodiscard]] KVal keep(const ValueRef& part) const {
    assert(part.tape() == kept_.get());
    return {kept_, part.item()};
  }

  // Becomes undef.
  void reset() { *this = KVal(); }
  // Becomes equal to the other value, sharing what that holds.
  void copy(const KVal& other) { *this = other; }

  // Undefined for undef and for values of more than 1,000 levels, which Qt's classes cannot hold.
  [[nodiscard]] QJsonValue as_json() const;

 private:
  void swap(KVal& other) noexcept {
    std::swap(static_cast<ValueRef&>(*this), static_cast<ValueRef&>(other));
    kept_.swap(other.kept_);
  }

  std::shared_ptr<const ValueTape> kept_;  // null: undef
};

// A tape of its own that keeps its table of classes alive, for values that are kept.
CODETRACE_EXPORT std::shared_ptr<ValueTape> make_kept_tape(
    const CheckpointView& view, std::shared_ptr<const Entities> entities);

}  // namespace CT::Checkpoint
