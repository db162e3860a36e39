// SPDX-License-Identifier: MIT
//
// The names of a trace's functions as queries compare them: UTF-8, each written out once, and in
// the order of their bytes. Very long names, which only a hostile file has many of, are not kept.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_writer.h"

namespace CT::Sql {

class FunctionNames {
 public:
  // Borrows: the trace.
  explicit FunctionNames(const Trace& trace);

  // Whether the name of this function is kept.
  [[nodiscard]] bool has(std::int32_t function) const { return entry(function).size != 0; }
  // "Class::method" or "function", and the part of it that is the class. They live as long as this.
  // Requires: a name that is kept; a method.
  [[nodiscard]] std::string_view name(std::int32_t function) const {
    return texts_.view().substr(entry(function).begin, entry(function).size);
  }
  [[nodiscard]] std::string_view class_name(std::int32_t function) const {
    return texts_.view().substr(entry(function).begin, entry(function).class_size);
  }

  // All functions in the order of their names; empty if the name of one is not kept.
  [[nodiscard]] std::span<const std::int32_t> in_order() const;
  // The functions of this name, and those whose names are not kept; in rising order.
  [[nodiscard]] std::vector<std::int32_t> candidates(std::string_view name) const;

 private:
  struct Entry {
    std::uint32_t begin = 0;
    std::uint16_t size = 0;  // 0: it is not kept
    std::uint16_t class_size = 0;
  };
  [[nodiscard]] const Entry& entry(std::int32_t function) const {
    return entries_[static_cast<std::size_t>(function)];
  }
  void keep(const Checkpoint::Function& function, Entry& made);

  MemoryWriter texts_;
  std::vector<Entry> entries_;
  std::vector<std::int32_t> ordered_;  // those that are kept, by name
  std::vector<std::int32_t> others_;
};

}  // namespace CT::Sql
