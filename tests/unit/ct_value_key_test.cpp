// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_value_key.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <random>
#include <vector>

#include "codetrace/render/ct_value_json.h"
#include "open_trace.h"

namespace CT::Checkpoint::Test {
namespace {

using namespace CT::Test;
using CT::Test::Fields;

// Names that are told apart late, that hold what is no UTF-8, or that sort differently in UTF-16.
std::vector<std::string> awkward_names() {
  const std::string longest(300, 'n');
  return {"",
          "A",
          "\xEF\xBB\xBF" + std::string("A"),
          std::string(63, 'n'),
          std::string(64, 'n'),
          std::string(65, 'n'),
          longest,
          longest + "\xF0\x9F\x98\x80",
          longest + "\xEE\x80\x80",
          longest + "\xFF",
          longest + "\xEF\xBF\xBD",
          "\xEF\xBB\xBF" + longest,
          longest.substr(1) + "\"\\\n"};
}

Fields random_key(const std::vector<Ref>& classes, const std::vector<Ref>& names,
                  std::mt19937& random, int depth = 0) {
  const auto one_of = [&](const std::vector<Ref>& refs) { return refs[random() % refs.size()]; };
  switch (random() % (depth < 3 ? 4U : 3U)) {
    case 0: return value::object(one_of(classes), static_cast<std::uint32_t>(random() % 3));
    case 1: return value::resource(one_of(names), random() % 3);
    case 2: return value::string("k" + std::to_string(random() % 3));
    default:
      return value::map({{random_key(classes, names, random, depth + 1), value::null()},
                         {value::integer(1), random_key(classes, names, random, depth + 1)}});
  }
}

TEST(KeyTexts, MapsPrintLikeQtWhateverTheirKeys) {
  std::mt19937 random(7);
  for (int round = 0; round != 200; ++round) {
    TraceBuilder trace(round % 2 == 0 ? ByteOrder::little : ByteOrder::big);
    std::vector<Ref> names;
    std::vector<Ref> classes;
    for (const std::string& name : awkward_names()) {
      names.push_back(trace.new_text(name));
      classes.push_back(trace.klass({.name = name}));
    }
    names.push_back(names[6] + 10);  // inside another one
    names.push_back(0);
    classes.push_back(0);
    std::vector<value::Pair> pairs;
    for (int i = 0; i != 40; ++i) {
      pairs.emplace_back(random_key(classes, names, random),
                         random() % 5 == 0 ? value::undef() : value::integer(i));
    }
    trace.add(CheckpointDraft::function_return(0, value::map(pairs)));
    OpenTrace open(trace);
    const auto record = open.record<FunctionReturn>();
    ValueTape tape;
    const ValueTape::Index root = record->value(tape).item();
    const std::string streamed = written([&](Writer& out) {
      JsonWriter json(out);
      ValueJsonWriter().write(tape, root, json);
      out.put('\n');
    });
    const QJsonDocument document(record->value().as_json().toObject());
    ASSERT_EQ(streamed, document.toJson().toStdString()) << "round " << round;
  }
}

TEST(KeyTexts, HoldAFewBytesOfAKeyWhateverItsName) {
  TraceBuilder trace;
  const Ref name = trace.text(std::string(100'000, 'x'));
  constexpr std::size_t count = 10'000;
  std::vector<value::Pair> pairs(count, {value::resource(name, 1), value::null()});
  trace.add(CheckpointDraft::function_return(0, value::map(pairs)));
  OpenTrace open(trace);
  const auto record = open.record<FunctionReturn>();
  ValueTape tape;
  const ValueTape::Index root = record->value(tape).item();
  KeyTexts texts;
  for (ValueTape::Index key = root + 1; key != tape.end(root); key = tape.end(tape.end(key))) {
    texts.add(tape, key);
  }
  EXPECT_EQ(texts.mark().names, count);
  EXPECT_EQ(texts.mark().bytes, count * std::string_view("resource(#1)").size());
}

}  // namespace
}  // namespace CT::Checkpoint::Test
