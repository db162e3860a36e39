// SPDX-License-Identifier: MIT
//
// What a report's data is packed with: base64, zlib streams, numbers, texts by number, entries in
// blocks.
#include <QByteArray>
#include <numeric>
#include <random>
#include <utility>

#include "ctreport/ct_base64.h"
#include "ctreport/ct_column.h"
#include "ctreport/ct_entry_blocks.h"
#include "ctreport/ct_text_numbers.h"
#include "report_blocks.h"
#include "written.h"

namespace CT::Test {
namespace {

using namespace Report;  // NOLINT(google-build-using-namespace): that is what is tested

std::string random_bytes(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() & 0xFF);
  return bytes;
}

TEST(Base64, IsThatOfQt) {
  for (std::size_t size = 0; size != 70; ++size) {
    const std::string bytes = random_bytes(size, static_cast<unsigned>(size));
    MemoryWriter out;
    Base64 base64(out);
    base64.put(bytes);
    base64.finish();
    EXPECT_EQ(out.view(), QByteArray::fromStdString(bytes).toBase64().toStdString()) << size;
    EXPECT_EQ(out.size(), Base64::size_of(size));
  }
}

TEST(Base64, TakesPiecesOfAnyLength) {
  const std::string bytes = random_bytes(200, 7);
  for (std::size_t piece = 1; piece != 9; ++piece) {
    MemoryWriter out;
    Base64 base64(out);
    for (std::string_view left = bytes; !left.empty();) {
      base64.put(left.substr(0, piece));
      left.remove_prefix(std::min(piece, left.size()));
    }
    base64.finish();
    base64.put("next");
    base64.finish();
    EXPECT_EQ(out.view(), QByteArray::fromStdString(bytes).toBase64().toStdString() + "bmV4dA==");
  }
}

TEST(Packer, MakesStreamsThatUnpack) {
  Packer packer;
  const std::string noise = random_bytes(300'000, 1);
  for (const std::string& bytes : {std::string(), std::string("a"), noise}) {
    packer.write(bytes);
    EXPECT_EQ(unpacked(packer.finish()), bytes);
  }
}

TEST(Packer, PacksLongStreamsAsTheyCome) {
  const std::string noise = random_bytes(100'000, 2);
  std::string text(50'000, 'x');
  text.append("and something else");
  for (const std::size_t most : {std::size_t{0}, noise.size(), noise.size() + 1}) {
    Packer packer(most);
    for (const std::string& first : {std::string(), noise, text}) {
      packer.write(first);
      packer.write(noise);
      packer.write(text);
      EXPECT_EQ(unpacked(packer.finish()), first + noise + text);
    }
    EXPECT_EQ(unpacked(packer.finish()), "");
  }
}

TEST(Column, HasNumbersOfAnySize) {
  constexpr std::uint64_t most = ~std::uint64_t{0};
  const std::vector<std::uint64_t> all = {0,     1,        127,          128, 16383,
                                          16384, most / 2, most / 2 + 1, most};
  Column column;
  for (const std::uint64_t number : all) column.put_varint(number);
  EXPECT_EQ(varints(unpacked(column.finish())), all);
}

TEST(Column, HasSmallNumbersOfBothSignsInAByte) {
  Column column;
  for (const std::int64_t number : {0, -1, 1, -64, 63, 64}) column.put_signed(number);
  column.put_signed(INT64_MIN);
  column.put_signed(INT64_MAX);
  const std::string bytes = unpacked(column.finish());
  EXPECT_EQ(bytes.substr(0, 7), std::string("\0\1\2\x7f\x7e\x80\1", 7));
  EXPECT_EQ(varints(bytes.substr(7)),
            (std::vector<std::uint64_t>{~std::uint64_t{0}, ~std::uint64_t{0} - 1}));
}

TEST(Column, HasDifferencesThatWrap) {
  Column column;
  std::uint64_t before = 0;
  const std::vector<std::uint64_t> all = {5, 3, ~std::uint64_t{0}, 0, std::uint64_t{1} << 63};
  for (const std::uint64_t number : all) column.put_difference(number, before);
  EXPECT_EQ(sums(unpacked(column.finish())), all);
}

TEST(Column, IsWholeHoweverLongItIs) {
  std::mt19937_64 random(3);
  Column column;
  std::vector<std::uint64_t> all;
  for (int i = 0; i != 100'000; ++i) {
    all.push_back(random());
    column.put_varint(all.back());
  }
  EXPECT_EQ(varints(unpacked(column.finish())), all);
}

Checkpoint::String stored(std::string_view text, bool is_cut = false) {
  const auto length = static_cast<std::uint32_t>(text.size());
  return {text.data(), length, static_cast<std::int32_t>(length) + (is_cut ? 1 : 0)};
}

TEST(TextNumbers, WritesEachTextOnce) {
  MemoryWriter out;
  TextNumbers numbers(out);
  const std::string same = "one";
  EXPECT_EQ(numbers.of({}, stored("one")), 0U);
  EXPECT_EQ(numbers.of({}, stored("two")), 1U);
  EXPECT_EQ(numbers.of({}, stored(same)), 0U);
  EXPECT_EQ(numbers.of("E_ERROR", stored("one")), 2U);
  EXPECT_EQ(numbers.of({}, stored("one", true)), 3U);
  EXPECT_EQ(numbers.of(same), 0U);
  EXPECT_EQ(numbers.of(std::string("three")), 4U);
  EXPECT_EQ(numbers.of({}, stored("three")), 4U);
  EXPECT_EQ(numbers.of({}, stored("\xff\"")), 5U);
  numbers.finish();
  EXPECT_EQ(out.view(),
            "[\"one\",\"two\",\"E_ERROR: one\",\"one**CUT**\",\"three\",\"\xEF\xBF\xBD\\\"\"]");
}

TEST(TextNumbers, ShowsTheBeginOfLongTexts) {
  MemoryWriter out;
  TextNumbers numbers(out);
  const std::string whole(TextNumbers::longest, 'a');
  const std::string longer = whole + "b";
  const std::string other = whole + "bc";
  std::string character = whole;
  character.replace(whole.size() - 1, 1, "\xC3\xA4");
  EXPECT_EQ(numbers.of({}, stored(whole)), 0U);
  EXPECT_EQ(numbers.of({}, stored(longer)), 1U);
  EXPECT_EQ(numbers.of({}, stored(other)), 1U);
  EXPECT_EQ(numbers.of({}, stored(character)), 2U);
  numbers.finish();
  std::string expected = "[\"";
  expected.append(whole).append("\",\"").append(whole).append("\xE2\x80\xA6\",\"");
  expected.append(whole.substr(1)).append("\xE2\x80\xA6\"]");
  EXPECT_EQ(out.view(), expected);
}

// The entries of each block, here lines, and whether it was one long one.
struct Cut {
  std::vector<std::pair<std::string, EntryBlocks::Of>> blocks;
  std::size_t wanted = SIZE_MAX;  // blocks that are taken

  // Puts lines of these sizes until nothing is wanted; how many that were.
  std::size_t put(const std::vector<std::size_t>& sizes) {
    EntryBlocks lines([&](const std::string& packed, std::int64_t count, EntryBlocks::Of what) {
      blocks.emplace_back(unpacked(packed), what);
      const std::string& text = blocks.back().first;
      EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), count);
      return blocks.size() < wanted;
    });
    std::size_t line = 0;
    for (const std::size_t size : sizes) {
      lines.begin_entry();
      lines.put(std::string(size, static_cast<char>('a' + line++ % 26)));
      lines.put('\n');
      if (!lines.end_entry()) return line;
    }
    lines.finish();
    return line;
  }
  [[nodiscard]] std::string text() const {
    return std::accumulate(blocks.begin(), blocks.end(), std::string(),
                           [](std::string all, const auto& block) { return all + block.first; });
  }
};

std::string text_of(const std::vector<std::size_t>& sizes) {
  std::string text;
  for (std::size_t line = 0; line != sizes.size(); ++line) {
    text += std::string(sizes[line], static_cast<char>('a' + line % 26)) + "\n";
  }
  return text;
}

TEST(EntryBlocks, HaveWholeEntriesInTheirOrder) {
  std::mt19937 random(5);
  for (int round = 0; round != 60; ++round) {
    std::vector<std::size_t> sizes(random() % 40);
    for (std::size_t& size : sizes) size = random() % (random() % 4 == 0 ? 300'000 : 40'000);
    Cut cut;
    cut.put(sizes);
    EXPECT_EQ(cut.text(), text_of(sizes));
    for (const auto& [text, what] : cut.blocks) {
      EXPECT_TRUE(text.ends_with('\n'));
      EXPECT_TRUE(what == EntryBlocks::Of::one_long_entry ||
                  text.size() <= EntryBlocks::usual_size);
    }
  }
}

TEST(EntryBlocks, ALongEntryIsByItself) {
  Cut cut;
  const std::vector<std::size_t> sizes = {3, EntryBlocks::usual_size, 4, 5,
                                          3 * EntryBlocks::usual_size};
  cut.put(sizes);
  ASSERT_EQ(cut.blocks.size(), 4U);
  EXPECT_EQ(cut.blocks[0].first, "aaa\n");
  EXPECT_EQ(cut.blocks[1].second, EntryBlocks::Of::one_long_entry);
  EXPECT_EQ(cut.blocks[2].first, "cccc\nddddd\n");
  EXPECT_EQ(cut.blocks[3].first.size(), sizes[4] + 1);
}

TEST(EntryBlocks, AroundTheSizeOfABlockNothingIsLost) {
  for (std::size_t less = 0; less < 1200; less += 7) {
    for (const std::size_t before : {std::size_t{0}, std::size_t{1000}}) {
      const std::vector<std::size_t> sizes = {before, EntryBlocks::usual_size - less, 2};
      Cut cut;
      cut.put(sizes);
      ASSERT_EQ(cut.text(), text_of(sizes)) << less;
    }
  }
}

TEST(EntryBlocks, EndWhereNothingMoreIsWanted) {
  Cut cut;
  cut.wanted = 2;
  const std::vector<std::size_t> sizes(100, 50'000);
  EXPECT_LT(cut.put(sizes), 10U);
  EXPECT_EQ(cut.blocks.size(), 2U);
}

TEST(EntryBlocks, ManyBytesArePackedQuickly) {
  const std::vector<std::size_t> sizes(120, 100'000);
  Cut cut;
  cut.put(sizes);
  EXPECT_EQ(cut.text(), text_of(sizes));
}

TEST(EntryBlocks, OfNoEntryThereIsNone) {
  Cut cut;
  cut.put({});
  EXPECT_TRUE(cut.blocks.empty());
  cut.put({0});
  ASSERT_EQ(cut.blocks.size(), 1U);
  EXPECT_EQ(cut.blocks[0].first, "\n");
}

}  // namespace
}  // namespace CT::Test
