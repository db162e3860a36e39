// SPDX-License-Identifier: MIT
#include "ctredact/ct_text_rules.h"

#include <algorithm>

#include "ctredact/ct_bytes.h"
#include "ctredact/ct_decoded_text.h"

namespace CT::Redact {

namespace {

bool is_all_letters(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return is_alpha(c); });
}

bool is_literal(std::string_view text) {
  return text == "null" || text == "true" || text == "false" || text == "NULL" || text == "array" ||
         text == "function" || text == "Array";
}

}  // namespace

// One walk through one text.
class TextRules::Scan {
 public:
  Scan(const TextRules& owner, std::string_view text, std::vector<FoundSecret>& out)
      : owner_(owner), rules_(owner.rules_), text_(text), out_(out) {}

  void run() {
    const std::size_t size = text_.size();
    for (std::size_t i = 0; i < size;) {
      if (!owner_.triggers_[static_cast<unsigned char>(text_[i])]) {
        ++i;
      } else {
        i = std::max(look_at(i), i + 1);
      }
    }
  }

 private:
  // Where to go on.
  std::size_t look_at(std::size_t i) {
    const char c = text_[i];
    const std::size_t behind_prefix = prefix(i);
    if (behind_prefix != i) return behind_prefix;
    if (c == '=') return name(i);
    if (c == ':') return colon(i);
    if (c == '@') return email(i);
    if (c == '<') return element(i);
    if (c == '$') return shape(i, Shape::password_hash, see_password_hash(text_, i));
    if (is_digit(c)) return card(i);
    if (c == '-') return dash(i);
    if (c == 'e') return jwt(i);
    return is_upper(c) ? iban(i) : i;
  }

  std::size_t add(const Part& part, RuleId rule, bool spreads) {
    if (!part.is_empty()) out_.push_back({part, rule, spreads});
    return part.end;
  }

  std::size_t shape(std::size_t i, Shape which, const Seen& seen) {
    const RuleId rule = rules_.shape(which);
    if (rule != no_rule && seen.size != 0) add({i, i + seen.size}, rule, true);
    return i + seen.skip;
  }

  [[nodiscard]] bool begins_word(std::size_t i) const { return i == 0 || !is_alnum(text_[i - 1]); }

  std::size_t prefix(std::size_t i) {
    constexpr std::size_t fewest = 8;
    if (!begins_word(i)) return i;
    for (const Rules::Prefix& row : rules_.prefixes(text_[i])) {
      if (text_.substr(i, row.text.size()) != row.text) continue;
      std::size_t end = i + row.text.size();
      constexpr std::string_view others = "-_.+/=";
      while (end < text_.size() &&
             (is_alnum(text_[end]) || others.find(text_[end]) != std::string_view::npos)) {
        ++end;
      }
      if (end - i >= row.text.size() + fewest) return add({i, end}, row.rule, true);
    }
    return i;
  }

  std::size_t card(std::size_t i) {
    const SeenCard seen = see_card(text_, i);
    const RuleId rule = rules_.shape(Shape::card);
    if (rule == no_rule || seen.size == 0 || !begins_word(i)) return i + seen.skip;
    return add({seen.begin, seen.begin + seen.size}, rule, true);
  }

  std::size_t dash(std::size_t i) {
    if (text_.substr(i, 5) != "-----") return i;
    return shape(i, Shape::private_key, see_private_key(text_, i));
  }

  std::size_t jwt(std::size_t i) {
    if (text_.substr(i, 3) != "eyJ") return i;
    return shape(i, Shape::jwt, see_jwt(text_, i));
  }

  std::size_t iban(std::size_t i) {
    const bool may_be = i + 4 <= text_.size() && is_upper(text_[i + 1]) && is_digit(text_[i + 2]) &&
                        is_digit(text_[i + 3]) && begins_word(i);
    return may_be ? shape(i, Shape::iban, see_iban(text_, i)) : i;
  }

  std::size_t email(std::size_t i) {
    const RuleId rule = rules_.shape(Shape::email);
    if (rule != no_rule) add(see_email(text_, i), rule, true);
    return i;
  }

  // The rule of a name, which may be encoded as URLs have it.
  [[nodiscard]] RuleId rule_of(std::string_view name) const {
    if (name.empty()) return no_rule;
    if (name.find('%') == std::string_view::npos) return rules_.keys().find(name);
    return rules_.keys().find(undone(name, Escape::percent));
  }

  std::size_t name(std::size_t i) {
    const NameBefore before = name_before(text_, i);
    if (in_small_letters(before.name) == "name" || before.name == "property") return field(i);
    const RuleId rule = rule_of(before.name);
    return rule == no_rule ? i : value(i, rule, true);
  }

  // An element is looked at to the end of its text only if its name tells something.
  std::size_t element(std::size_t i) {
    if (i + 1 >= text_.size() || !is_alpha(text_[i + 1])) return i;
    const Element element = element_at(text_, i);
    const RuleId rule = rule_of(element.name);
    return rule == no_rule ? i : add(element.text, rule, true);
  }

  // The name of a field of a form, of which the value stands elsewhere in the tag.
  std::size_t field(std::size_t i) {
    const ValueBehind name = value_behind(text_, i);
    const RuleId rule = rule_of(text_.substr(name.part.begin, name.part.end - name.part.begin));
    if (rule == no_rule || !name.is_quoted) return i;
    const Part part = value_of_form_part(text_, name.part.end);
    if (!part.is_empty()) return add(part, rule, true);
    add(value_of_tag(text_, i), rule, true);
    return i;
  }

