// SPDX-License-Identifier: MIT
//
// The nodes of a request's execution tree: what spans time (the request, calls, includes, writes)
// has a begin and an end, everything else is a point. A node knows its parent only by number;
// CT::Storage makes nodes and keeps the tree.
//
// A node is a value with its checkpoint records in it, which borrow the file and the table of
// functions and classes. The records decide what is there: a figure whose fields are missing is 0.
#pragma once

#include <cstdint>
#include <optional>

#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_types.h"
#include "kcommon/k_export.h"

class QJsonObject;
class QString;

namespace CT {
class Fields;
class Writer;
}  // namespace CT

namespace CT::Node {

struct TextRoom;  // working memory for text, see ct_node_text.h
struct ValueRoom;

// The type of the node that a checkpoint of this type begins; CRASH for one that begins none.
constexpr Type type_of_begin(Checkpoint::Type begin) { return Checkpoint::type_info(begin).node; }

class CODETRACE_EXPORT Base {
 public:
  using Type = Node::Type;
  using Record = Checkpoint::Base;

  // Of no checkpoint: not valid.
  Base() = default;

  // A node without end. `begin` decides what there is; the request's start time and memory are what
  // its figures count from.
  Base(Type type, const Record& begin, const KTime::Timestamp& start_time,
       std::uint64_t start_memory, std::int32_t id, std::int32_t parent_id)
      : begin_(begin),
        start_time_(start_time),
        start_memory_(start_memory),
        type_(type),
        id_(id),
        parent_id_(parent_id) {}
  // The same with the record made where it stays.
  Base(const CheckpointView& begin, const Entities& entities, const KTime::Timestamp& start_time,
       std::uint64_t start_memory, std::int32_t id, std::int32_t parent_id)
      : begin_(begin, entities),
        start_time_(start_time),
        start_memory_(start_memory),
        type_(type_of_begin(begin_.type())),
        id_(id),
        parent_id_(parent_id) {}

  [[nodiscard]] Type type() const { return type_; }
  // Unique in one tree, rising in order of creation.
  [[nodiscard]] std::int32_t id() const { return id_; }
  // -1 for a node without parent.
  [[nodiscard]] std::int32_t parent_id() const { return parent_id_; }
  // Bytes in use at the begin, less those at the request's start; and from begin to end.
  [[nodiscard]] std::int64_t mem() const;
  [[nodiscard]] std::int64_t mem_delta() const;
  // Milliseconds from the request's start to the begin; and from begin to end.
  [[nodiscard]] double ms() const;
  [[nodiscard]] double ms_delta() const;

  // Part of the node. They borrow what the node borrows.
  [[nodiscard]] const Record& begin() const { return begin_; }
  // Null until add_end.
  [[nodiscard]] const Record* end() const { return has_end_ ? &end_ : nullptr; }
  // The same as records of their class, such as Checkpoint::FunctionCall; nothing if they are of
  // another one, or not there.
  template <class Class>
  [[nodiscard]] std::optional<Class> begin_as() const {
    return Checkpoint::record_as<Class>(begin_);
  }
  template <class Class>
  [[nodiscard]] std::optional<Class> end_as() const {
    if (!has_end_) return std::nullopt;
    return Checkpoint::record_as<Class>(end_);
  }

  // Closes the node. A figure that only one of both records has the fields for keeps its value.
  void add_end(const Record& end);
  void add_end(const CheckpointView& end, const Entities& entities);

  [[nodiscard]] bool is_valid() const { return begin_.checkpoint() != nullptr; }
  [[nodiscard]] bool is_span() const;
  // Points are complete as soon as they are valid, spans once they have an end.
  [[nodiscard]] bool is_complete() const { return is_valid() && (has_end_ || !is_span()); }

  // Appends the node's text, without indentation; false if it has no line.
  bool write_text(Writer& out, TextRoom& room) const;
  // Adds what the node consists of; values among it borrow from `room`.
  void collect(Fields& fields, ValueRoom& room) const;

  // The same for programs that work with Qt's classes; `to_json` always returns true.
  bool to_text(QString& text) const;
  bool to_json(QJsonObject& object) const;

 private:
  CODETRACE_HIDDEN void keep_figures();
  [[nodiscard]] bool both_have(std::uint8_t flag) const {
    return has_end_ && (begin_.flags() & end_.flags() & flag) != 0;
  }

  Record begin_;
  Record end_;
  KTime::Timestamp start_time_;
  std::uint64_t start_memory_ = 0;
  double kept_ms_delta_ = 0;
  std::int64_t kept_mem_delta_ = 0;
  Type type_ = Type::CRASH;
  std::int32_t id_ = -1;
  std::int32_t parent_id_ = -1;
  bool has_end_ = false;
};

// A node of one type, made from its begin.
template <Type fixed_type>
class Typed final : public Base {
 public:
  Typed(const Record& begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
        std::int32_t id, std::int32_t parent_id)
      : Base(fixed_type, begin, start_time, start_memory, id, parent_id) {}
};

using Startup = Typed<Type::STARTUP>;
using IncludeCall = Typed<Type::INCLUDE_CALL>;
using SapiWrite = Typed<Type::SAPI_WRITE>;
using SapiFlush = Typed<Type::SAPI_FLUSH>;
using SapiHeader = Typed<Type::SAPI_HEADER>;
using SapiSendHeaders = Typed<Type::SAPI_SEND_HEADERS>;
using ScriptExit = Typed<Type::SCRIPT_EXIT>;
using ScriptError = Typed<Type::SCRIPT_ERROR>;
using UserEvent = Typed<Type::USER_EVENT>;

// Of type METHOD_CALL if the begin record is of that type.
class CODETRACE_EXPORT FunctionCall final : public Base {
 public:
  FunctionCall(const Record& begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
               std::int32_t id, std::int32_t parent_id)
      : Base(
            begin.type() == Checkpoint::Type::METHOD_CALL ? Type::METHOD_CALL : Type::FUNCTION_CALL,
            begin, start_time, start_memory, id, parent_id) {}
};

}  // namespace CT::Node
