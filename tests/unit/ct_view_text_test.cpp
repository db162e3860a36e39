// SPDX-License-Identifier: MIT
//
// The three forms in which a checkpoint carries text.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "codetrace/model/ct_view.h"
#include "open_trace.h"

namespace CT::Test {
namespace {

using Checkpoint::get_cut_str;
using Checkpoint::get_inline_str;
using Checkpoint::section_str;
using Checkpoint::String;

// Bytes in a block of exactly their size, so that a sanitizer sees a read behind them.
class Payload {
 public:
  Payload(const Fields& fields, ByteOrder order, std::size_t keep = std::string::npos)
      : big_endian_(order == ByteOrder::big) {
    const std::string bytes = fields.encode(order).substr(0, keep);
    size_ = bytes.size();
    bytes_ = std::make_unique<unsigned char[]>(size_);
    bytes.copy(static_cast<char*>(static_cast<void*>(bytes_.get())), size_);
  }
  Cursor cursor() const { return {bytes_.get(), bytes_.get() + size_, big_endian_}; }
  const unsigned char* at(std::size_t offset) const { return bytes_.get() + offset; }

 private:
  bool big_endian_;
  std::size_t size_ = 0;
  std::unique_ptr<unsigned char[]> bytes_;
};

struct Read {
  bool ok;
  std::string text;
  std::int64_t orig_sz;
  std::size_t left;

