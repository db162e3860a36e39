// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_fields_json.h"

#include "codetrace/render/ct_number.h"

namespace CT {

namespace {

// The names as they begin a member of a node, a function or a class in the document.
constexpr auto member_starts = [] {
  std::array<MemberStart, field_names.size()> starts{};
  for (std::size_t name = 0; name != starts.size(); ++name) {
    starts[name] = MemberStart(field_names[name]);
  }
  return starts;
}();

struct ValueWriter {
  JsonWriter& out;
  JsonRoom* room;

  void operator()(bool value) const { out.boolean(value); }
  void operator()(std::int64_t value) const { out.number(value); }
  void operator()(double value) const { out.number(value); }
  void operator()(const Word& word) const { out.word(word.text); }
  void operator()(const Checkpoint::String& text) const { text.write_json(out); }
  void operator()(const SharedText& shared) const {
    if (shared.place == nullptr || room == nullptr) return shared.text().write_json(out);
    room->texts.put(
        shared.place, out.out(),
        [&] { return RenderedTexts::is_short(shared.file->add_data(), shared.place); },
        [&](Writer& text) {
          JsonWriter json(text);
          shared.text().write_json(json);
        });
  }
  void operator()(const KTime::Timestamp& time) const {
    out.out().put('"');
    put_timestamp(out.out(), time);
    out.out().put('"');
  }
  void operator()(const Checkpoint::ValueRef& value) const {
    assert(room != nullptr);
    room->values.write(*value.tape(), value.item(), out);
  }
  void operator()(const Checkpoint::Values& values) const {
    out.begin_array();
    for (const Checkpoint::ValueRef& value : values) {
      if (!out.ok()) break;
      out.element();
      (*this)(value);
    }
    out.end_array();
  }
  void operator()(const Checkpoint::ClassEntry* entry) const { write_json(*entry, out); }
};

}  // namespace

void write_json(const Fields& fields, JsonWriter& out, JsonRoom* room) {
  const ValueWriter write_value{out, room};
  out.begin_object();
  fields.for_each([&](FieldName name, const FieldValue& value) {
    out.key(member_starts[static_cast<std::size_t>(name)]);
    std::visit(write_value, value);
  });
  out.end_object();
}

void write_json(const Checkpoint::ClassEntry& entry, JsonWriter& out) {
  Fields fields;
  collect(entry, fields);
  write_json(fields, out);
}

void write_json(const Checkpoint::Function& function, JsonWriter& out) {
  Fields fields;
  collect(function, fields);
  write_json(fields, out);
}

}  // namespace CT
