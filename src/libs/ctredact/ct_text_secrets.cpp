// SPDX-License-Identifier: MIT
#include "ctredact/ct_text_secrets.h"

#include <algorithm>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

// The name of a class with its namespace: what a configuration calls an "auth" guard is code.
bool is_class_name(std::string_view text) {
  const bool is_name = std::all_of(text.begin(), text.end(),
                                   [](char c) { return is_alnum(c) || c == '_' || c == '\\'; });
  return is_name && !text.empty() && !is_digit(text[0]) &&
         text.find('\\') != std::string_view::npos;
}

bool is_path(std::string_view text) {
  constexpr std::string_view others = "/._-";
  const bool is_name = std::all_of(text.begin(), text.end(), [&](char c) {
    return is_alnum(c) || others.find(c) != std::string_view::npos;
  });
  return is_name && text[0] == '/' && std::count(text.begin(), text.end(), '/') > 1;
}

// Nothing but letters, and what stands between the words of a name.
bool is_name(std::string_view text) {
  constexpr std::string_view others = "_.-:\\/ ";
  return std::all_of(text.begin(), text.end(), [&](char c) {
    return is_alpha(c) || others.find(c) != std::string_view::npos;
  });
}

}  // namespace

// That of "user:password" in base64, as HTTP has it.
void TextSecrets::learn_password_in(std::string_view secret, RuleId rule) {
  constexpr std::size_t longest = 256;
  if (secret.size() > longest) return;
  const Base64Run run = base64_run(secret, 0);
  if (secret.find_first_not_of('=', run.end) != std::string_view::npos) return;
  DecodedText decoded;
  decode(secret, run, 0, decoded);
  const std::string& login = decoded.bytes;
  const bool is_text = std::all_of(login.begin(), login.end(),
                                   [](char c) { return static_cast<unsigned char>(c) >= ' '; });
  const std::size_t colon = login.find(':');
  if (!is_text || colon == std::string::npos) return;
  const std::string password = login.substr(colon + 1);
  if (!rules_.is_plain(password)) set_.add(password, rule);
}

// As it stands, and as it is behind the encoding that it stands in.
void TextSecrets::learn_one(std::string_view secret, RuleId rule, bool is_cut) {
  if (secret.size() < SecretSet::shortest || rules_.is_plain(secret)) return;
  set_.add(secret, rule, is_cut);
  learn_password_in(secret, rule);
  for (int i = 0; i != escape_count; ++i) {
    const auto escape = static_cast<Escape>(i);
    if (escape == Escape::quoted_printable || !has_escape(secret, escape)) continue;
    const std::string decoded = undone(secret, escape);
    if (decoded == secret || rules_.is_plain(decoded)) continue;
    // A + alone may be one.
    if (escape == Escape::percent && secret.find('%') == std::string_view::npos) {
      set_.add(decoded, rule, is_cut);
    } else {
      set_.add_spelling(secret, decoded, rule, is_cut);
    }
  }
}

void TextSecrets::learn_value(std::string_view value, RuleId rule, bool is_cut, bool is_inherited) {
  if (value.size() < SecretSet::shortest || is_class_name(value)) return;
  const bool is_weak = rules_.is_weak(rule);
  if ((is_inherited || is_weak) && is_path(value)) return;
  if (is_weak && is_name(value)) return;
  learn_one(value, rule, is_cut);
  found_.clear();
  text_rules_.find_parts(value, rule, found_);
  learn(value, is_cut);
}

// What was found in a text.
void TextSecrets::learn(std::string_view text, bool is_cut) {
  for (const FoundSecret& found : found_) {
    if (!found.spreads || found.part.is_empty()) continue;
    const bool may_go_on = is_cut && found.part.end == text.size();
    learn_one(text.substr(found.part.begin, found.part.end - found.part.begin), found.rule,
              may_go_on);
  }
}

void TextSecrets::learn_text(std::string_view text, bool is_cut) {
  found_.clear();
  text_rules_.find(text, found_);
  learn(text, is_cut);
}

void TextSecrets::learn_header(std::string_view line, bool is_cut) {
  found_.clear();
  text_rules_.find_in_header(line, found_);
  learn(line, is_cut);
}

void TextSecrets::add_found(std::string_view text, bool is_cut, std::vector<Range>& out) {
  for (const FoundSecret& found : found_) {
    if (found.part.is_empty()) continue;
    out.push_back({static_cast<std::uint32_t>(found.part.begin),
                   static_cast<std::uint32_t>(found.part.end), found.rule});
  }
  set_.find(text, is_cut, out);
  merge(out);
}

void TextSecrets::find(std::string_view text, bool is_cut, std::vector<Range>& out) {
  found_.clear();
  text_rules_.find(text, found_);
  add_found(text, is_cut, out);
}

void TextSecrets::find_in_header(std::string_view line, bool is_cut, std::vector<Range>& out) {
  found_.clear();
  text_rules_.find_in_header(line, found_);
  add_found(line, is_cut, out);
}

}  // namespace CT::Redact
