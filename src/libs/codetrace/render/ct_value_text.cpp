// SPDX-License-Identifier: MIT
//
// Values are written while they are read: nothing is decoded ahead but a key that is an array,
// because a key of which something is missing has no pair.
#include "codetrace/render/ct_value_text.h"

#include <array>

#include "codetrace/render/ct_number.h"

namespace CT::Checkpoint {

namespace {

constexpr std::array<std::string_view, 4> words = {"undef", "null", "false", "true"};

void write_text(const String& text, ValueTextWriter::Form form, Writer& out) {
  if (form == ValueTextWriter::Form::bare) {
    text.write(out);
    return;
  }
  out.put('"');
  form == ValueTextWriter::Form::escaped ? text.write_escaped(out) : text.write(out);
  out.put('"');
}

}  // namespace

void ValueTextWriter::write_name(const File& file, const unsigned char* place, Writer& out) {
  section_str(file, place).write(out);
}

void ValueTextWriter::write_object(ValueCursor& values, Writer& out, std::uint64_t reference,
                                   std::uint32_t handle) {
  const ClassEntry* entry =
      values.entities != nullptr ? values.entities->find_class(reference) : nullptr;
  out.put("object(");
  if (entry != nullptr) {
    write_name(*values.file, entry->name_place(), out);
  } else {
    out.put("!unknown!");
  }
  out.put('#');
  put_unsigned(out, handle);
  out.put(')');
}

// Writes a value that is no array. False, and nothing is written, if it is not whole.
inline bool ValueTextWriter::write_leaf(ValueCursor& values, Writer& out, Form form,
                                        std::string_view lead) {
  Cursor at = values.at;
  const ValueType type = value_type_of_code(at.u8());
  const auto is_whole = [&] {
    values.at = at;
    if (at.ok()) out.put(lead);
    return at.ok();
  };
  switch (type) {
    case ValueType::undef:
    case ValueType::null:
    case ValueType::false_:
    case ValueType::true_:
      if (!is_whole()) return false;
      out.put(words[static_cast<std::size_t>(type)]);
      break;
    case ValueType::long_: {
      const std::int64_t number = at.i64();
      if (!is_whole()) return false;
      put_signed(out, number);
      break;
    }
    case ValueType::double_: {
      const double number = at.f64();
      if (!is_whole()) return false;
      put_double_text(out, number);
      break;
    }
    case ValueType::string: {
      const String text = get_cut_str(at);
      if (!is_whole()) return false;
      write_text(text, form, out);
      break;
    }
    case ValueType::object: {
      const std::uint64_t reference = at.u64();
      const std::uint32_t handle = at.u32();
      if (!is_whole()) return false;
      write_object(values, out, reference, handle);
      break;
    }
    case ValueType::resource: {
      const unsigned char* name = values.file->add_data().resolve(at.u64());
      const std::int64_t handle = at.i64();
      if (!is_whole()) return false;
      out.put("resource(");
      write_name(*values.file, name, out);
      out.put('#');
      put_signed(out, handle);
      out.put(')');
      break;
    }
    case ValueType::array: return false;
  }
  return true;
}

// Opens the array at the cursor. False, and nothing is written, if its count is not whole.
bool ValueTextWriter::open(Cursor& at, bool is_whole, Writer& out, std::string_view lead) {
  at.bytes(1);
  const std::int32_t count = at.i32();
  if (!at.ok()) return false;
  out.put(lead);
  out.put("array(");
  open_.push_back({count > 0 ? static_cast<std::uint32_t>(count) : 0, true, false, is_whole});
  return true;
}

void ValueTextWriter::write_open_arrays(ValueCursor& values, Writer& out) {
  while (!open_.empty() && out.ok()) {
    OpenArray& array = open_.back();
    if (array.value_next) {
      array.value_next = false;
      --array.left;
      write_value(values, array, out);
    } else if (array.left != 0 && values.at.ok()) {
      write_key(values, array, out);
    } else {
      out.put(')');
      open_.pop_back();
    }
  }
}

// A pair whose key is not whole is not there. A key that is the cut marker ends the array; what
// else it has is stepped over.
inline void ValueTextWriter::write_key(ValueCursor& values, OpenArray& array, Writer& out) {
  const std::string_view lead = array.is_first ? "" : ", ";
  const ValueType type = values.next_type();
  if (type == ValueType::string) {
    Cursor behind = values.at;
    behind.bytes(1);
    if (get_cut_str(behind).is_cut_marker()) {
      scan_values(behind, 2 * array.left - 1, nullptr);
      values.at = behind;
      array.left = 0;
      out.put(lead);
      out.put("...");
      return;
    }
  }
  array.is_first = false;
  if (type != ValueType::array) {
    array.value_next = write_leaf(values, out, Form::quoted, lead);
    return;
  }
  if (!array.is_whole) {
    Cursor behind = values.at;
    scan_values(behind, 1, nullptr);
    if (!behind.ok()) {
      values.at = behind;
      return;
    }
  }
  array.value_next = true;
  open(values.at, true, out, lead);
}

// A value that is not whole is undef. The tracer puts the marker in place of a nested array that it
// did not descend into.
inline void ValueTextWriter::write_value(ValueCursor& values, OpenArray& array, Writer& out) {
  constexpr std::string_view lead = " => ";
  const ValueType type = values.next_type();
  if (type == ValueType::string) {
    Cursor behind = values.at;
    behind.bytes(1);
    if (get_cut_str(behind).is_cut_marker()) {
      values.at = behind;
      out.put(" => array(...)");
      return;
    }
  }
  const bool is_written = type == ValueType::array ? open(values.at, array.is_whole, out, lead)
                                                   : write_leaf(values, out, Form::quoted, lead);
  if (!is_written) out.put(" => undef");
}

bool ValueTextWriter::write(ValueCursor& values, Writer& out, Form form, std::string_view lead) {
  if (values.left == 0) return false;
  const bool is_array = values.next_type() == ValueType::array;
  --values.left;
  if (!is_array) return write_leaf(values, out, form, lead);
  open_.clear();  // not empty if an output failed in the middle of an array
  if (!open(values.at, false, out, lead)) return false;
  const std::uint32_t left = values.left;
  values.left = 1;
  write_open_arrays(values, out);
  values.left = left;
  return true;
}

void ValueTextWriter::write(const ValueRef& value, Writer& out, Form form) {
  if (value.type() == ValueType::undef) {
    out.put(words[0]);
    return;
  }
  const ValueTape& tape = *value.tape();
  ValueCursor values = {tape.place_of(value.item()), 1, &tape.file(), tape.entities()};
  // An array that the tracer did not descend into has the code of a text.
  if (value.type() == ValueType::array && values.next_type() != ValueType::array) {
    out.put("array(...)");
  } else {
    write(values, out, form);
  }
}

}  // namespace CT::Checkpoint
