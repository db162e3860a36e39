// SPDX-License-Identifier: MIT
//
// The members of JSON objects, as bytes and as Qt's classes.
#include "codetrace/render/ct_fields_json.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "awkward.h"
#include "codetrace/qt/ct_value_qt.h"
#include "value_names.h"
#include "value_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

using Checkpoint::String;
using Form = JsonWriter::Form;

using Name = FieldName;

Name name_at(std::size_t place) { return static_cast<Name>(place); }

String string_of(const std::string& text, std::int32_t orig_sz = String::uncuttable) {
  return {text.data(), static_cast<std::uint32_t>(text.size()), orig_sz};
}

std::string streamed(const CT::Fields& fields, Form form) {
  JsonRoom room;
  return written_json(form, [&](JsonWriter& out) { write_json(fields, out, &room); });
}

QJsonObject as_object(const CT::Fields& fields) {
  QJsonObject object;
  insert_into(object, fields);
  return object;
}

std::string through_qt(const CT::Fields& fields, Form form) {
  return QJsonDocument(as_object(fields)).toJson(qt_form(form)).toStdString();
}

TEST(FieldsJson, NamesAscendWithoutGaps) {
  EXPECT_FALSE(field_name(name_at(0)).empty());
  for (std::size_t i = 1; i != field_names.size(); ++i) {
    EXPECT_TRUE(json_key_less(field_name(name_at(i - 1)), field_name(name_at(i))));
  }
  EXPECT_EQ(field_name(Name::class_), "class");
  EXPECT_EQ(field_name(Name::return_), "return");
  EXPECT_EQ(field_name(Name::this_), "this");
  EXPECT_EQ(field_name(Name::arg_count), "arg_count");
  EXPECT_EQ(field_name(Name::url), "url");
}

TEST(FieldsJson, PrintSortedInWhateverOrderTheyCame) {
  CT::Fields fields;
  fields.set(Name::url, std::int64_t{1});
  fields.set(Name::incomplete, true);
  fields.set(Name::args, Word{"a"});
  fields.set(Name::ms, 0.0005);
  EXPECT_EQ(streamed(fields, Form::compact),
            R"({"args":"a","incomplete":true,"ms":5e-04,"url":1})");
}

TEST(FieldsJson, WithoutFieldsIsAnEmptyObject) {
  const CT::Fields fields;
  EXPECT_EQ(streamed(fields, Form::compact), "{}");
  EXPECT_EQ(streamed(fields, Form::indented), "{\n}");
  EXPECT_TRUE(as_object(fields).isEmpty());
}

TEST(FieldsJson, ClearForgetsThemAll) {
  CT::Fields fields;
  fields.set(Name::id, std::int64_t{1});
  EXPECT_TRUE(fields.has(Name::id));
  fields.clear();
  EXPECT_FALSE(fields.has(Name::id));
  fields.set(Name::op, true);
  EXPECT_EQ(streamed(fields, Form::compact), R"({"op":true})");
}

TEST(FieldsJson, NumbersAreExact) {
  CT::Fields fields;
  fields.set(Name::mem, std::numeric_limits<std::int64_t>::max());
  fields.set(Name::mem_delta, std::numeric_limits<std::int64_t>::min());
  fields.set(Name::id, std::int64_t{9007199254740993});
  const std::string expected =
      R"({"id":9007199254740993,"mem":9223372036854775807,"mem_delta":-9223372036854775808})";
  EXPECT_EQ(streamed(fields, Form::compact), expected);
  EXPECT_EQ(through_qt(fields, Form::compact), expected);
}

TEST(FieldsJson, AStringThatCouldBeCutIsAnObject) {
  const std::string text = "abc";
  CT::Fields fields;
  fields.set(Name::body, string_of(text, 10));
  fields.set(Name::header, string_of(text, 3));
  fields.set(Name::host, string_of(text));
  fields.set(Name::method, String());
  const std::string expected =
      R"({"body":{"orig_sz":10,"string":"abc"},"header":{"string":"abc"},"host":"abc","method":""})";
  EXPECT_EQ(streamed(fields, Form::compact), expected);
  EXPECT_EQ(through_qt(fields, Form::compact), expected);
}

