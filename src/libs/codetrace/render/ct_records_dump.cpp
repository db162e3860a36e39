// SPDX-License-Identifier: MIT
//
// The checkpoint dump: every record as a block of indented lines.
#include <bit>

#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"

namespace CT::Checkpoint {

namespace {

void put_line(Writer& out, std::string_view label, String text) {
  out.put(label);
  text.dump(out);
  out.put('\n');
}

// A text without brackets and quotes, even if it could have been cut.
void put_bare_line(Writer& out, std::string_view label, String text) {
  out.put(label);
  text.write(out);
  out.put('\n');
}

void put_line(Writer& out, std::string_view label, std::int64_t number) {
  out.put(label);
  put_signed(out, number);
  out.put('\n');
}

void put_pointer_line(Writer& out, std::string_view label, std::uint64_t address) {
  out.put(label);
  put_pointer(out, address);
  out.put('\n');
}

void put_location(Writer& out, std::string_view label, String filename, std::uint32_t line) {
  out.put(label);
  filename.dump(out);
  put_line(out, ", LINENO: ", std::int64_t{line});
}

template <class Object>
std::uint64_t address_of(const Object* object) {
  return std::bit_cast<std::uintptr_t>(object);
}

// Codes and numbers that the writer stored unsigned and that print as C's int.
std::int64_t as_int(std::uint32_t value) { return static_cast<std::int32_t>(value); }

void dump_class(const ClassEntry& entry, Writer& out) {
  put_pointer_line(out, "\t\tCE: ", address_of(entry.record()));
  put_line(out, "\t\t\tTYPE: ", std::int64_t{entry.type()});
  put_line(out, "\t\t\tNAME: ", entry.name());
  put_line(out, "\t\t\tCE_FLAGS: ", std::int64_t{entry.flags()});
  if (entry.type() == user_defined && entry.filename().is_present()) {
    put_location(out, "\t\t\tFILENAME: ", entry.filename(), entry.line());
  }
}

}  // namespace

void Base::dump(Writer& out) const {
  out.put("*** CHECKPOINT ");
  out.put(type_name(type_));
  out.put(" [");
  put_pointer(out, address_of(checkpoint()));
  out.put("]\n");
  if (has_timestamp()) {
    out.put("\tTIMESTAMP: ");
    put_timestamp(out, timestamp_);
    out.put('\n');
  }
  if (has_memory()) {
    out.put("\tMEMORY USAGE: ");
    put_unsigned(out, memory_);
    out.put('\n');
  }
  if (has_location()) put_location(out, "\tFILENAME: ", filename(), line_no_);
}

void Startup::dump(Writer& out) const {
  Base::dump(out);
  put_line(out, "\tFINAL URL: ", url());
  put_line(out, "\tORIG URI: ", orig_uri());
  put_line(out, "\tHOST: ", host());
  put_line(out, "\tMETHOD: ", method());
}

void IncludeCall::dump(Writer& out) const {
  Base::dump(out);
  put_line(out, "\tINCLUDE: ", include());
}

void End::dump(Writer& out) const {
  Base::dump(out);
  put_pointer_line(out, "\tSTART: ", start_);
}

void EndWithValue::dump_line(std::string_view label, Writer& out) const {
  End::dump(out);
  ValueTape tape;
  const ValueTape::Index value = decode_value(tape);
  out.put(label);
  ValueTextWriter().write(tape, value, out);
  out.put('\n');
}

void FunctionReturn::dump(Writer& out) const { dump_line("\tRVAL: ", out); }

void FunctionException::dump(Writer& out) const { dump_line("\tEXCEPTION: ", out); }

// Kept: unlike a function's exception it prints as compact JSON, and as nothing when that would be
// neither an array nor an object.
void IncludeException::dump(Writer& out) const {
  End::dump(out);
  ValueTape tape;
  const ValueTape::Index value = decode_value(tape);
  const ValueType type = tape.type(value);
  out.put("\tEXCEPTION: ");
  if (type == ValueType::array || type == ValueType::object || type == ValueType::resource ||
      (type == ValueType::string && tape.string(value).orig_sz >= 0)) {
    JsonWriter json(out, JsonWriter::Form::compact);
    ValueJsonWriter().write(tape, value, json);
  }
  out.put('\n');
}

void SapiWriteStart::dump(Writer& out) const {
  Base::dump(out);
  put_bare_line(out, "\tBODY: ", body_);
}

void SapiHeader::dump(Writer& out) const {
  Base::dump(out);
  put_line(out, "\tOP: ", std::int64_t{op_});
  if (header_.is_present()) put_bare_line(out, "\tHDR: ", header_);
}

void SapiSendHeaders::dump(Writer& out) const {
  Base::dump(out);
  put_line(out, "\tHTTP_RESPONSE_CODE: ", as_int(code_));
  if (status_.is_present()) put_bare_line(out, "\tHTTP_STATUS_LINE: ", status_);
}

void ScriptError::dump(Writer& out) const {
  Base::dump(out);
  put_line(out, "\tERROR NUM: ", as_int(error_num_));
  put_line(out, "\tERROR MESSAGE: ", error_message_);
}

void FunctionCall::dump(Writer& out) const {
  Base::dump(out);
  // Kept: always the null pointer.
  put_pointer_line(out, "\tFUNCTION: ", 0);
  if (function_ != nullptr) dump_function(out);
  ValueTape tape;
  if (has_this()) {
    out.put("\tTHIS: ");
    const ValueTape::Index value = decode_this(tape);
    ValueTextWriter().write(tape, value, out);
    out.put('\n');
  }
  put_line(out, "\tARG_COUNT: ", std::int64_t{arg_count_});
  if (arg_count_ == 0) return;
  out.put("\tARGS: ");
  decode_args(tape);
  ValueTextWriter writer;
  for (ValueTape::Index i = 0; i != tape.size(); i = tape.end(i)) {
    if (i != 0) out.put(", ");
    writer.write(tape, i, out);
  }
  out.put('\n');
}

void FunctionCall::dump_function(Writer& out) const {
  put_line(out, "\t\tTYPE: ", std::int64_t{function_->type_byte()});
  put_line(out, "\t\tNAME: ", function_->name());
  if (function_->class_entry() != nullptr) dump_class(*function_->class_entry(), out);
  put_line(out, "\t\tFN_FLAGS: ", std::int64_t{function_->flags()});
  if (function_->is_user() && function_->filename().is_present()) {
    put_location(out, "\t\tFILENAME: ", function_->filename(), function_->line_no());
  }
}

}  // namespace CT::Checkpoint
