// SPDX-License-Identifier: MIT
#include "tools/common/ct_name_pattern.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace CT::Tool {
namespace {

bool matches(std::string_view pattern, std::string_view name) {
  return NamePattern(pattern).matches(name);
}

TEST(NamePattern, WithoutStarsItIsTheName) {
  EXPECT_TRUE(matches("strlen", "strlen"));
  EXPECT_FALSE(matches("strlen", "mb_strlen"));
  EXPECT_FALSE(matches("strlen", "strlen2"));
  EXPECT_FALSE(matches("query", "PDO::query"));
  EXPECT_TRUE(matches("App\\Note::html", "App\\Note::html"));
  EXPECT_FALSE(matches("", "f"));
  EXPECT_TRUE(matches("", ""));
}

TEST(NamePattern, AStarIsAnyText) {
  EXPECT_TRUE(matches("Note::*", "Note::html"));
  EXPECT_FALSE(matches("Note::*", "KeyNote::html"));
  EXPECT_TRUE(matches("*::query", "PDO::query"));
  EXPECT_FALSE(matches("*::query", "query"));
  EXPECT_TRUE(matches("*", ""));
  EXPECT_TRUE(matches("a*b*c", "a-b-b-c"));
  EXPECT_FALSE(matches("a*b*c", "a-b-b-c-"));
  EXPECT_TRUE(matches("f**", "f"));
  EXPECT_TRUE(NamePattern().matches("anything"));
}

TEST(NamePattern, AQuestionMarkIsOneCharacter) {
  EXPECT_TRUE(matches("str???", "strlen"));
  EXPECT_FALSE(matches("str???", "strle"));
  EXPECT_TRUE(matches("caf?", "caf\xC3\xA9"));
}

TEST(NamePattern, CapitalsDoNotMatter) {
  EXPECT_TRUE(matches("note::HTML", "Note::html"));
  EXPECT_TRUE(matches("/^NOTE::/", "Note::html"));
  EXPECT_FALSE(matches("caf\xC3\x89", "caf\xC3\xA9"));  // PHP folds ASCII alone
}

TEST(NamePattern, BetweenSlashesItIsARegularExpression) {
  EXPECT_TRUE(matches("/^str/", "strlen"));
  EXPECT_TRUE(matches("/len/", "strlen"));
  EXPECT_FALSE(matches("/^len/", "strlen"));
  EXPECT_TRUE(matches("//", "anything"));
  EXPECT_FALSE(matches("/", "strlen"));
}

TEST(NamePattern, AMistakeIsToldAndMatchesNothing) {
  const NamePattern pattern("/(/");
  EXPECT_FALSE(pattern.is_valid());
  EXPECT_FALSE(pattern.error().empty());
  EXPECT_FALSE(pattern.matches("("));
  EXPECT_TRUE(NamePattern("/a/").is_valid());
}

// Whether a glob matches, by trying every text that a star may stand for.
bool plain_matches(std::string_view glob, std::string_view name) {
  if (glob.empty()) return name.empty();
  if (glob.front() == '*') {
    return plain_matches(glob.substr(1), name) ||
           (!name.empty() && plain_matches(glob, name.substr(1)));
  }
  if (name.empty() || (glob.front() != '?' && glob.front() != name.front())) return false;
  return plain_matches(glob.substr(1), name.substr(1));
}

TEST(NamePattern, EqualsPlainSearchForRandomGlobs) {
  std::mt19937 random(1);
  const auto text = [&](std::string_view letters) {
    std::string made;
    for (std::size_t left = random() % 8; left != 0; --left) {
      made += letters[random() % letters.size()];
    }
    return made;
  };
  for (int run = 0; run != 100'000; ++run) {
    const std::string glob = text("ab*?");
    const std::string name = text("ab");
    ASSERT_EQ(matches(glob, name), plain_matches(glob, name)) << glob << " " << name;
  }
}

}  // namespace
}  // namespace CT::Tool
