// SPDX-License-Identifier: MIT
#include "value_lines.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <utility>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_text.h"
#include "ctreport/ct_call_bytes.h"

namespace CT::Test {

namespace {

using Code = Report::CallBytes::Code;

void require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

class CallText {
 public:
  CallText(std::string_view bytes, const std::vector<std::string>& classes)
      : left_(bytes), classes_(classes) {}

  std::string line() {
    const unsigned parts = byte();
    const std::uint64_t size = number();
    require(parts < 6 && size <= left_.size(), "an entry is whole");
    const std::string_view behind = left_.substr(size);
    std::string text = "{";
    if ((parts & 1) != 0) text.append("\"this\":").append(value(0)).append(",");
    text.append("\"args\":[");
    const std::uint64_t count = number();
    for (std::uint64_t i = 0; i != count; ++i) text.append(i != 0 ? "," : "").append(value(0));
    text.append("]");
    if ((parts & 2) != 0) text.append(",\"returned\":").append(value(0));
    if ((parts & 4) != 0) text.append(",\"thrown\":").append(value(0));
    require(left_ == behind, "an entry is as long as it says");
    return text.append("}");
  }
  [[nodiscard]] std::string_view left() const { return left_; }

 private:
  unsigned char byte() { return static_cast<unsigned char>(take(1).front()); }
  std::string_view take(std::uint64_t size) {
    require(size <= left_.size(), "a value is whole");
    const std::string_view taken = left_.substr(0, size);
    left_.remove_prefix(size);
    return taken;
  }
  std::uint64_t number() {
    std::uint64_t number = 0;
    for (unsigned shift = 0;; shift += 7) {
      const unsigned next = byte();
      number |= std::uint64_t{next & 0x7F} << shift;
      if (next < 0x80) return number;
      require(shift < 56, "a number is no longer than it has to be");
    }
  }

  // The levels that there can be are few.
  std::string value(std::size_t depth) {
    const auto code = static_cast<Code>(byte());
    switch (code) {
      case Code::null: return "null";
      case Code::false_: return "false";
      case Code::true_: return "true";
      case Code::digits: return std::string(take(byte()));
      case Code::ascii:
      case Code::text:
      case Code::cut_ascii:
      case Code::cut_text: return text(code);
      case Code::array: return array(depth + 1);
      case Code::object: return object();
      case Code::resource: {
        std::string text = "{\"resource\":" + value(depth);
        return text.append(",\"handle\":").append(value(depth)).append("}");
      }
      case Code::not_followed: require(depth != 0, "in an array"); return "[\"**CUT**\"]";
      default: throw std::runtime_error("a code of a value");
    }
  }

  std::string text(Code code) {
    const std::string_view stored = take(number());
    const bool is_plain = code == Code::ascii || code == Code::cut_ascii;
    const bool has_others =
        std::any_of(stored.begin(), stored.end(), [](char c) { return (c & 0x80) != 0; });
    require(is_plain != has_others, "ASCII is said to be");
    MemoryWriter out;
    put_json_text(out, stored);
    require(out.view().find(replacement_character) == std::string_view::npos ||
                stored.find(replacement_character) != std::string_view::npos,
            "texts are UTF-8");
    std::string json = "\"";
    json.append(out.view());
    if (code == Code::cut_ascii || code == Code::cut_text) json.append("**CUT**");
    return json.append("\"");
  }

  std::string object() {
    const std::uint64_t name = number();
    require(name <= classes_.size(), "a class is there");
    std::string json = "{";
    if (name != 0) json.append("\"class\":").append(classes_[name - 1]).append(",");
    return json.append("\"handle\":").append(std::to_string(number())).append("}");
  }

  std::string array(std::size_t depth) {
    require(depth <= Report::CallBytes::deepest, "arrays are not too deep");
    std::vector<std::pair<std::string, std::string>> members;
    std::set<std::string> keys;
    bool is_list = true;
    bool is_cut = false;
    const std::uint64_t count = number();
    for (std::uint64_t i = 0; i != count && !is_cut; ++i) {
      require(!left_.empty(), "an array is whole");
      const auto code = static_cast<Code>(left_.front());
      is_cut = code == Code::cut;
      if (is_cut || code == Code::next) take(1);
      if (is_cut) break;
      is_list = is_list && code == Code::next;
      std::string key = code == Code::next ? std::to_string(i) : value(depth);
      if (key.front() != '"') key.insert(0, "\"").append("\"");
      if (!keys.insert(key).second) {
        std::erase_if(members, [&](const auto& member) { return member.first == key; });
      }
      members.emplace_back(std::move(key), value(depth));
    }
    std::string json;
    for (const auto& [key, value] : members) {
      json.append(json.empty() ? "" : ",").append(is_list ? "" : key + ":").append(value);
    }
    if (is_cut) json.append(json.empty() ? "" : ",").append("\"**CUT**\"");
    if (is_cut && !is_list) json.append(":true");
    return json.insert(0, is_list ? "[" : "{").append(is_list ? "]" : "}");
  }

  std::string_view left_;
  const std::vector<std::string>& classes_;
};

std::vector<std::string> names_in(std::string_view array) {
  std::vector<std::string> names;
  std::size_t begin = std::string_view::npos;
  for (std::size_t at = 0; at < array.size(); ++at) {
    if (array[at] == '\\') {
      ++at;
    } else if (array[at] == '"' && begin == std::string_view::npos) {
      begin = at;
    } else if (array[at] == '"') {
      names.emplace_back(array.substr(begin, at + 1 - begin));
      begin = std::string_view::npos;
    }
  }
  return names;
}

}  // namespace

std::vector<std::string> value_lines(std::string_view block, std::string_view classes) {
  const std::vector<std::string> names = names_in(classes);
  std::vector<std::string> lines;
  while (!block.empty()) {
    if (block.front() == '{') {
      const std::size_t end = block.find('\n');
      require(end != std::string_view::npos, "a line has an end");
      lines.emplace_back(block.substr(0, end));
      block.remove_prefix(end + 1);
    } else {
      CallText call(block, names);
      lines.push_back(call.line());
      block = call.left();
    }
  }
  return lines;
}

}  // namespace CT::Test
