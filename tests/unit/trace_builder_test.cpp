// SPDX-License-Identifier: MIT
//
// Holds the test support to bytes written by hand, so that a mistake in it cannot hide one in the
// library.
#include "trace_builder.h"

#include <gtest/gtest.h>

#include "trace_text.h"

namespace CT::Test {
namespace {

std::string hex(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string result;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (!result.empty()) result += ' ';
    result += digits[byte >> 4U];
    result += digits[byte & 15U];
  }
  return result;
}

constexpr std::size_t header_size = 36;

TEST(TraceBuilder, EmptyFileIsItsHeader) {
  TraceBuilder trace(ByteOrder::big, 0x1122334455667788, 0x99aabbccddeeff00);
  trace.set_request_id(0x01020304);
  trace.set_php_api(20230831);
  EXPECT_EQ(hex(trace.build()),
            "43 54 01 02 01 02 03 04 01 34 b2 af 00 00 00 00 00 00 00 00 "
            "11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff 00");
}

TEST(TraceBuilder, HeaderIsBigEndianInALittleEndianFile) {
  TraceBuilder trace(ByteOrder::little, 0x1000, 0x2000);
  trace.data(Fields().raw("abc"));
  trace.text("x");
  EXPECT_EQ(hex(trace.build()),
            "43 54 01 00 00 00 00 00 00 00 00 00 00 00 00 03 00 00 00 02 "
            "00 00 00 00 00 00 10 00 00 00 00 00 00 00 20 00 61 62 63 78 00");
}

TEST(TraceBuilder, OverridesAndDamageShowInTheFile) {
  TraceBuilder trace;
  trace.set_magic("XY");
  trace.set_version(9);
  trace.set_flags(0xff);
  trace.set_data_size(7);
  trace.set_add_data_size(8);
  trace.data(Fields().raw("abcd"));
  trace.cut_data(1);
  trace.patch_data(1, "Z");
  trace.cut_file(1);
  trace.append_to_file("!!");
  const std::string file = trace.build();
  EXPECT_EQ(hex(file.substr(0, 4)), "58 59 09 ff");
  EXPECT_EQ(hex(file.substr(12, 8)), "00 00 00 07 00 00 00 08");
  EXPECT_EQ(file.substr(header_size), "aZ!!");
}

TEST(TraceBuilder, HeaderWordsFollowTheBitFieldsOfTheWriter) {
  EXPECT_EQ(hex(header_word(ByteOrder::little, 0, 7, 12)), "e0 0c 00 00");
  EXPECT_EQ(hex(header_word(ByteOrder::big, 0, 7, 12)), "07 00 00 0c");
  EXPECT_EQ(hex(header_word(ByteOrder::little, 17, 1, 0x010203)), "31 03 02 01");
  EXPECT_EQ(hex(header_word(ByteOrder::big, 17, 1, 0x010203)), "8c 01 02 03");
  EXPECT_EQ(hex(header_word(ByteOrder::little, 2, 2, 0)), "42 00 00 00");
  EXPECT_EQ(hex(header_word(ByteOrder::big, 2, 4, 0)), "11 00 00 00");
}

TEST(TraceBuilder, CommonFieldsStandBeforeTheOwnOnes) {
  auto draft = CheckpointDraft::user_event(0x30, 7).time(1, 2).memory(3).location(0x20, 5);
  EXPECT_EQ(hex(draft.encode(ByteOrder::little)),
            "f1 2c 00 00 "
            "01 00 00 00 00 00 00 00 02 00 00 00 "
            "03 00 00 00 00 00 00 00 "
            "20 00 00 00 00 00 00 00 05 00 00 00 "
            "30 00 00 00 00 00 00 00 07 00 00 00");
  EXPECT_EQ(hex(draft.keep(14).encode(ByteOrder::big)),
            "8f 00 00 0e 00 00 00 00 00 00 00 01 00 00 00 02 00 00");
  EXPECT_EQ(hex(draft.keep(1).header_size(200).encode(ByteOrder::big)), "8f 00 00 c8 00");
}

TEST(TraceBuilder, ValuesInBothByteOrders) {
  const Fields value = value::map(
      {{value::string("k"), value::cut_string("ab", 5)}, {value::integer(-2), value::real(1.5)}});
  EXPECT_EQ(hex(value.encode(ByteOrder::little)),
            "07 02 00 00 00 "
            "06 01 00 00 00 6b "
            "06 fb ff ff ff 02 00 00 00 61 62 "
            "04 fe ff ff ff ff ff ff ff "
            "05 00 00 00 00 00 00 f8 3f");
  EXPECT_EQ(hex(value.encode(ByteOrder::big)),
            "07 00 00 00 02 "
            "06 00 00 00 01 6b "
            "06 ff ff ff fb 00 00 00 02 61 62 "
            "04 ff ff ff ff ff ff ff fe "
            "05 3f f8 00 00 00 00 00 00");
}

TEST(TraceBuilder, ObjectsResourcesAndDeepLists) {
  EXPECT_EQ(hex(value::object(0x21, 7).encode(ByteOrder::little)),
            "08 21 00 00 00 00 00 00 00 07 00 00 00");
  EXPECT_EQ(hex(value::resource(0x21, 7).encode(ByteOrder::big)),
            "09 00 00 00 00 00 00 00 21 00 00 00 00 00 00 00 07");
  EXPECT_EQ(value::nest(1000, value::null()).size(), 1000U * 14 + 1);
  EXPECT_EQ(value::nest(2, value::null()).encode(ByteOrder::big),
            value::list({value::list({value::null()})}).encode(ByteOrder::big));
}

TEST(TraceBuilder, DescriptorsKeepTheirTypeBytesInBothByteOrders) {
  TraceBuilder trace(ByteOrder::big, 0, 0x100);
  const Ref klass = trace.klass({.name = "A", .flags = 1, .file = "f", .line = 2});
  EXPECT_EQ(klass, 0x104U);
  EXPECT_EQ(trace.function({.name = "f", .class_entry = klass, .rest_of_type = "\x03\x04"}),
            0x104U + 36);
  EXPECT_EQ(hex(trace.build().substr(header_size)),
            "41 00 66 00 "
            "02 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 00 01 00 00 00 00 "
            "00 00 00 00 00 00 01 02 00 00 00 02 "
            "02 03 04 00 00 00 00 00 00 00 00 00 00 00 01 02 00 00 00 00 00 00 01 04 "
            "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
}

TEST(TraceBuilder, TextsAreSharedUnlessAskedOtherwise) {
  TraceBuilder trace;
  const Ref first = trace.text("a");
  EXPECT_EQ(trace.text("a"), first);
  EXPECT_EQ(trace.new_text("a"), first + 2);
  EXPECT_EQ(trace.text({}), 0U);
  EXPECT_EQ(trace.text(""), first + 4);
  EXPECT_EQ(trace.add_data_end(), first + 5);
}

TEST(TraceBuilder, CheckpointsReturnTheAddressOfTheirHeaderWord) {
  TraceBuilder trace(ByteOrder::little, 0x5000);
  EXPECT_EQ(trace.add(CheckpointDraft::shutdown()), 0x5000U);
  EXPECT_EQ(trace.add(CheckpointDraft::script_error(8, "hi")), 0x5004U);
  EXPECT_EQ(trace.data_end(), 0x5008U + 4 + 8 + 3);
  EXPECT_EQ(hex(trace.build().substr(header_size)),
            "01 00 00 00 0f 0f 00 00 08 00 00 00 02 00 00 00 00 00 00 00 68 69 00");
}

TEST(TraceText, BuildsWhatTheBuilderBuilds) {
  constexpr std::string_view text = R"(
    C: class user "A\\B" flags 3 file "/c" line 4   # a comment
    F: function user "run" class C file "/f" line 9
    startup @10.5 mem 4096 at "/i":1 url "u" uri none host "h"
    c1: method @11+7 fn F this obj(C, 7) args [1, -1.5, [null, "k" => true,
        ...], cut("ab", 10), array(3, [1])]
    return of c1 value "\x00\t\"" more u8(1) hex(ff 00)
  )";
  const auto traces = build_traces(text);
  ASSERT_EQ(traces.size(), 2U);
  for (const BuiltTrace& built : traces) {
    TraceBuilder trace(built.order);
    const Ref c = trace.klass({.name = "A\\B", .flags = 3, .file = "/c", .line = 4});
    const Ref f =
        trace.function({.name = "run", .class_entry = c, .flags = 0, .file = "/f", .line = 9});
    const Ref file = trace.text("/i");
    const Ref url = trace.text("u");
    trace.add(CheckpointDraft::startup(url, 0, trace.text("h"))
                  .time(10, 500'000'000)
                  .memory(4096)
                  .location(file, 1));
    const Fields array = value::map({{value::integer(0), value::null()},
                                     {value::string("k"), value::boolean(true)},
                                     {value::cut_marker(), value::null()}});
    const Ref call =
        trace.add(CheckpointDraft::method_call(
                      f, value::object(c, 7),
                      {value::integer(1), value::real(-1.5), array, value::cut_string("ab", 10),
                       value::map(3, {{value::integer(0), value::integer(1)}})})
                      .time(11, 7));
    trace.add(CheckpointDraft::function_return(call, value::string(std::string_view("\0\t\"", 3)))
                  .more(Fields().u8(1).raw(std::string_view("\xff\0", 2))));
    EXPECT_EQ(hex(built.bytes), hex(trace.build()));
  }
}

TEST(TraceText, OrderAndBasesComeFirst) {
  const auto traces = build_traces("order big\nbase data 0x10\nbase add_data 32\nshutdown\n");
  ASSERT_EQ(traces.size(), 1U);
  EXPECT_EQ(traces[0].order, ByteOrder::big);
  EXPECT_EQ(hex(traces[0].bytes.substr(20)),
            "00 00 00 00 00 00 00 10 00 00 00 00 00 00 00 20 08 00 00 00");
}

std::string mistake(std::string_view text) {
  try {
    build_traces(text);
  } catch (const TextError& error) {
    return error.what();
  }
  return "no mistake";
}

TEST(TraceText, MistakesNameTheirLine) {
  EXPECT_EQ(mistake("startup\n\nfoo 1\n"), "line 3: unknown statement 'foo'");
  EXPECT_EQ(mistake("startup\ncall fn F\n"), "line 2: unknown label 'F'");
  EXPECT_EQ(mistake("a: startup\na: flush\n"), "line 2: label 'a' is used twice");
  EXPECT_EQ(mistake("a: set version 2\n"), "line 1: this statement can have no label");
  EXPECT_EQ(mistake("set version 256\n"), "line 1: the number is too large");
  EXPECT_EQ(mistake("startup url \"x\n"), "line 1: a string is not closed");
  EXPECT_EQ(mistake("startup url \"\\q\"\n"), "line 1: unknown escape '\\q' in a string");
  EXPECT_EQ(mistake("shutdown now\n"), "line 1: unexpected 'now'");
  EXPECT_EQ(mistake("# x\nreturn of 1 value [1,\n2\n"), "line 4: expected ','");
  EXPECT_EQ(mistake("return of 1 value 1.2.3\n"), "line 1: '1.2.3' is no number");
  EXPECT_EQ(mistake("flush @1.0123456789\n"), "line 1: a timestamp has at most nine decimals");
  EXPECT_EQ(mistake("shutdown\norder big\n"), "line 2: unknown statement 'order'");
}

}  // namespace
}  // namespace CT::Test
