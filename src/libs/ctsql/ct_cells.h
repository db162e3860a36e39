// SPDX-License-Identifier: MIT
//
// Where the columns of a row put their values: a result of SQLite, or a line of some other form.
#pragma once

#include <cstdint>
#include <string_view>

namespace CT::Sql {

class Cells {
 public:
  virtual ~Cells() = default;

  virtual void null() = 0;
  virtual void integer(std::int64_t value) = 0;
  // What is beyond the whole numbers of SQLite; never NaN.
  virtual void real(double value) = 0;
  // UTF-8: a text that lives as long as the tables, and one that lives until the next column.
  virtual void kept_text(std::string_view text) = 0;
  virtual void text(std::string_view text) = 0;
  // A text of the second kind that is JSON.
  virtual void json(std::string_view text) = 0;
};

}  // namespace CT::Sql
