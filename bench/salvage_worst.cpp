// SPDX-License-Identifier: MIT
//
// salvage_worst CTTOOL [--quick] [CASE...]   what mending costs on files that were made to be hard,
// at
//                                            a size n and at 2n, as a table. Status 1 if one of
//                                            them does not grow linearly.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "measure.h"
#include "temporary_file.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

constexpr double most_growth = 2.4;
constexpr double least_seconds = 0.05;
constexpr std::uint64_t data_origin = 0x7F0000000000;
// Of bytes that are codes of values.
constexpr std::uint64_t add_data_origin = 0x0101010101010000;

enum Type : std::uint32_t { startup = 0, call = 2, returned = 4 };

// Appends little-endian numbers.
class Octets {
 public:
  template <class Number>
  Octets& add(Number value) {
    std::array<char, sizeof value> bytes = {};
    std::memcpy(bytes.data(), &value, sizeof value);
    text_.append(bytes.data(), bytes.size());
    return *this;
  }
  Octets& add(const std::string& text) {
    text_ += text;
    return *this;
  }
  Octets& header(Type type, std::uint32_t size) {
    return add(static_cast<std::uint32_t>(type) | size << 8);
  }
  [[nodiscard]] std::uint64_t size() const { return text_.size(); }
  std::string& text() { return text_; }

 private:
  std::string text_;
};

void put_big(std::string& to, std::uint64_t value, int size) {
  for (int each = size; each-- != 0;) to += static_cast<char>(value >> (8 * each));
}

// One byte more than the header promises, so that it is not whole.
std::string file_of(std::string data, const std::string& add_data) {
  std::string file("CT\1\0\0\0\0\1\0\0\0\1", 12);
  put_big(file, data.size(), 4);
  put_big(file, add_data.size(), 4);
  put_big(file, data_origin, 8);
  put_big(file, add_data_origin, 8);
  return file + data + add_data + "x";
}

std::string one_function() {
  Octets add_data;
  add_data.add(std::uint64_t{1}).add(add_data_origin + 32).add(std::uint64_t{0});
  return add_data.add(std::uint64_t{0}).add(std::string("f\0", 2)).text();
}

Octets begin() {
  Octets data;
  data.header(startup, 32).add(add_data_origin + 32);
  return data.add(std::uint64_t{0}).add(std::uint64_t{0}).add(std::uint64_t{0});
}

void add_call(Octets& data) { data.header(call, 12).add(add_data_origin).add(std::uint32_t{0}); }

void add_return(Octets& data, std::uint64_t place) {
  data.header(returned, 9).add(data_origin + place).add('\1');
}

// Each block begins like a call whose arguments go on through all that follow it.
std::string false_starts(std::size_t n) {
  constexpr std::uint32_t size = 0x030203;
  constexpr std::uint32_t block = 71;
  static_assert((size + 4) % block != 0);
  Octets data = begin();
  data.add(std::string(5, '\xFF'));
  while (data.size() < n) {
    data.header(call, size).add(add_data_origin).add(std::uint32_t{0x01010101});
    data.add('\6').add(std::uint32_t{block - 21}).add(std::string(block - 21, '\xFF'));
  }
  return file_of(data.text(), one_function());
}

std::string calls(std::size_t n) {
  Octets data = begin();
  while (data.size() < n) {
    const std::uint64_t place = data.size();
    add_call(data);
    add_return(data, place);
  }
  return data.text();
}

std::string holes(std::size_t n) {
  std::string data = calls(n);
  for (std::size_t at = 64; at + 8 < data.size(); at += 64) data.replace(at, 8, 8, '\0');
  return file_of(data, one_function());
}

std::string one_place(std::size_t n) {
  Octets data = begin();
  const std::uint64_t place = data.size();
  add_call(data);
  while (data.size() < n) {
    add_call(data);
    add_return(data, place);
  }
  return file_of(data.text(), one_function());
}

// As many begins as there is room for lie in a hole, and each has its end.
std::string lost_begins(std::size_t n) {
  Octets data = begin();
  const std::uint64_t first = data.size();
  data.add(std::string(n / 2, '\0'));
  for (std::uint64_t place = first + n / 2 - 16; data.size() < n && place > first; place -= 16) {
    add_return(data, place);
  }
  return file_of(data.text(), one_function());
}

