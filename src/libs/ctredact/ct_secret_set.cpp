// SPDX-License-Identifier: MIT
#include "ctredact/ct_secret_set.h"

#include <charconv>
#include <optional>

#include "ctredact/ct_bytes.h"

namespace CT::Redact {

namespace {

constexpr std::size_t shortest_base64 = 7;  // characters that hold whole bits of a secret

// Of a text that is one, written as PHP writes it.
std::optional<std::int64_t> integer_of(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || text[0] == '0') return {};
  return number;
}

bool ends_token(char c) {
  constexpr std::string_view ends = "\"'<>&;,()[]{}\\";
  return static_cast<unsigned char>(c) <= ' ' || ends.find(c) != std::string_view::npos;
}

// The places of what was decoded of a decoded text, in the text itself.
void lead_back(DecodedText& decoded, const DecodedText* places) {
  if (places == nullptr) return;
  for (std::uint32_t& begin : decoded.begins) begin = places->begins[begin];
  for (std::uint32_t& end : decoded.ends) end = places->ends[end - 1];
}

}  // namespace

void SecretSet::add(std::string_view secret, RuleId rule, bool is_cut) {
  if (secret.size() < shortest) return;
  const auto number = static_cast<std::uint32_t>(secrets_.size());
  const auto [entry, is_new] = numbers_.emplace(secret, number);
  if (!is_new) {
    Secret& known = secrets_[entry->second];
    known.is_cut = known.is_cut || is_cut;
    return;
  }
  secrets_.push_back({&entry->first, rule, is_cut});
  note_escapes(secret);
  if (const auto integer = integer_of(secret)) integers_.emplace(*integer, number);
}

void SecretSet::add_spelling(std::string_view spelling, std::string_view secret, RuleId rule,
                             bool is_cut) {
  add(secret, rule, is_cut);
  add(spelling, rule, is_cut);
  const auto of = numbers_.find(std::string(secret));
  const auto known = numbers_.find(std::string(spelling));
  // One that is a spelling itself has its own name, or there would be no end of it.
  if (of == numbers_.end() || known == numbers_.end() || of == known) return;
  if (secrets_[of->second].spelling_of != no_secret) return;
  secrets_[known->second].spelling_of = of->second;
}

std::string_view SecretSet::name(std::string_view text) const {
  if (text.size() < shortest) return text;
  const auto known = numbers_.find(std::string(text));
  return known != numbers_.end() ? std::string_view(name(known->second)) : text;
}

void SecretSet::note_escapes(std::string_view secret) {
  const auto note = [&](Escape escape) {
    may_be_escaped_[static_cast<std::size_t>(escape)] = true;
  };
  constexpr std::string_view in_json = "\"'\\/<>&";
  constexpr std::string_view in_html = "\"'<>& ";
  constexpr std::string_view in_url = "-_.~";
  for (const char c : secret) {
    const bool is_odd = static_cast<unsigned char>(c) < ' ' || static_cast<unsigned char>(c) > '~';
    if (is_odd || in_json.find(c) != std::string_view::npos) note(Escape::backslash);
    if (is_odd || in_html.find(c) != std::string_view::npos) note(Escape::entity);
    if (!is_alnum(c) && in_url.find(c) == std::string_view::npos) note(Escape::percent);
  }
  // Whatever it is: a line of mail may end in it.
  note(Escape::quoted_printable);
}

void SecretSet::build() {
  for (std::uint32_t i = 0; i != secrets_.size(); ++i) matcher_.add(*secrets_[i].text, i);
  matcher_.build();
}

std::uint32_t SecretSet::find_number(std::int64_t number) const {
  if (integers_.empty()) return no_secret;
  const auto found = integers_.find(number);
  return found != integers_.end() ? found->second : no_secret;
}

void SecretSet::find(std::string_view text, bool is_cut, std::vector<Range>& out) const {
  if (matcher_.is_empty() || text.size() < shortest) return;
  find_in({text, nullptr, 0}, out);
  if (!is_cut) return;
  const auto begun = matcher_.find(text, [](std::size_t, std::size_t, std::uint32_t) {});
  if (begun.size == 0) return;
  const auto size = static_cast<std::uint32_t>(text.size());
  out.push_back({size - static_cast<std::uint32_t>(begun.size), size, secrets_[begun.number].rule});
}

