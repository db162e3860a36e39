// SPDX-License-Identifier: MIT
//
// The record classes, one a kind of checkpoint. Each reads its own fields behind the common ones
// and holds nothing itself, so a record of a class is made from a Base for nothing:
//
//   if (const auto call = record_as<Checkpoint::FunctionCall>(record)) call->function()...
//
// See ct_checkpoint.h for what they share. A field that is not whole is 0, absent or undef, and so
// is every field of a record that is not valid.
#pragma once

#include <array>
#include <optional>
#include <tuple>
#include <type_traits>
#include <vector>

#include "codetrace/model/ct_checkpoint.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/model/ct_value_cursor.h"
#include "codetrace/model/ct_value_tape.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

class CODETRACE_EXPORT Startup final : public Base {
 public:
  explicit Startup(const Base& record) : Base(record) {}
  [[nodiscard]] String url() const { return reference(0); }  // the final one, after rewriting
  [[nodiscard]] String orig_uri() const { return reference(1); }
  [[nodiscard]] String host() const { return reference(2); }
  [[nodiscard]] String method() const { return reference(3); }

 private:
  [[nodiscard]] String reference(std::size_t number) const {
    return referenced_text(number * Format::reference_size);
  }
};

class CODETRACE_EXPORT Shutdown final : public Base {
 public:
  explicit Shutdown(const Base& record) : Base(record) {}
};

class CODETRACE_EXPORT IncludeCall final : public Base {
 public:
  explicit IncludeCall(const Base& record) : Base(record) {}
  [[nodiscard]] String include() const { return referenced_text(0); }  // as the script wrote it
};

// What ends a span: it carries the address of the checkpoint that began it.
class CODETRACE_EXPORT End : public Base {
 public:
  explicit End(const Base& record) : Base(record) {}
  // The relocated address, 0 for none; it may lie anywhere.
  [[nodiscard]] std::uint64_t start() const {
    Cursor cursor = own();
    const std::uint64_t reference = cursor.u64();
    return cursor.ok() ? file()->data().relocate(reference) : 0;
  }
};

// An end with one value.
class CODETRACE_EXPORT EndWithValue : public End {
 public:
  explicit EndWithValue(const Base& record) : End(record) {}
  [[nodiscard]] KVal value() const;
  // The same on a tape, which is reset.
  ValueRef value(ValueTape& tape) const;
  // The same for whoever looks at it once, in place.
  [[nodiscard]] ValueCursor values() const {
    ValueCursor values = {own(), 1, file(), entities()};
    values.at.bytes(Format::reference_size);
    return values;
  }
};

class CODETRACE_EXPORT FunctionReturn final : public EndWithValue {
 public:
  using EndWithValue::EndWithValue;
};

class CODETRACE_EXPORT FunctionException final : public EndWithValue {
 public:
  using EndWithValue::EndWithValue;
};

class CODETRACE_EXPORT IncludeReturn final : public End {
 public:
  using End::End;
};

class CODETRACE_EXPORT IncludeException final : public EndWithValue {
 public:
  using EndWithValue::EndWithValue;
};

class CODETRACE_EXPORT SapiWriteStart final : public Base {
 public:
  explicit SapiWriteStart(const Base& record) : Base(record) {}
  [[nodiscard]] String body() const;  // may be cut
};

class CODETRACE_EXPORT SapiWriteEnd final : public End {
 public:
  using End::End;
};

class CODETRACE_EXPORT SapiFlush final : public Base {
 public:
  explicit SapiFlush(const Base& record) : Base(record) {}
};

// Operations of PHP's sapi_header_op. The first three carry a header line.
enum class HeaderOp : std::uint8_t { replace, add, delete_, delete_all, set_status };

class CODETRACE_EXPORT SapiHeader final : public Base {
 public:
  explicit SapiHeader(const Base& record) : Base(record) {}
  // As read: codes above HeaderOp::set_status occur.
  [[nodiscard]] std::uint8_t op() const { return own().u8(); }
  [[nodiscard]] bool has_known_op() const {
    return op() <= static_cast<std::uint8_t>(HeaderOp::set_status);
  }
  [[nodiscard]] bool has_header_line() const { return op() < Format::first_operation_without_line; }
  [[nodiscard]] String header() const;  // absent where there is no header line
};