// Each call has a function of its own that is nowhere.
std::string lost_names(std::size_t n) {
  Octets data = begin();
  for (std::uint64_t each = 1; data.size() < n; ++each) {
    data.header(call, 12).add(add_data_origin + each * 64).add(std::uint32_t{0});
  }
  return file_of(data.text(), one_function());
}

// Bytes that have moved, a little further each time.
std::string shifts(std::size_t n) {
  Octets data = begin();
  for (std::uint64_t shift = 0; data.size() < n; shift += 8) {
    for (int each = 0; each != 3; ++each) {
      const std::uint64_t place = data.size() + shift;
      add_call(data);
      add_return(data, place);
    }
  }
  return file_of(data.text(), one_function());
}

// Sizes that it tells are below those of the files.
std::string garbage(std::size_t n) {
  std::mt19937_64 random(1);
  Octets data = begin();
  while (data.size() < n) data.add(random() & 0x0F0F0F0F0F0F0F0F);
  return file_of(data.text(), one_function());
}

struct Case {
  const char* name;
  std::string (*make)(std::size_t n);
};

constexpr std::array cases = {
    Case{"false_starts", false_starts}, Case{"holes", holes},
    Case{"one_place", one_place},       Case{"lost_begins", lost_begins},
    Case{"lost_names", lost_names},     Case{"shifts", shifts},
    Case{"garbage", garbage},
};

class Table {
 public:
  Table(std::string cttool, bool quick) : cttool_(std::move(cttool)), quick_(quick) {}

  // Of a case that makes a file.
  template <class Make>
  void measure(const std::string& name, std::size_t n, Make&& make) {
    const double once = cost(make(n));
    const double twice = cost(make(2 * n));
    const bool is_good = twice <= least_seconds || twice <= most_growth * once;
    is_linear_ = is_linear_ && is_good;
    std::printf("%-24s %8.3f s %8.3f s  x %.2f  %s\n", name.c_str(), once, twice,
                twice / std::max(once, 0.001), is_good ? "" : "!! TIME");
    std::fflush(stdout);
  }
  [[nodiscard]] bool is_linear() const { return is_linear_; }
  [[nodiscard]] bool is_quick() const { return quick_; }

 private:
  // The fastest of some runs.
  double cost(const std::string& bytes) {
    std::ofstream(file_.path(), std::ios::binary) << bytes;
    double least = 0;
    for (int each = 0; each != (quick_ ? 2 : 4); ++each) {
      const Usage usage =
          run({cttool_, "salvage", file_.path().string(), "-o", out_.path().string()}, {});
      if (usage.status != 0 && usage.status != 1) {
        throw std::runtime_error("cttool salvage: " + usage.failure);
      }
      least = each == 0 ? usage.seconds : std::min(least, usage.seconds);
    }
    return least;
  }

  std::string cttool_;
  bool quick_;
  bool is_linear_ = true;
  TemporaryFile file_{"salvage_worst.ct"};
  TemporaryFile out_{"salvage_worst.out"};
};

// What is hard to read may be hard to mend.
std::string broken(const WorstCase& worst, std::size_t n) {
  Test::TraceBuilder trace;
  worst.write(n, trace);
  return std::string(trace.build()) + "x";
}

bool run_all(Table& table, const std::vector<std::string>& wanted) {
  const auto is_wanted = [&](std::string_view name) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
  };
  const std::size_t size = table.is_quick() ? std::size_t{4} << 20 : std::size_t{16} << 20;
  for (const Case& each : cases) {
    if (is_wanted(each.name)) table.measure(each.name, size, each.make);
  }
  for (const WorstCase& worst : worst_cases()) {
    if (!is_wanted(worst.name)) continue;
    table.measure(std::string(worst.name), worst.n / (table.is_quick() ? 4 : 1),
                  [&](std::size_t n) { return broken(worst, n); });
  }
  return table.is_linear();
}

}  // namespace
}  // namespace CT::Bench

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty()) {
    std::fprintf(stderr, "%s CTTOOL [--quick] [CASE...]\n", argv[0]);
    return 2;
  }
  const bool quick = words.size() > 1 && words[1] == "--quick";
  try {
    CT::Bench::Table table(words[0], quick);
    words.erase(words.begin(), words.begin() + (quick ? 2 : 1));
    return CT::Bench::run_all(table, words) ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
