// SPDX-License-Identifier: MIT
//
// The traces that the tables of one connection are open on. A file is read once, however many
// tables show it, and let go with the last of them; a file that has changed since is another one.
#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "ctsql/ct_trace_data.h"

namespace CT::Sql {

class OpenTraces {
 public:
  // Reads the trace of this name unless a table shows it already. Null, with the reason in the
  // text, if it cannot be read. Throws std::bad_alloc.
  std::shared_ptr<TraceData> open(const std::string& path, std::string& error);

 private:
  // What a file is and whether it is still the same.
  struct Identity {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t size;
    std::int64_t seconds;
    std::int64_t nanoseconds;
    // clang-tidy 14 sees a 0 for a pointer in what the compiler writes here.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    friend auto operator<=>(const Identity&, const Identity&) = default;
  };

  std::map<Identity, std::weak_ptr<TraceData>> known_;
};

}  // namespace CT::Sql
