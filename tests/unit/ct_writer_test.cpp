// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_writer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

namespace CT::Test {
namespace {

// Keeps what it is given; from the n-th write on it fails.
class Collector final : public Sink {
 public:
  explicit Collector(std::size_t fails_at = std::numeric_limits<std::size_t>::max())
      : fails_at_(fails_at) {}

  bool write(std::string_view bytes) override {
    ++calls;
    if (calls >= fails_at_) return false;
    text += bytes;
    return true;
  }

  std::size_t calls = 0;
  std::string text;

 private:
  std::size_t fails_at_;
};

// Bytes that show a shift or a gap.
std::string pattern(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i != size; ++i) text[i] = static_cast<char>(i % 251);
  return text;
}

constexpr std::size_t kib = 1024;

TEST(MemoryWriter, KeepsEverythingInOrder) {
  MemoryWriter out;
  out.put('a');
  out.put("bc");
  out.put(std::string_view("d\0e", 3));
  out.put(std::string_view());
  EXPECT_EQ(out.view(), std::string_view("abcd\0e", 6));
  EXPECT_EQ(out.size(), 6U);
}

TEST(MemoryWriter, StartsEmpty) {
  const MemoryWriter out;
  EXPECT_EQ(out.view(), "");
  EXPECT_TRUE(out.ok());
}

TEST(MemoryWriter, GrowsWithEverySizeOfPiece) {
  for (const std::size_t size : {1 * kib - 1, 1 * kib, 1 * kib + 1, 64 * kib, 1000 * kib}) {
    MemoryWriter out;
    out.put('<');
    out.put(pattern(size));
    out.put('>');
    EXPECT_EQ(out.view(), '<' + pattern(size) + '>');
  }
}

TEST(MemoryWriter, GrowsByteForByte) {
  MemoryWriter out;
  const std::string expected = pattern(10 * kib);
  for (const char c : expected) out.put(c);
  EXPECT_EQ(out.view(), expected);
}

TEST(MemoryWriter, FillsAcrossItsGrowth) {
  MemoryWriter out;
  out.put('a');
  out.fill('-', 100 * kib);
  out.fill('x', 0);
  out.put('z');
  EXPECT_EQ(out.view(), 'a' + std::string(100 * kib, '-') + 'z');
}

TEST(MemoryWriter, ForgetsWhatIsCutOffAndGoesOnThere) {
  MemoryWriter out;
  out.put("abcdef");
  out.truncate(3);
  EXPECT_EQ(out.view(), "abc");
  out.put('X');
  EXPECT_EQ(out.view(), "abcX");
  out.clear();
  EXPECT_EQ(out.view(), "");
  out.put(pattern(5 * kib));
  EXPECT_EQ(out.view(), pattern(5 * kib));
}

TEST(MemoryWriter, TakesOfAnArrayWhatStandsBeforeItsNul) {
  char number[16] = "7";
  const char full[4] = {'f', 'u', 'l', 'l'};
  MemoryWriter out;
  out.put(number);
  out.put(full);
  out.put("\0");
  EXPECT_EQ(out.view(), "7full");
}

TEST(MemoryWriter, GivesRoomInPlaceAndTakesWhatIsAdvanced) {
  MemoryWriter out;
  std::string expected;
  for (std::size_t i = 0; i != 100; ++i) {
    const std::size_t used = i % Writer::max_room;
    char* room = out.room(Writer::max_room);
    std::memset(room, 'r', Writer::max_room);
    out.advance(room + used);
    expected.append(used, 'r');
    out.put('|');
    expected += '|';
  }
  EXPECT_EQ(out.view(), expected);
}

TEST(StreamWriter, HandsNothingOnBeforeItIsFullOrFlushed) {
  Collector sink;
  StreamWriter out(sink);
  out.put(pattern(64 * kib));
  EXPECT_EQ(sink.calls, 0U);
  EXPECT_TRUE(out.flush());
  EXPECT_EQ(sink.calls, 1U);
  EXPECT_EQ(sink.text, pattern(64 * kib));
}

TEST(StreamWriter, ItsDestructorWritesNothing) {
  Collector sink;
  { StreamWriter(sink).put("lost"); }
  EXPECT_EQ(sink.calls, 0U);
}

TEST(StreamWriter, FlushingAnEmptyBufferDoesNotCallTheSink) {
  Collector sink;
  StreamWriter out(sink);
  EXPECT_TRUE(out.flush());
  out.put("a");
  EXPECT_TRUE(out.flush());
  EXPECT_TRUE(out.flush());
  EXPECT_EQ(sink.calls, 1U);
}

TEST(StreamWriter, PassesPiecesOfEverySizeAroundItsBuffer) {
  for (const std::size_t size : {64 * kib - 1, 64 * kib, 64 * kib + 1, 128 * kib, 1000 * kib + 7}) {
    for (const std::size_t before : {std::size_t{0}, std::size_t{1}, 64 * kib - 1, 64 * kib}) {
      Collector sink;
      StreamWriter out(sink);
      out.put(std::string(before, '<'));
      out.put(pattern(size));
      out.put('>');
      EXPECT_TRUE(out.flush());
      EXPECT_EQ(sink.text, std::string(before, '<') + pattern(size) + '>') << size << ' ' << before;
    }
  }
}

TEST(StreamWriter, FillsMoreThanItsBuffer) {
  Collector sink;
  StreamWriter out(sink);
  out.put("ab");
  out.fill(' ', 200 * kib);
  out.put("c");
  EXPECT_TRUE(out.flush());
  EXPECT_EQ(sink.text, "ab" + std::string(200 * kib, ' ') + "c");
}

TEST(StreamWriter, RoomAndLiteralsNearTheEndOfTheBufferLoseNothing) {
  for (std::size_t near = 0; near != 2 * Writer::max_room; ++near) {
    Collector sink;
    StreamWriter out(sink);
    out.fill('.', 64 * kib - near);
    char* room = out.room(Writer::max_room);
    std::memset(room, 'r', Writer::max_room);
    out.advance(room + Writer::max_room);
    out.put("literal");
    out.flush();
    ASSERT_EQ(sink.text,
              std::string(64 * kib - near, '.') + std::string(Writer::max_room, 'r') + "literal");
  }
}

TEST(StreamWriter, ASinkThatFailsIsNeverCalledAgain) {
  for (const std::size_t fails_at : {1U, 2U, 3U}) {
    Collector sink(fails_at);
    StreamWriter out(sink);
    const std::string all = pattern(600 * kib);
    for (std::size_t at = 0; at != all.size(); at += kib) out.put(all.substr(at, kib));
    EXPECT_FALSE(out.ok());
    EXPECT_FALSE(out.flush());
    out.put('x');
    out.put("literal");
    out.put(all);
    out.fill('x', 300 * kib);
    EXPECT_FALSE(out.flush());
    EXPECT_EQ(sink.calls, fails_at);
    EXPECT_EQ(sink.text, all.substr(0, (fails_at - 1) * 64 * kib));
  }
}

TEST(StreamWriter, IsFineUntilTheSinkFails) {
  Collector sink(2);
  StreamWriter out(sink);
  out.put("first");
  EXPECT_TRUE(out.flush());
  EXPECT_TRUE(out.ok());
  out.put("second");
  EXPECT_TRUE(out.ok());
  EXPECT_FALSE(out.flush());
  EXPECT_FALSE(out.ok());
  EXPECT_EQ(sink.text, "first");
}

TEST(StreamWriter, BytesBehindAFailureStayInsideTheBuffer) {
  Collector sink(1);
  StreamWriter out(sink);
  out.put('x');
  out.flush();
  for (std::size_t i = 0; i != 1000 * kib; ++i) out.put('x');
  for (std::size_t i = 0; i != 1000; ++i) out.advance(out.room(Writer::max_room) + 500);
  EXPECT_FALSE(out.ok());
  EXPECT_EQ(sink.calls, 1U);
}

}  // namespace
}  // namespace CT::Test