  std::size_t colon(std::size_t i) {
    const std::string_view behind = text_.substr(i + 1, 2);
    if (behind == "//") return login(i);
    if (behind.substr(0, 1) == ":") return i + 2;
    if (i >= 2 && text_[i - 1] == 's') {
      if (text_[i - 2] == ';') return serialized(i, i - 2);
      if (text_[i - 2] == '|') return serialized(i, i - 2);
    }
    const NameBefore before = name_before(text_, i);
    if (before.begins_line || before.is_quoted) {
      const HeaderRule* const header = rules_.header(before.name);
      if (header != nullptr && !before.is_quoted) {
        const Part all = header_value(text_, i);
        owner_.add_header(text_, all, *header, out_);
        return all.end;
      }
    }
    const RuleId rule = rule_of(before.name);
    return rule == no_rule ? i : value(i, rule, before.is_quoted);
  }

  std::size_t login(std::size_t i) {
    const RuleId rule = rules_.shape(Shape::url_login);
    const Login login = see_login(text_, i);
    if (rule != no_rule) {
      add(login.user, rule, login.password.is_empty());
      add(login.password, rule, true);
    }
    // The @ is none of an address of mail.
    const std::size_t end = std::max(login.user.end, login.password.end);
    return end != 0 ? end + 1 : i + 3;
  }

  std::size_t serialized(std::size_t i, std::size_t name_end) {
    // What was a value a moment ago is no name.
    if (name_end != 0 && name_end - 1 == value_end_) return i;
    const RuleId rule = rule_of(name_before(text_, name_end).name);
    if (rule == no_rule) return i;
    value_end_ = add(serialized_text(text_, i), rule, true);
    return std::max(value_end_, i);
  }

  std::size_t value(std::size_t i, RuleId rule, bool is_strong) {
    const ValueBehind behind = value_behind(text_, i);
    const Part part = behind.part;
    if (part.is_empty()) return i;
    if (behind.is_list) return list(part, rule);
    const std::string_view text = text_.substr(part.begin, part.end - part.begin);
    if (!behind.is_quoted && is_literal(text)) return part.end;
    // A word of prose behind "Password:" is no reason to mask it everywhere.
    const bool spreads = is_strong || behind.is_quoted || !is_all_letters(text);
    return add(part, rule, spreads);
  }

  std::size_t list(const Part& part, RuleId rule) {
    for (std::size_t i = part.begin; i < part.end; ++i) {
      if (text_[i] != '"' && text_[i] != '\'') continue;
      const std::size_t end = std::min(text_.find(text_[i], i + 1), part.end);
      add({i + 1, std::max(i + 1, end)}, rule, true);
      i = end;
    }
    return part.end;
  }

  const TextRules& owner_;
  const Rules& rules_;
  std::string_view text_;
  std::vector<FoundSecret>& out_;
  std::size_t value_end_ = std::string_view::npos;  // of the last one that was serialised
};

void TextRules::make_triggers() {
  for (const char c : std::string_view("=:@$<-e0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ")) {
    triggers_[static_cast<unsigned char>(c)] = true;
  }
  for (std::size_t byte = 0; byte != 256; ++byte) {
    if (!rules_.prefixes(static_cast<char>(byte)).empty()) triggers_[byte] = true;
  }
}

void TextRules::find(std::string_view text, std::vector<FoundSecret>& out) const {
  Scan(*this, text, out).run();
}

void TextRules::find_in_header(std::string_view line, std::vector<FoundSecret>& out) const {
  const std::size_t colon = line.find(':');
  if (colon != std::string_view::npos) {
    const std::string_view name = line.substr(0, colon);
    const Part value = header_value(line, colon);
    if (const HeaderRule* const header = rules_.header(name)) {
      add_header(line, value, *header, out);
    } else if (rules_.keys().find(name) != no_rule && !value.is_empty()) {
      out.push_back({value, rules_.keys().find(name), true});
    }
  }
  find(line, out);
}

void TextRules::add_header(std::string_view text, const Part& value, const HeaderRule& rule,
                           std::vector<FoundSecret>& out) const {
  if (value.is_empty()) return;
  std::size_t at = value.begin;
  switch (rule.form) {
    case HeaderForm::whole: out.push_back({value, rule.rule, true}); break;
    case HeaderForm::credentials: {
      const std::size_t blank = text.substr(0, value.end).find(' ', at);
      const std::size_t begin = blank == std::string_view::npos ? at : blank + 1;
      out.push_back({{begin, value.end}, rule.rule, true});
      break;
    }
    case HeaderForm::cookie:
    case HeaderForm::cookies:
      while (at < value.end) {
        const std::size_t end = std::min(text.find(';', at), value.end);
        const std::size_t sign = text.find('=', at);
        const std::size_t begin = sign < end ? sign + 1 : at;
        if (begin < end) out.push_back({{begin, end}, rule.rule, true});
        if (rule.form == HeaderForm::cookie) break;
        at = end + 1;
      }
      break;
  }
}

void TextRules::find_parts(std::string_view value, RuleId rule,
                           std::vector<FoundSecret>& out) const {
  for (const std::string_view scheme : {"bearer ", "basic ", "token ", "digest "}) {
    if (in_small_letters(value.substr(0, scheme.size())) == scheme) {
      out.push_back({{scheme.size(), value.size()}, rule, true});
      return;
    }
  }
  if (value.find("; ") != std::string_view::npos && value.find('=') != std::string_view::npos) {
    add_header(value, {0, value.size()}, {HeaderForm::cookies, rule}, out);
    return;
  }
  constexpr std::size_t longest_login = 128;
  const std::size_t colon = value.find(':');
  if (colon != std::string_view::npos && value.size() <= longest_login &&
      colon + 1 != value.size()) {
    out.push_back({{colon + 1, value.size()}, rule, true});
  }
}

}  // namespace CT::Redact
