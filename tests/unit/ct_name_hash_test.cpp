// SPDX-License-Identifier: MIT
#include "codetrace/render/keys/ct_name_hash.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "awkward.h"
#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_text.h"
#include "open_trace.h"
#include "written.h"

namespace CT::Test {
namespace {

std::string decoded(std::string_view stored) {
  return written([&](Writer& out) { put_text(out, stored); });
}

// As HashedText sees it, which drops no byte-order mark.
std::string decoded_whole(std::string_view stored) {
  return decoded("x" + std::string(stored)).substr(1);
}

const HashBase& some_base() {
  static const HashBase base(Residue(0x123456789ABCDEF, 0xFEDCBA9876543210));
  return base;
}

Residue hash_of(const HashBase& base, std::string_view text) { return base.append({}, text); }
Residue hash_of(std::string_view text) { return hash_of(some_base(), text); }

TEST(Residue, IsANumberModuloTheMersennePrime127) {
  const Residue one(0, 1);
  const Residue largest(~std::uint64_t{0} >> 1, ~std::uint64_t{0} - 1);
  const Residue half(std::uint64_t{1} << 62, 0);  // 2^126
  EXPECT_EQ(largest + one, Residue());
  EXPECT_EQ(Residue() - one, largest);
  EXPECT_EQ(half + half, one);
  EXPECT_EQ(half * Residue(0, 2), one);
  EXPECT_EQ(largest * largest, one);
  EXPECT_EQ(half * half, Residue(std::uint64_t{1} << 61, 0));
  const Residue a(0x123456789ABCDEF, 0xFEDCBA9876543210);
  const Residue b(0x7EDCBA9876543210, 0x123456789ABCDEF);
  EXPECT_EQ((a + b) * (a - b), a * a - b * b);
  EXPECT_EQ(a * (b * largest), (a * b) * largest);
}

TEST(HashBase, HashesOfTextsInARowAreThatOfAllOfThem) {
  std::string text;
  for (std::size_t size = 0; size != 300; ++size) {
    Residue hash;
    for (const char c : text) hash = some_base().append(hash, std::string_view(&c, 1));
    ASSERT_EQ(hash_of(text), hash) << size;
    ASSERT_EQ(some_base().append(hash_of("abc"), text), hash_of("abc" + text)) << size;
    ASSERT_EQ(hash_of("abc") * some_base().power(size) + hash, hash_of("abc" + text)) << size;
    text += static_cast<char>(size * 37);
  }
  EXPECT_NE(hash_of("ab"), hash_of("ba"));
  EXPECT_NE(hash_of(std::string(1, '\0')), hash_of(""));
}

TEST(HashBase, HasPowersForEveryLength) {
  for (const std::uint64_t a : {0ULL, 1ULL, 511ULL, 512ULL, 70'000ULL, 0x7'1234'5678ULL}) {
    for (const std::uint64_t b : {1ULL, 513ULL, 300'000ULL, 0x6'8765'4321ULL}) {
      EXPECT_EQ(some_base().power(a) * some_base().power(b), some_base().power(a + b));
    }
  }
}

// Texts that a polynomial modulo 2^64 takes for equal: words made for one base, and the sequence
// of Thue and Morse with its complement, for every odd base.
TEST(HashBase, TellsApartWhatSimplerHashesTakeForEqual) {
  std::string thue_morse[2];
  for (unsigned i = 0; i != 2048; ++i) {
    thue_morse[0] += std::popcount(i) % 2 == 0 ? 'a' : 'b';
    thue_morse[1] += std::popcount(i) % 2 == 0 ? 'b' : 'a';
  }
  for (const HashBase* base : {&some_base(), &HashBase::of_process()}) {
    EXPECT_NE(hash_of(*base, "aaaaabadacaadgfaaa"), hash_of(*base, "cfcabaaaaacaaaagec"));
    EXPECT_NE(hash_of(*base, thue_morse[0]), hash_of(*base, thue_morse[1]));
  }
}

TEST(HashBase, IsTheSameThroughoutAProcess) {
  EXPECT_EQ(&HashBase::of_process(), &HashBase::of_process());
  EXPECT_NE(hash_of(HashBase::of_process(), "text"), hash_of("text"));
}

std::vector<std::string> awkward_texts() {
  Awkward random(12);
  std::vector<std::string> texts = {"", "a", std::string(1000, 'x'), std::string(700, '\xFF')};
  for (int i = 0; i != 20; ++i) texts.push_back(random.bytes(200));
  for (int i = 0; i != 20; ++i) texts.push_back(random.text(200));
  for (std::size_t at = 120; at != 136; ++at) {
    texts.push_back(std::string(at, 'x') + "\xF0\x9F\x98\x80" + std::string(300, 'y'));
    texts.push_back(std::string(at, 'x') + "\xF0\x9F\x98\x80");
    texts.push_back(std::string(at, '\x80') + "\xF0\x9F\x98\x80\xE2" + std::string(300, 'y'));
  }
  return texts;
}

TEST(HashedText, HasTheHashOfEveryBeginning) {
  for (const std::string& stored : awkward_texts()) {
    const HashedText text(some_base(), stored);
    const std::string whole = decoded_whole(stored);
    ASSERT_EQ(text.size(), whole.size());
    ASSERT_EQ(text.hash(), hash_of(whole));
    for (std::size_t offset = 0; offset <= whole.size(); ++offset) {
      ASSERT_EQ(text.before(offset), hash_of(whole.substr(0, offset))) << offset;
      if (offset == whole.size()) break;
      ASSERT_EQ(text.byte(offset), static_cast<unsigned char>(whole[offset])) << offset;
    }
  }
}

TEST(HashedText, KnowsWhereCharactersBegin) {
  for (const std::string& stored : awkward_texts()) {
    const HashedText text(some_base(), stored);
    std::string_view rest = stored;
    std::size_t last = 0;
    std::uint64_t offset = 0;
    while (!rest.empty()) {
      const std::size_t at = stored.size() - rest.size();
      for (; last <= at; ++last) ASSERT_EQ(text.boundary(last), at);
      ASSERT_EQ(text.offset_of(at), offset);
      offset += take_character(rest).size();
    }
    ASSERT_EQ(text.offset_of(stored.size()), offset);
  }
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
  NameHashes names(some_base());
  for (std::size_t step : {7U, 3U, 1U}) {
    for (std::size_t at = section.size(); at >= step; at -= step) {
      const unsigned char* place = section.data() + at - step;
      const std::string expected = decoded(section.text(place));
      const NameHashes::Name name = names.of(section, place);
      std::string front;
      for (std::size_t i = 0; i != name.replaced; ++i) front += "\xEF\xBF\xBD";
      const std::uint64_t size = name.text->size() - name.offset;
      ASSERT_EQ(front.size() + size, expected.size()) << at;
      const Residue rest =
          name.text->hash() - name.text->before(name.offset) * some_base().power(size);
      ASSERT_EQ(hash_of(front) * some_base().power(size) + rest, hash_of(expected)) << at;
    }
  }
}

}  // namespace
}  // namespace CT::Test
