// SPDX-License-Identifier: MIT
#include "codetrace/tree/ct_fields.h"

#include "codetrace/tree/ct_node.h"

namespace CT {

using Name = FieldName;

namespace {

// Kept: these numbers are unsigned in the file and show as C's int.
std::int64_t as_int(std::uint32_t value) { return static_cast<std::int32_t>(value); }

// What each kind of begin adds to the fields that all nodes have.
struct Collector {
  const Node::Base& node;
  Fields& fields;
  ValueRoom& room;

  void operator()(const Checkpoint::Base& /*record*/) const {}

  void operator()(const Checkpoint::Startup& record) const {
    fields.set_if_present(Name::url, record.url());
    fields.set_if_present(Name::orig_uri, record.orig_uri());
    fields.set_if_present(Name::host, record.host());
    fields.set_if_present(Name::method, record.method());
  }

  void operator()(const Checkpoint::FunctionCall& call) const {
    if (call.function() == nullptr) return;
    fields.set(Name::function, std::int64_t{call.function()->index()});
    if (call.has_this()) fields.set_if_present(Name::this_, call.this_value(room.this_value));
    const std::uint32_t count = call.arg_count();
    fields.set(Name::arg_count, as_int(count));
    if (count != 0) fields.set(Name::args, call.args(room.args));
    if (const auto returned = node.end_as<Checkpoint::FunctionReturn>()) {
      if (call.function()->is_constructor_or_destructor()) return;
      fields.set_if_present(Name::return_, returned->value(room.result));
    } else if (const auto thrown = node.end_as<Checkpoint::FunctionException>()) {
      fields.set_if_present(Name::exception, thrown->value(room.result));
    }
  }

  void operator()(const Checkpoint::IncludeCall& record) const {
    fields.set(Name::include, record.include());
    if (const auto thrown = node.end_as<Checkpoint::IncludeException>()) {
      fields.set_if_present(Name::exception, thrown->value(room.result));
    }
  }

  void operator()(const Checkpoint::SapiWriteStart& record) const {
    fields.set(Name::body, record.body());
  }

  void operator()(const Checkpoint::SapiHeader& record) const {
    if (!record.has_known_op()) return;
    constexpr std::array<std::string_view, 5> operations = {"REPLACE", "ADD", "DELETE",
                                                            "DELETE ALL", "SET STATUS"};
    fields.set(Name::op, Word{operations[record.op()]});
    if (record.has_header_line()) fields.set(Name::header, record.header());
  }

  void operator()(const Checkpoint::SapiSendHeaders& record) const {
    fields.set(Name::code, as_int(record.code()));
    fields.set_if_present(Name::status, record.status());
  }

  void operator()(const Checkpoint::ScriptError& record) const {
    fields.set(Name::error_num, as_int(record.error_num()));
    fields.set_if_present(Name::error_message, record.error_message());
  }

  void operator()(const Checkpoint::UserEvent& record) const {
    fields.set(Name::event_name, record.event_name());
    fields.set(Name::event_sequence, as_int(record.event_sequence()));
  }
};

void collect_place(const Checkpoint::String& filename, std::uint32_t line, Fields& fields) {
  fields.set(Name::filename, filename);
  fields.set(Name::line_no, std::int64_t{line});
}

}  // namespace

void Node::Base::collect(Fields& fields, ValueRoom& room) const {
  fields.set(Name::id, std::int64_t{id_});
  if (parent_id_ >= 0) fields.set(Name::parent_id, std::int64_t{parent_id_});
  fields.set(Name::name, Word{type_name(type_)});
  if (!is_valid()) return;
  if (begin_.has_timestamp()) {
    fields.set(Name::ts, begin_.timestamp());
    if (const double since_start = ms(); since_start > 0) fields.set(Name::ms, since_start);
    if (both_have(1)) fields.set(Name::ms_delta, ms_delta());
  }
  if (begin_.has_memory()) {
    if (type_ == Type::STARTUP) {
      fields.set(Name::sys_mem, static_cast<std::int64_t>(begin_.memory()));
    } else {
      fields.set(Name::mem, mem());
    }
    if (both_have(2)) fields.set(Name::mem_delta, mem_delta());
  }
  if (begin_.has_location()) {
    fields.set(Name::filename, SharedText{begin_.file(), begin_.filename_place()});
    fields.set(Name::line_no, as_int(begin_.line_no()));
  }
  Checkpoint::with_record(begin_, Collector{*this, fields, room});
}

void collect(const Checkpoint::ClassEntry& entry, Fields& fields) {
  fields.set(Name::name, entry.name());
  if (entry.id() >= 0) fields.set(Name::id, std::int64_t{entry.id()});
  const Checkpoint::String filename = entry.filename();
  if (entry.is_user() && filename.is_present()) collect_place(filename, entry.line(), fields);
}

void collect(const Checkpoint::Function& function, Fields& fields) {
  fields.set(Name::name, function.name());
  if (function.index() >= 0) fields.set(Name::id, std::int64_t{function.index()});
  const Checkpoint::String filename = function.filename();
  if (function.is_user() && !filename.is_empty()) {
    collect_place(filename, function.line_no(), fields);
  }
  const Checkpoint::ClassEntry* entry = function.class_entry();
  if (entry == nullptr) return;
  if (entry->id() >= 0) {
    fields.set(Name::class_, std::int64_t{entry->id()});
  } else {
    fields.set(Name::class_, entry);
  }
}

}  // namespace CT
