// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_file_dump.h"

#include <gtest/gtest.h>

#include <QTextStream>
#include <string>

#include "awkward.h"
#include "open_trace.h"
#include "trace_builder.h"
#include "written.h"

namespace CT::Test {
namespace {

std::string headers_of(const TraceBuilder& trace) {
  const OpenTrace opened(trace);
  return written([&](Writer& out) { write_headers(opened.file(), out); });
}

std::string binary_of(const TraceBuilder& trace) {
  const OpenTrace opened(trace);
  return written([&](Writer& out) { write_binary(opened.file(), out); });
}

std::string hex_of(std::string_view bytes) {
  return written([&](Writer& out) { hexdump(as_bytes(bytes), bytes.size(), out); });
}

TEST(HeaderListing, IsTheSameInBothByteOrdersButForTheFlag) {
  for (const ByteOrder order : both_orders) {
    TraceBuilder trace(order, 0x1000, 0xFFFFFFFFFFFFFFFF);
    trace.set_request_id(4294967295U);
    trace.set_php_api(20230831);
    trace.data(Fields().raw("abc"));
    trace.add_data(Fields().raw("de"));
    const std::string flags = order == ByteOrder::big ? "0x02" : "0x00";
    EXPECT_EQ(headers_of(trace), "VERSION: 1\nFLAGS: " + flags +
                                     "\nREQUEST ID: 4294967295\nPHP API VERSION: 20230831\n"
                                     "DATA SIZE: 3\nADD DATA SIZE: 2\nORIG DATA: 4096\n"
                                     "ORIG ADD DATA: 18446744073709551615\n");
  }
}

TEST(HeaderListing, FlagsAreTwoUpperCaseDigits) {
  TraceBuilder trace;
  trace.set_flags(0xFA);
  EXPECT_NE(headers_of(trace).find("\nFLAGS: 0xFA\n"), std::string::npos);
  trace.set_flags(0x0B);
  EXPECT_NE(headers_of(trace).find("\nFLAGS: 0x0B\n"), std::string::npos);
}

TEST(HexView, EmptySectionsHaveNoLines) {
  EXPECT_EQ(binary_of(TraceBuilder()), "\nDATA[0]:\n\nADD DATA[0]:\n");
}

TEST(HexView, ShowsBothSections) {
  TraceBuilder trace;
  trace.data(Fields().raw("\x01\xFF"));
  trace.add_data(Fields().raw("a"));
  EXPECT_EQ(binary_of(trace), "\nDATA[2]:\n0x01, 0xff\n\nADD DATA[1]:\n0x61\n");
}

TEST(HexView, OneSectionMayBeEmpty) {
  TraceBuilder trace;
  trace.add_data(Fields().raw("a"));
  EXPECT_EQ(binary_of(trace), "\nDATA[0]:\n\nADD DATA[1]:\n0x61\n");
}

TEST(Hexdump, OfNothingIsNothing) { EXPECT_EQ(hex_of(""), ""); }

TEST(Hexdump, SixteenBytesAreOneLine) {
  std::string line = "0x00";
  for (int i = 1; i != 16; ++i) line += ", 0x00";
  EXPECT_EQ(hex_of(std::string(16, '\0')), line + "\n");
}

TEST(Hexdump, TheSeventeenthByteStandsOnASecondLine) {
  std::string line;
  for (int i = 0; i != 16; ++i) line += "0x7f, ";
  EXPECT_EQ(hex_of(std::string(17, '\x7F')), line + "\n0x7f\n");
}

// Byte for byte, as the lines are defined.
std::string plain_hex(std::string_view bytes) {
  QString text;
  QTextStream out(&text);
  for (std::size_t i = 0; i != bytes.size(); ++i) {
    const auto byte = static_cast<unsigned>(static_cast<unsigned char>(bytes[i]));
    out << "0x" << QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0'));
    if (i + 1 != bytes.size()) out << ", ";
    if (i + 1 == bytes.size() || i % 16 == 15) out << "\n";
  }
  out.flush();
  return text.toStdString();
}

TEST(Hexdump, EveryLengthHasItsLines) {
  Awkward random(1);
  for (std::size_t size = 0; size != 100; ++size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.bits());
    EXPECT_EQ(hex_of(bytes), plain_hex(bytes));
  }
}

TEST(Hexdump, EveryByteHasTwoLowerCaseDigits) {
  std::string bytes(256, '\0');
  for (std::size_t i = 0; i != bytes.size(); ++i) bytes[i] = static_cast<char>(i);
  EXPECT_EQ(hex_of(bytes), plain_hex(bytes));
}

TEST(Hexdump, PassesTheBufferOfAStream) {
  class Collector final : public Sink {
   public:
    bool write(std::string_view bytes) override {
      text += bytes;
      return true;
    }
    std::string text;
  } sink;
  StreamWriter out(sink);
  const std::string bytes(100'001, '\x5A');
  hexdump(as_bytes(bytes), bytes.size(), out);
  out.flush();
  EXPECT_EQ(sink.text, plain_hex(bytes));
}

TEST(Hexdump, StopsWhenItsOutputFails) {
  class Refuser final : public Sink {
   public:
    bool write(std::string_view) override {
      ++calls;
      return false;
    }
    int calls = 0;
  } sink;
  StreamWriter out(sink);
  const std::string bytes(100'000, 'x');
  hexdump(as_bytes(bytes), bytes.size(), out);
  EXPECT_FALSE(out.ok());
  EXPECT_EQ(sink.calls, 1);
}

}  // namespace
}  // namespace CT::Test
