// SPDX-License-Identifier: MIT
//
// Writes the seeds of every target into folders of these names: traces of the golden cases and of
// the examples, the values and texts in them, the command lines of the cases, and awkward
// inventions.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "awkward.h"
#include "case_file.h"
#include "codetrace/model/ct_records.h"
#include "rich_trace.h"
#include "support.h"
#include "trace_text.h"
#include "value_names.h"

namespace {

using namespace CT;
using Test::ByteOrder;
namespace fs = std::filesystem;

constexpr std::size_t largest_seed = std::size_t{40} * 1024;
constexpr std::size_t largest_value = 4096;

std::string read_file(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return bytes;
}

class Seeds {
 public:
  explicit Seeds(fs::path folder) : folder_(std::move(folder)) {}

  void add(const std::string& target, const std::string& bytes) {
    if (bytes.empty() || bytes.size() > largest_seed) return;
    fs::create_directories(folder_ / target);
    std::ofstream file(folder_ / target / ("seed" + std::to_string(count_++)), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write to " + folder_.string());
  }

  // For the targets that look at one value; see Fuzz::ValueInput.
  void add_value(bool big_endian, const std::string& payload, const std::string& add_data) {
    if (payload.size() > largest_value || add_data.size() > largest_value) return;
    std::string bytes(1, big_endian ? '\1' : '\0');
    bytes += static_cast<char>(add_data.size() & 0xFF);
    bytes += static_cast<char>(add_data.size() >> 8);
    add("value", bytes + payload + add_data);
    add("json", bytes + payload + add_data);
    add("text", payload);
  }

  // A trace with moves of a program; see Fuzz::ApiInput.
  void add_program(const std::string& trace) {
    if (trace.size() > largest_value) return;
    std::string moves;
    while (moves.size() != moves_of_program) moves += static_cast<char>(random_.below(256));
    add("api", static_cast<char>(moves_of_program) + std::string(1, '\0') + trace + moves);
  }

 private:
  static constexpr std::size_t moves_of_program = 120;

  fs::path folder_;
  std::size_t count_ = 0;
  Test::Awkward random_{2};
};

std::string text_of(const unsigned char* begin, std::size_t size) {
  return std::string(Fuzz::as_text(begin, size));
}

std::string section_of(const Section& section) { return text_of(section.data(), section.size()); }

// Where the values in a checkpoint's payload begin, or where its own fields do.
std::size_t values_at(const CheckpointView& view) {
  const std::size_t common = (view.has_timestamp() ? 12U : 0U) + (view.has_memory() ? 8U : 0U) +
                             (view.has_location() ? 12U : 0U);
  switch (static_cast<Checkpoint::Type>(view.type())) {
    case Checkpoint::Type::FUNCTION_CALL: return common + 12;
    case Checkpoint::Type::METHOD_CALL:
    case Checkpoint::Type::FUNCTION_RETURN:
    case Checkpoint::Type::FUNCTION_EXCEPTION:
    case Checkpoint::Type::INCLUDE_EXCEPTION: return common + 8;
    default: return common;
  }
}

void add_trace(Seeds& seeds, const std::string& bytes) {
  seeds.add("file", bytes);
  seeds.add("queries", bytes);
  seeds.add("exports", bytes);
  seeds.add("check", bytes);
  seeds.add("salvage", bytes);
  seeds.add_program(bytes);
  File file{QString()};
  const void* const begin = bytes.data();
  if (!file.open(static_cast<const unsigned char*>(begin), bytes.size())) return;
  seeds.add("text", section_of(file.add_data()).substr(0, largest_value));
  for (CheckpointView view(file); view.step();) {
    const std::size_t at = values_at(view);
    if (at >= view.size()) continue;
    seeds.add_value(file.big_endian(), text_of(view.payload() + at, view.size() - at),
                    section_of(file.add_data()));
  }
}

void add_case(Seeds& seeds, const fs::path& path) {
  const Test::CaseFile golden(read_file(path));
  if (golden.has("trace")) {
    for (const auto& trace : Test::build_traces(golden.content("trace"))) {
      add_trace(seeds, trace.bytes);
    }
  }
  std::string words;
  for (const std::string& word : Test::split_command(golden.content("command"))) {
    words += word + '\0';
  }
  seeds.add("cmdline", words);
}

// The first checkpoints of a trace, with the whole of its ADD DATA and a true header.
void add_beginning(Seeds& seeds, const fs::path& path, std::size_t checkpoints) {
  std::string bytes = read_file(path);
  File file{QString()};
  const void* const begin = bytes.data();
  if (!file.open(static_cast<const unsigned char*>(begin), bytes.size())) {
    throw std::runtime_error("no trace: " + path.string());
  }
  const std::size_t fixed = FileHeader::disk_size + file.add_data().size();
  CheckpointView view(file);
  std::size_t size = 0;
  for (; checkpoints != 0 && view.step(); --checkpoints) {
    const std::size_t end = view.offset() + Format::header_word_size + view.size();
    if (fixed + end > largest_seed) break;
    size = end;
  }
  constexpr std::size_t data_size_at = 12;
  for (std::size_t i = 0; i != 4; ++i) {
    bytes[data_size_at + i] = static_cast<char>(size >> (24 - 8 * i) & 0xFF);
  }
  seeds.add("file", bytes.substr(0, FileHeader::disk_size + size) + section_of(file.add_data()));
}

// Keys with long names, which are compared and written without being copied; some differ only at
// their ends, some are the same.
void add_long_names(Seeds& seeds, ByteOrder order) {
  namespace value = Test::value;
  Test::TraceBuilder trace(order);
  std::vector<value::Pair> pairs;
  for (const char* end : {"b", "a", "", "\xF0\x9F\x98\x80", "\xEE\x80\x80", "\xFF", "a"}) {
    const std::string name = "\xEF\xBB\xBF" + std::string(100, 'n') + end;
    const Test::Fields object = value::object(trace.klass({.name = name}), 1);
    const Test::Fields resource = value::resource(trace.new_text(name), 1);
    for (const Test::Fields& key : {object, resource, value::list({object, resource})}) {
      pairs.emplace_back(key, value::boolean(true));
    }
  }
  const Test::Fields map = value::map(pairs);
  trace.add(Test::CheckpointDraft::function_call(trace.function({.name = "f"}), {map}));
  add_trace(seeds, trace.build());
}

void add_sql(Seeds& seeds) {
  for (const char* query :
       {"select * from request", "select * from nodes where id between 2 and 9",
        "select name, count(*), sum(own_ns) from calls group by name order by 3 desc limit 5",
        "select c.id, a.depth from calls c, ancestors(c.id) a where c.name = 'run'",
        "select args ->> 0, plain(returned) from calls where args ->> 0 regexp '^[a-z]'",
        "select * from functions join classes using (name); select * from repeats",
        "with recursive t(x) as (values(1) union all select x+1 from t) select sum(x) from t",
        "select f.name, e.value from calls f, json_each(f.args) e where f.function in (0, 1)",
        "select distinct kind from nodes order by kind; select * from headers, sent, events",
        "select *, sum(own_ns) over (partition by name order by id) from calls",
        "explain query plan select * from writes where parent = 1 and id > 3", "attach 'x' as y",
        "vacuum into 'x'", "pragma journal_mode = wal",
        "create temp table t as select * from errors", "insert into sqlite_schema values (1)",
        "select load_extension('x')", "update sqlite_master set sql = ''"}) {
    seeds.add("sql", query);
  }
}

void add_inventions(Seeds& seeds) {
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) add_long_names(seeds, order);
  Test::Awkward random(1);
  for (std::size_t i = 0; i != 300; ++i) {
    const ByteOrder order = random.one_in(2) ? ByteOrder::big : ByteOrder::little;
    const Test::ValueNames names(order);
    File file{QString()};
    const std::string trace = names.trace.build();
    const void* const begin = trace.data();
    file.open(static_cast<const unsigned char*>(begin), trace.size());
    seeds.add_value(order == ByteOrder::big,
                    random.value(random.below(6), random.one_in(4), names).encode(order),
                    section_of(file.add_data()));
    seeds.add("text", random.bytes(8));
    seeds.add("text", random.bytes(3) + '\0' + random.bytes(3));
    seeds.add("text", Test::Fields().f64(random.real()).encode(ByteOrder::big));
  }
  for (const std::size_t depth : {2U, 100U, 600U}) {
    seeds.add_value(false, Test::value::nest(depth, Test::value::null()).encode(ByteOrder::little),
                    {});
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::fputs("usage: fuzz_make_seeds FOLDER\n", stderr);
    return 1;
  }
  Seeds seeds(argv[1]);
  const fs::path root(CODETRACE_ROOT);
  for (const auto& entry : fs::directory_iterator(root / "tests/cli")) {
    if (entry.path().extension() == ".case") add_case(seeds, entry.path());
  }
  for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
    add_trace(seeds, Test::rich_trace(order).build());
  }
  for (const auto& entry : fs::directory_iterator(root / "examples")) {
    if (entry.path().extension() != ".ct") continue;
    for (const std::size_t checkpoints : {20U, 400U}) {
      add_beginning(seeds, entry.path(), checkpoints);
    }
  }
  add_inventions(seeds);
  add_sql(seeds);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
