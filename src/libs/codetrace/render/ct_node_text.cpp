// SPDX-License-Identifier: MIT
//
// The lines of the text output, without indentation.
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/tree/ct_node.h"

namespace CT::Node {

namespace {

void put_quoted(Writer& out, Checkpoint::String text) {
  out.put('"');
  text.write_escaped(out);
  out.put('"');
}

// " Returned: " or " Threw: " with the record's value, unless that is undef.
template <std::size_t Size>
void put_outcome(Writer& out, const char (&label)[Size], const Checkpoint::EndWithValue& end,
                 Workspace& work) {
  const auto value = end.decode_value(work.result);
  if (work.result.type(value) == Checkpoint::ValueType::undef) return;
  out.put(label);
  work.text_writer.write_escaped(work.result, value, out);
}

}  // namespace

bool Base::write_text(Writer& /*out*/, Workspace& /*work*/) const { return false; }

bool Startup::write_text(Writer& out, Workspace& /*work*/) const {
  const auto* record = as<Checkpoint::Startup>(begin());
  if (record == nullptr) return true;
  out.put("REQUEST STARTUP: REQUEST: ");
  record->url().write(out);
  out.put(", URL: ");
  record->orig_uri().write(out);
  return true;
}

bool FunctionCall::write_text(Writer& out, Workspace& work) const {
  const auto* call = as<Checkpoint::FunctionCall>(begin());
  if (call == nullptr || call->function() == nullptr) return true;
  const Checkpoint::Function& function = *call->function();
  if (!function.is_user()) out.put('*');
  if (function.class_entry() != nullptr) {
    function.class_entry()->name().write(out);
    out.put("::");
  }
  function.name().write(out);
  out.put('(');
  if (call->arg_count() != 0) {
    call->decode_args(work.args);
    for (Checkpoint::ValueTape::Index i = 0; i != work.args.size(); i = work.args.end(i)) {
      if (i != 0) out.put(", ");
      work.text_writer.write_escaped(work.args, i, out);
    }
  }
  out.put(')');
  write_result(function, out, work);
  return true;
}

void FunctionCall::write_result(const Checkpoint::Function& function, Writer& out,
                                Workspace& work) const {
  if (const auto* returned = as<Checkpoint::FunctionReturn>(end())) {
    if (!function.is_constructor_or_destructor()) put_outcome(out, " Returned: ", *returned, work);
  } else if (const auto* thrown = as<Checkpoint::FunctionException>(end())) {
    // Kept: constructors and destructors are silent about what they return, not about what they
    // throw.
    put_outcome(out, " Threw: ", *thrown, work);
  }
}

bool IncludeCall::write_text(Writer& out, Workspace& work) const {
  const auto* record = as<Checkpoint::IncludeCall>(begin());
  if (record == nullptr) return true;
  out.put("include ");
  record->include().write(out);
  if (const auto* thrown = as<Checkpoint::IncludeException>(end())) {
    put_outcome(out, " Threw: ", *thrown, work);
  }
  return true;
}

bool SapiWrite::write_text(Writer& out, Workspace& /*work*/) const {
  const auto* record = as<Checkpoint::SapiWriteStart>(begin());
  if (record == nullptr) return true;
  out.put("WRITE: ");
  put_quoted(out, record->body());
  return true;
}

bool SapiFlush::write_text(Writer& out, Workspace& /*work*/) const {
  out.put("FLUSH");
  return true;
}

bool SapiHeader::write_text(Writer& out, Workspace& /*work*/) const {
  const auto* record = as<Checkpoint::SapiHeader>(begin());
  // Kept: an operation that does not exist has a line, with nothing on it.
  if (record == nullptr || !record->has_known_op()) return true;
  switch (static_cast<Checkpoint::HeaderOp>(record->op())) {
    case Checkpoint::HeaderOp::replace: out.put("HEADER REPLACE "); break;
    case Checkpoint::HeaderOp::add: out.put("HEADER "); break;
    case Checkpoint::HeaderOp::delete_: out.put("HEADER DELETE "); break;
    case Checkpoint::HeaderOp::delete_all: out.put("HEADER DELETE ALL"); break;
    case Checkpoint::HeaderOp::set_status: out.put("HEADER SET STATUS"); break;
  }
  if (record->has_header_line()) put_quoted(out, record->header());
  return true;
}

bool SapiSendHeaders::write_text(Writer& out, Workspace& /*work*/) const {
  out.put("SEND_HEADERS");
  return true;
}

bool ScriptExit::write_text(Writer& out, Workspace& /*work*/) const {
  out.put("SCRIPT_EXIT");
  return true;
}

bool ScriptError::write_text(Writer& out, Workspace& /*work*/) const {
  const auto* record = as<Checkpoint::ScriptError>(begin());
  if (record == nullptr) return true;
  out.put("Script error (");
  put_unsigned(out, record->error_num());
  out.put(") ");
  record->error_message().write_escaped(out);
  return true;
}

bool UserEvent::write_text(Writer& out, Workspace& /*work*/) const {
  const auto* record = as<Checkpoint::UserEvent>(begin());
  if (record == nullptr) return true;
  const Checkpoint::String name = record->event_name();
  if (name.view().find('%') != std::string_view::npos) {
    // Kept: a marker such as %1 in the name is replaced by the sequence number. What QString::arg
    // takes for a marker, and how it prints the number there, is best left to it.
    const QByteArray line = QStringLiteral("(EVENT) Kelvo Monitor Event: %1. Event sequence: %2")
                                .arg(name.to_string())
                                .arg(record->event_sequence())
                                .toUtf8();
    out.put(std::string_view(line.constData(), static_cast<std::size_t>(line.size())));
    return true;
  }
  out.put("(EVENT) Kelvo Monitor Event: ");
  name.write(out);
  out.put(". Event sequence: ");
  put_unsigned(out, record->event_sequence());
  return true;
}

}  // namespace CT::Node
