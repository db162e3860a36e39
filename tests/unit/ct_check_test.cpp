// SPDX-License-Identifier: MIT
//
// Each code of a check: a small trace of which only this is wrong, in both byte orders.
#include "ctcheck/ct_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "checked.h"
#include "wrong_request.h"

namespace CT::Test {
namespace {

using Draft = CheckpointDraft;

class CheckOf : public testing::TestWithParam<ByteOrder> {
 protected:
  static void expect(const std::vector<Wrong>& files) {
    for (const Wrong& wrong : files) {
      const Check::Result result = checked(built(wrong, GetParam()));
      EXPECT_EQ(codes_of(result), wrong.codes)
          << "file " << &wrong - files.data()
          << (result.defects.empty() ? "" : ": " + result.defects.front().what);
    }
  }
};

TEST_P(CheckOf, FilesAsAWhole) {
  expect({
      {""},
      {"CT-HEADER", {}, [](Request& it) { return it.trace.build().substr(0, 35); }},
      {"CT-MAGIC", {}, [](Request& it) { return it.trace.set_magic("XY"), it.trace.build(); }},
      // Neither marks nor the length of a trace: no more is said.
      {"CT-MAGIC",
       {},
       [](Request& it) { return it.trace.set_magic("XY"), it.trace.build() + "?"; }},
      {"CT-VERSION", {}, [](Request& it) { return it.trace.set_version(2), it.trace.build(); }},
      {"CT-SIZE", {}, [](Request& it) { return it.trace.build() + "?"; }},
      {"CT-SIZE", {}, [](Request& it) { return it.trace.cut_file(1), it.trace.build(); }},
      {"CT-FLAGS",
       {},
       [](Request& it) {
         const std::uint8_t order = it.trace.order() == ByteOrder::big ? 2 : 0;
         return it.trace.set_flags(order | 0x10), it.trace.build();
       }},
  });
}

TEST_P(CheckOf, SectionsAtTheSameAddresses) {
  TraceBuilder trace(GetParam(), 0x1000, 0x1001);
  trace.add(Draft::startup(trace.text("/")));
  trace.add(Draft::shutdown());
  EXPECT_EQ(codes_of(checked(trace.build())), "CT-ORIGIN");
  TraceBuilder last(GetParam(), ~std::uint64_t{0} - 1, 0x1000);
  last.add(Draft::startup(last.text("/")));
  last.add(Draft::shutdown());
  EXPECT_EQ(codes_of(checked(last.build())), "CT-ORIGIN");
}

TEST_P(CheckOf, Framing) {
  expect({
      {"CT-WORD-END",
       {},
       [](Request& it) { return it.trace.data(Fields().raw("ab")), it.trace.build(); }},
      {"CT-PAYLOAD-END",
       {},
       [](Request& it) { return it.trace.add(Draft::raw(14).header_size(9)), it.trace.build(); }},
      one_more("CT-TYPE", [](Request&) { return Draft::raw(18); }),
      one_more("CT-CRASH", [](Request&) { return Draft::raw(16); }),
      one_more("CT-NO-PAYLOAD", [](Request&) { return Draft::raw(17); }),
      {"CT-NO-PAYLOAD*3", [](Request& it) { it.trace.data(Fields().raw(std::string(12, '\0'))); }},
      {"CT-ZEROS", [](Request& it) { it.trace.data(Fields().raw(std::string(16, '\0'))); }},
      // What a flush has as payload is nobody's business.
      one_more("", [](Request&) { return Draft::sapi_flush(); }),
  });
}

TEST_P(CheckOf, Fields) {
  expect({
      one_more("CT-FIELD-END", [](Request& it) { return Draft::user_event(it.text, 1).keep(11); }),
      one_more("CT-FIELD-END", [](Request&) { return Draft::script_exit().time(11).keep(11); }),
      one_more("CT-BYTES-LEFT",
               [](Request& it) { return Draft::user_event(it.text, 1).more(Fields().u8(0)); }),
      one_more("CT-HEADER-OP", [](Request&) { return Draft::sapi_header(5); }),
      one_more("CT-TIME-BACK", [](Request&) { return Draft::script_exit().time(10, 999); }),
      // The next one is right again, so the clock goes back behind it.
      one_more("CT-TIME-BACK CT-TIME-RANGE",
               [](Request&) { return Draft::script_exit().time(12, 1'000'000'000); }),
      one_more("CT-MEMORY", [](Request&) { return Draft::script_exit().memory(~0ULL); }),
      // Memory is given back all the time.
      one_more("", [](Request&) { return Draft::script_exit().memory(1); }),
  });
}

TEST_P(CheckOf, Texts) {
  const auto header = [](const Fields& line) {
    return [line](Request&) { return Draft::sapi_header(0, line); };
  };
  const auto error = [](std::uint64_t size, std::string_view bytes) {
    return [=](Request&) { return Draft::raw(15, Fields().u32(2).inline_text(size, bytes)); };
  };
  using namespace std::string_view_literals;
  expect({
      one_more("CT-TEXT-LENGTH", header(Fields().i32(9).raw("A: b"))),
      one_more("CT-TEXT-LENGTH", header(Fields().i32(-20).u32(9).raw("A: b"))),
      one_more("CT-CUT-SIZE", header(Fields().i32(-4).u32(4).raw("A: b"))),
      one_more("", header(Fields().i32(-5).u32(4).raw("A: b"))),
      one_more("CT-UTF8", header(Fields().i32(4).raw("A: \xFF"))),
      // A text that was cut may end within a character.
      one_more("", header(Fields().i32(-5).u32(4).raw("A: \xC3"))),
      one_more("", error(5, "short\0"sv)),
      one_more("CT-TEXT-LENGTH", error(9, "short\0"sv)),
      one_more("CT-TEXT-LENGTH", error(9, "short"sv)),
      one_more("CT-TEXT-NUL", error(5, "short"sv)),
      one_more("CT-TEXT-NUL CT-BYTES-LEFT", error(5, "shorter\0"sv)),
      one_more("CT-TEXT-SHORT", error(5, "sh\0rt\0"sv)),
      one_more("CT-TEXT-SHORT", error(5, "sh\0rt"sv)),
      one_more("CT-UTF8", error(3, "\xC3(!\0"sv)),
      one_more("CT-UTF8", [](Request& it) { return Draft::user_event(it.trace.text("\xFF"), 1); }),
  });
}

TEST_P(CheckOf, Values) {
  const auto call = [](const Fields& argument) {
    return [argument](Request& it) { return Draft::function_call(it.function, {argument}); };
  };
  const auto counted = [](std::uint32_t count) {
    return [count](Request& it) {
      return Draft::call_with_count(it.function, std::nullopt, count, {value::null()});
    };
  };
  expect({
      one_call("CT-VALUE-END", call(Fields().raw("\x04"))),
      one_call("CT-VALUE-END", call(Fields().raw("\x08zzz"))),
      one_call("CT-VALUE-END", call(value::list({Fields().raw("\x06z")}))),
      one_call("CT-TEXT-LENGTH", call(Fields().u8(6).i32(100).raw("zz"))),
      one_call("CT-COUNT", call(value::map(3, {{value::null(), value::null()}}))),
      one_call("CT-COUNT", call(value::array_header(INT32_MAX))),
      one_call("CT-COUNT", counted(UINT32_MAX)),
      one_call("CT-COUNT", counted(2)),
      one_call("CT-BYTES-LEFT", counted(0)),
      one_call("CT-COUNT-BELOW", call(value::array_header(-1))),
      one_call("CT-VALUE-TYPE", call(value::code(10))),
      // What scripts hold may be any bytes.
      one_call("", call(value::string("\xFF"))),
      one_call("", call(value::nest(100000, value::map({})))),
  });
}

INSTANTIATE_TEST_SUITE_P(InBothOrders, CheckOf, testing::Values(ByteOrder::little, ByteOrder::big),
                         [](const testing::TestParamInfo<ByteOrder>& order) {
                           return order.param == ByteOrder::big ? "Big" : "Little";
                         });

}  // namespace
}  // namespace CT::Test
