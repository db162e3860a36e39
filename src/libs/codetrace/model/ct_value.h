// SPDX-License-Identifier: MIT
//
// One PHP value of the trace, for programs that use the library. The outputs work on tapes.
//
// A KVal shares the tape that it was decoded to: copying it, or taking the elements of an array,
// copies a few words. Texts point into the file, which must outlive every value.
#pragma once

#include <QJsonValue>
#include <QString>
#include <memory>
#include <utility>
#include <vector>

#include "codetrace/model/ct_value_tape.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

class CODETRACE_EXPORT KVal {
 public:
  // Undef.
  KVal() = default;

  // Decodes the value at the cursor, which lies in the payload of `view`, and leaves the cursor
  // behind it. Objects of one class share its entry in the cache; without one they get an entry of
  // their own with id -1. A value that the payload's end cuts short is undef, or an array of its
  // whole pairs.
  KVal(const CheckpointView& view, Cursor& cursor, EntityCache* cache);

  // A value of a tape that is complete.
  KVal(std::shared_ptr<const ValueTape> tape, ValueTape::Index item)
      : tape_(std::move(tape)), item_(item) {}

  [[nodiscard]] ValueType type() const {
    return tape_ != nullptr ? tape_->type(item_) : ValueType::undef;
  }

  // By type; anything else than the type allows is false, 0, absent, null or empty.
  [[nodiscard]] bool as_boolean() const { return type() == ValueType::true_; }
  [[nodiscard]] std::int64_t as_long() const;
  [[nodiscard]] double as_double() const;
  [[nodiscard]] String string() const;
  // Arrays: whether the tracer left elements out; whether the keys are 0, 1, 2 and so on; the count
  // as the file has it, cut markers included; the pairs of key and value in file order.
  [[nodiscard]] bool is_cut() const;
  [[nodiscard]] bool is_list() const;
  [[nodiscard]] std::int32_t declared_count() const;
  [[nodiscard]] std::vector<std::pair<KVal, KVal>> elements() const;
  // Objects: null when the class is unknown.
  [[nodiscard]] std::shared_ptr<ClassEntry> class_entry() const;
  [[nodiscard]] std::uint32_t object_handle() const;
  [[nodiscard]] String resource_name() const;
  [[nodiscard]] std::int64_t resource_handle() const;

  // Becomes undef.
  void reset() { *this = KVal(); }
  // Becomes equal to the other value, sharing what that holds.
  void copy(const KVal& other) { *this = other; }

  // One line in the manner of PHP. `quoted`: whether a text that is the value itself stands in
  // double quotes; the second form also escapes that text, but none inside an array.
  [[nodiscard]] QString to_string(bool quoted) const;
  [[nodiscard]] QString to_escaped_string(bool quoted) const;
  // Undefined for undef and for values of more than 1,000 levels, which Qt's classes cannot hold.
  [[nodiscard]] QJsonValue as_json() const;

 private:
  std::shared_ptr<const ValueTape> tape_;  // null: undef
  ValueTape::Index item_ = 0;
};

}  // namespace CT::Checkpoint
