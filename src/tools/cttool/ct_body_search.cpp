// SPDX-License-Identifier: MIT
//
// The method of Knuth, Morris and Pratt, which looks at each byte once and never back, so that the
// bytes may come in pieces.
#include "tools/cttool/ct_body_search.h"

#include <algorithm>
#include <cstring>

namespace CT::Tool {

namespace {

class Matcher {
 public:
  explicit Matcher(std::string_view text) : text_(text), shorter_(text.size() + 1) {
    for (std::size_t i = 1, length = 0; i < text.size(); ++i) {
      while (length != 0 && text[i] != text[length]) length = shorter_[length];
      if (text[i] == text[length]) ++length;
      shorter_[i + 1] = length;
    }
  }

  // What was seen so far has nothing to do with what comes.
  void forget() { matched_ = 0; }

  // Steps over bytes up to the end of the next match; their number if there is none.
  std::size_t step(std::string_view bytes, bool& is_match) {
    is_match = false;
    for (std::size_t i = 0; i != bytes.size(); ++i) {
      if (matched_ == 0) {
        const void* const first = std::memchr(bytes.data() + i, text_[0], bytes.size() - i);
        if (first == nullptr) break;
        i = static_cast<std::size_t>(static_cast<const char*>(first) - bytes.data());
      }
      while (matched_ != 0 && bytes[i] != text_[matched_]) matched_ = shorter_[matched_];
      if (bytes[i] == text_[matched_]) ++matched_;
      if (matched_ != text_.size()) continue;
      matched_ = 0;
      is_match = true;
      return i + 1;
    }
    return bytes.size();
  }

 private:
  std::string_view text_;
  std::vector<std::size_t> shorter_;  // of each length, the longest begin that is an end as well
  std::size_t matched_ = 0;
};

// The write that has the byte at this place.
std::size_t write_at(const std::vector<BodyPart>& writes, std::uint64_t offset) {
  const auto behind = std::upper_bound(
      writes.begin(), writes.end(), offset,
      [](std::uint64_t place, const BodyPart& write) { return place < write.offset; });
  return static_cast<std::size_t>(behind - writes.begin()) - 1;
}

}  // namespace

BodyMatches find_in_body(const Response& response, std::string_view text, std::size_t limit) {
  BodyMatches matches;
  if (text.empty()) return matches;
  const std::vector<BodyPart>& writes = response.writes();
  Matcher matcher(text);
  for (std::size_t i = 0; i != writes.size(); ++i) {
    const std::string_view body = writes[i].body.view();
    for (std::size_t at = 0; at != body.size();) {
      bool is_match = false;
      at += matcher.step(body.substr(at), is_match);
      if (!is_match) continue;
      ++matches.count;
      if (limit != 0 && matches.found.size() == limit) continue;
      const std::uint64_t offset = writes[i].offset + at - text.size();
      matches.found.push_back({offset, write_at(writes, offset), i});
    }
    if (writes[i].missing() != 0) matcher.forget();
  }
  return matches;
}

}  // namespace CT::Tool
