// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_value_text.h"

#include "codetrace/render/ct_number.h"

namespace CT::Checkpoint {

namespace {

void write_string(String string, Writer& out, bool quoted) {
  if (quoted) out.put('"');
  string.write(out);
  if (quoted) out.put('"');
}

}  // namespace

void ValueTextWriter::write_name(const File& file, const unsigned char* place, Writer& out) {
  section_str(file, place).write(out);
}

void ValueTextWriter::write_object(const Leaf& leaf, const File& file, Writer& out) {
  out.put("object(");
  if (leaf.class_entry != nullptr) {
    write_name(file, leaf.class_entry->name_place(), out);
  } else {
    out.put("!unknown!");
  }
  out.put('#');
  put_unsigned(out, leaf.object_handle);
  out.put(')');
}

void ValueTextWriter::write_resource(const Leaf& leaf, const File& file, Writer& out) {
  out.put("resource(");
  write_name(file, leaf.resource_name, out);
  out.put('#');
  put_signed(out, leaf.number);
  out.put(')');
}

void ValueTextWriter::write(const Leaf& leaf, const File& file, Writer& out, bool quoted) {
  switch (leaf.type) {
    case ValueType::undef: out.put("undef"); break;
    case ValueType::null: out.put("null"); break;
    case ValueType::false_: out.put("false"); break;
    case ValueType::true_: out.put("true"); break;
    case ValueType::long_: put_signed(out, leaf.number); break;
    case ValueType::double_: put_double_text(out, leaf.real); break;
    case ValueType::string: write_string(leaf.string, out, quoted); break;
    case ValueType::object: write_object(leaf, file, out); break;
    case ValueType::resource: write_resource(leaf, file, out); break;
    case ValueType::array: break;
  }
}

void ValueTextWriter::write_escaped(const Leaf& leaf, const File& file, Writer& out) {
  if (leaf.type != ValueType::string) {
    write(leaf, file, out);
    return;
  }
  out.put('"');
  leaf.string.write_escaped(out);
  out.put('"');
}

void ValueTextWriter::write(const ValueTape& tape, ValueTape::Index root, Writer& out,
                            bool quoted) {
  if (tape.type(root) == ValueType::array) {
    write_array(tape, root, out);
  } else {
    write(leaf_of(tape, root), tape.file(), out, quoted);
  }
}

void ValueTextWriter::write_escaped(const ValueTape& tape, ValueTape::Index root, Writer& out) {
  if (tape.type(root) == ValueType::array) {
    write_array(tape, root, out);
  } else {
    write_escaped(leaf_of(tape, root), tape.file(), out);
  }
}

// The items of the tape in order; an array is closed when its end is reached.
void ValueTextWriter::write_array(const ValueTape& tape, ValueTape::Index root, Writer& out) {
  ValueTape::Index at = root;
  open_.clear();
  do {
    if (tape.type(at) == ValueType::array) {
      out.put("array(");
      open_.push_back({at, false, true});
    } else {
      write(leaf_of(tape, at), tape.file(), out);
    }
    ++at;
    while (!open_.empty()) {
      OpenArray& array = open_.back();
      if (array.value_next) {
        out.put(" => ");
        array.value_next = false;
        break;
      }
      if (at != tape.end(array.item)) {
        if (!array.is_first) out.put(", ");
        array.is_first = false;
        array.value_next = true;
        break;
      }
      if (tape.is_cut(array.item)) array.is_first ? out.put("...") : out.put(", ...");
      out.put(')');
      open_.pop_back();
    }
  } while (!open_.empty() && out.ok());
}

}  // namespace CT::Checkpoint
