// SPDX-License-Identifier: MIT
//
// Texts of a trace that many nodes share, each written once, as the elements of an array of JSON;
// nodes then have its number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "codetrace/model/ct_string.h"
#include "codetrace/render/ct_json.h"

namespace CT::Report {

class TextNumbers {
 public:
  // Bytes of a stored text that are shown; behind those of a longer one stands an ellipsis. No path
  // that a system opens is longer.
  static constexpr std::size_t longest = 4096;

  // How many texts are known by their place in memory, which is quicker.
  static constexpr std::size_t places = 1024;

  // Borrows: the output, to which the array is written as texts are first seen.
  explicit TextNumbers(Writer& out) : json_(out, JsonWriter::Form::compact) { json_.begin_array(); }

  // The number of a text, from 0. Of the trace: `stored` is borrowed, and so is `before`, which is
  // plain ASCII and stands before it, with a colon. What the tracer cut ends in its mark.
  std::uint32_t of(std::string_view before, const Checkpoint::String& stored);
  // Of any other text: it is copied.
  std::uint32_t of(const std::string& text);

  // The end of the array; nothing may be asked for behind it.
  void finish() { json_.end_array(); }
  [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(numbers_.size()); }

 private:
  struct Text {
    std::string_view before;
    std::string_view stored;
    bool is_cut = false;
    bool operator==(const Text& other) const = default;
  };
  struct Hash {
    std::size_t operator()(const Text& text) const;
  };
  // What was asked for by its place in memory.
  struct Known {
    const char* data = nullptr;
    std::size_t size = 0;
    std::uint32_t number = 0;
  };
  std::uint32_t number_of(const Text& text);

  JsonWriter json_;
  std::unordered_map<Text, std::uint32_t, Hash> numbers_;
  std::deque<std::string> copied_;
  std::array<Known, places> known_ = {};
};

}  // namespace CT::Report
