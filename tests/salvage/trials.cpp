// SPDX-License-Identifier: MIT
//
// salvage_trials [--damages N] [--first K] TRACE...
//
// Damages each trace in N ways, from the number K on, and salvages it. A line a kind of damage, a
// line for each failure; status 1 if there is one.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

#include "ctsalvage/ct_salvage.h"
#include "trial.h"

namespace CT::SalvageTest {

namespace {

struct Sum {
  std::uint64_t count = 0;
  std::uint64_t failed = 0;
  double least_behind = 1;
  double least = 1;
  double all = 0;
};

struct Options {
  std::uint64_t damages = 200;
  std::uint64_t first = 0;
};

Octets read(const char* name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool comes_out_equal(const Octets& trace) {
  const Salvage::Salvaged made = Salvage::salvage(trace);
  return made.report.is_whole && made.whole.data() == trace.data() &&
         made.whole.size() == trace.size();
}

bool run(const char* name, const Options& options) {
  const Octets trace = read(name);
  if (trace.empty() || !comes_out_equal(trace)) {
    std::printf("%s: it is not whole\n", name);
    return false;
  }
  const std::vector<Mark> marks = marks_of(trace);
  const Places places = places_of(trace);
  std::map<std::string_view, Sum> sums;
  bool is_fine = true;
  for (std::uint64_t number = options.first; number != options.first + options.damages; ++number) {
    Octets damaged = trace;
    const Damage damage = make_damage(number, places, damaged);
    const Outcome outcome = try_salvage(marks, damage, damaged);
    Sum& sum = sums[damage.kind];
    ++sum.count;
    sum.least_behind = std::min(sum.least_behind, outcome.kept_behind);
    sum.least = std::min(sum.least, outcome.kept);
    sum.all += outcome.kept;
    if (!outcome.failures.empty()) ++sum.failed;
    for (const std::string& failure : outcome.failures) {
      is_fine = false;
      std::printf("%s: damage %llu, %s at %llu: %s (%.4f)\n", name,
                  static_cast<unsigned long long>(number), std::string(damage.kind).c_str(),
                  static_cast<unsigned long long>(damage.begin), failure.c_str(), outcome.kept);
    }
  }
  for (const auto& [kind, sum] : sums) {
    std::printf("%-18s %5llu tried %5llu failed  kept %6.2f %% at least, %6.2f %% on average",
                std::string(kind).c_str(), static_cast<unsigned long long>(sum.count),
                static_cast<unsigned long long>(sum.failed), 100 * sum.least,
                100 * sum.all / static_cast<double>(sum.count));
    if (kind.substr(0, 5) == "hole ") std::printf(", behind %6.2f %%", 100 * sum.least_behind);
    std::printf("\n");
  }
  return is_fine;
}

}  // namespace
}  // namespace CT::SalvageTest

int main(int argc, char** argv) {
  CT::SalvageTest::Options options;
  bool is_fine = true;
  for (int each = 1; each < argc; ++each) {
    const std::string_view word = argv[each];
    if (each + 1 < argc && (word == "--damages" || word == "--first")) {
      const std::uint64_t value = std::strtoull(argv[++each], nullptr, 10);
      (word == "--damages" ? options.damages : options.first) = value;
    } else {
      is_fine = CT::SalvageTest::run(argv[each], options) && is_fine;
    }
  }
  return is_fine ? 0 : 1;
}
