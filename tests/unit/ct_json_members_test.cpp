// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_json_members.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "awkward.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::String;
using Form = JsonWriter::Form;

constexpr std::size_t key_count = static_cast<std::size_t>(Key::url) + 1;

Key key_at(std::size_t place) { return static_cast<Key>(place); }

String string_of(const std::string& text, std::int32_t orig_sz = String::uncuttable) {
  return {text.data(), static_cast<std::uint32_t>(text.size()), orig_sz};
}

// A part with content of its own in both forms.
class ListPart final : public JsonPart {
 public:
  void write_json(JsonWriter& out) const override {
    out.begin_array();
    out.element();
    out.number(1.5);
    out.end_array();
  }
  QJsonValue to_qt_json() const override { return QJsonArray({1.5}); }
};

std::string streamed(const JsonMembers& members, Form form) {
  return written_json(form, [&](JsonWriter& out) { members.write(out); });
}

std::string through_qt(const JsonMembers& members, Form form) {
  return QJsonDocument(members.as_json()).toJson(qt_form(form)).toStdString();
}

TEST(JsonMembers, KeyNamesAscendWithoutGaps) {
  EXPECT_FALSE(key_name(key_at(0)).empty());
  for (std::size_t i = 1; i != key_count; ++i) {
    EXPECT_TRUE(json_key_less(key_name(key_at(i - 1)), key_name(key_at(i))));
  }
  EXPECT_EQ(key_name(Key::class_), "class");
  EXPECT_EQ(key_name(Key::return_), "return");
  EXPECT_EQ(key_name(Key::this_), "this");
  EXPECT_EQ(key_name(Key::arg_count), "arg_count");
  EXPECT_EQ(key_name(Key::url), "url");
}

TEST(JsonMembers, PrintSortedInWhateverOrderTheyCame) {
  JsonMembers members;
  members.number(Key::url, 1);
  members.flag(Key::incomplete);
  members.text(Key::args, "a");
  members.real(Key::ms, 0.0005);
  EXPECT_EQ(streamed(members, Form::compact),
            R"({"args":"a","incomplete":true,"ms":5e-04,"url":1})");
}

TEST(JsonMembers, WithoutMembersAreAnEmptyObject) {
  const JsonMembers members;
  EXPECT_EQ(streamed(members, Form::compact), "{}");
  EXPECT_EQ(streamed(members, Form::indented), "{\n}");
  EXPECT_TRUE(members.as_json().isEmpty());
}

TEST(JsonMembers, ClearForgetsThemAll) {
  JsonMembers members;
  members.number(Key::id, 1);
  members.clear();
  members.flag(Key::op);
  EXPECT_EQ(streamed(members, Form::compact), R"({"op":true})");
}

TEST(JsonMembers, NumbersAreExact) {
  JsonMembers members;
  members.number(Key::mem, std::numeric_limits<std::int64_t>::max());
  members.number(Key::mem_delta, std::numeric_limits<std::int64_t>::min());
  members.number(Key::id, 9007199254740993);
  const std::string expected =
      R"({"id":9007199254740993,"mem":9223372036854775807,"mem_delta":-9223372036854775808})";
  EXPECT_EQ(streamed(members, Form::compact), expected);
  EXPECT_EQ(through_qt(members, Form::compact), expected);
}

TEST(JsonMembers, AStringThatCouldBeCutIsAnObject) {
  const std::string text = "abc";
  JsonMembers members;
  members.string(Key::body, string_of(text, 10));
  members.string(Key::header, string_of(text, 3));
  members.string(Key::host, string_of(text));
  members.string(Key::method, String());
  const std::string expected =
      R"({"body":{"orig_sz":10,"string":"abc"},"header":{"string":"abc"},"host":"abc","method":""})";
  EXPECT_EQ(streamed(members, Form::compact), expected);
  EXPECT_EQ(through_qt(members, Form::compact), expected);
}

// A random third of the keys in random order.
std::vector<Key> random_keys(Awkward& random) {
  std::vector<Key> keys;
  for (std::size_t i = 0; i != key_count; ++i) {
    const auto place = static_cast<std::ptrdiff_t>(random.below(keys.size() + 1));
    if (random.one_in(3)) keys.insert(keys.begin() + place, key_at(i));
  }
  return keys;
}

TEST(JsonMembers, StreamedFormEqualsQtForRandomMembers) {
  Awkward random(1);
  const ListPart part;
  for (std::size_t round = 0; round != 5000; ++round) {
    const std::vector<Key> keys = random_keys(random);
    const std::string bytes = random.bytes(3);
    const auto orig_sz = static_cast<std::int32_t>(random.below(20)) - 1;
    JsonMembers members;
    for (const Key key : keys) {
      switch (random.below(6)) {
        case 0: members.flag(key); break;
        case 1: members.number(key, static_cast<std::int64_t>(random.bits())); break;
        case 2: members.real(key, random.real()); break;
        case 3: members.part(key, part); break;
        case 4: members.text(key, "SAPI_WRITE"); break;
        default: members.string(key, string_of(bytes, orig_sz));
      }
    }
    ASSERT_EQ(streamed(members, Form::compact), through_qt(members, Form::compact));
    // Qt ends the document in a newline of its own.
    ASSERT_EQ(streamed(members, Form::indented) + "\n", through_qt(members, Form::indented));
    ASSERT_EQ(static_cast<std::size_t>(members.as_json().size()), keys.size());
  }
}

TEST(JsonMembers, InsertingThemKeepsWhatTheObjectHas) {
  JsonMembers members;
  members.number(Key::id, 2);
  members.number(Key::code, 3);
  QJsonObject object{{QStringLiteral("id"), 1}, {QStringLiteral("own"), 4}};
  members.insert_into(object);
  EXPECT_EQ(object, (QJsonObject{{QStringLiteral("code"), 3},
                                 {QStringLiteral("id"), 2},
                                 {QStringLiteral("own"), 4}}));
}

}  // namespace
}  // namespace CT::Test
