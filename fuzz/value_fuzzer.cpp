// SPDX-License-Identifier: MIT
//
// One value: decoded in each way, copied, printed in each form, destroyed.
#include <QJsonObject>
#include <string>
#include <vector>

#include "codetrace/model/ct_value.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"
#include "support.h"
#include "tape_text.h"
#include "written.h"

namespace {

using namespace CT;
using Checkpoint::KVal;
using Checkpoint::ValueTape;

void print(const ValueTape& tape) {
  Fuzz::LimitedSink sink;
  StreamWriter out(sink);
  Checkpoint::ValueTextWriter text;
  Checkpoint::ValueJsonWriter json;
  text.write(Checkpoint::ValueRef(tape, 0), out, Checkpoint::ValueTextWriter::Form::escaped);
  text.write(Checkpoint::ValueRef(tape, 0), out, Checkpoint::ValueTextWriter::Form::bare);
  for (const auto form : {JsonWriter::Form::compact, JsonWriter::Form::indented}) {
    JsonWriter writer(out, form);
    json.write(tape, 0, writer);
  }
  out.flush();
}

void use_all_forms(const KVal& value) {
  static_cast<void>(value.to_string(false));
  static_cast<void>(value.to_escaped_string(true));
  static_cast<void>(value.to_escaped_string(false));
  static_cast<void>(value.as_json());
  static_cast<void>(value.as_boolean() ? value.as_double() : value.declared_count());
  static_cast<void>(value.string().to_string());
  static_cast<void>(value.string().to_escaped_string());
  static_cast<void>(value.resource_name().as_json());
  static_cast<void>(value.as_long() ^ value.resource_handle() ^ value.object_handle());
  if (const auto entry = value.class_entry(); entry != nullptr) {
    static_cast<void>(entry->as_json());
  }
}

// The first element of the first element and so on, whose elements are copied on the way down.
void descend(KVal value) {
  std::vector<KVal> kept;
  for (int left = 32; left != 0; --left) {
    use_all_forms(value);
    const Checkpoint::Elements elements = value.elements();
    if (elements.empty()) return;
    kept.push_back(value);
    const auto [key, first] = *elements.begin();
    use_all_forms(value.keep(key));
    value.copy(value.keep(first));
    kept.front().reset();
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::silence_log();
  const Fuzz::ValueInput input(data, size);
  const Fuzz::OneCheckpoint checkpoint = input.checkpoint();
  const CheckpointView& view = checkpoint.view();

  const auto entities = Entities::make(view.file());
  Cursor at = view.cursor();
  const KVal numbered(view, at, entities.get());
  Cursor at_unnumbered = view.cursor();
  const KVal unnumbered(view, at_unnumbered, nullptr);
  const auto scanned_entities = Entities::make(view.file());
  Cursor scanned = view.cursor();
  Checkpoint::scan_values(scanned, 1, scanned_entities.get());
  Fuzz::expect(at.position() == at_unnumbered.position() && at.position() == scanned.position(),
               "the same end of the value");
  Fuzz::expect(entities->classes().size() == scanned_entities->classes().size(),
               "the same number of classes");
  Fuzz::expect(numbered.to_string(true) == unnumbered.to_string(true),
               "the same text with classes of its own");

  ValueTape tape;
  tape.reset(view, entities.get());
  Cursor again = view.cursor();
  tape.decode(again);
  const std::string text = Test::written([&](Writer& out) {
    Checkpoint::ValueTextWriter().write(Checkpoint::ValueRef(tape, 0), out);
  });
  Fuzz::expect_equal("the text", text, numbered.to_string(true).toStdString());
  if (const auto by_tape = Test::tape_text(Checkpoint::ValueRef(tape, 0))) {
    Fuzz::expect_equal("the text, array by array", text, *by_tape);
  }
  print(tape);
  descend(numbered);
  descend(unnumbered);
  return 0;
}
