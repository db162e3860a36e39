// SPDX-License-Identifier: MIT
// The command line as a sequence of options and file names, in the order in which they stand.
//
// Follows the GNU conventions: short options share a dash (-HvS), an argument may be joined
// (-oNAME, --output=NAME) or follow, long names may be cut as long as they stay unique, "--" ends
// the options, and a lone "-" is a file name. No environment variable changes that.
//
// Borrows the option table and the argument vector, which must outlive it. Nothing is reported and
// nothing fails: what does not fit the table appears in the sequence under a code of its own.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

class KCmdLine {
 public:
  enum class Argument { none = 1, required = 2 };

  // One row of the table. A table ends with an all-zero row.
  struct Option {
    int letter;  // the short form, and the code of both forms
    Argument argument;
    const char* name;  // the long form, or null
  };

  // Codes beside the options' letters.
  static constexpr int positional = 1;
  static constexpr int unknown = 2;  // also an ambiguous name, or an argument where none is taken
  static constexpr int missing_argument = 3;

 private:
  struct Item {
    int code;
    const char* argument;
    const char* value;
  };

 public:
  // A position. The accessors require a position before the end.
  class Iterator {
   public:
    void next() { ++index_; }
    friend bool operator==(const Iterator&, const Iterator&) = default;

    [[nodiscard]] int code() const { return item().code; }
    // The whole argument as it was typed, such as "-Hx" or "--outptu=name".
    [[nodiscard]] const char* argument() const { return item().argument; }
    // The option's argument or the positional argument; null if there is none, and perhaps empty.
    [[nodiscard]] const char* value() const { return item().value; }

   private:
    friend class KCmdLine;
    Iterator(const std::vector<Item>& items, std::size_t index) : items_(&items), index_(index) {}
    [[nodiscard]] const Item& item() const { return (*items_)[index_]; }

    const std::vector<Item>* items_;
    std::size_t index_;
  };

  // The first element of `argv` is the program's name; there may be none at all.
  KCmdLine(const Option* options, int argc, char* const* argv);

  [[nodiscard]] Iterator begin() const { return {items_, 0}; }
  [[nodiscard]] Iterator end() const { return {items_, items_.size()}; }

 private:
  std::vector<Item> items_;
};
