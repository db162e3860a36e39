// SPDX-License-Identifier: MIT
//
// Options of which the value is one word of a few.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

namespace CT::Tool {

template <class Value>
using Words = std::vector<std::pair<std::string, Value>>;

// The word for a value of the list.
template <class Value>
const std::string& word_of(const Words<Value>& words, Value value) {
  std::size_t row = 0;
  while (words[row].second != value) ++row;
  return words[row].first;
}

// Adds `--name WORD`; what `value` is now is the default. Borrows the value.
template <class Value>
CLI::Option* add_choice(CLI::App& command, const std::string& name, Value& value,
                        const Words<Value>& words, const std::string& help) {
  std::string list;
  for (const auto& [word, meaning] : words) list += (list.empty() ? "" : "|") + word;
  std::vector<std::string> known;
  for (const auto& [word, meaning] : words) known.push_back(word);
  return command
      .add_option_function<std::string>(
          name,
          [&value, words](const std::string& chosen) {
            for (const auto& [word, meaning] : words) {
              if (word == chosen) value = meaning;
            }
          },
          help + " (" + word_of(words, value) + ")")
      ->check(CLI::IsMember(known))
      ->option_text(list);
}

}  // namespace CT::Tool
