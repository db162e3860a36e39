// SPDX-License-Identifier: MIT
//
// Documents are built twice, by the streaming writer and by Qt, and compared byte for byte.
#include "codetrace/render/ct_json.h"

#include <gtest/gtest.h>

#include <QJsonObject>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "awkward.h"
#include "codetrace/render/ct_text.h"
#include "written.h"

namespace CT::Test {
namespace {

using Form = JsonWriter::Form;

// Writes a random value and returns the same for Qt.
class TwinBuilder {
 public:
  TwinBuilder(Awkward& random, JsonWriter& out) : random_(random), out_(out) {}

  QJsonValue object(std::size_t depth) {
    std::set<QString> names;
    for (std::size_t i = random_.below(6); i != 0; --i) names.insert(qt_text(random_.text(3)));
    QJsonObject object;
    out_.begin_object();
    for (const QString& name : names) {
      out_.begin_key();
      put_json_text(out_.out(), name.toStdString());
      out_.end_key();
      object.insert(name, value(depth));
    }
    out_.end_object();
    return object;
  }

  QJsonValue array(std::size_t depth) {
    QJsonArray array;
    out_.begin_array();
    for (std::size_t i = random_.below(6); i != 0; --i) {
      out_.element();
      array.append(value(depth));
    }
    out_.end_array();
    return array;
  }

 private:
  QJsonValue value(std::size_t depth) {
    switch (random_.below(depth == 0 ? 5 : 8)) {
      case 0: return out_.null(), QJsonValue(QJsonValue::Null);
      case 1: return boolean(random_.one_in(2));
      case 2: return integer(static_cast<std::int64_t>(random_.bits() >> random_.below(64)));
      case 3: return real(random_.real());
      case 4: return text(random_.bytes(4));
      case 5: return object(depth - 1);
      default: return array(depth - 1);
    }
  }
  QJsonValue boolean(bool value) {
    out_.boolean(value);
    return value;
  }
  QJsonValue integer(std::int64_t value) {
    out_.number(value);
    return static_cast<qint64>(value);
  }
  QJsonValue real(double value) {
    out_.number(value);
    return value;
  }
  QJsonValue text(const std::string& stored) {
    const bool suffixed = random_.one_in(4);
    suffixed ? out_.text(stored, "**CUT**") : out_.text(stored);
    return suffixed ? qt_text(stored) + QStringLiteral("**CUT**") : qt_text(stored);
  }

