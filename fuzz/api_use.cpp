// SPDX-License-Identifier: MIT
#include "api_use.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <type_traits>
#include <vector>

namespace CT::Fuzz {

using Checkpoint::ValueRef;
using Checkpoint::ValueType;

void use(const Checkpoint::String& text) {
  expect(text.view().size() == (text.data != nullptr ? text.length : 0), "the length of a text");
  expect(!text.is_present() || !text.is_empty(), "no text that is empty is present");
  MemoryWriter out;
  text.write(out);
  text.write_escaped(out);
  text.dump(out);
  static_cast<void>(text.to_string().size() + text.to_escaped_string().size());
  static_cast<void>(text.as_json());
}

namespace {

void use_array(const ValueRef& array, std::vector<ValueRef>& parts) {
  std::size_t count = 0;
  for (const auto& [key, value] : array.elements()) {
    ++count;
    parts.push_back(key);
    parts.push_back(value);
  }
  expect(array.size() == count, "as many elements as size() tells");
  if (count == 0) return;
  const ValueRef key = (*array.elements().begin()).key;
  const ValueRef by_text = array.find(key.string().view());
  const ValueRef by_number = array.find(key.as_long());
  if (key.type() == ValueType::string) expect(by_text.tape() != nullptr, "the element of a text");
  if (key.type() == ValueType::long_) expect(by_number.tape() != nullptr, "that of a number");
}

}  // namespace

void use(const ValueRef& value) {
  constexpr std::size_t most = 100;
  std::vector<ValueRef> parts = {value};
  for (std::size_t i = 0; i < parts.size() && i != most; ++i) {
    const ValueRef part = parts[i];
    static_cast<void>(part.as_boolean() || part.is_cut() || part.is_list());
    static_cast<void>(part.as_double() + part.declared_count());
    static_cast<void>(part.as_long() ^ part.resource_handle() ^ part.object_handle());
    use(part.string());
    use(part.resource_name());
    if (part.class_entry() != nullptr) use(*part.class_entry());
    use_array(part, parts);
  }
}

std::string use(const Checkpoint::KVal& value) {
  use(value.ref());
  for (const auto& [key, element] : value.elements()) {
    expect(value.keep(element).type() == element.type(), "the type of a kept part");
    expect(value.keep(key).item() == key.item(), "the place of a kept part");
  }
  const QJsonDocument json(QJsonObject{{QStringLiteral("value"), value.as_json()}});
  static_cast<void>(json.isObject());
  return value.to_string(true).toStdString() + value.to_escaped_string(false).toStdString();
}

void use(const Fields& fields) {
  struct Use {
    void operator()(bool /*value*/) const {}
    void operator()(std::int64_t /*value*/) const {}
    void operator()(double /*value*/) const {}
    void operator()(const Word& word) const { expect(!word.text.empty(), "a word"); }
    void operator()(const Checkpoint::String& text) const { use(text); }
    void operator()(const SharedText& shared) const { use(shared.text()); }
    void operator()(const KTime::Timestamp& time) const { KTime::elapsed_ms({}, time); }
    void operator()(const ValueRef& value) const { use(value); }
    void operator()(const Checkpoint::Values& values) const {
      int left = 20;
      for (const ValueRef& value : values) {
        if (left-- == 0) break;
        use(value);
      }
    }
    void operator()(const Checkpoint::ClassEntry* entry) const { use(*entry); }
  };
  fields.for_each([&](FieldName name, const FieldValue& value) {
    expect(fields.has(name) && &fields[name] == &value, "the field of a name");
    expect(!field_name(name).empty(), "the name of a field");
    std::visit(Use(), value);
  });
}

void use(const Checkpoint::ClassEntry& entry) {
  use(entry.name());
  use(entry.filename());
  static_cast<void>(entry.line() + entry.flags());
  static_cast<void>(entry.as_json());
  // An unnumbered class is part of what names it, so it is asked for its fields here only.
  Fields fields;
  collect(entry, fields);
  expect(fields.has(FieldName::name), "the name of a class");
}

void use(const Checkpoint::Function& function) {
  use(function.name());
  use(function.filename());
  static_cast<void>(function.full_name());
  static_cast<void>(function.line_no() + function.flags() + function.type_byte());
  static_cast<void>(function.as_json());
  if (function.class_entry() != nullptr) use(*function.class_entry());
  Fields fields;
  collect(function, fields);
  use(fields);
}

namespace {

using namespace Checkpoint;

void ask(const Base& /*record*/) {}
void ask(const Startup& record) {
  for (const String& text : {record.url(), record.orig_uri(), record.host(), record.method()}) {
    use(text);
  }
}
void ask(const IncludeCall& record) { use(record.include()); }
void ask(const End& record) { static_cast<void>(record.start()); }
void ask(const EndWithValue& record) {
  static_cast<void>(record.start());
  use(record.value());
  ValueTape tape;
  use(record.value(tape));
}
void ask(const SapiWriteStart& record) { use(record.body()); }
void ask(const SapiHeader& record) {
  static_cast<void>(record.has_known_op() && record.has_header_line());
  use(record.header());
}
void ask(const SapiSendHeaders& record) {
  static_cast<void>(record.code());
  use(record.status());
}
void ask(const ScriptError& record) {
  static_cast<void>(record.error_num());
  use(record.error_message());
}
void ask(const UserEvent& record) {
  static_cast<void>(record.event_sequence());
  use(record.event_name());
}
void ask(const FunctionCall& record) {
  if (record.function() != nullptr) use(*record.function());
  use(record.this_value());
  const std::vector<KVal> args = record.args();
  ValueTape tape;
  std::size_t count = 0;
  for (const ValueRef& value : record.args(tape)) {
    expect(count < args.size() && args[count].type() == value.type(), "the same arguments twice");
    ++count;
  }
  expect(count == args.size(), "as many arguments");
  if (!args.empty()) use(args.front());
  use(record.this_value(tape));
}

template <class Class>
void ask_as(const Base& record) {
  const bool is_one = record_as<Class>(record).has_value();
  bool visited = false;
  with_record(record, [&](const auto& own) {
    visited = std::is_base_of_v<Class, std::remove_cvref_t<decltype(own)>>;
  });
  expect(is_one == visited, "record_as and with_record agree");
  ask(Class(record));
}

}  // namespace

void use(const Checkpoint::Base& record) {
  if (record.checkpoint() != nullptr) {
    const CheckpointView view = record.view();
    expect(view.is_valid() && view.checkpoint() == record.checkpoint(), "the record's view");
    expect(view.size() == record.payload_size(), "the payload's size");
    expect(!record.damage() || *record.damage() <= record.payload_size(), "the place of damage");
    write_to_failing(1 << 20, [&](Writer& out) { record.dump(out); });
    QString text;
    QTextStream stream(&text);
    record.dump(stream);
  } else {
    expect(!record.is_valid() && !record.damage(), "nothing but that it is of no checkpoint");
  }
  static_cast<void>(record.timestamp());
  static_cast<void>(record.memory() + record.line_no());
  use(record.filename());
  ask_as<Startup>(record);
  ask_as<Shutdown>(record);
  ask_as<IncludeCall>(record);
  ask_as<End>(record);
  ask_as<EndWithValue>(record);
  ask_as<FunctionReturn>(record);
  ask_as<IncludeReturn>(record);
  ask_as<SapiWriteStart>(record);
  ask_as<SapiHeader>(record);
  ask_as<SapiSendHeaders>(record);
  ask_as<ScriptError>(record);
  ask_as<UserEvent>(record);
  ask_as<FunctionCall>(record);
}

void use(const Node::Base& node) {
  expect(!node.is_complete() || node.is_valid(), "only what is valid is complete");
  static_cast<void>(node.ms() + node.ms_delta());
  static_cast<void>(node.mem() ^ node.mem_delta());
  static_cast<void>(node.begin_as<FunctionCall>().has_value());
  static_cast<void>(node.end_as<EndWithValue>().has_value());
  Fields fields;
  ValueRoom values;
  node.collect(fields, values);
  use(fields);
  QString text;
  static_cast<void>(node.to_text(text));
  QJsonObject object;
  expect(node.to_json(object) && !object.isEmpty(), "fields of every node");
  write_to_failing(1 << 20, [&](Writer& out) {
    Node::TextRoom room;
    static_cast<void>(node.write_text(out, room));
  });
}

void use_structure(const Trace& trace) {
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    const NodeId parent = trace.parent(id);
    expect(parent < id, "parents before children");
    const std::uint32_t depth = parent != Storage::no_node ? trace.depth(parent) + 1 : 0;
    expect(trace.depth(id) == depth, "a child is one deeper");
    expect(trace.last(id) >= id && trace.last(id) < trace.node_count(), "the last one under it");
    const NodeId next = trace.next_sibling(id);
    expect(next == Storage::no_node || (next > trace.last(id) && trace.parent(next) == parent),
           "the next sibling");
    expect(trace.type(id) == trace.node(id).type(), "the type of a node");
    expect(trace.begin_offset(id) == trace.node(id).begin().offset(), "where it begins");
    const bool has_end = trace.end_offset(id) != Storage::no_end;
    expect(has_end == (trace.node(id).end() != nullptr), "whether it ends");
  }
}

}  // namespace CT::Fuzz
