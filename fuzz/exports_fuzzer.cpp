// SPDX-License-Identifier: MIT
//
// A whole trace through every export and into a report: each is well-formed, nests and adds up,
// whatever the trace says, with all nodes and with a part of them.
#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <new>
#include <string>
#include <vector>

#include "ctexport/ct_export_formats.h"
#include "ctmeasure/ct_elapsed.h"
#include "report_check.h"
#include "support.h"
#include "tools/cttool/ct_json_check.h"

namespace {

using namespace CT;
using Export::Options;
using Export::Source;

// Takes everything, up to a limit.
class TextSink final : public Sink {
 public:
  bool write(std::string_view bytes) override {
    constexpr std::size_t most = std::size_t{4} << 20;
    text_ += bytes;
    return text_.size() <= most;
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// What a format makes of it; nothing if that is too much.
std::string written(const char* name, const Source& source, const Options& options) {
  TextSink sink;
  StreamWriter out(sink);
  Export::find_format(name)->write(source, options, out);
  return out.flush() ? sink.text() : std::string();
}

// The lines without their ends; every one has an end.
std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    Fuzz::expect(end != std::string_view::npos, "the last line has an end");
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

// The digits behind a word; they are there.
std::int64_t number_behind(std::string_view line, std::string_view word) {
  const std::size_t at = line.find(word);
  Fuzz::expect(at != std::string_view::npos, "a number has its name");
  std::int64_t number = -1;
  const char* const begin = line.data() + at + word.size();
  const auto read = std::from_chars(begin, line.data() + line.size(), number);
  Fuzz::expect(read.ec == std::errc() && number >= 0, "a number is one");
  return number;
}

void check_json(const char* what, const std::string& text) {
  if (!text.empty()) Fuzz::expect(Tool::is_json(text), what);
}

void check_speedscope(const Source& source) {
  const std::string text = written("speedscope", source, {});
  check_json("speedscope is JSON", text);
  std::vector<std::int64_t> open;
  std::int64_t latest = 0;
  for (const std::string_view line : lines_of(text)) {
    const bool begins = line.starts_with("{\"type\":\"O\"");
    if (!begins && !line.starts_with("{\"type\":\"C\"")) {
      Fuzz::expect(open.empty(), "a profile ends with nothing open");
      latest = 0;
      continue;
    }
    const std::int64_t frame = number_behind(line, "\"frame\":");
    const std::int64_t at = number_behind(line, "\"at\":");
    Fuzz::expect(at >= latest, "times never go back");
    latest = at;
    if (begins) {
      open.push_back(frame);
    } else {
      Fuzz::expect(!open.empty() && open.back() == frame, "what is open ends");
      open.pop_back();
    }
  }
}

void check_chrome(const Source& source, Export::Values values) {
  Options options;
  options.values = values;
  const std::string text = written("chrome", source, options);
  check_json("trace events are JSON", text);
  std::size_t open = 0;
  for (const std::string_view line : lines_of(text)) {
    if (line.starts_with("{\"ph\":\"B\"")) ++open;
    if (!line.starts_with("{\"ph\":\"E\"")) continue;
    Fuzz::expect(open != 0, "what ends has begun");
    --open;
  }
  Fuzz::expect(open == 0, "what began ends");
}

void check_jsonl(const Source& source, Export::Values values) {
  Options options;
  options.values = values;
  const std::string text = written("jsonl", source, options);
  for (const std::string_view line : lines_of(text)) {
    Fuzz::expect(Tool::is_json(line) && line.starts_with('{'), "each line is an object");
  }
}

// All that was spent is in some stack.
void check_folded(const Source& source, std::int64_t total) {
  const std::string text = written("folded", source, {});
  if (text.empty()) return;
  std::int64_t sum = 0;
  for (const std::string_view line : lines_of(text)) {
    const std::size_t blank = line.rfind(' ');
    Fuzz::expect(blank != std::string_view::npos && blank != 0, "a line has a stack");
    sum = bounded_sum(sum, number_behind(line.substr(blank), " "));
  }
  Fuzz::expect(sum == total, "the weights are the whole");
}

void check_callgrind(const Source& source, std::int64_t total) {
  const std::string text = written("callgrind", source, {});
  if (text.empty()) return;
  std::int64_t own = 0;
  bool is_call = false;
  for (const std::string_view line : lines_of(text)) {
    if (line.starts_with("summary:")) {
      Fuzz::expect(number_behind(line, "summary: ") == total, "the summary is the whole");
    }
    const bool is_cost = !line.empty() && line[0] >= '0' && line[0] <= '9';
    if (is_cost && !is_call) own = bounded_sum(own, number_behind(line, " "));
    is_call = line.starts_with("calls=");
  }
  Fuzz::expect(own == total, "own costs are the whole");
}

void check_csv(const Source& source) {
  for (const char* table : {"calls", "nodes", "writes", "errors", "functions", "request"}) {
    Options options;
    options.table = table;
    const std::string text = written("csv", source, options);
    const auto quotes = std::count(text.begin(), text.end(), '"');
    Fuzz::expect(quotes % 2 == 0, "quotes close");
  }
}

void check_sqlite(const Source& source) {
  static const std::string path =
      std::filesystem::temp_directory_path() / (std::to_string(getpid()) + ".fuzz.sqlite");
  unlink(path.c_str());
  const std::string error = Export::find_format("sqlite")->write_file(source, {}, path);
  Fuzz::expect_equal("a database", error, "");
  sqlite3* database = nullptr;
  Fuzz::expect(sqlite3_open(path.c_str(), &database) == SQLITE_OK, "it opens");
  const auto first_is_ok = [](void*, int, char** values, char**) {
    Fuzz::expect_equal("integrity_check", values[0] != nullptr ? values[0] : "", "ok");
    return 0;
  };
  Fuzz::expect(
      sqlite3_exec(database, "pragma integrity_check", first_is_ok, nullptr, nullptr) == SQLITE_OK,
      "it is whole");
  sqlite3_close(database);
  unlink(path.c_str());
}

void check_all(const Source& source, std::int64_t total) {
  check_speedscope(source);
  for (const auto values : {Export::Values::none, Export::Values::brief, Export::Values::full}) {
    check_chrome(source, values);
    check_jsonl(source, values);
  }
  check_folded(source, total);
  check_callgrind(source, total);
  check_csv(source);
  Fuzz::check_report(source);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Trace trace;
  if (!trace.open(data, size)) return 0;
  const Measures measures(trace);
  const std::int64_t total = trace.node_count() != 0 ? measures[0].total_ns : 0;
  NodeSet chosen(trace.node_count(), true);
  const Source source = {trace, measures, chosen, "fuzz"};
  check_all(source, total);
  check_sqlite(source);
  // The request and every third node under it.
  for (NodeId id = 1; id < trace.node_count(); ++id) {
    if (id % 3 != 0) chosen.remove(id);
  }
  check_all(source, total);
  return 0;
}
