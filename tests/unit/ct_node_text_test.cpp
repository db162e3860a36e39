// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_node_text.h"

#include <gtest/gtest.h>

#include <QString>
#include <string>

#include "awkward.h"
#include "codetrace/tree/ct_node.h"
#include "open_trace.h"
#include "rich_trace.h"

namespace CT::Test {
namespace {

// A node's line, which must be the same in both its forms.
std::string line(const Node::Base& node) {
  QString text;
  EXPECT_TRUE(node.to_text(text));
  Node::TextRoom work;
  const std::string streamed =
      written([&](Writer& out) { EXPECT_TRUE(node.write_text(out, work)); });
  EXPECT_EQ(text.toStdString(), streamed);
  return streamed;
}

// The line of the node that a trace's last checkpoint made or ended. The trace's first is STARTUP.
std::string last_line(OpenTrace& trace) {
  Storage::NodeId last = Storage::no_node;
  trace.read([&](const Checkpoint::Base& record) {
    last = -1;
    for (Storage::NodeId id = 0; id != trace.storage().node_count(); ++id) {
      const auto node = trace.storage().node(id);
      const bool ended_here =
          node->end() != nullptr && node->end()->checkpoint() == record.checkpoint();
      if (ended_here || node->begin().checkpoint() == record.checkpoint()) last = id;
    }
    return true;
  });
  return last == Storage::no_node ? "no node" : line(*trace.storage().node(last));
}

void expect_line(std::string_view checkpoints, std::string_view expected) {
  SCOPED_TRACE(checkpoints);
  for_both_orders("startup\n" + std::string(checkpoints),
                  [&](OpenTrace& trace) { EXPECT_EQ(last_line(trace), expected); });
}

// The same for a line with functions and classes, which have to come first.
void expect_call(std::string_view definitions, std::string_view checkpoints,
                 std::string_view expected) {
  SCOPED_TRACE(checkpoints);
  const std::string text =
      std::string(definitions) + "\nstartup\n" + std::string(checkpoints) + "\n";
  for_both_orders(text, [&](OpenTrace& trace) { EXPECT_EQ(last_line(trace), expected); });
}

TEST(NodeText, StartupShowsFinalAndFirstUrlUnescaped) {
  for_both_orders("startup url \"/a'%2\" uri \"/b\\t\"", [](OpenTrace& trace) {
    EXPECT_EQ(last_line(trace), "REQUEST STARTUP: REQUEST: /a'%2, URL: /b\t");
  });
  for_both_orders("startup", [](OpenTrace& trace) {
    EXPECT_EQ(last_line(trace), "REQUEST STARTUP: REQUEST: , URL: ");
  });
}

TEST(NodeText, BuiltInFunctionHasAnAsterisk) {
  expect_call("F: function internal \"strlen\"", "c: call fn F args [\"abc\"]\nreturn of c value 3",
              "*strlen(\"abc\") Returned: 3");
}

TEST(NodeText, MethodOfAUserClass) {
  constexpr std::string_view method = "C: class user \"A\"\nF: function user \"run\" class C";
  expect_call(method, "method fn F this obj(C, 1)", "A::run()");
  expect_call(method, "c: call fn F args [null, 1]\nreturn of c value obj(C, 2)",
              "A::run(null, 1) Returned: object(A#2)");
  expect_call("C: class internal \"A\"\nF: function internal \"run\" class C", "call fn F",
              "*A::run()");
}

TEST(NodeText, ConstructorsAndDestructorsHideWhatTheyReturnAndShowWhatTheyThrow) {
  for (const std::string name : {"__construct", "__destruct"}) {
    const std::string function = "F: function user \"" + name + "\"";
    expect_call(function, "c: call fn F\nreturn of c value 1", name + "()");
    expect_call(function, "c: call fn F\nexception of c value 1", name + "() Threw: 1");
  }
  expect_call("F: function user \"__Construct\"", "c: call fn F\nreturn of c value 1",
              "__Construct() Returned: 1");
}

TEST(NodeText, UndefResultIsNotShown) {
  constexpr std::string_view function = "F: function user \"f\"";
  expect_call(function, "c: call fn F\nreturn of c value undef", "f()");
  expect_call(function, "c: call fn F\nreturn of c value null", "f() Returned: null");
  expect_call(function, "c: call fn F\nexception of c value undef", "f()");
  expect_call(function, "c: call fn F\nexception of c value obj(none, 3)",
              "f() Threw: object(!unknown!#3)");
  expect_call(function, "c: call fn F\nreturn of c value code(12)", "f()");
}

TEST(NodeText, StringsThatStandAloneAreEscapedAndThoseInArraysAreNot) {
  expect_call("F: function user \"f\"",
              "c: call fn F args [\"a\\n'\", [\"a\\n'\"], cut(\"x\\\"\", 9)]\n"
              "return of c value \"\\t\\\\\"",
              "f(\"a\\n\\'\", array(0 => \"a\n'\"), \"x\\\"**CUT**\") Returned: \"\\t\\\"");
}

TEST(NodeText, CallWithACountAndNoArgumentsHasEmptyParentheses) {
  expect_call("F: function user \"f\"", "call fn F count 2", "f()");
  expect_call("F: function user \"f\"", "call fn F args [undef] count 9", "f(undef)");
  expect_call("F: function user \"f\"", "call fn F args [1] count 0", "f()");
}

TEST(NodeText, EndOfAnotherKindShowsNoResult) {
  expect_call("F: function user \"f\"", "c: call fn F\nwrite_end of c", "f()");
  expect_call("F: function user \"f\"", "c: call fn F\ninclude_exception of c value 1", "f()");
  expect_line("i: include \"a\"\nexception of i value 1", "include a");
}

TEST(NodeText, IncludeShowsItsPathAndWhatItThrew) {
  expect_line("include \"a'b.php\"", "include a'b.php");
  expect_line("i: include \"a.php\"\ninclude_return of i", "include a.php");
  expect_line("i: include \"a.php\"\ninclude_exception of i value \"it's\"",
              "include a.php Threw: \"it\\'s\"");
  expect_line("i: include none\ninclude_exception of i value undef", "include ");
}

TEST(NodeText, WriteIsEscapedInQuotes) {
  expect_line("write \"<b>\\n\\\"\\0\\\\\"", std::string("WRITE: \"<b>\\n\\\"\0\\\"", 18));
  expect_line("w: write cut(\"x\", 9)\nwrite_end of w", "WRITE: \"x**CUT**\"");
  expect_line("write \"\"", "WRITE: \"\"");
}

TEST(NodeText, HeaderOperations) {
  expect_line("header 0 \"X: '1'\"", "HEADER REPLACE \"X: \\'1\\'\"");
  expect_line("header 1 \"X: 1\"", "HEADER \"X: 1\"");
  expect_line("header 2 cut(\"X\", 5)", "HEADER DELETE \"X**CUT**\"");
  expect_line("header 3", "HEADER DELETE ALL");
  expect_line("header 4", "HEADER SET STATUS");
}

TEST(NodeText, UnknownHeaderOperationIsAnEmptyLine) {
  expect_line("header 5", "");
  expect_line("header 9", "");
  expect_line("header 255", "");
}

TEST(NodeText, PointsWithFixedLines) {
  expect_line("flush", "FLUSH");
  expect_line("send_headers 404 \"Not Found\"", "SEND_HEADERS");
  expect_line("exit", "SCRIPT_EXIT");
}

TEST(NodeText, ErrorHasAnUnsignedNumberAndAnEscapedMessage) {
  expect_line("error 8 \"it's\\n\"", "Script error (8) it\\'s\\n");
  expect_line("error 4294967295", "Script error (4294967295) ");
  expect_line("error 8 \"%1 %2\"", "Script error (8) %1 %2");
}

TEST(NodeText, EventHasAnUnescapedNameAndItsSequence) {
  expect_line("event \"it's\\n\" sequence 4294967295",
              "(EVENT) Kelvo Monitor Event: it's\n. Event sequence: 4294967295");
  expect_line("event none sequence 0", "(EVENT) Kelvo Monitor Event: . Event sequence: 0");
}

TEST(NodeText, MarkerInAnEventNameTakesTheSequence) {
  const auto expect_event = [](std::string_view name, std::string_view rest) {
    expect_line("event \"" + std::string(name) + "\" sequence 1234567",
                "(EVENT) Kelvo Monitor Event: " + std::string(rest));
  };
  expect_event("%1", "1234567. Event sequence: %2");
  expect_event("%2", "1234567. Event sequence: 1234567");
  expect_event("%0%1%2", "1234567%1%2. Event sequence: %2");
  expect_event("%3", "%3. Event sequence: 1234567");
  expect_event("%1 and %1", "1234567 and 1234567. Event sequence: %2");
  expect_event("100%", "100%. Event sequence: 1234567");
}

// A trace of one checkpoint behind STARTUP.
template <class Make>
std::string random_line(ByteOrder order, Make make) {
  TraceBuilder trace(order);
  trace.add(CheckpointDraft::startup());
  trace.add(make(trace));
  OpenTrace open(trace);
  return last_line(open);
}

ByteOrder any_order(Awkward& random) {
  return random.one_in(2) ? ByteOrder::little : ByteOrder::big;
}

// Without NUL, which ends texts in ADD DATA.
std::string name_of(Awkward& random) {
  std::string name;
  for (const char c : random.bytes(3)) {
    if (c != '\0') name += c;
  }
  constexpr std::string_view markers[] = {"%1", "%2", "%0", "%3", "%L1", "%L", "%12", "%%", "%99"};
  while (random.one_in(2)) {
    name.insert(random.below(name.size() + 1), markers[random.below(std::size(markers))]);
  }
  return name;
}

TEST(NodeText, EventsPrintAsQtFillsTheirTemplate) {
  Awkward random(11);
  for (int i = 0; i != 3000; ++i) {
    const std::string name = name_of(random);
    const auto sequence = static_cast<std::uint32_t>(random.bits() >> random.below(64));
    const QString expected = QStringLiteral("(EVENT) Kelvo Monitor Event: %1. Event sequence: %2")
                                 .arg(qt_text(name))
                                 .arg(sequence);
    EXPECT_EQ(random_line(any_order(random),
                          [&](TraceBuilder& trace) {
                            return CheckpointDraft::user_event(trace.text(name), sequence);
                          }),
              expected.toStdString());
  }
}

TEST(NodeText, ErrorsPrintAsQtFillsTheirTemplate) {
  Awkward random(12);
  for (int i = 0; i != 3000; ++i) {
    const std::string message = name_of(random);
    const auto number = static_cast<std::uint32_t>(random.bits());
    QString escaped;
    for (const QChar c : qt_text(message)) {
      if (c == u'"' || c == u'\'') escaped += u'\\';
      if (c == u'\t' || c == u'\n' || c == u'\r') {
        escaped += u'\\';
        escaped += c == u'\t' ? u't' : c == u'\n' ? u'n' : u'r';
      } else {
        escaped += c;
      }
    }
    EXPECT_EQ(
        random_line(any_order(random),
                    [&](TraceBuilder&) { return CheckpointDraft::script_error(number, message); }),
        QStringLiteral("Script error (%1) %2").arg(number).arg(escaped).toStdString());
  }
}

TEST(NodeText, CallsPrintAsQtFillsTheirTemplate) {
  Awkward random(13);
  for (int i = 0; i != 3000; ++i) {
    const std::string name = name_of(random);
    const std::string klass = name_of(random);
    const bool user = random.one_in(2);
    const QString expected =
        QStringLiteral("%1%2::%3(")
            .arg(user ? QString() : QStringLiteral("*"), qt_text(klass), qt_text(name)) +
        QStringLiteral(")");
    EXPECT_EQ(random_line(any_order(random),
                          [&](TraceBuilder& trace) {
                            return CheckpointDraft::function_call(
                                trace.function({.type = user ? user_type : internal_type,
                                                .name = name,
                                                .class_entry = trace.klass({.name = klass})}));
                          }),
              expected.toStdString());
  }
}

TEST(NodeText, AppendsToWhatIsThere) {
  OpenTrace trace(rich_trace(ByteOrder::big));
  trace.read();
  for (Storage::NodeId id = 0; id != trace.storage().node_count(); ++id) {
    const auto node = trace.storage().node(id);
    QString text = QStringLiteral("? ");
    EXPECT_TRUE(node->to_text(text));
    EXPECT_EQ(text.toStdString(), "? " + line(*node));
  }
}

}  // namespace
}  // namespace CT::Test
