// SPDX-License-Identifier: MIT
//
// The members of node objects in the JSON document.
#include "codetrace/render/ct_number.h"
#include "codetrace/tree/ct_node.h"

namespace CT::Node {

namespace {

// Kept: these numbers are unsigned in the file and print as C's int.
std::int64_t as_int(std::uint32_t value) { return static_cast<std::int32_t>(value); }

void add_if_present(JsonMembers& members, Key key, Checkpoint::String text) {
  if (!text.is_empty()) members.string(key, text);
}

// A record's value, unless it is undef, which JSON cannot say.
void add_outcome(JsonMembers& members, Key key, const Checkpoint::EndWithValue& end,
                 Workspace& work) {
  const auto value = end.decode_value(work.result);
  if (work.result.type(value) == Checkpoint::ValueType::undef) return;
  work.result_part.set(work.result, value, work.json_writer);
  members.part(key, work.result_part);
}

}  // namespace

void Base::collect(JsonMembers& members, Workspace& work) const {
  members.number(Key::id, id_);
  if (parent_id_ >= 0) members.number(Key::parent_id, parent_id_);
  members.text(Key::name, type_name(type_));
  if (begin_ == nullptr) return;
  if (begin_->has_timestamp()) {
    work.timestamp.clear();
    put_timestamp(work.timestamp, begin_->timestamp());
    members.text(Key::ts, work.timestamp.view());
    if (ms_ > 0) members.real(Key::ms, ms_);
    if (end_ != nullptr && end_->has_timestamp()) members.real(Key::ms_delta, ms_delta_);
  }
  if (begin_->has_memory()) {
    if (type_ == Type::STARTUP) {
      members.number(Key::sys_mem, static_cast<std::int64_t>(begin_->memory()));
    } else {
      members.number(Key::mem, mem_);
    }
    if (end_ != nullptr && end_->has_memory()) members.number(Key::mem_delta, mem_delta_);
  }
  if (begin_->has_location()) {
    members.string(Key::filename, begin_->filename());
    members.number(Key::line_no, as_int(begin_->line_no()));
  }
}

void Startup::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::Startup>(begin());
  if (record == nullptr) return;
  add_if_present(members, Key::url, record->url());
  add_if_present(members, Key::orig_uri, record->orig_uri());
  add_if_present(members, Key::host, record->host());
  add_if_present(members, Key::method, record->method());
}

void FunctionCall::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* call = as<Checkpoint::FunctionCall>(begin());
  if (call == nullptr || call->function() == nullptr) return;
  members.number(Key::function, call->function()->index());
  if (call->has_this()) {
    const auto value = call->decode_this(work.this_value);
    if (work.this_value.type(value) != Checkpoint::ValueType::undef) {
      work.this_part.set(work.this_value, value, work.json_writer);
      members.part(Key::this_, work.this_part);
    }
  }
  members.number(Key::arg_count, as_int(call->arg_count()));
  if (call->arg_count() != 0) {
    call->decode_args(work.args);
    work.args_part.set(work.args, work.json_writer);
    members.part(Key::args, work.args_part);
  }
  collect_result(*call->function(), members, work);
}

void FunctionCall::collect_result(const Checkpoint::Function& function, JsonMembers& members,
                                  Workspace& work) const {
  if (const auto* returned = as<Checkpoint::FunctionReturn>(end())) {
    if (function.is_constructor_or_destructor()) return;
    add_outcome(members, Key::return_, *returned, work);
  } else if (const auto* thrown = as<Checkpoint::FunctionException>(end())) {
    add_outcome(members, Key::exception, *thrown, work);
  }
}

void IncludeCall::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::IncludeCall>(begin());
  if (record == nullptr) return;
  members.string(Key::include, record->include());
  if (const auto* thrown = as<Checkpoint::IncludeException>(end())) {
    add_outcome(members, Key::exception, *thrown, work);
  }
}

void SapiWrite::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::SapiWriteStart>(begin());
  if (record != nullptr) members.string(Key::body, record->body());
}

void SapiHeader::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::SapiHeader>(begin());
  if (record == nullptr || !record->has_known_op()) return;
  switch (static_cast<Checkpoint::HeaderOp>(record->op())) {
    case Checkpoint::HeaderOp::replace: members.text(Key::op, "REPLACE"); break;
    case Checkpoint::HeaderOp::add: members.text(Key::op, "ADD"); break;
    case Checkpoint::HeaderOp::delete_: members.text(Key::op, "DELETE"); break;
    case Checkpoint::HeaderOp::delete_all: members.text(Key::op, "DELETE ALL"); break;
    case Checkpoint::HeaderOp::set_status: members.text(Key::op, "SET STATUS"); break;
  }
  if (record->has_header_line()) members.string(Key::header, record->header());
}

void SapiSendHeaders::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::SapiSendHeaders>(begin());
  if (record == nullptr) return;
  members.number(Key::code, as_int(record->code()));
  add_if_present(members, Key::status, record->status());
}

void ScriptError::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::ScriptError>(begin());
  if (record == nullptr) return;
  members.number(Key::error_num, as_int(record->error_num()));
  add_if_present(members, Key::error_message, record->error_message());
}

void UserEvent::collect(JsonMembers& members, Workspace& work) const {
  Base::collect(members, work);
  const auto* record = as<Checkpoint::UserEvent>(begin());
  if (record == nullptr) return;
  members.string(Key::event_name, record->event_name());
  members.number(Key::event_sequence, as_int(record->event_sequence()));
}

}  // namespace CT::Node
