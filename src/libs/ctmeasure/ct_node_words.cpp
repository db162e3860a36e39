// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_node_words.h"

#include <algorithm>
#include <array>
#include <bit>

namespace CT {

std::string_view kind_of(Node::Type type) {
  constexpr std::array<std::string_view, 12> kinds = {"request", "call",  "call",   "include",
                                                      "write",   "flush", "header", "send_headers",
                                                      "exit",    "error", "none",   "event"};
  static_assert(kinds.size() == Node::node_infos.size());
  return kinds[static_cast<std::size_t>(type)];
}

std::string_view outcome_of(const Node::Base& node) {
  if (!node.is_span()) return "";
  if (node.end() == nullptr) return "open";
  const Checkpoint::Type end = node.end()->type();
  return end == Checkpoint::Type::FUNCTION_EXCEPTION || end == Checkpoint::Type::INCLUDE_EXCEPTION
             ? "threw"
             : "ended";
}

std::string_view error_level(std::uint32_t number) {
  constexpr std::array<std::string_view, 15> levels = {"E_ERROR",
                                                       "E_WARNING",
                                                       "E_PARSE",
                                                       "E_NOTICE",
                                                       "E_CORE_ERROR",
                                                       "E_CORE_WARNING",
                                                       "E_COMPILE_ERROR",
                                                       "E_COMPILE_WARNING",
                                                       "E_USER_ERROR",
                                                       "E_USER_WARNING",
                                                       "E_USER_NOTICE",
                                                       "E_STRICT",
                                                       "E_RECOVERABLE_ERROR",
                                                       "E_DEPRECATED",
                                                       "E_USER_DEPRECATED"};
  if (!std::has_single_bit(number)) return "";
  const auto bit = static_cast<std::size_t>(std::countr_zero(number));
  return bit < levels.size() ? levels[bit] : "";
}

std::int64_t whole_size(const Checkpoint::String& text) {
  return std::max<std::int64_t>(text.orig_sz, text.length);
}

}  // namespace CT
