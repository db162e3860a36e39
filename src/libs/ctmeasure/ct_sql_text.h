// SPDX-License-Identifier: MIT
//
// What SQL texts have in common that only their values tell apart: literals and placeholders are
// taken out, so that the queries of a loop come to one text.
//
//   select * from `t1` where id = 7 and name in ('a', 'b') -- note
//   select * from `t1` where id = ? and name in (?...)
//
// Texts in single quotes (in them '' and \' are quotes), numbers, and placeholders such as ?, :name
// and $1 become ?; lists of them behind IN become (?...); comments go; blanks become one. Names
// stay as they are, in back quotes and in double quotes too. It is no parser: any bytes come to
// something, in linear time.
#pragma once

#include <string>
#include <string_view>

namespace CT {

// A text that the tracer cut ends in "**CUT**".
std::string like_sql(std::string_view text, bool is_cut = false);

}  // namespace CT
