// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_name_hash.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "awkward.h"
#include "codetrace/render/ct_text.h"
#include "open_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

TextHash hash_of_decoded(std::string_view stored) {
  return hash_text(written([&](Writer& out) { put_text(out, stored); }));
}

TEST(NameHashes, JoinedHashesAreTheHashOfTheTextsInARow) {
  EXPECT_EQ(join(hash_text("abc"), hash_text("de")), hash_text("abcde"));
  EXPECT_EQ(join(hash_text(""), hash_text("x")), hash_text("x"));
  EXPECT_NE(hash_text("ab"), hash_text("ba"));
}

TEST(NameHashes, EveryPlaceOfEveryTextHasTheHashOfItsDecodedText) {
  Awkward random(11);
  std::string texts;
  for (int i = 0; i != 60; ++i) texts += random.text(40) + '\0';
  texts.append(1000, 'x').append("\xF0\x9F\x98\x80").append(600, '\xFF');
  TraceBuilder trace;
  trace.add_data(Fields().raw(texts));
  OpenTrace open(trace);
  const Section& section = open.file().add_data();
  // Later places first, then earlier ones of the same texts, then all once more.
  NameHashes hashes;
  for (std::size_t step : {7U, 3U, 1U}) {
    for (std::size_t at = section.size(); at >= step; at -= step) {
      const unsigned char* place = section.data() + at - step;
      ASSERT_EQ(hashes.of(open.file(), place), hash_of_decoded(section.text(place))) << at;
    }
  }
}

}  // namespace
}  // namespace CT::Test