  friend bool operator==(const Read&, const Read&) = default;
  friend void PrintTo(const Read& read, std::ostream* out) {
    *out << read.ok << " \"" << read.text << "\" " << read.orig_sz << ' ' << read.left;
  }
};

Read read_with(String (*reader)(Cursor&), const Fields& fields, ByteOrder order,
               std::size_t keep = std::string::npos) {
  const Payload payload(fields, order, keep);
  Cursor cursor = payload.cursor();
  const String text = reader(cursor);
  return {cursor.ok(), text_of(text), text.orig_sz, cursor.ok() ? cursor.left() : 0};
}

class StoredText : public testing::TestWithParam<ByteOrder> {
 protected:
  static Read cut(const Fields& fields, std::size_t keep = std::string::npos) {
    return read_with(get_cut_str, fields, GetParam(), keep);
  }
  static Read inlined(const Fields& fields, std::size_t keep = std::string::npos) {
    return read_with(get_inline_str, fields, GetParam(), keep);
  }
};

TEST_P(StoredText, WholeCutStringHasItsLengthAsOriginalSize) {
  EXPECT_EQ(cut(Fields().cut_string("abc").raw("rest")), (Read{true, "abc", 3, 4}));
}

TEST_P(StoredText, NegativeWordIsTheOriginalSize) {
  const Fields fields = Fields().i32(-100).u32(10).raw("0123456789rest");
  EXPECT_EQ(fields.size(), 4U + 4 + 10 + 4);
  EXPECT_EQ(cut(fields), (Read{true, "0123456789", 100, 4}));
}

TEST_P(StoredText, ZeroWordIsAnEmptyStringThatIsPresent) {
  EXPECT_EQ(cut(Fields().u32(0)), (Read{true, "", 0, 0}));
}

TEST_P(StoredText, SmallestWordKeepsItsSign) {
  EXPECT_EQ(cut(Fields().i32(INT32_MIN).u32(2).raw("ab")), (Read{true, "ab", INT32_MIN, 0}));
}

TEST_P(StoredText, CutStringMayHoldNulsAndMoreThanItsOriginalSize) {
  EXPECT_EQ(cut(Fields().i32(-1).u32(3).raw(std::string_view("\0b\0", 3))),
            (Read{true, std::string("\0b\0", 3), 1, 0}));
}

TEST_P(StoredText, CutStringThatIsNotWholeIsAbsent) {
  const Fields whole = Fields().cut_string("abc");
  for (std::size_t kept = 0; kept != whole.size(); ++kept) {
    EXPECT_EQ(cut(whole, kept), (Read{false, "(absent)", -1, 0})) << kept;
  }
  const Fields shortened = Fields().cut_string("abc", 9);
  for (std::size_t kept = 0; kept != shortened.size(); ++kept) {
    EXPECT_EQ(cut(shortened, kept), (Read{false, "(absent)", -1, 0})) << kept;
  }
}

TEST_P(StoredText, CutStringLongerThanAnyPayloadIsAbsent) {
  EXPECT_FALSE(cut(Fields().i32(INT32_MAX).raw("abc")).ok);
  EXPECT_FALSE(cut(Fields().i32(-5).u32(UINT32_MAX).raw("abc")).ok);
  EXPECT_FALSE(cut(Fields().i32(-5).u32(4).raw("abc")).ok);
}

TEST_P(StoredText, InlineTextHasANulBehindIt) {
  EXPECT_EQ(inlined(Fields().inline_text("abc").raw("rest")), (Read{true, "abc", -1, 4}));
}

TEST_P(StoredText, InlineTextOfNoBytesIsAbsentAndHasNoNul) {
  EXPECT_EQ(inlined(Fields().u64(0).raw("rest")), (Read{true, "(absent)", -1, 4}));
}

TEST_P(StoredText, InlineTextEndsAtItsFirstNul) {
  const Fields fields = Fields().inline_text(5, std::string_view("ab\0cd\0rest", 10));
  EXPECT_EQ(inlined(fields), (Read{true, "ab", -1, 4}));
}

TEST_P(StoredText, InlineTextWithoutNulInPlaceGoesOnToTheNextOne) {
  EXPECT_EQ(inlined(Fields().inline_text(2, std::string_view("abcd\0rest", 9))),
            (Read{true, "abcd", -1, 6}));
  EXPECT_EQ(inlined(Fields().inline_text(2, "abcd")), (Read{true, "abcd", -1, 1}));
}

TEST_P(StoredText, InlineTextThatStartsWithANulIsEmptyAndPresent) {
  EXPECT_EQ(inlined(Fields().inline_text(2, std::string_view("\0b\0", 3))),
            (Read{true, "", -1, 0}));
}

TEST_P(StoredText, InlineTextIsKeptWithoutItsNulAndAbsentWithoutItsBytes) {
  const Fields whole = Fields().inline_text("abc");
  for (std::size_t kept = 0; kept != 8 + 3; ++kept) {
    EXPECT_EQ(inlined(whole, kept), (Read{false, "(absent)", -1, 0})) << kept;
  }
  EXPECT_EQ(inlined(whole, 8 + 3), (Read{false, "abc", -1, 0}));
}

TEST_P(StoredText, InlineTextLongerThanAnyPayloadIsAbsent) {
  for (const std::uint64_t size : {std::uint64_t{4}, std::uint64_t{1} << 32, std::uint64_t{1} << 63,
                                   UINT64_MAX - 1, UINT64_MAX}) {
    EXPECT_EQ(inlined(Fields().inline_text(size, "abc")), (Read{false, "(absent)", -1, 0})) << size;
  }
}

TEST_P(StoredText, InlineTextEndsAtItsNulThoughMoreWasPromised) {
  constexpr std::string_view two_and_nul("ab\0", 3);
  EXPECT_EQ(inlined(Fields().inline_text(2, two_and_nul)), (Read{true, "ab", -1, 0}));
  for (const std::uint64_t size : {std::uint64_t{3}, std::uint64_t{4}, std::uint64_t{5},
                                   std::uint64_t{1} << 32, UINT64_MAX - 1, UINT64_MAX}) {
    EXPECT_EQ(inlined(Fields().inline_text(size, two_and_nul)), (Read{false, "ab", -1, 0})) << size;
  }
  EXPECT_EQ(inlined(Fields().inline_text(5, std::string_view("ab\0cd", 5))),
            (Read{false, "ab", -1, 0}));
  EXPECT_EQ(inlined(Fields().inline_text(9, std::string_view("\0", 1))), (Read{false, "", -1, 0}));
}

TEST(RecordText, InlineTextThatPromisesTooMuchIsToldAsDamage) {
  for_both_orders(
      "raw 15 more u32(8) u64(5) bytes(\"ab\\0\")\nraw 13 more u32(2) u64(5) bytes(\"abc\")",
      [](OpenTrace& trace) {
        const auto error = trace.record<Checkpoint::ScriptError>(0);
        EXPECT_TRUE(error->is_valid());
        EXPECT_EQ(text_of(error->error_message()), "ab");
        EXPECT_EQ(error->damage(), 12U);
        const auto sent = trace.record<Checkpoint::SapiSendHeaders>(1);
        EXPECT_EQ(text_of(sent->status()), "(absent)");
        EXPECT_EQ(sent->damage(), 12U);
      });
}

INSTANTIATE_TEST_SUITE_P(Order, StoredText, testing::ValuesIn(both_orders), [](const auto& order) {
  return order.param == ByteOrder::big ? "big" : "little";
});

TEST(AddDataText, EndsAtItsNulOrWithTheSection) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order, 0x1000, 0x2000);
    trace.add_data(Fields().raw(std::string_view("first\0last", 10)));
    const OpenTrace open(trace);
    const auto text = [&](Ref reference) {
      return text_of(section_str(open.file(), open.file().add_data().resolve(reference)));
    };
    EXPECT_EQ(text(0x2000), "first");
    EXPECT_EQ(text(0x2005), "");
    EXPECT_EQ(text(0x2006), "last");
    EXPECT_EQ(text(0x2009), "t");
    EXPECT_EQ(text(0x200A), "(absent)");
    EXPECT_EQ(text(0x1FFF), "(absent)");
    EXPECT_EQ(text(0), "(absent)");
    EXPECT_EQ(section_str(open.file(), open.file().add_data().data()).orig_sz, -1);
  }
}

TEST(AddDataText, ReferenceOfZeroIsNoneAlsoWhereAddDataBeginsAtZero) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order, 0, 0);
    trace.add_data(Fields().raw("abc"));
    const OpenTrace open(trace);
    EXPECT_EQ(open.file().add_data().resolve(0), nullptr);
    EXPECT_EQ(open.file().add_data().resolve(1), open.file().add_data().data() + 1);
  }
}

}  // namespace
}  // namespace CT::Test
