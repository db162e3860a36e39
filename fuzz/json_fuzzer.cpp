// SPDX-License-Identifier: MIT
//
// The streamed JSON of one value is held equal to what Qt prints of its own classes.
#include <algorithm>
#include <vector>

#include "codetrace/qt/ct_value_qt.h"
#include "codetrace/render/ct_value_json.h"
#include "support.h"
#include "written.h"

namespace {

using namespace CT;
using Checkpoint::ValueTape;

// How many arrays lie inside each other.
std::size_t depth_of(const ValueTape& tape) {
  std::vector<ValueTape::Index> ends;
  std::size_t depth = 0;
  for (ValueTape::Index i = 0; i != tape.size(); ++i) {
    while (!ends.empty() && ends.back() <= i) ends.pop_back();
    if (tape.type(i) != Checkpoint::ValueType::array) continue;
    ends.push_back(tape.end(i));
    depth = std::max(depth, ends.size());
  }
  return depth;
}

// Without a table the classes of objects are unknown.
void compare(const CheckpointView& view, Entities* entities) {
  Cursor ahead = view.cursor();
  Checkpoint::scan_values(ahead, 1, entities);
  ValueTape tape;
  tape.reset(view, entities);
  Cursor cursor = view.cursor();
  tape.decode(cursor);
  // Qt's classes recurse.
  constexpr std::size_t deepest = 500;
  if (depth_of(tape) > deepest) return;
  const QJsonValue expected = to_qt_json(Checkpoint::ValueRef(tape, 0));
  for (const auto form : {JsonWriter::Form::compact, JsonWriter::Form::indented}) {
    const std::string ours = Test::written_element(
        form, [&](JsonWriter& out) { Checkpoint::ValueJsonWriter().write(tape, 0, out); });
    Fuzz::expect_equal("the value's JSON", ours, Test::qt_element(form, expected));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::silence_log();
  const Fuzz::ValueInput input(data, size);
  const Fuzz::OneCheckpoint checkpoint = input.checkpoint();
  for (const auto numbering : {Entities::Numbering::by_sighting, Entities::Numbering::none}) {
    compare(checkpoint.view(), Entities::make(checkpoint.file(), numbering).get());
  }
  compare(checkpoint.view(), nullptr);
  return 0;
}