TEST(FieldsJson, WhatIsEmptyOrUndefIsNotSetIfItMustBePresent) {
  ValueTrace values(ByteOrder::little, value::undef().append(value::null()));
  const Checkpoint::KVal undef = values.next();
  const Checkpoint::KVal null = values.next();
  const std::string empty;
  const std::string text = "u";
  CT::Fields fields;
  fields.set_if_present(Name::host, String());
  fields.set_if_present(Name::method, string_of(empty));
  fields.set_if_present(Name::url, string_of(text));
  fields.set_if_present(Name::this_, undef.ref());
  fields.set_if_present(Name::exception, Checkpoint::ValueRef());
  fields.set_if_present(Name::return_, null.ref());
  EXPECT_EQ(streamed(fields, Form::compact), R"({"return":null,"url":"u"})");
  EXPECT_EQ(through_qt(fields, Form::compact), R"({"return":null,"url":"u"})");
}

// A random third of the names in random order.
std::vector<Name> random_names(Awkward& random) {
  std::vector<Name> names;
  for (std::size_t i = 0; i != field_names.size(); ++i) {
    const auto place = static_cast<std::ptrdiff_t>(random.below(names.size() + 1));
    if (random.one_in(3)) names.insert(names.begin() + place, name_at(i));
  }
  return names;
}

// A value, a list of values, and a class to show.
struct Parts {
  Parts() : values(names.trace, value::list({value::real(1.5)}).append(value::string("b"))) {
    tape.reset(values.view(), nullptr);
    tape.decode(values.cursor());
    tape.decode(values.cursor());
    entry = &values.entities().add(resolve_class(values.file(), names.classes[1]));
  }

  ValueNames names = ValueNames(ByteOrder::big);
  ValueTrace values;
  Checkpoint::ValueTape tape;
  const Checkpoint::ClassEntry* entry;
};

TEST(FieldsJson, StreamedFormEqualsQtForRandomFields) {
  Awkward random(1);
  const Parts parts;
  for (std::size_t round = 0; round != 5000; ++round) {
    const std::vector<Name> names = random_names(random);
    const std::string bytes = random.bytes(3);
    const auto orig_sz = static_cast<std::int32_t>(random.below(20)) - 1;
    CT::Fields fields;
    for (const Name name : names) {
      switch (random.below(9)) {
        case 0: fields.set(name, random.one_in(2)); break;
        case 1: fields.set(name, static_cast<std::int64_t>(random.bits())); break;
        case 2: fields.set(name, random.real()); break;
        case 3: fields.set(name, Checkpoint::ValueRef(parts.tape, 0)); break;
        case 4: fields.set(name, Checkpoint::Values(parts.tape)); break;
        case 5: fields.set(name, parts.entry); break;
        case 6: fields.set(name, KTime::Timestamp{12, 345'678'901}); break;
        case 7: fields.set(name, Word{"SAPI_WRITE"}); break;
        default: fields.set(name, string_of(bytes, orig_sz));
      }
    }
    ASSERT_EQ(streamed(fields, Form::compact), through_qt(fields, Form::compact));
    // Qt ends the document in a newline of its own.
    ASSERT_EQ(streamed(fields, Form::indented) + "\n", through_qt(fields, Form::indented));
    ASSERT_EQ(static_cast<std::size_t>(as_object(fields).size()), names.size());
  }
}

TEST(FieldsJson, InsertingThemKeepsWhatTheObjectHas) {
  CT::Fields fields;
  fields.set(Name::id, std::int64_t{2});
  fields.set(Name::code, std::int64_t{3});
  QJsonObject object{{QStringLiteral("id"), 1}, {QStringLiteral("own"), 4}};
  insert_into(object, fields);
  EXPECT_EQ(object, (QJsonObject{{QStringLiteral("code"), 3},
                                 {QStringLiteral("id"), 2},
                                 {QStringLiteral("own"), 4}}));
}

}  // namespace
}  // namespace CT::Test
