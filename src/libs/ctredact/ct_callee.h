// SPDX-License-Identifier: MIT
//
// The functions and classes of a trace as their descriptors say, with the rules for the calls of
// each.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "codetrace/ct_file.h"
#include "ctredact/ct_rules.h"

namespace CT::Redact {

struct ClassParts {
  std::uint8_t type = 0;
  std::uint64_t name = 0;  // references, as all below
  std::uint32_t flags = 0;
  std::uint64_t file = 0;
  std::uint32_t line = 0;
};

struct Callee {
  std::uint8_t type = 0;
  std::uint64_t name = 0;
  std::uint64_t class_entry = 0;
  std::uint32_t flags = 0;
  std::uint64_t file = 0;
  std::uint32_t line = 0;

  std::vector<CallRule> rules;
  std::uint32_t number = 0;  // from 0, in the order in which they were found
};

// False for a reference that leads to no whole descriptor.
bool read_class(const File& file, std::uint64_t reference, ClassParts& parts);

class Callees {
 public:
  // Borrows both.
  Callees(const File& file, const Rules& rules) : file_(file), rules_(rules) {}

  // The function that a reference leads to; null if its descriptor is not whole. It stays where it
  // is.
  const Callee* find(std::uint64_t reference);

 private:
  static constexpr int recent_bits = 13;
  struct Recent {
    std::uint64_t reference = 0;
    const Callee* callee = nullptr;
  };
  [[nodiscard]] bool read(std::uint64_t reference, Callee& callee) const;
  [[nodiscard]] std::string full_name(const Callee& callee) const;

  const File& file_;
  const Rules& rules_;
  std::unordered_map<std::uint64_t, std::unique_ptr<Callee>> known_;
  std::vector<Recent> recent_ = std::vector<Recent>(1 << recent_bits);
};

}  // namespace CT::Redact
