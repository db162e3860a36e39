// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_json_check.h"

#include <gtest/gtest.h>

#include <QJsonDocument>
#include <QJsonParseError>
#include <random>
#include <string>

namespace CT::Tool {
namespace {

TEST(JsonCheck, TakesJson) {
  for (const std::string text :
       {"null", " true ", "0", "-0", "-12.5e+3", "1E9", "\"\"", "\"a\\u00e9\\n\\\\\"", "[]", "{}",
        "[1,[2,{\"a\":[]}],{}]", "{\"a\":1, \"b\" : [true]}", "\t[\n1 , 2\r]"}) {
    EXPECT_TRUE(is_json(text)) << text;
  }
}

TEST(JsonCheck, RefusesOthers) {
  for (const std::string text :
       {"",     " ",     "nul",     "truex",     "01",       "+1",    "1.",         ".5",    "1e",
        "-",    "\"",    "\"\\x\"", "\"\\u12\"", "\"\n\"",   "[",     "]",          "[1",    "[1,]",
        "[,1]", "[1 2]", "{",       "{\"a\"}",   "{\"a\":}", "{a:1}", "{\"a\":1,}", "{1:1}", "[}",
        "{]",   "1 2",   "[] []",   "garbage",   "'a'",      "NaN"}) {
    EXPECT_FALSE(is_json(text)) << text;
  }
}

TEST(JsonCheck, AnyDepth) {
  constexpr std::size_t depth = 1'000'000;
  EXPECT_TRUE(is_json(std::string(depth, '[') + std::string(depth, ']')));
  EXPECT_FALSE(is_json(std::string(depth, '[') + std::string(depth - 1, ']')));
}

// Qt's reader takes what this one takes, if it is an array.
TEST(JsonCheck, AgreesWithQtOnRandomTexts) {
  std::mt19937 random(5);  // NOLINT: the same texts each time
  const std::string pieces[] = {"[", "]", "{", "}", ",", ":", "\"a\"", "1", "-2.5e1", "true", " "};
  int taken = 0;
  for (int i = 0; i != 20000; ++i) {
    std::string text = "[";
    for (std::size_t left = random() % 7; left != 0; --left) {
      text += pieces[random() % std::size(pieces)];
    }
    text += "]";
    QJsonParseError error{};
    QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(is_json(text), error.error == QJsonParseError::NoError) << text;
    taken += is_json(text) ? 1 : 0;
  }
  EXPECT_GT(taken, 100);
}

}  // namespace
}  // namespace CT::Tool