std::size_t SecretSet::end_of_cut(std::string_view bytes, std::size_t end,
                                  std::uint32_t secret) const {
  if (!secrets_[secret].is_cut) return end;
  while (end != bytes.size() && !ends_token(bytes[end])) ++end;
  return end;
}

void SecretSet::find_in(const Layer& layer, std::vector<Range>& out) const {
  std::size_t behind_cut = 0;
  matcher_.find(layer.bytes, [&](std::size_t begin, std::size_t end, std::uint32_t secret) {
    // What follows one that was cut is looked at once.
    if (end > behind_cut) {
      end = end_of_cut(layer.bytes, end, secret);
      if (secrets_[secret].is_cut) behind_cut = end;
    }
    const std::size_t first = layer.places == nullptr ? begin : layer.places->begins[begin];
    const std::size_t last = layer.places == nullptr ? end : layer.places->ends[end - 1];
    out.push_back({static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last),
                   secrets_[secret].rule, secret});
  });
  find_base64(layer, out);
  if (layer.level != deepest_level) find_behind(layer, out);
}

void SecretSet::find_behind(const Layer& layer, std::vector<Range>& out) const {
  const unsigned escapes = escapes_in(layer.bytes);
  if (escapes == 0) return;
  for (int i = 0; i != escape_count; ++i) {
    const auto escape = static_cast<Escape>(i);
    if (!may_be_escaped(escape) || (escapes >> i & 1U) == 0) continue;
    DecodedText& decoded = decoded_[static_cast<std::size_t>(layer.level)];
    undo(layer.bytes, escape, decoded);
    if (decoded.bytes == layer.bytes) continue;
    lead_back(decoded, layer.places);
    find_in({decoded.bytes, &decoded, layer.level + 1}, out);
  }
}

// Only runs in which some four characters stand for bytes of a secret are decoded.
void SecretSet::find_base64(const Layer& layer, std::vector<Range>& out) const {
  const std::string_view text = layer.bytes;
  constexpr std::uint32_t group = 0xFFFFFF;
  for (std::size_t i = 0; i < text.size();) {
    if (base64_value(text[i]) < 0) {
      ++i;
      continue;
    }
    const Base64Run run = base64_run(text, i);
    i = run.end;
    if (run.characters < shortest_base64) continue;
    std::uint32_t bits = 0;
    std::size_t seen = 0;
    bool may_hold = false;
    for (std::size_t at = run.begin; at != run.end && !may_hold; ++at) {
      const int value = base64_value(text[at]);
      if (value < 0) continue;
      bits = ((bits << 6) | static_cast<std::uint32_t>(value)) & group;
      may_hold = ++seen >= 4 && matcher_.may_hold(bits);
    }
    if (may_hold) find_in_run(layer, run, out);
    // What is encoded may be JSON or a URL in turn.
    constexpr std::size_t worth_it = 12;
    if (run.characters < worth_it || layer.level == deepest_level) continue;
    DecodedText& decoded = from_base64_[static_cast<std::size_t>(layer.level)];
    decode(text, run, 0, decoded);
    lead_back(decoded, layer.places);
    find_behind({decoded.bytes, &decoded, layer.level}, out);
  }
}

void SecretSet::find_in_run(const Layer& layer, const Base64Run& run,
                            std::vector<Range>& out) const {
  for (std::size_t skipped = 0; skipped != 4; ++skipped) {
    DecodedText& decoded = from_base64_[static_cast<std::size_t>(layer.level)];
    decode(layer.bytes, run, skipped, decoded);
    lead_back(decoded, layer.places);
    matcher_.find(decoded.bytes, [&](std::size_t begin, std::size_t end, std::uint32_t secret) {
      out.push_back({decoded.begins[begin], decoded.ends[end - 1], secrets_[secret].rule, secret});
    });
  }
}

}  // namespace CT::Redact
