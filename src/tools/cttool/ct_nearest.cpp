// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_nearest.h"

#include <algorithm>
#include <numeric>

namespace CT::Tool {

namespace {

// Letters to insert, to drop or to change, as Levenshtein counts them.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i != a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j != b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] != b[j] ? 1 : 0);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string guess(const std::string& word, const std::vector<std::string>& known) {
  constexpr std::size_t longest = 40;  // nobody mistypes that much, and it would take its time
  if (word.size() > longest) return {};
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3 + 1);
  for (const std::string& candidate : known) {
    const std::size_t far = candidate.starts_with(word) ? 1 : distance(word, candidate);
    if (far >= least) continue;
    least = far;
    nearest = &candidate;
  }
  return nearest != nullptr ? "; did you mean " + *nearest + "?" : std::string();
}

}  // namespace CT::Tool
