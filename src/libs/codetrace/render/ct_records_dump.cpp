// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_records_dump.h"

#include <bit>

#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"

namespace CT {

using Checkpoint::String;
using Checkpoint::ValueRef;
using Checkpoint::ValueCursor;
using Checkpoint::ValueType;
using Form = Checkpoint::ValueTextWriter::Form;

namespace {

void put_line(Writer& out, std::string_view label, const String& text) {
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

void dump_class(const Checkpoint::ClassEntry& entry, Writer& out) {
  put_pointer_line(out, "\t\tCE: ", address_of(entry.record()));
  put_line(out, "\t\t\tTYPE: ", std::int64_t{entry.type()});
  put_line(out, "\t\t\tNAME: ", entry.name());
  put_line(out, "\t\t\tCE_FLAGS: ", std::int64_t{entry.flags()});
  if (entry.is_user() && entry.filename().is_present()) {
    put_location(out, "\t\t\tFILENAME: ", entry.filename(), entry.line());
  }
}

// The lines of a function from its type to its place.
void dump_function(const Checkpoint::Function& function, Writer& out) {
  put_line(out, "\t\tTYPE: ", std::int64_t{function.type_byte()});
  put_line(out, "\t\tNAME: ", function.name());
  if (function.class_entry() != nullptr) dump_class(*function.class_entry(), out);
  put_line(out, "\t\tFN_FLAGS: ", std::int64_t{function.flags()});
  if (function.is_user() && function.filename().is_present()) {
    put_location(out, "\t\tFILENAME: ", function.filename(), function.line_no());
  }
}

bool is_short(const Section& names, const Checkpoint::Function& function) {
  const auto fits = [&](const unsigned char* place) {
    return RenderedTexts::is_short(names, place);
  };
  const Checkpoint::ClassEntry* entry = function.class_entry();
  return fits(function.name_place()) && fits(function.filename_place()) &&
         (entry == nullptr || (fits(entry->name_place()) && fits(entry->filename_place())));
}

}  // namespace

// The lines behind the common ones.
struct RecordDumper::Lines {
  RecordDumper& room;
  Writer& out;

  void operator()(const Checkpoint::Base& /*record*/) const {}

  void operator()(const Checkpoint::Startup& record) const {
    put_line(out, "\tFINAL URL: ", record.url());
    put_line(out, "\tORIG URI: ", record.orig_uri());
    put_line(out, "\tHOST: ", record.host());
    put_line(out, "\tMETHOD: ", record.method());
  }

  void operator()(const Checkpoint::IncludeCall& record) const {
    put_line(out, "\tINCLUDE: ", record.include());
  }

  void operator()(const Checkpoint::End& record) const {
    put_pointer_line(out, "\tSTART: ", record.start());
  }

  void operator()(const Checkpoint::FunctionReturn& record) const { put_end("\tRVAL: ", record); }

  void operator()(const Checkpoint::FunctionException& record) const {
    put_end("\tEXCEPTION: ", record);
  }

  // Kept: unlike a function's exception it prints as compact JSON, and as nothing when that would
  // be neither an array nor an object.
  void operator()(const Checkpoint::IncludeException& record) const {
    put_pointer_line(out, "\tSTART: ", record.start());
    const ValueRef value = record.value(room.tape_);
    const ValueType type = value.type();
    out.put("\tEXCEPTION: ");
    if (type == ValueType::array || type == ValueType::object || type == ValueType::resource ||
        (type == ValueType::string && value.string().orig_sz >= 0)) {
      JsonWriter json(out, JsonWriter::Form::compact);
      room.json_.write(*value.tape(), value.item(), json);
    }
    out.put('\n');
  }

  void operator()(const Checkpoint::SapiWriteStart& record) const {
    put_bare_line(out, "\tBODY: ", record.body());
  }

  void operator()(const Checkpoint::SapiHeader& record) const {
    put_line(out, "\tOP: ", std::int64_t{record.op()});
    const String header = record.header();
    if (header.is_present()) put_bare_line(out, "\tHDR: ", header);
  }

  void operator()(const Checkpoint::SapiSendHeaders& record) const {
    put_line(out, "\tHTTP_RESPONSE_CODE: ", as_int(record.code()));
    const String status = record.status();
    if (status.is_present()) put_bare_line(out, "\tHTTP_STATUS_LINE: ", status);
  }

  void operator()(const Checkpoint::ScriptError& record) const {
    put_line(out, "\tERROR NUM: ", as_int(record.error_num()));
    put_line(out, "\tERROR MESSAGE: ", record.error_message());
  }

  void operator()(const Checkpoint::FunctionCall& call) const {
    // Kept: always the null pointer.
    put_pointer_line(out, "\tFUNCTION: ", 0);
    if (call.function() != nullptr) put_function(*call.function(), call.file()->add_data());
    if (call.has_this()) put_value_line("\tTHIS: ", call.this_values());
    const std::uint32_t count = call.arg_count();
    put_line(out, "\tARG_COUNT: ", std::int64_t{count});
    if (count == 0) return;
    out.put("\tARGS: ");
    auto arguments = call.arg_values();
    for (std::string_view lead; room.texts_.write(arguments, out, Form::quoted, lead);) {
      if (!out.ok()) return;
      lead = ", ";
    }
    out.put('\n');
  }

  void put_function(const Checkpoint::Function& function, const Section& names) const {
    room.functions_.put(
        &function, out, [&] { return is_short(names, function); },
        [&](Writer& lines) { dump_function(function, lines); });
  }

  void put_end(std::string_view label, const Checkpoint::EndWithValue& record) const {
    put_pointer_line(out, "\tSTART: ", record.start());
    put_value_line(label, record.values());
  }

  // What is not whole is undef.
  void put_value_line(std::string_view label, ValueCursor values) const {
    out.put(label);
    if (!room.texts_.write(values, out)) out.put("undef");
    out.put('\n');
  }
};

void RecordDumper::write_common(const Checkpoint::Base& record, Writer& out) {
  out.put("*** CHECKPOINT ");
  out.put(type_name(record.type()));
  out.put(" [");
  put_pointer(out, address_of(record.checkpoint()));
  out.put("]\n");
  if (record.has_timestamp()) {
    out.put("\tTIMESTAMP: ");
    put_timestamp(out, record.timestamp());
    out.put('\n');
  }
  if (record.has_memory()) {
    out.put("\tMEMORY USAGE: ");
    put_unsigned(out, record.memory());
    out.put('\n');
  }
  if (!record.has_location()) return;
  out.put("\tFILENAME: ");
  if (const unsigned char* place = record.filename_place(); place != nullptr) {
    filenames_.put(
        place, out, [&] { return RenderedTexts::is_short(record.file()->add_data(), place); },
        [&](Writer& name) { record.filename().dump(name); });
  }
  put_line(out, ", LINENO: ", std::int64_t{record.line_no()});
}

void RecordDumper::write(const Checkpoint::Base& record, Writer& out) {
  write_common(record, out);
  Checkpoint::with_record(record, Lines{*this, out});
}

void Checkpoint::Base::dump(Writer& out) const { RecordDumper().write(*this, out); }

}  // namespace CT
