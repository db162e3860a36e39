// SPDX-License-Identifier: MIT
//
// ValueRef: one PHP value where it stands on a tape, and the loop over the pairs of an array. It
// owns nothing and is copied for nothing: the tape must outlive it, unchanged, and the file must
// outlive the tape. What it cannot say of a value of its type is false, 0, absent, null or empty.
//
//   for (const auto& [key, value] : array.elements()) ...
#pragma once

#include <iterator>
#include <string_view>

#include "codetrace/model/ct_value_tape.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

class Elements;
class KVal;

class CODETRACE_EXPORT ValueRef {
 public:
  // Undef.
  ValueRef() = default;

  // Requires: an item of the tape.
  ValueRef(const ValueTape& tape, ValueTape::Index item) : tape_(&tape), item_(item) {
    assert(item < tape.size());
  }

  // A temporary takes its tape with it.
  ValueRef(KVal&& kept) = delete;

  [[nodiscard]] ValueType type() const {
    return tape_ != nullptr ? tape_->type(item_) : ValueType::undef;
  }
  [[nodiscard]] bool is_undef() const { return type() == ValueType::undef; }
  // The tape and the item that it stands for; null for an undef that is on none.
  [[nodiscard]] const ValueTape* tape() const { return tape_; }
  [[nodiscard]] ValueTape::Index item() const { return item_; }

  [[nodiscard]] bool as_boolean() const { return type() == ValueType::true_; }
  [[nodiscard]] std::int64_t as_long() const {
    return tape_ != nullptr ? tape_->as_long(item_) : 0;
  }
  [[nodiscard]] double as_double() const { return tape_ != nullptr ? tape_->as_double(item_) : 0; }
  [[nodiscard]] String string() const { return tape_ != nullptr ? tape_->string(item_) : String(); }

  // Arrays: whether the tracer left elements out; whether the keys are 0, 1, 2 and so on; the count
  // as the file has it, cut markers included; the pairs that there are, in file order. Counting
  // them takes a look at each.
  [[nodiscard]] bool is_cut() const { return tape_ != nullptr && tape_->is_cut(item_); }
  [[nodiscard]] bool is_list() const { return tape_ != nullptr && tape_->is_list(item_); }
  [[nodiscard]] std::int32_t declared_count() const {
    return tape_ != nullptr ? tape_->declared_count(item_) : 0;
  }
  [[nodiscard]] std::size_t size() const;
  [[nodiscard]] Elements elements() const;
  // The value of a key, the last one of those with equal keys; undef if there is none.
  [[nodiscard]] ValueRef find(std::string_view key) const;
  [[nodiscard]] ValueRef find(std::int64_t key) const;

  // Objects: null when the class is unknown.
  [[nodiscard]] const ClassEntry* class_entry() const {
    return tape_ != nullptr ? tape_->class_entry(item_) : nullptr;
  }
  [[nodiscard]] std::uint32_t object_handle() const {
    return tape_ != nullptr ? tape_->object_handle(item_) : 0;
  }
  [[nodiscard]] String resource_name() const {
    return tape_ != nullptr ? tape_->resource_name(item_) : String();
  }
  [[nodiscard]] std::int64_t resource_handle() const {
    return tape_ != nullptr ? tape_->resource_handle(item_) : 0;
  }

  // As text, in the manner of PHP. `quoted`: whether a text that is the value itself stands in
  // double quotes; the second form also escapes that text, but none inside an array, so that either
  // may contain line breaks.
  [[nodiscard]] QString to_string(bool quoted) const;
  [[nodiscard]] QString to_escaped_string(bool quoted) const;

 private:
  const ValueTape* tape_ = nullptr;
  ValueTape::Index item_ = 0;
};

// The values that follow each other on a tape from one item to another: all of a tape, such as the
// arguments of a call.
class CODETRACE_EXPORT Values {
 public:
  class Iterator {
   public:
    using difference_type = std::ptrdiff_t;
    using value_type = ValueRef;
    Iterator() = default;
    Iterator(const ValueTape* tape, ValueTape::Index item) : tape_(tape), item_(item) {}
    ValueRef operator*() const { return {*tape_, item_}; }
    Iterator& operator++() {
      item_ = tape_->end(item_);
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.item_ == b.item_; }

   private:
    const ValueTape* tape_ = nullptr;
    ValueTape::Index item_ = 0;
  };

  Values() = default;
  explicit Values(const ValueTape& tape) : Values(tape, 0, tape.size()) {}
  Values(const ValueTape& tape, ValueTape::Index first, ValueTape::Index last)
      : tape_(&tape), first_(first), last_(last) {}

  [[nodiscard]] Iterator begin() const { return {tape_, first_}; }
  [[nodiscard]] Iterator end() const { return {tape_, last_}; }
  [[nodiscard]] bool empty() const { return first_ == last_; }

 private:
  const ValueTape* tape_ = nullptr;
  ValueTape::Index first_ = 0;
  ValueTape::Index last_ = 0;
};

// The pairs of an array.
class CODETRACE_EXPORT Elements {
 public:
  struct Pair {
    ValueRef key;
    ValueRef value;
  };

  class Iterator {
   public:
    using difference_type = std::ptrdiff_t;
    using value_type = Pair;
    Iterator() = default;
    explicit Iterator(Values::Iterator key) : key_(key) {}
    Pair operator*() const { return {*key_, *std::next(key_)}; }
    Iterator& operator++() {
      ++ ++key_;
      return *this;
    }
    Iterator operator++(int) {
      Iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    Values::Iterator key_;
  };

  Elements() = default;
  explicit Elements(const Values& keys_and_values) : items_(keys_and_values) {}

  [[nodiscard]] Iterator begin() const { return Iterator(items_.begin()); }
  [[nodiscard]] Iterator end() const { return Iterator(items_.end()); }
  [[nodiscard]] bool empty() const { return items_.empty(); }

 private:
  Values items_;
};

inline Elements ValueRef::elements() const {
  if (type() != ValueType::array) return {};
  return Elements(Values(*tape_, item_ + 1, tape_->end(item_)));
}

}  // namespace CT::Checkpoint
