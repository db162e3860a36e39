// SPDX-License-Identifier: MIT
//
// The body of a response out of its pieces, and texts in it, wherever the pieces end.
#include "tools/cttool/ct_body.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <random>
#include <string>
#include <vector>

#include "open_trace.h"
#include "tools/cttool/ct_body_search.h"
#include "written.h"

namespace CT::Tool {
namespace {

using CT::Test::CheckpointDraft;
using CT::Test::Fields;
using CT::Test::TraceBuilder;
using CT::Test::written;

// One write of the trace; cut if it was longer.
struct Piece {
  std::string text;
  std::uint32_t missing = 0;
};

Trace trace_of(const std::vector<Piece>& pieces) {
  TraceBuilder builder;
  builder.add(CheckpointDraft::startup());
  for (const Piece& piece : pieces) {
    const auto size = static_cast<std::uint32_t>(piece.text.size());
    const Fields body = piece.missing == 0 ? Fields().cut_string(piece.text)
                                           : Fields().cut_string(piece.text, size + piece.missing);
    builder.add(
        CheckpointDraft::sapi_write_end(builder.add(CheckpointDraft::sapi_write_start(body))));
  }
  const std::string bytes = builder.build();
  Trace trace;
  EXPECT_TRUE(trace.open(CT::Test::as_bytes(bytes), bytes.size()));
  return trace;
}

// As people see it.
std::string shown(const std::vector<Piece>& pieces, bool ends_line) {
  const Trace trace = trace_of(pieces);
  const Response response(trace);
  return written([&](Writer& out) { EXPECT_EQ(put_body(response, Style(), out), ends_line); });
}

std::string json(const std::vector<Piece>& pieces, bool is_exact) {
  const Trace trace = trace_of(pieces);
  const Response response(trace);
  EXPECT_EQ(is_exact_as_text(response), is_exact);
  return written([&](Writer& out) { put_body_json(response, out); });
}

std::string base64(const std::vector<Piece>& pieces) {
  const Trace trace = trace_of(pieces);
  return written([&](Writer& out) { put_body_base64(Response(trace), out); });
}

// "OFFSET in FIRST-LAST" of each match, and how many there are.
std::string found(const std::vector<Piece>& pieces, std::string_view text, std::size_t limit = 0) {
  const Trace trace = trace_of(pieces);
  const BodyMatches matches = find_in_body(Response(trace), text, limit);
  std::string lines = std::to_string(matches.count) + ":";
  for (const BodyMatch& match : matches.found) {
    lines += " " + std::to_string(match.offset) + " in " + std::to_string(match.first) + "-" +
             std::to_string(match.last);
  }
  return lines;
}

TEST(Body, ControlCharactersAreShownAndLinesStay) {
  EXPECT_EQ(shown({{"a\tb\nc\r\n\x1B[31m\x07"}}, false), "a\tb\nc\\r\n\\x1b[31m\\x07");
  EXPECT_EQ(shown({{"\xC2\x9B"
                    "31m\n"}},
                  true),
            "\\x9b31m\n");
  EXPECT_EQ(shown({}, true), "");
}

TEST(Body, CharactersMayLieAcrossWrites) {
  EXPECT_EQ(shown({{"\xE2\x82"}, {""}, {"\xAC\n"}}, true), "\xE2\x82\xAC\n");
  EXPECT_EQ(json({{"\xF0\x9F"}, {"\x98"}, {"\x80\""}}, true), "\"\xF0\x9F\x98\x80\\\"\"");
}

TEST(Body, WhatIsNoUtf8IsReplaced) {
  EXPECT_EQ(json({{"a\xFF"}, {"b\xE2\x82"}}, false),
            "\"a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD\"");
  EXPECT_EQ(json({{"\xEF\xBB\xBF"
                   "a"}},
                 false),
            "\"a\"");
  EXPECT_EQ(json({{"a\xEF\xBB\xBF"}}, true), "\"a\xEF\xBB\xBF\"");
}

TEST(Body, GapsStandOnLinesOfTheirOwn) {
  EXPECT_EQ(shown({{"ab\xE2", 1000},
                   {"\x82\xAC"
                    "c\n",
                    5},
                   {"d"}},
                  false),
            "ab\xEF\xBF\xBD\n[the trace has not the next 1,000 bytes of write #1]\n"
            "\xEF\xBF\xBD\xEF\xBF\xBD"
            "c\n[the trace has not the next 5 bytes of write #2]\nd");
}

// Blocks end somewhere in long bodies: nothing may be lost or doubled there.
TEST(Body, LongBodiesComeWhole) {
  std::mt19937 random(3);
  const std::vector<std::string> parts = {"a", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                                          "\xEF\xBB\xBF"};
  std::vector<Piece> pieces = {{"x"}};
  std::string whole = "x";
  for (int i = 0; i != 120; ++i) {
    std::string text;
    while (text.size() < 1 + random() % 4000) text += parts[random() % parts.size()];
    whole += text;
    const std::size_t middle = random() % text.size();
    pieces.push_back({text.substr(0, middle)});
    pieces.push_back({text.substr(middle)});
  }
  ASSERT_GT(whole.size(), 100'000U);
  EXPECT_EQ(json(pieces, true), "\"" + whole + "\"");
  EXPECT_EQ(shown(pieces, false), whole);
  EXPECT_EQ(base64(pieces),
            "\"" + QByteArray::fromStdString(whole).toBase64().toStdString() + "\"");
}

TEST(BodySearch, FindsAcrossWrites) {
  EXPECT_EQ(found({{"<u"}, {""}, {"l><"}, {"ul>"}}, "<ul>"), "2: 0 in 0-2 4 in 2-3");
  EXPECT_EQ(found({{"a"}, {"b"}, {"c"}}, "b"), "1: 1 in 1-1");
  EXPECT_EQ(found({{"abc"}}, "d"), "0:");
  EXPECT_EQ(found({{"abc"}}, ""), "0:");
  EXPECT_EQ(found({}, "a"), "0:");
}

TEST(BodySearch, MatchesLieBesideEachOther) {
  EXPECT_EQ(found({{"aaaaa"}}, "aa"), "2: 0 in 0-0 2 in 0-0");
  EXPECT_EQ(found({{"aaaaa"}}, "aa", 1), "2: 0 in 0-0");
}

TEST(BodySearch, NothingIsFoundAcrossAGap) {
  EXPECT_EQ(found({{"ab", 1}, {"cd"}}, "bc"), "0:");
  EXPECT_EQ(found({{"ab", 1}, {"bcb"}}, "bc"), "1: 2 in 1-1");
}

TEST(BodySearch, IsRightOnRandomTexts) {
  std::mt19937 random(5);
  for (int round = 0; round != 300; ++round) {
    std::vector<Piece> pieces;
    std::string whole;
    for (std::size_t i = random() % 8; i != 0; --i) {
      std::string text;
      for (std::size_t size = random() % 9; size != 0; --size) text += "ab"[random() % 2];
      whole += text;
      pieces.push_back({text});
    }
    std::string wanted;
    for (std::size_t size = 1 + random() % 5; size != 0; --size) wanted += "ab"[random() % 2];
    const Trace trace = trace_of(pieces);
    const Response response(trace);
    std::vector<std::uint64_t> expected;
    for (std::size_t at = whole.find(wanted); at != std::string::npos;
         at = whole.find(wanted, at + wanted.size())) {
      expected.push_back(at);
    }
    const BodyMatches matches = find_in_body(response, wanted, 0);
    ASSERT_EQ(matches.count, expected.size());
    for (std::size_t i = 0; i != expected.size(); ++i) {
      const BodyMatch& match = matches.found[i];
      ASSERT_EQ(match.offset, expected[i]) << whole << " " << wanted;
      const BodyPart& first = response.writes()[match.first];
      const BodyPart& last = response.writes()[match.last];
      EXPECT_LE(first.offset, match.offset);
      EXPECT_LT(match.offset, first.offset + first.body.length);
      EXPECT_LT(last.offset, match.offset + wanted.size());
      EXPECT_LE(match.offset + wanted.size(), last.offset + last.body.length);
    }
  }
}

}  // namespace
}  // namespace CT::Tool
