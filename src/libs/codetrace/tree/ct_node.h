// SPDX-License-Identifier: MIT
//
// The nodes of a request's execution tree: what spans time (the request, calls, includes, writes)
// has a begin and an end, everything else is a point. A node shares its checkpoint records and
// knows its parent only by number; CT::Storage makes nodes and keeps the tree.
//
// Each class says how it reads as a line of text and as members of a JSON object. The records
// decide what is there: a figure whose fields are missing stays 0.
#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_json_members.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"
#include "kcommon/k_export.h"

namespace CT::Node {

// Working memory for rendering, reused from node to node. Rendered members borrow from it.
struct CODETRACE_EXPORT Workspace {
  Checkpoint::ValueTape this_value;
  Checkpoint::ValueTape args;
  Checkpoint::ValueTape result;
  Checkpoint::ValueTextWriter text_writer;
  Checkpoint::ValueJsonWriter json_writer;
  Checkpoint::ValuePart this_part;
  Checkpoint::ValueListPart args_part;
  Checkpoint::ValuePart result_part;
  MemoryWriter timestamp;
};

class CODETRACE_EXPORT Base {
 public:
  enum class Type : std::int32_t {
    STARTUP,
    FUNCTION_CALL,
    METHOD_CALL,
    INCLUDE_CALL,
    SAPI_WRITE,
    SAPI_FLUSH,
    SAPI_HEADER,
    SAPI_SEND_HEADERS,
    SCRIPT_EXIT,
    SCRIPT_ERROR,
    CRASH,  // no node of this type is ever made
    USER_EVENT,
  };

  using Record = std::shared_ptr<const Checkpoint::Base>;

  Base(const Base&) = delete;
  Base& operator=(const Base&) = delete;
  virtual ~Base() = default;

  [[nodiscard]] Type type() const { return type_; }
  // Unique in one tree, rising in order of creation.
  [[nodiscard]] std::int32_t id() const { return id_; }
  // -1 for a node without parent.
  [[nodiscard]] std::int32_t parent_id() const { return parent_id_; }
  // Bytes in use at the begin, less those at the request's start; and from begin to end.
  [[nodiscard]] std::int64_t mem() const { return mem_; }
  [[nodiscard]] std::int64_t mem_delta() const { return mem_delta_; }
  // Milliseconds from the request's start to the begin; and from begin to end.
  [[nodiscard]] double ms() const { return ms_; }
  [[nodiscard]] double ms_delta() const { return ms_delta_; }
  [[nodiscard]] const Record& begin() const { return begin_; }
  // Null until add_end.
  [[nodiscard]] const Record& end() const { return end_; }
  // The same as records of their class, such as Checkpoint::FunctionCall; null if they are of
  // another one, or not there.
  template <class Class>
  [[nodiscard]] const Class* begin_as() const {
    return as<Class>(begin_);
  }
  template <class Class>
  [[nodiscard]] const Class* end_as() const {
    return as<Class>(end_);
  }

  // Closes the node. A figure that only one of both records has the fields for keeps its value.
  void add_end(Record end);

  [[nodiscard]] bool is_valid() const { return begin_ != nullptr; }
  // Points are complete as soon as they are valid, spans once they have an end.
  [[nodiscard]] virtual bool is_complete() const { return is_valid(); }

  // Appends the node's text; false if it has no line.
  virtual bool write_text(Writer& out, Workspace& work) const;
  // Adds the node's members, which borrow from the node and from `work`.
  virtual void collect(JsonMembers& members, Workspace& work) const;

  // The same for programs that work with Qt's classes; `to_json` always returns true.
  bool to_text(QString& text) const;
  bool to_json(QJsonObject& object) const;

 protected:
  Base(Type type, Record begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
       std::int32_t id, std::int32_t parent_id);

  // The record as one of a class; null if there is none, and if it is of another.
  template <class Class>
  static const Class* as(const Record& record) {
    return record != nullptr ? Checkpoint::record_as<Class>(*record) : nullptr;
  }

 private:
  Type type_;
  std::int32_t id_;
  std::int32_t parent_id_;
  std::int64_t mem_ = 0;
  std::int64_t mem_delta_ = 0;
  double ms_ = 0;
  double ms_delta_ = 0;
  Record begin_;
  Record end_;
};

// The type's name in outputs and messages; "INVALID" for a value outside of the enumeration.
// Kept: a method call goes by the name of a function call.
CODETRACE_EXPORT std::string_view type_name(Base::Type type);

// The type of the node that a checkpoint of this type begins; CRASH for one that begins none.
Base::Type type_of_begin(Checkpoint::Type begin);

// A node that has a begin and an end.
class CODETRACE_EXPORT Span : public Base {
 public:
  [[nodiscard]] bool is_complete() const override { return is_valid() && end() != nullptr; }

 protected:
  using Base::Base;
};

// The constructors take the begin record, the request's start time and memory, the node's number
// and its parent's.
template <class Parent, Base::Type fixed_type>
class Typed : public Parent {
 public:
  Typed(Base::Record begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
        std::int32_t id, std::int32_t parent_id)
      : Parent(fixed_type, std::move(begin), start_time, start_memory, id, parent_id) {}
};

class CODETRACE_EXPORT Startup final : public Typed<Span, Base::Type::STARTUP> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT FunctionCall final : public Span {
 public:
  // Of type METHOD_CALL if the begin record is of that type.
  FunctionCall(const Record& begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
               std::int32_t id, std::int32_t parent_id);
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;

 private:
  void write_result(const Checkpoint::Function& function, Writer& out, Workspace& work) const;
  void collect_result(const Checkpoint::Function& function, JsonMembers& members,
                      Workspace& work) const;
};

class CODETRACE_EXPORT IncludeCall final : public Typed<Span, Base::Type::INCLUDE_CALL> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT SapiWrite final : public Typed<Span, Base::Type::SAPI_WRITE> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT SapiFlush final : public Typed<Base, Base::Type::SAPI_FLUSH> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
};

class CODETRACE_EXPORT SapiHeader final : public Typed<Base, Base::Type::SAPI_HEADER> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT SapiSendHeaders final : public Typed<Base, Base::Type::SAPI_SEND_HEADERS> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT ScriptExit final : public Typed<Base, Base::Type::SCRIPT_EXIT> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
};

class CODETRACE_EXPORT ScriptError final : public Typed<Base, Base::Type::SCRIPT_ERROR> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

class CODETRACE_EXPORT UserEvent final : public Typed<Base, Base::Type::USER_EVENT> {
 public:
  using Typed::Typed;
  bool write_text(Writer& out, Workspace& work) const override;
  void collect(JsonMembers& members, Workspace& work) const override;
};

}  // namespace CT::Node
