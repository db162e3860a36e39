// SPDX-License-Identifier: MIT
#include "ctreport/ct_text_numbers.h"

#include <cstring>
#include <functional>

#include "codetrace/render/ct_text.h"
#include "ctexport/ct_one_line.h"

namespace CT::Report {

namespace {

constexpr std::string_view ellipsis = "\xE2\x80\xA6";

// Neighbours in memory have different places, as far as that goes.
std::size_t slot_of(const char* text) {
  std::uintptr_t place = 0;
  static_assert(sizeof place == sizeof text);
  std::memcpy(&place, &text, sizeof place);
  return (place >> 3 ^ place >> 13) % TextNumbers::places;
}

}  // namespace

// The end of a text that is not shown makes no difference.
std::size_t TextNumbers::Hash::operator()(const Text& text) const {
  const std::hash<std::string_view> hash;
  return hash(text.stored) * 31 + hash(text.before) + (text.is_cut ? 1 : 0);
}

std::uint32_t TextNumbers::of(std::string_view before, const Checkpoint::String& stored) {
  Known& known = known_[slot_of(stored.data)];
  const bool is_usual = before.empty() && !stored.is_cut();
  if (is_usual && known.data == stored.data && known.size == stored.length) return known.number;
  Text text = {before, stored.view(), stored.is_cut()};
  if (text.stored.size() > longest) {
    // With a byte more than is shown, so that it is known to be longer.
    text.stored = text.stored.substr(0, longest + 1);
    text.is_cut = false;
  }
  const std::uint32_t number = number_of(text);
  if (is_usual) known = {stored.data, stored.length, number};
  return number;
}

std::uint32_t TextNumbers::of(const std::string& text) {
  const auto known = numbers_.find({{}, text, false});
  return known != numbers_.end() ? known->second
                                 : number_of({{}, copied_.emplace_back(text), false});
}

std::uint32_t TextNumbers::number_of(const Text& text) {
  const auto [place, is_new] = numbers_.try_emplace(text, size());
  if (!is_new) return place->second;
  json_.element();
  Writer& out = json_.out();
  out.put('"');
  if (!text.before.empty()) {
    out.put(text.before);
    out.put(": ");
  }
  const bool is_long = text.stored.size() > longest;
  const std::size_t shown =
      is_long ? Export::whole_characters(text.stored, longest) : text.stored.size();
  put_json_text(out, text.stored.substr(0, shown));
  if (is_long) out.put(ellipsis);
  if (text.is_cut) out.put(Checkpoint::String::cut_marker);
  out.put('"');
  return place->second;
}

}  // namespace CT::Report