  Awkward& random_;
  JsonWriter& out_;
};

class Json : public ::testing::TestWithParam<Form> {
 protected:
  // Qt ends an indented document in a newline of its own.
  static std::string qt(const QJsonDocument& document) {
    std::string text = document.toJson(qt_form(GetParam())).toStdString();
    if (GetParam() == Form::indented) text.pop_back();
    return text;
  }
};

INSTANTIATE_TEST_SUITE_P(BothForms, Json, ::testing::Values(Form::indented, Form::compact),
                         [](const auto& test) {
                           return test.param == Form::indented ? "Indented" : "Compact";
                         });

TEST_P(Json, EqualsQtForRandomDocuments) {
  Awkward random(1);
  for (std::size_t i = 0; i != 5000; ++i) {
    QJsonDocument document;
    const std::string text = written_json(GetParam(), [&](JsonWriter& out) {
      TwinBuilder twins(random, out);
      const std::size_t depth = random.below(8);
      document = random.one_in(2) ? QJsonDocument(twins.object(depth).toObject())
                                  : QJsonDocument(twins.array(depth).toArray());
    });
    ASSERT_EQ(text, qt(document)) << "round " << i;
  }
}

TEST_P(Json, EqualsQtWhereIndentationIsWiderThanAPieceOfRoom) {
  constexpr std::size_t depth = 300;
  QJsonValue value = 1;
  for (std::size_t i = 0; i != depth; ++i) value = QJsonArray({value, QJsonObject()});
  const std::string text = written_json(GetParam(), [&](JsonWriter& out) {
    for (std::size_t i = 0; i != depth; ++i) {
      out.begin_array();
      out.element();
    }
    out.number(std::int64_t{1});
    for (std::size_t i = 0; i != depth; ++i) {
      out.element();
      out.begin_object();
      out.end_object();
      out.end_array();
    }
  });
  EXPECT_EQ(text, qt(QJsonDocument(value.toArray())));
}

TEST_P(Json, EmptyContainersEqualQt) {
  const auto array = [](JsonWriter& out) {
    out.begin_array();
    out.end_array();
  };
  const auto object = [](JsonWriter& out) {
    out.begin_object();
    out.end_object();
  };
  EXPECT_EQ(written_json(GetParam(), array), qt(QJsonDocument(QJsonArray())));
  EXPECT_EQ(written_json(GetParam(), object), qt(QJsonDocument(QJsonObject())));
  EXPECT_EQ(written_element(GetParam(), array), qt_element(GetParam(), QJsonArray()));
  EXPECT_EQ(written_element(GetParam(), object), qt_element(GetParam(), QJsonObject()));
}

TEST(JsonForms, AnEmptyContainerStandsOnTwoLinesUnlessCompact) {
  const auto empty = [](JsonWriter& out) {
    out.begin_object();
    out.key("a");
    out.begin_array();
    out.end_array();
    out.end_object();
  };
  EXPECT_EQ(written_json(Form::indented, empty), "{\n    \"a\": [\n    ]\n}");
  EXPECT_EQ(written_json(Form::compact, empty), "{\"a\":[]}");
}

TEST(JsonForms, WholeNumbersAreExact) {
  EXPECT_EQ(written_element(Form::compact,
                            [](JsonWriter& out) { out.number(std::int64_t{9007199254740993}); }),
            "[9007199254740993]");
}

TEST(JsonForms, AKeyMayBeLongerThanAnyRoom) {
  const std::string name(3 * Writer::max_room, 'k');
  const auto write = [&](JsonWriter& out) {
    out.begin_object();
    out.key(name);
    out.null();
    out.end_object();
  };
  EXPECT_EQ(written_json(Form::compact, write), "{\"" + name + "\":null}");
}

TEST(JsonForms, TellsWhenTheOutputFailed) {
  class Refuser final : public Sink {
    bool write(std::string_view) override { return false; }
  } sink;
  StreamWriter stream(sink);
  JsonWriter out(stream);
  out.null();
  EXPECT_TRUE(out.ok());
  stream.flush();
  EXPECT_FALSE(out.ok());
}

TEST(JsonKeyOrder, EqualsQStringForRandomTexts) {
  Awkward random(2);
  std::size_t unlike_bytes = 0;
  for (std::size_t i = 0; i != 200'000; ++i) {
    const std::string common = random.text(2);
    const std::string a = common + random.text(2);
    const std::string b = random.one_in(10) ? a : common + random.text(2);
    const bool less = qt_text(a) < qt_text(b);
    ASSERT_EQ(json_key_less(a, b), less) << a << " | " << b;
    if (less != (a < b)) ++unlike_bytes;
  }
  EXPECT_GT(unlike_bytes, 100U) << "no texts whose order differs from that of their bytes";
}

TEST(JsonKeyOrder, EqualsQStringAtTheEdgesOfThePlanes) {
  const std::vector<std::string> texts = {"",
                                          std::string(1, '\0'),
                                          "\x7F",
                                          "\xC2\x80",
                                          "\xED\x9F\xBF",
                                          "a",
                                          "\xEE\x80\x80",
                                          "\xEF\xBF\xBD",
                                          "\xEF\xBF\xBF",
                                          "\xF0\x90\x80\x80",
                                          "b",
                                          "\xF0\x9F\x98\x80",
                                          "\xF4\x8F\xBF\xBF"};
  for (const std::string& a : texts) {
    for (const std::string& b : texts) {
      EXPECT_EQ(json_key_less(a, b), qt_text(a) < qt_text(b));
      EXPECT_EQ(json_key_less("k" + a + "1", "k" + b), qt_text("k" + a + "1") < qt_text("k" + b));
    }
  }
}

TEST(JsonKeyOrder, AQuoteSortsBeforeNumbersAndTheEmptyKeyFirst) {
  const std::vector<std::string> ascending = {"", "\"k\"", "-1", "1.5", "10", "2", "7"};
  for (std::size_t i = 1; i != ascending.size(); ++i) {
    EXPECT_TRUE(json_key_less(ascending[i - 1], ascending[i]));
    EXPECT_FALSE(json_key_less(ascending[i], ascending[i - 1]));
    EXPECT_FALSE(json_key_less(ascending[i], ascending[i]));
  }
}

}  // namespace
}  // namespace CT::Test
