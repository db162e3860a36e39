// SPDX-License-Identifier: MIT
//
// The record classes, one a kind of checkpoint, and `Record`, which makes the right one for a view.
// Each reads its own fields behind the common ones; see ct_checkpoint.h for what they share.
#pragma once

#include <memory>
#include <variant>
#include <vector>

#include "codetrace/model/ct_checkpoint.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/model/ct_value_tape.h"
#include "kcommon/k_export.h"

namespace CT::Checkpoint {

class CODETRACE_EXPORT Startup final : public Base {
 public:
  Startup(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] String url() const { return text(url_); }  // the final one, after rewriting
  [[nodiscard]] String orig_uri() const { return text(orig_uri_); }
  [[nodiscard]] String host() const { return text(host_); }
  [[nodiscard]] String method() const { return text(method_); }
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  const unsigned char* url_ = nullptr;
  const unsigned char* orig_uri_ = nullptr;
  const unsigned char* host_ = nullptr;
  const unsigned char* method_ = nullptr;
};

class CODETRACE_EXPORT Shutdown final : public Base {
 public:
  using Base::Base;
};

class CODETRACE_EXPORT IncludeCall final : public Base {
 public:
  IncludeCall(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] String include() const { return text(include_); }  // as the script wrote it
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  const unsigned char* include_ = nullptr;
};

// What ends a span: it carries the address of the checkpoint that began it.
class CODETRACE_EXPORT End : public Base {
 public:
  // Invalid if the start reference is not whole.
  End(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  // The relocated address, 0 for none; it may lie anywhere.
  [[nodiscard]] std::uint64_t start() const { return start_; }
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  std::uint64_t start_ = 0;
};

// An end with one value.
class CODETRACE_EXPORT EndWithValue : public End {
 public:
  EndWithValue(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] KVal value() const;
  // Decodes the value to the tape, which is reset; returns its item.
  ValueTape::Index decode_value(ValueTape& tape) const;

 protected:
  void dump_line(std::string_view label, Writer& out) const;

 private:
  Cursor value_at_;
  EntityCache* cache_;
};

class CODETRACE_EXPORT FunctionReturn final : public EndWithValue {
 public:
  using Base::dump;
  using EndWithValue::EndWithValue;
  void dump(Writer& out) const override;
};

class CODETRACE_EXPORT FunctionException final : public EndWithValue {
 public:
  using Base::dump;
  using EndWithValue::EndWithValue;
  void dump(Writer& out) const override;
};

class CODETRACE_EXPORT IncludeReturn final : public End {
 public:
  using End::End;
};

class CODETRACE_EXPORT IncludeException final : public EndWithValue {
 public:
  using Base::dump;
  using EndWithValue::EndWithValue;
  void dump(Writer& out) const override;
};

class CODETRACE_EXPORT SapiWriteStart final : public Base {
 public:
  SapiWriteStart(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] String body() const { return body_; }  // may be cut
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  String body_;
};

class CODETRACE_EXPORT SapiWriteEnd final : public End {
 public:
  using End::End;
};

class CODETRACE_EXPORT SapiFlush final : public Base {
 public:
  SapiFlush(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
};

// Operations of PHP's sapi_header_op. The first three carry a header line.
enum class HeaderOp : std::uint8_t { replace, add, delete_, delete_all, set_status };

class CODETRACE_EXPORT SapiHeader final : public Base {
 public:
  SapiHeader(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  // As read: codes above HeaderOp::set_status occur.
  [[nodiscard]] std::uint8_t op() const { return op_; }
  [[nodiscard]] bool has_known_op() const {
    return op_ <= static_cast<std::uint8_t>(HeaderOp::set_status);
  }
  [[nodiscard]] bool has_header_line() const {
    return op_ <= static_cast<std::uint8_t>(HeaderOp::delete_);
  }
  [[nodiscard]] String header() const { return header_; }
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  std::uint8_t op_ = 0;
  String header_;
};

class CODETRACE_EXPORT SapiSendHeaders final : public Base {
 public:
  SapiSendHeaders(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] std::uint32_t code() const { return code_; }  // HTTP response code
  [[nodiscard]] String status() const { return status_; }     // HTTP status line
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  std::uint32_t code_ = 0;
  String status_;
};

class CODETRACE_EXPORT ScriptExit final : public Base {
 public:
  using Base::Base;
};

class CODETRACE_EXPORT ScriptError final : public Base {
 public:
  ScriptError(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] std::uint32_t error_num() const { return error_num_; }  // PHP's E_* constants
  [[nodiscard]] String error_message() const { return error_message_; }
  using Base::dump;
  void dump(Writer& out) const override;

 private:
  std::uint32_t error_num_ = 0;
  String error_message_;
};

class CODETRACE_EXPORT UserEvent final : public Base {
 public:
  UserEvent(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  [[nodiscard]] String event_name() const { return text(event_name_); }
  [[nodiscard]] std::uint32_t event_sequence() const { return event_sequence_; }

 private:
  const unsigned char* event_name_ = nullptr;
  std::uint32_t event_sequence_ = 0;
};

// A call of a function or a method; the latter has `this`.
class CODETRACE_EXPORT FunctionCall final : public Base {
 public:
  // Invalid, with nothing behind it read, if no descriptor can be found. The function comes from
  // the cache, or is decoded for this record alone without one.
  FunctionCall(const CheckpointView& view, Cursor& cursor, EntityCache* cache);
  // Null only in an invalid record.
  [[nodiscard]] const std::shared_ptr<Function>& function() const { return function_; }
  [[nodiscard]] bool has_this() const { return is_valid() && type() == Type::METHOD_CALL; }
  [[nodiscard]] KVal this_value() const;
  // As read; fewer arguments may follow in a damaged payload.
  [[nodiscard]] std::uint32_t arg_count() const { return arg_count_; }
  [[nodiscard]] std::vector<KVal> args() const;

  // The same onto a tape, which is reset: `this` as its first item, the arguments one after the
  // other.
  ValueTape::Index decode_this(ValueTape& tape) const;
  void decode_args(ValueTape& tape) const;

  using Base::dump;
  void dump(Writer& out) const override;

 private:
  void dump_function(Writer& out) const;

  std::shared_ptr<Function> function_;
  std::uint32_t arg_count_ = 0;
  Cursor this_at_;
  Cursor args_at_;
  EntityCache* cache_;
};

// Room for a record of any class, to be filled again and again without allocation.
class CODETRACE_EXPORT Record {
 public:
  // Makes the record of the view's type and takes note of damage; null for a type that has no
  // record. It lives until the next call.
  const Base* decode(const CheckpointView& view, EntityCache* cache);

 private:
  std::variant<std::monostate, Startup, Shutdown, FunctionCall, FunctionReturn, FunctionException,
               IncludeCall, IncludeReturn, IncludeException, SapiWriteStart, SapiWriteEnd,
               SapiFlush, SapiHeader, SapiSendHeaders, ScriptExit, ScriptError, UserEvent>
      record_;
};

// The same as an object of its own.
CODETRACE_EXPORT std::shared_ptr<Base> make_record(const CheckpointView& view, EntityCache* cache);

}  // namespace CT::Checkpoint
