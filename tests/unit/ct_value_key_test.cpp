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

CT::Test::Fields random_key(const std::vector<Ref>& classes, const std::vector<Ref>& names,
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

// What is streamed of the last value that was returned, and what Qt prints of it.
void expect_like_qt(const TraceBuilder& trace, const std::string& what) {
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
  ASSERT_EQ(streamed, document.toJson().toStdString()) << what;
}

void expect_map_like_qt(TraceBuilder trace, std::mt19937& random,
                        const std::vector<CT::Test::Fields>& keys, int round) {
  std::vector<value::Pair> pairs;
  for (std::size_t i = 0; i != keys.size(); ++i) {
    pairs.emplace_back(
        keys[i], random() % 5 == 0 ? value::undef() : value::integer(static_cast<std::int64_t>(i)));
  }
  trace.add(CheckpointDraft::function_return(0, value::map(pairs)));
  expect_like_qt(trace, "round " + std::to_string(round));
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
    std::vector<CT::Test::Fields> keys;
    for (int i = 0; i != 40; ++i) keys.push_back(random_key(classes, names, random));
    expect_map_like_qt(trace, random, keys, round);
  }
}

// Texts that repeat themselves, so that names begin alike for long, with characters of all lengths.
std::string repetitive(std::mt19937& random) {
  static const std::vector<std::string> letters = {
      "a", "b", "n", "\xC3\xA9", "\xEE\x80\x80", "\xF0\x9F\x98\x80", "\x80", "\xEF\xBB\xBF", "#1)"};
  std::string words[2];
  for (std::string& word : words) {
    for (auto i = random() % 30; i != 0; --i) {
      word += letters[random() % (random() % 3 == 0 ? letters.size() : 3)];
    }
  }
  std::string text;
  for (auto i = 1 + random() % 60; i != 0; --i) text += words[random() % 8 == 0 ? 1 : 0];
  return text;
}

TEST(KeyTexts, OverlappingNamesPrintLikeQt) {
  std::mt19937 random(8);
  for (int round = 0; round != 200; ++round) {
    TraceBuilder trace;
    std::vector<Ref> names;
    for (int i = 0; i != 3; ++i) {
      const std::string text = repetitive(random) + std::string(70, 'e');
      for (const Ref begin : {trace.new_text(text), trace.new_text(text)}) {
        for (int k = 0; k != 6; ++k) names.push_back(begin + random() % (text.size() - 60));
      }
    }
    std::vector<CT::Test::Fields> keys;
    const int count = 1 << random() % 8;
    for (int i = 0; i != count; ++i) keys.push_back(random_key({0}, names, random, 2));
    expect_map_like_qt(trace, random, keys, round);
  }
}

// A key that has names and one that has none can have the same text.
TEST(KeyTexts, OfEqualTextsTheLastCountsHoweverTheyAreMade) {
  const std::string name(100, 'n');
  for (const bool string_first : {true, false}) {
    TraceBuilder trace;
    const CT::Test::Fields named =
        value::map({{value::string("a"), value::resource(trace.text(name), 1)},
                    {value::string("b"), value::null()}});
    const CT::Test::Fields plain =
        value::map({{value::string("a\" => resource(" + name + "#1), \"b"), value::null()}});
    std::vector<value::Pair> pairs = {{named, value::integer(1)}, {plain, value::integer(2)}};
    if (!string_first) std::swap(pairs[0], pairs[1]);
    pairs.emplace_back(value::integer(7), value::undef());
    trace.add(CheckpointDraft::function_return(0, value::map(pairs)));
    expect_like_qt(trace, "");
  }
}

TEST(KeyTexts, OrdinaryKeysPrintLikeQt) {
  std::mt19937 random(9);
  const std::vector<std::string> pieces = {"a",
                                           "b",
                                           std::string(1, '\0'),
                                           "\xEE\x80\x80",
                                           "\xEF\xBF\xBD",
                                           "\xF0\x9F\x98\x80",
                                           "\xF4\x8F\xBF\xBF",
                                           std::string(70, 'x'),
                                           "12345678",
                                           "\xC3\xA9"};
  for (int round = 0; round != 300; ++round) {
    std::vector<CT::Test::Fields> keys;
    const std::string shared = random() % 2 == 0 ? "" : std::string(random() % 100, 's');
    const unsigned alphabet = 1 + static_cast<unsigned>(random() % pieces.size());
    for (unsigned i = 1U << random() % 8; i != 0; --i) {
      std::string text = shared;
      for (auto k = random() % 12; k != 0; --k) text += pieces[random() % alphabet];
      keys.push_back(random() % 4 == 0 ? value::integer(static_cast<std::int64_t>(random() % 99))
                                       : value::string(text));
    }
    expect_map_like_qt(TraceBuilder(), random, keys, round);
  }
}

TEST(KeyTexts, HoldAFewBytesOfAKeyWhateverItsName) {
  TraceBuilder trace;
  const Ref name = trace.text(std::string(100'000, 'x'));
  constexpr std::size_t count = 10'000;
  const std::vector<value::Pair> pairs(count, {value::resource(name, 1), value::null()});
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
