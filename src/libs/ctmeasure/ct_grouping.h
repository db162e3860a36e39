// SPDX-License-Identifier: MIT
//
// What calls are grouped by for a profile, and what the groups are called.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctmeasure/ct_measures.h"
#include "ctmeasure/ct_profile.h"

namespace CT {

enum class GroupBy : std::uint8_t {
  function,
  class_,      // of a method; all plain functions are one group
  namespace_,  // of the class or the plain function
  folder,      // in which the function is defined; all that is built in is one group
  file,        // the same
  line,        // from which the call was made
  caller,      // the function, include or request that made the call
};

struct Group {
  std::string name;         // UTF-8; in brackets what is none of its kind, as "(built-in)"
  std::string file;         // of a function that a script defines: where; else empty
  std::uint32_t line = 0;   // 0 where there is no file
  bool is_builtin = false;  // of all its functions, as far as they were asked for
};

// Gives each call its group; groups are numbered in the order in which they are first asked for.
class Grouping {
 public:
  // Borrows both.
  Grouping(const Trace& trace, const Measures& measures, GroupBy by);

  // no_group for what is no call.
  [[nodiscard]] std::int32_t of(NodeId id);
  [[nodiscard]] const std::vector<Group>& groups() const { return groups_; }

 private:
  [[nodiscard]] std::int32_t of_function(std::int32_t function);
  [[nodiscard]] std::int32_t of_line(NodeId id);
  [[nodiscard]] std::int32_t of_caller(NodeId id);
  [[nodiscard]] std::int32_t named(const Group& group);

  const Trace& trace_;
  const Measures& measures_;
  GroupBy by_;
  std::vector<Group> groups_;
  std::vector<std::int32_t> of_functions_;  // no_group for one that was not asked for
  std::unordered_map<std::string, std::int32_t> by_name_;
  // By the place of the file's name and the line.
  std::unordered_map<std::uint64_t, std::int32_t> by_line_;
};

// The name as it is shown, "Class::method" or "function"; UTF-8.
std::string name_of(const Checkpoint::Function& function);

}  // namespace CT
