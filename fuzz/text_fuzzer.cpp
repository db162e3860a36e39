// SPDX-License-Identifier: MIT
//
// Texts and numbers are held equal to Qt's, and values to a plain implementation on Qt's classes.
// Each check reads the input in its own way: as a text, as a double, as an event's name, as a
// value.
#include <bit>
#include <string>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/qt/ct_text_qt.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_text.h"
#include "codetrace/tree/ct_node.h"
#include "event_by_qt.h"
#include "plain_value.h"
#include "support.h"
#include "written.h"

namespace {

using namespace CT;
using Test::qt_element;
using Test::qt_text;
using Test::written;

constexpr auto compact = JsonWriter::Form::compact;

// The inside of "[X]".
std::string inside(const std::string& array) { return array.substr(1, array.size() - 2); }

QString escaped(QString text) {
  const char* const pairs[][2] = {
      {"\t", "\\t"}, {"\n", "\\n"}, {"\r", "\\r"}, {"\"", "\\\""}, {"'", "\\'"}};
  for (const auto& [plain, with_backslash] : pairs) {
    text.replace(QLatin1String(plain), QLatin1String(with_backslash));
  }
  return text;
}

void compare_text(std::string_view stored) {
  const QString expected = qt_text(stored);
  const std::string text = written([&](Writer& out) { put_text(out, stored); });
  Fuzz::expect_equal("the text", text, expected.toStdString());
  Fuzz::expect_equal("the escaped text",
                     written([&](Writer& out) { put_escaped_text(out, stored); }),
                     escaped(expected).toStdString());
  const std::string json = written([&](Writer& out) { put_json_text(out, stored); });
  Fuzz::expect_equal("the JSON text", '"' + json + '"', inside(qt_element(compact, expected)));
  Fuzz::expect(to_qstring(text) == expected, "the text as a QString");
  Fuzz::expect(decodes_to(stored, "**CUT**") == (expected == QStringLiteral("**CUT**")),
               "decodes_to as QString compares");
  std::string characters;
  for (std::string_view left = without_byte_order_mark(stored); !left.empty();) {
    characters += take_character(left);
  }
  Fuzz::expect_equal("the characters", characters, text);
}

// The two parts around each of the first NULs are compared as keys.
void compare_keys(std::string_view stored) {
  for (int left = 4; left != 0; --left) {
    const std::size_t cut = std::min(stored.find('\0'), stored.size());
    const QString a = qt_text(stored.substr(0, cut));
    stored.remove_prefix(std::min(cut + 1, stored.size()));
    const QString b = qt_text(stored);
    Fuzz::expect(json_key_less(a.toStdString(), b.toStdString()) == (a < b), "the order of keys");
    Fuzz::expect(json_key_less(b.toStdString(), a.toStdString()) == (b < a), "the order of keys");
  }
}

std::uint64_t number_at(std::string_view stored) {
  std::uint64_t number = 0;
  for (const char c : stored.substr(0, sizeof number)) {
    number = number << 8 | static_cast<unsigned char>(c);
  }
  return number;
}

void compare_number(double number) {
  Fuzz::expect_equal("the double's text",
                     written([&](Writer& out) { put_double_text(out, number); }),
                     QString::number(number, 'g', 6).toStdString());
  Fuzz::expect_equal("the double's JSON",
                     written([&](Writer& out) { put_double_json(out, number); }),
                     inside(qt_element(compact, number)));
}

// Stored numbers are rarely tidy; those of scripts mostly are.
void compare_numbers(std::uint64_t bits) {
  compare_number(std::bit_cast<double>(bits));
  const auto integer = std::bit_cast<std::int64_t>(bits);
  compare_number(static_cast<double>(integer));
  compare_number(static_cast<double>(integer >> 16) / 1000);
  compare_number(static_cast<double>(integer >> 40) / 8);
}

void compare_event(std::string_view stored) {
  const auto sequence = static_cast<std::uint32_t>(number_at(stored));
  stored.remove_prefix(std::min(stored.size(), sizeof sequence));
  const Test::Fields payload =
      Test::Fields().u64(Test::TraceBuilder::default_orig_add_data).u32(sequence);
  const Fuzz::OneCheckpoint checkpoint(Test::ByteOrder::little, Checkpoint::Type::USER_EVENT,
                                       payload, stored);
  const auto record = Checkpoint::make_record(checkpoint.view(), nullptr);
  const Node::UserEvent event(*record, {}, 0, 0, -1);
  QString line;
  event.to_text(line);
  const QString name = qt_text(stored.substr(0, stored.find('\0')));
  if (!Test::qt_knows_all_digits_of(name)) return;
  Fuzz::expect_equal("the event's line", line.toStdString(),
                     Test::event_line_by_qt(name, sequence));
}

void compare_value(Test::ByteOrder order, std::string_view bytes) {
  // Without ADD DATA no class or resource has a name, so that the bytes alone tell everything.
  const Fuzz::OneCheckpoint checkpoint(order, Checkpoint::Type::USER_EVENT,
                                       Test::Fields().raw(bytes), {});
  Cursor cursor = checkpoint.view().cursor();
  const Checkpoint::KVal ours(checkpoint.view(), cursor, nullptr);
  const Test::PlainValue plain = Test::PlainReader(bytes, order).read();
  for (const bool quoted : {false, true}) {
    Fuzz::expect_equal("the value's text", ours.to_string(quoted).toStdString(),
                       plain.to_string(quoted).toStdString());
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::silence_log();
  const std::string_view stored = Fuzz::as_text(data, size);
  compare_text(stored);
  compare_keys(stored);
  compare_numbers(number_at(stored));
  compare_event(stored);
  compare_value(Test::ByteOrder::little, stored);
  compare_value(Test::ByteOrder::big, stored);
  return 0;
}
