// SPDX-License-Identifier: MIT
//
// The secrets of a trace, each once, and where they stand in a text: as they are, and behind the
// encodings that texts come in (JSON, URLs, HTML, mail, base64 at any alignment, and two of them
// one inside the other).
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ctredact/ct_decoded_text.h"
#include "ctredact/ct_key_words.h"
#include "ctredact/ct_secret_matcher.h"

namespace CT::Redact {

inline constexpr std::uint32_t no_secret = UINT32_MAX;

// A part of a text that is not to be shown.
struct Range {
  std::uint32_t begin;
  std::uint32_t end;
  RuleId rule;
  std::uint32_t secret = no_secret;  // which it is, if it is one of the set
};

class SecretSet {
 public:
  // Below so many bytes a secret is masked where a rule finds it, and nowhere else.
  static constexpr std::size_t shortest = SecretMatcher::shortest;

  // Owns a copy. What is too short is not added. The rule that found it first is its rule. If the
  // tracer cut it, it may go on where it stands elsewhere.
  void add(std::string_view secret, RuleId rule, bool is_cut = false);
  // The same for one that is only another spelling of a secret: it goes by that one's name.
  void add_spelling(std::string_view spelling, std::string_view secret, RuleId rule, bool is_cut);
  // Requires: nothing is added any more.
  void build();

  // Appends where secrets stand, in no order, and they may overlap. If the text was cut, so may be
  // the secret at its end. Requires: build().
  void find(std::string_view text, bool is_cut, std::vector<Range>& out) const;

  // Whether this number is a secret as a whole.
  [[nodiscard]] std::uint32_t find_number(std::int64_t number) const;

  [[nodiscard]] std::size_t size() const { return secrets_.size(); }
  // What a secret is called after: itself, or what it is a spelling of.
  [[nodiscard]] const std::string& name(std::uint32_t secret) const {
    const std::uint32_t of = secrets_[secret].spelling_of;
    return *secrets_[of != no_secret ? of : secret].text;
  }
  // The same for any text: itself if it is no secret.
  [[nodiscard]] std::string_view name(std::string_view text) const;
  [[nodiscard]] RuleId rule(std::uint32_t secret) const { return secrets_[secret].rule; }

 private:
  struct Secret {
    const std::string* text;  // in numbers_
    RuleId rule;
    bool is_cut;
    std::uint32_t spelling_of = no_secret;
  };
  // A text that was decoded, level by level. No places: the text itself.
  struct Layer {
    std::string_view bytes;
    const DecodedText* places;
    int level;
  };
  static constexpr int deepest_level = 2;

  void find_in(const Layer& layer, std::vector<Range>& out) const;
  void find_base64(const Layer& layer, std::vector<Range>& out) const;
  void find_in_run(const Layer& layer, const Base64Run& run, std::vector<Range>& out) const;
  void find_behind(const Layer& layer, std::vector<Range>& out) const;
  [[nodiscard]] bool may_be_escaped(Escape escape) const {
    return may_be_escaped_[static_cast<std::size_t>(escape)];
  }
  void note_escapes(std::string_view secret);
  [[nodiscard]] std::size_t end_of_cut(std::string_view bytes, std::size_t end,
                                       std::uint32_t secret) const;

  std::unordered_map<std::string, std::uint32_t> numbers_;
  std::unordered_map<std::int64_t, std::uint32_t> integers_;
  std::vector<Secret> secrets_;
  SecretMatcher matcher_;
  // Whether some secret has a byte that the encoding writes in another way.
  std::array<bool, escape_count> may_be_escaped_ = {};
  // Decoded texts, one a level, and one for base64 a level.
  mutable std::array<DecodedText, deepest_level + 1> decoded_;
  mutable std::array<DecodedText, deepest_level + 1> from_base64_;
};

}  // namespace CT::Redact
