// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_records_dump.h"

#include <array>
#include <bit>
#include <cstring>
#include <tuple>

#include "codetrace/model/ct_records.h"
#include "codetrace/render/ct_digits.h"
#include "codetrace/render/ct_json.h"

namespace CT {

using Checkpoint::String;
using Checkpoint::ValueCursor;
using Checkpoint::ValueRef;
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

// A fixed text without its NUL; returns its end.
template <std::size_t Size>
char* write_fixed(char* at, const char (&text)[Size]) {
  std::memcpy(at, text, Size - 1);
  return at + (Size - 1);
}

// The room for a fixed text, a number and the line's end.
constexpr std::size_t line_room = 64;

template <std::size_t Size>
void put_line(Writer& out, const char (&label)[Size], std::int64_t number) {
  static_assert(Size + 20 <= line_room);
  char* at = write_signed(write_fixed(out.room(line_room), label), number);
  *at++ = '\n';
  out.advance(at);
}

template <std::size_t Size>
void put_pointer_line(Writer& out, const char (&label)[Size], std::uint64_t address) {
  static_assert(Size + 20 <= line_room);
  char* at = write_pointer(write_fixed(out.room(line_room), label), address);
  *at++ = '\n';
  out.advance(at);
}

// The first words of each type's block, copied as a block of fixed size.
struct Head {
  static constexpr std::size_t block = 48;
  char text[block] = {};
  std::size_t size = 0;

  constexpr explicit Head(std::string_view name) {
    add("*** CHECKPOINT ");
    add(name);
    add(" [");
  }
  constexpr void add(std::string_view part) {
    for (const char c : part) text[size++] = c;
  }
};

constexpr auto heads = std::apply(
    [](const auto&... row) {
      return std::array{Head(row.info.name)..., Head(type_name(Checkpoint::Type::INVALID))};
    },
    Checkpoint::type_rows);

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
    if (value_type_info(type).is_object_in_json ||
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
    out.put("\tFUNCTION: 0x0\n");
    if (call.function() != nullptr) put_function(*call.function(), call.file()->add_data());
    if (call.has_this()) put_value_line("\tTHIS: ", call.this_values());
    auto arguments = call.arg_values();
    put_line(out, "\tARG_COUNT: ", std::int64_t{arguments.left});
    if (arguments.left == 0) return;
    out.put("\tARGS: ");
    room.texts_.write_all(arguments, out, Form::quoted);
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
  constexpr std::size_t block = 256;  // more than the longest lines up to the file's name
  char* at = out.room(block);
  const Head& head = heads[static_cast<std::size_t>(record.type())];
  std::memcpy(at, head.text, Head::block);
  at = write_pointer(at + head.size, address_of(record.checkpoint()));
  at = write_fixed(at, "]\n");
  if (record.has_timestamp()) {
    at = write_timestamp(write_fixed(at, "\tTIMESTAMP: "), record.timestamp());
    *at++ = '\n';
  }
  if (record.has_memory()) {
    at = write_decimal(write_fixed(at, "\tMEMORY USAGE: "), record.memory());
    *at++ = '\n';
  }
  if (!record.has_location()) return out.advance(at);
  out.advance(write_fixed(at, "\tFILENAME: "));
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
