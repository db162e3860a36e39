// SPDX-License-Identifier: MIT
//
// What is secret: the rules of a file that people read and write. share/redact.rules, which is
// built in, describes the form at its top.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ctredact/ct_key_words.h"

namespace CT::Redact {

// The text of share/redact.rules.
std::string_view built_in_rules();

// How the value of a header is made up.
enum class HeaderForm : std::uint8_t {
  whole,        // all of it is secret
  credentials,  // a scheme and what is secret: "Bearer ..."
  cookies,      // "a=b; c=d", each value is secret
  cookie,       // "a=b; Path=/", the first value is secret
};

struct HeaderRule {
  HeaderForm form;
  RuleId rule;
};

// What a text may look like.
enum class Shape : std::uint8_t { jwt, private_key, card, email, iban, password_hash, url_login };
inline constexpr std::array<std::string_view, 7> shape_names = {
    "jwt", "private-key", "card", "e-mail", "iban", "password-hash", "url-login"};

// A value of a call that is secret.
struct CallRule {
  static constexpr std::uint32_t all = UINT32_MAX;         // every argument
  static constexpr std::uint32_t result = UINT32_MAX - 1;  // what the call returned
  static constexpr std::uint32_t none = UINT32_MAX;

  std::uint32_t place = all;   // the argument's number from 0, or one of these
  std::uint32_t named = none;  // only if this argument is a name of something secret
  std::uint32_t when = none;   // only if this argument is one of the numbers
  bool has_keys = false;       // only what stands under these numbers in an array
  std::vector<std::int64_t> numbers;
  RuleId rule = no_rule;
};

class Rules {
 public:
  // Adds the rules of a text. Empty, or what is wrong with it: "line 7: ...".
  [[nodiscard]] std::string add(std::string_view text);

  // As the report calls it.
  [[nodiscard]] const std::string& label(RuleId rule) const { return labels_[rule]; }
  [[nodiscard]] std::size_t label_count() const { return labels_.size(); }
  // A rule that is in no file, such as that of a secret which the user named.
  RuleId add_label(std::string label);
  // A guess: of what it finds, words and names are secret in their place only.
  [[nodiscard]] bool is_weak(RuleId rule) const { return weak_.find(rule) != weak_.end(); }

  [[nodiscard]] const KeyWords& keys() const { return keys_; }
  // By its name in any case; null for one of which nothing is known.
  [[nodiscard]] const HeaderRule* header(std::string_view name) const;
  // no_rule for a shape that nobody asked for.
  [[nodiscard]] RuleId shape(Shape shape) const { return shapes_[static_cast<std::size_t>(shape)]; }
  // What secret texts begin with, such as "ghp_", by their first byte.
  struct Prefix {
    std::string text;
    RuleId rule;
  };
  [[nodiscard]] const std::vector<Prefix>& prefixes(char first) const {
    return prefixes_[static_cast<unsigned char>(first)];
  }
  // Words that say nothing, wherever they stand: masked in their place only.
  [[nodiscard]] bool is_plain(std::string_view text) const;

  // What is secret of the calls of a function, "class::method" or "function"; of those that a
  // script defines also by what they are called.
  [[nodiscard]] std::vector<CallRule> calls(std::string_view function, bool is_user) const;

 private:
  struct Pattern {
    std::string glob;
    CallRule rule;
  };
  // Functions that are named after a secret: "set" for setPassword.
  struct Verb {
    std::string word;
    CallRule rule;
  };
  using Words = std::vector<std::string>;

  std::string add_line(std::string_view line);
  std::string add_header(std::string_view rest);
  std::string add_function(std::string_view rest);
  std::string add_call(std::string_view rest);
  std::string add_shape(std::string_view name, bool is_wanted);
  std::string remove(std::string_view rest);
  void add_named(const std::string& function, CallRule rule);

  std::vector<std::string> labels_;
  std::unordered_set<RuleId> weak_;
  bool adds_weak_ = false;  // the line that is read is weak
  KeyWords keys_;
  std::unordered_map<std::string, HeaderRule> headers_;
  std::unordered_map<std::string, std::vector<CallRule>> functions_;
  std::vector<Pattern> patterns_;
  std::vector<Verb> verbs_;
  std::array<RuleId, shape_names.size()> shapes_ = make_shapes();
  std::array<std::vector<Prefix>, 256> prefixes_;
  std::unordered_set<std::string> plain_;

  static constexpr std::array<RuleId, shape_names.size()> make_shapes() {
    std::array<RuleId, shape_names.size()> none{};
    for (RuleId& rule : none) rule = no_rule;
    return none;
  }
};

// Whether a name in small letters is that of a pattern in which * is any text.
bool matches_glob(std::string_view pattern, std::string_view name);

}  // namespace CT::Redact
