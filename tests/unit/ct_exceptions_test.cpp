// SPDX-License-Identifier: MIT
//
// Exceptions on hand-made traces: one entry an object, with its message and its way.
#include "ctmeasure/ct_exceptions.h"

#include <gtest/gtest.h>

#include <string>

#include "open_trace.h"

namespace CT::Test {
namespace {

const std::string entities =
    "E: class user \"NoteError\"\nX: class internal \"Exception\"\n"
    "f: function user \"f\"\ng: function user \"g\"\nh: function user \"h\"\n"
    "b: function internal \"b\"\n"
    "make: function user \"__construct\" class E\n"
    "base: function internal \"__construct\" class X\n"
    "say: function internal \"getMessage\" class X\n"
    "startup @10\n";

// An exception a line: class, handle, message, by whom it was made, its ways up, what before it.
std::string lines_of(const std::string& text) {
  std::string first;
  for (const BuiltTrace& built : build_traces(entities + text)) {
    Trace trace;
    EXPECT_TRUE(trace.open(as_bytes(built.bytes), built.bytes.size()));
    std::string lines;
    for (const Exception& exception : exceptions(trace, Measures(trace))) {
      lines += exception.class_entry != nullptr ? std::string(exception.class_entry->name().view())
                                                : "?";
      lines += "#" + std::to_string(exception.handle) + " " + text_of(exception.message) +
               (exception.message.is_cut() ? "..." : "") + " " + std::to_string(exception.made_by);
      for (const Exception::Pass& pass : exception.passes) {
        lines += " |";
        for (const NodeId id : pass.calls) lines += " " + std::to_string(id);
        lines += " > " + std::to_string(pass.caught_in) + (pass.is_uncaught ? "!" : "");
      }
      if (exception.previous >= 0) lines += " from " + std::to_string(exception.previous);
      lines += "\n";
    }
    if (built.order == ByteOrder::little) first = lines;
    EXPECT_EQ(lines, first);
  }
  return first;
}

TEST(Exceptions, AreOneEntryHoweverManyCallsTheyPass) {
  EXPECT_EQ(lines_of("i: include \"a.php\"\n"
                     "a: call fn f\nc: call fn g\nd: call fn h\n"
                     "m: method fn make this obj(E, 7) args [3, \"outer\"]\n"
                     "n: method fn base this obj(E, 7) args [\"no such note\", 2, null]\n"
                     "return of n\nreturn of m\n"
                     "exception of d value obj(E, 7)\nexception of c value obj(E, 7)\n"
                     "return of a\ninclude_return of i\nshutdown\n"),
            "NoteError#7 no such note 5 | 4 3 > 2\n");
}

TEST(Exceptions, ThatNobodyCatchesLeaveTheRequest) {
  EXPECT_EQ(lines_of("i: include \"a.php\"\n"
                     "m: method fn base this obj(X, 7) args [cut(\"no\", 50)]\nreturn of m\n"
                     "include_exception of i value obj(X, 7)\nshutdown\n"),
            "Exception#7 no... 2 | 1 > 0!\n");
}

TEST(Exceptions, OfReusedHandlesAreNewOnes) {
  EXPECT_EQ(lines_of("a: call fn f\n"
                     "m: method fn base this obj(X, 7) args [\"one\"]\nreturn of m\n"
                     "exception of a value obj(X, 7)\n"
                     "c: call fn f\n"
                     "n: method fn base this obj(X, 7) args []\nreturn of n\n"
                     "exception of c value obj(X, 7)\n"
                     "d: call fn b\nexception of d value obj(X, 7)\n"
                     "e: call fn b\nexception of e value obj(E, 7)\n"),
            "Exception#7 one 2 | 1 > 0!\nException#7 (absent) 4 | 3 > 0!\n"
            "Exception#7 (absent) -1 | 5 > 0!\nNoteError#7 (absent) -1 | 6 > 0!\n");
}

TEST(Exceptions, ThatAreThrownAgainAreTheSame) {
  EXPECT_EQ(lines_of("z: call fn h\n"
                     "a: call fn f\n"
                     "m: method fn base this obj(X, 7) args [\"one\"]\nreturn of m\n"
                     "exception of a value obj(X, 7)\n"
                     "c: call fn b args [obj(X, 7)]\nexception of c value obj(X, 7)\n"
                     "d: call fn g\nexception of d value obj(X, 7)\n"
                     "exception of z value obj(X, 7)\n"),
            "Exception#7 one 3 | 2 > 1 | 4 > 1 | 5 1 > 0!\n");
}

TEST(Exceptions, KnowWhatTheyWereMadeFrom) {
  EXPECT_EQ(lines_of("a: call fn f\n"
                     "c: call fn b\nexception of c value obj(X, 9)\n"
                     "m: method fn make this obj(E, 7) args [\"bad date\", obj(X, 9)]\n"
                     "n: method fn base this obj(E, 7) args [\"bad date\", 0, obj(X, 9)]\n"
                     "return of n\nreturn of m\n"
                     "exception of a value obj(E, 7)\n"),
            "Exception#9 (absent) -1 | 2 > 1\nNoteError#7 bad date 3 | 1 > 0! from 0\n");
}

TEST(Exceptions, AreAskedForTheirMessages) {
  EXPECT_EQ(lines_of("a: call fn f\n"
                     "c: call fn b\nexception of c value obj(X, 9)\n"
                     "m: method fn say this obj(X, 9)\nreturn of m value \"from PHP\"\n"
                     "n: method fn say this obj(X, 8)\nreturn of n value \"another\"\n"
                     "return of a\n"),
            "Exception#9 from PHP -1 | 2 > 1\n");
}

TEST(Exceptions, ThatAreNoObjectsAreNone) {
  EXPECT_EQ(lines_of("a: call fn f\nexception of a value 7\n"), "");
  EXPECT_EQ(lines_of("a: call fn f\nexception of a value obj(none, 7)\n"),
            "?#7 (absent) -1 | 1 > 0!\n");
}

TEST(Exceptions, MayPassAnyNumberOfCalls) {
  std::string text;
  constexpr int depth = 30'000;
  for (int i = 0; i != depth; ++i) text += "c" + std::to_string(i) + ": call fn f\n";
  for (int i = depth; i-- != 0;) {
    text += "exception of c" + std::to_string(i) + " value obj(X, 7)\n";
  }
  const std::string bytes = build_traces(entities + text).front().bytes;
  Trace trace;
  ASSERT_TRUE(trace.open(as_bytes(bytes), bytes.size()));
  const auto found = exceptions(trace, Measures(trace));
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].passes.front().calls.size(), static_cast<std::size_t>(depth));
}

}  // namespace
}  // namespace CT::Test
