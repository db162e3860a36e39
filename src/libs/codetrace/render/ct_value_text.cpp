// SPDX-License-Identifier: MIT
//
// Values are written while they are read: nothing is decoded ahead but a key that is an array,
// because a key of which something is missing has no pair.
#include "codetrace/render/ct_value_text.h"

#include <algorithm>
#include <array>
#include <bit>

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

// A value as it is stored, without the pairs of an array.
struct ValueTextWriter::StoredValue {
  ValueType type;
  std::uint32_t count = 0;   // of an array: pairs
  std::uint64_t number = 0;  // a long, a double's bits, the reference of an object or resource
  std::uint64_t handle = 0;
  String text = {};
};

// The cursor fails at the field that is not whole.
inline ValueTextWriter::StoredValue ValueTextWriter::read_stored(Cursor& at) {
  StoredValue value = {value_type_of_code(at.u8())};
  switch (value.type) {
    case ValueType::undef:
    case ValueType::null:
    case ValueType::false_:
    case ValueType::true_: break;
    case ValueType::long_:
    case ValueType::double_: value.number = at.u64(); break;
    case ValueType::string: value.text = get_cut_str(at); break;
    case ValueType::array: value.count = static_cast<std::uint32_t>(std::max(at.i32(), 0)); break;
    case ValueType::object:
      value.number = at.u64();
      value.handle = at.u32();
      break;
    case ValueType::resource:
      value.number = at.u64();
      value.handle = at.u64();
      break;
  }
  return value;
}

void ValueTextWriter::write_name(const File& file, const unsigned char* place, Writer& out) {
  section_str(file, place).write(out);
}

void ValueTextWriter::write_object(const StoredValue& value, const ValueCursor& values,
                                   Writer& out) {
  const ClassEntry* entry =
      values.entities != nullptr ? values.entities->find_class(value.number) : nullptr;
  out.put("object(");
  if (entry != nullptr) {
    write_name(*values.file, entry->name_place(), out);
  } else {
    out.put("!unknown!");
  }
  out.put('#');
  put_unsigned(out, value.handle);
  out.put(')');
}

void ValueTextWriter::write_resource(const StoredValue& value, const File& file, Writer& out) {
  out.put("resource(");
  write_name(file, file.add_data().resolve(value.number), out);
  out.put('#');
  put_signed(out, static_cast<std::int64_t>(value.handle));
  out.put(')');
}

// Opens an array, or writes any other value whole.
inline void ValueTextWriter::write_stored(const StoredValue& value, const ValueCursor& values,
                                          Form form, bool is_whole, Writer& out) {
  switch (value.type) {
    case ValueType::undef:
    case ValueType::null:
    case ValueType::false_:
    case ValueType::true_: out.put(words[static_cast<std::size_t>(value.type)]); break;
    case ValueType::long_: put_signed(out, static_cast<std::int64_t>(value.number)); break;
    case ValueType::double_: put_double_text(out, std::bit_cast<double>(value.number)); break;
    case ValueType::string: write_text(value.text, form, out); break;
    case ValueType::array:
      out.put("array(");
      open_.push_back({value.count, true, false, is_whole});
      break;
    case ValueType::object: write_object(value, values, out); break;
    case ValueType::resource: write_resource(value, *values.file, out); break;
  }
}

void ValueTextWriter::write_open_arrays(ValueCursor& values, Writer& out) {
  while (!open_.empty() && out.ok()) {
    OpenArray& array = open_.back();
    if (array.value_next) {
      array.value_next = false;
      --array.left;
      write_value(values, array.is_whole, out);
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
  const Cursor before = values.at;
  const StoredValue key = read_stored(values.at);
  const bool is_marker = key.text.is_cut_marker();
  if (is_marker) {
    scan_values(values.at, 2 * array.left - 1, nullptr);
  } else if (key.type == ValueType::array && !array.is_whole) {
    Cursor behind = before;
    scan_values(behind, 1, nullptr);
    if (!behind.ok()) values.at = behind;
  }
  if (is_marker || values.at.ok()) {
    if (!array.is_first) out.put(", ");
    array.is_first = false;
  }
  if (is_marker) {
    array.left = 0;
    out.put("...");
  } else if (values.at.ok()) {
    array.value_next = true;
    write_stored(key, values, Form::quoted, true, out);
  }
}

// A value that is not whole is undef. The tracer puts the marker in place of a nested array that it
// did not descend into.
inline void ValueTextWriter::write_value(ValueCursor& values, bool is_whole, Writer& out) {
  const StoredValue value = read_stored(values.at);
  out.put(" => ");
  if (!values.at.ok()) {
    out.put("undef");
  } else if (value.text.is_cut_marker()) {
    out.put("array(...)");
  } else {
    write_stored(value, values, Form::quoted, is_whole, out);
  }
}

inline bool ValueTextWriter::write_next(ValueCursor& values, Writer& out, Form form,
                                        std::string_view lead) {
  if (values.left == 0) return false;
  --values.left;
  const StoredValue value = read_stored(values.at);
  if (!values.at.ok()) return false;
  out.put(lead);
  open_.clear();  // not empty if an output failed in the middle of an array
  write_stored(value, values, form, false, out);
  if (value.type == ValueType::array) write_open_arrays(values, out);
  return true;
}

bool ValueTextWriter::write(ValueCursor& values, Writer& out, Form form, std::string_view lead) {
  return write_next(values, out, form, lead);
}

void ValueTextWriter::write_all(ValueCursor& values, Writer& out, Form form) {
  for (std::string_view lead; write_next(values, out, form, lead) && out.ok();) lead = ", ";
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