class CODETRACE_EXPORT SapiSendHeaders final : public Base {
 public:
  explicit SapiSendHeaders(const Base& record) : Base(record) {}
  [[nodiscard]] std::uint32_t code() const { return own().u32(); }  // HTTP response code
  [[nodiscard]] String status() const;                              // HTTP status line
};

class CODETRACE_EXPORT ScriptExit final : public Base {
 public:
  explicit ScriptExit(const Base& record) : Base(record) {}
};

class CODETRACE_EXPORT ScriptError final : public Base {
 public:
  explicit ScriptError(const Base& record) : Base(record) {}
  [[nodiscard]] std::uint32_t error_num() const { return own().u32(); }  // PHP's E_* constants
  [[nodiscard]] String error_message() const;
};

class CODETRACE_EXPORT UserEvent final : public Base {
 public:
  explicit UserEvent(const Base& record) : Base(record) {}
  [[nodiscard]] String event_name() const { return referenced_text(0); }
  [[nodiscard]] std::uint32_t event_sequence() const;
};

// A call of a function or a method; the latter has `this`.
class CODETRACE_EXPORT FunctionCall final : public Base {
 public:
  explicit FunctionCall(const Base& record) : Base(record) {}
  // Null only in a record that is not valid. It lives as long as entities().
  [[nodiscard]] const Function* function() const { return is_valid() ? called() : nullptr; }
  [[nodiscard]] bool has_this() const { return is_valid() && type() == Type::METHOD_CALL; }
  [[nodiscard]] KVal this_value() const;
  // As read; fewer arguments may follow in a damaged payload.
  [[nodiscard]] std::uint32_t arg_count() const { return arguments().u32(); }
  [[nodiscard]] std::vector<KVal> args() const;

  // The same on a tape, which is reset.
  ValueRef this_value(ValueTape& tape) const;
  Values args(ValueTape& tape) const;
  // The arguments for whoever looks at each once, in place.
  [[nodiscard]] ValueCursor arg_values() const {
    ValueCursor values = {arguments(), 0, file(), entities()};
    values.left = values.at.u32();
    return values;
  }
  [[nodiscard]] ValueCursor this_values() const {
    ValueCursor values = {own(), has_this() ? 1U : 0U, file(), entities()};
    values.at.bytes(Format::reference_size);
    return values;
  }

 private:
  // At the number of arguments.
  [[nodiscard]] Cursor arguments() const;
};

namespace Rows {

// Whether the record class is that of a type.
template <class Class>
constexpr bool is_record_of(Type type) {
  return std::apply(
      [&]<class... Record>(const TypeRow<Record>&... row) {
        return ((std::is_same_v<Class, Record> && row.info.type == type) || ...);
      },
      type_rows);
}

}  // namespace Rows

// The record as one of a class; nothing if it is of another.
template <class Class>
std::optional<Class> record_as(const Base& record) {
  if (!Rows::is_record_of<Class>(record.type())) return std::nullopt;
  return std::optional<Class>(std::in_place, record);
}

// The same for what all ends, and all ends with a value, have.
template <>
inline std::optional<End> record_as<End>(const Base& record) {
  if (type_info(record.type()).role != Role::span_end) return std::nullopt;
  return End(record);
}
template <>
inline std::optional<EndWithValue> record_as<EndWithValue>(const Base& record) {
  const TypeInfo& info = type_info(record.type());
  if (info.role != Role::span_end || info.layout[1] != Format::Field::value) return std::nullopt;
  return EndWithValue(record);
}

// Calls `visit` with the record as one of its class, or as a Base if its type has none.
template <class Visit>
void with_record(const Base& record, const Visit& visit) {
  using Call = void (*)(const Base&, const Visit&);
  static constexpr auto calls = std::apply(
      []<class... Record>(const TypeRow<Record>&...) {
        return std::array<Call, type_count + 1>{
            [](const Base& base, const Visit& visitor) { visitor(Record(base)); }...,
            [](const Base&, const Visit&) {}};
      },
      type_rows);
  calls[static_cast<std::size_t>(record.type())](record, visit);
}

}  // namespace CT::Checkpoint
