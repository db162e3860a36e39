// SPDX-License-Identifier: MIT
//
// cttool top: a profile as a table.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"
#include "ctexport/ct_csv_text.h"
#include "ctmeasure/ct_elapsed.h"
#include "ctmeasure/ct_grouping.h"
#include "ctmeasure/ct_profile.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_names.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class By { own, total, calls, memory };
enum class Form { text, json, csv };

struct Options {
  std::string file;
  By by = By::own;
  GroupBy of = GroupBy::function;
  Form form = Form::text;
  std::string under;
  std::string callers;  // pattern; empty: all calls count
  std::string callees;  // the same
  std::size_t limit = 20;
  bool builtin_only = false;
  bool user_only = false;
};

const Words<By> by_words = {
    {"own", By::own}, {"total", By::total}, {"calls", By::calls}, {"memory", By::memory}};
const Words<GroupBy> of_words = {
    {"function", GroupBy::function}, {"class", GroupBy::class_}, {"namespace", GroupBy::namespace_},
    {"folder", GroupBy::folder},     {"file", GroupBy::file},    {"line", GroupBy::line},
    {"caller", GroupBy::caller}};
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}, {"csv", Form::csv}};

struct Row {
  ProfileRow sums;
  const Group* group;
};

struct Result {
  std::vector<Row> rows;      // those that are shown
  std::vector<Row> left_out;  // those below the limit
  std::int64_t whole_ns = 0;  // what the nodes that were looked at took
};

std::int64_t measure_of(const ProfileRow& sums, By by) {
  switch (by) {
    case By::own: return sums.own_ns;
    case By::total: return sums.total_ns;
    case By::calls: return sums.calls;
    case By::memory: return sums.own_memory;
  }
  return 0;
}

// Requires: both are of parts of the tree that lie apart, so that times cannot overflow.
void add(ProfileRow& sums, const ProfileRow& more) {
  sums.calls += more.calls;
  sums.own_ns += more.own_ns;
  sums.total_ns += more.total_ns;
  sums.own_memory = wrapped_sum(sums.own_memory, more.own_memory);
}

// Greatest first; those that are alike by name, so that every run prints the same.
void sort(std::vector<Row>& rows, By by) {
  std::sort(rows.begin(), rows.end(), [by](const Row& a, const Row& b) {
    const std::int64_t of_a = measure_of(a.sums, by);
    const std::int64_t of_b = measure_of(b.sums, by);
    return of_a != of_b ? of_a > of_b : a.group->name < b.group->name;
  });
}

// Which calls count.
class Counted {
 public:
  Counted(const Options& options, const Trace& trace, const Measures& measures)
      : options_(options), trace_(trace), measures_(measures) {}

  // False, after it was said why, if a pattern is none.
  [[nodiscard]] bool find() {
    return callees_.find(trace_, {options_.callers}) && callers_.find(trace_, {options_.callees});
  }

  [[nodiscard]] bool has(NodeId id) const {
    const std::int32_t function = measures_[id].function;
    if (function < 0) return false;
    const bool is_user = trace_.functions()[static_cast<std::size_t>(function)].is_user();
    if (is_user ? options_.builtin_only : options_.user_only) return false;
    if (!options_.callers.empty() && !callees_.has(function)) return false;
    const NodeId caller = trace_.parent(id);
    return options_.callees.empty() ||
           (caller != Storage::no_node && callers_.has(measures_[caller].function));
  }

 private:
  const Options& options_;
  const Trace& trace_;
  const Measures& measures_;
  NamedFunctions callees_;
  NamedFunctions callers_;
};

Result profile_of(const Options& options, const Trace& trace, const Measures& measures,
                  const Scope& scope, const Counted& counted, Grouping& grouping) {
  const auto group = [&](NodeId id) { return counted.has(id) ? grouping.of(id) : no_group; };
  Result result;
  std::vector<ProfileRow> sums;
  for (const Scope::Range& range : scope.ranges()) {
    const auto part = profile(trace, measures, group, range.first, range.last);
    sums.resize(std::max(sums.size(), part.size()));
    for (std::size_t row = 0; row != part.size(); ++row) add(sums[row], part[row]);
    result.whole_ns += measures[range.first].total_ns;
  }
  for (std::size_t row = 0; row != sums.size(); ++row) {
    if (sums[row].calls != 0) result.rows.push_back({sums[row], &grouping.groups()[row]});
  }
  sort(result.rows, options.by);
  if (options.limit != 0 && result.rows.size() > options.limit) {
    const auto rest = result.rows.begin() + static_cast<std::ptrdiff_t>(options.limit);
    result.left_out.assign(rest, result.rows.end());
    result.rows.erase(rest, result.rows.end());
  }
  return result;
}

std::string place_of(const Group& group) {
  return group.file.empty() ? "" : group.file + ":" + std::to_string(group.line);
}

void write_text(const Result& result, const Options& options, Printer& printer) {
  using Align = TextTable::Align;
  const bool has_places = options.of == GroupBy::function || options.of == GroupBy::class_ ||
                          options.of == GroupBy::caller;
  std::vector<TextTable::Column> columns = {
      {"own ms", Align::right},   {"own %", Align::right},
      {"total ms", Align::right}, {"calls", Align::right},
      {"memory", Align::right},   {word_of(of_words, options.of), Align::left}};
  if (has_places) columns.push_back({"defined in", Align::left});
  TextTable table(columns);
  for (const Row& row : result.rows) {
    std::vector<std::string> cells = {
        as_ms(row.sums.own_ns),        as_percent(row.sums.own_ns, result.whole_ns),
        as_ms(row.sums.total_ns),      as_count(row.sums.calls),
        as_bytes(row.sums.own_memory), shown_text(row.group->name)};
    if (has_places) cells.push_back(shown_text(place_of(*row.group)));
    table.add(std::move(cells));
  }
  printer.put(table);
  if (result.left_out.empty()) return;
  ProfileRow rest;
  for (const Row& row : result.left_out) {
    rest.own_ns += row.sums.own_ns;
    rest.calls += row.sums.calls;
  }
  printer.out().put("\n\xE2\x80\xA6 " +
                    as_count(static_cast<std::int64_t>(result.left_out.size())) +
                    " more: " + as_ms(rest.own_ns) + " ms own, " + as_count(rest.calls) +
                    " calls; --limit 0 shows all\n");
}

void write_json(const Result& result, const Options& options, Writer& out) {
  JsonWriter json(out);
  json.begin_object();
  json.key("schema");
  json.word("cttool.top/1");
  json.key("trace");
  json.text(options.file);
  json.key("by");
  json.word(word_of(by_words, options.by));
  json.key("of");
  json.word(word_of(of_words, options.of));
  json.key("whole_ns");
  json.number(result.whole_ns);
  json.key("left_out");
  json.number(static_cast<std::int64_t>(result.left_out.size()));
  json.key("rows");
  json.begin_array();
  for (const Row& row : result.rows) {
    json.element();
    json.begin_object();
    json.key("name");
    json.text(row.group->name);
    json.key("own_ns");
    json.number(row.sums.own_ns);
    json.key("total_ns");
    json.number(row.sums.total_ns);
    json.key("calls");
    json.number(row.sums.calls);
    json.key("own_memory");
    json.number(row.sums.own_memory);
    json.key("builtin");
    json.boolean(row.group->is_builtin);
    json.key("file");
    row.group->file.empty() ? json.null() : json.text(row.group->file);
    json.key("line");
    row.group->file.empty() ? json.null() : json.number(std::int64_t{row.group->line});
    json.end_object();
  }
  json.end_array();
  json.end_object();
  out.put('\n');
}

void write_csv(const Result& result, Writer& out) {
  out.put("name,own_ns,total_ns,calls,own_memory,builtin,file,line\n");
  for (const Row& row : result.rows) {
    Export::put_csv(out, row.group->name);
    for (const std::int64_t figure :
         {row.sums.own_ns, row.sums.total_ns, row.sums.calls, row.sums.own_memory}) {
      out.put(',');
      put_signed(out, figure);
    }
    row.group->is_builtin ? out.put(",1,") : out.put(",0,");
    Export::put_csv(out, row.group->file);
    out.put(',');
    if (!row.group->file.empty()) put_unsigned(out, row.group->line);
    out.put('\n');
  }
}

int run(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Measures measures(input.trace());
  Scope scope;
  if (!scope.find(input.trace(), measures, options.under)) return nothing_found;
  Counted counted(options, input.trace(), measures);
  if (!counted.find()) return failed;
  Grouping grouping(input.trace(), measures, options.of);
  const Result result = profile_of(options, input.trace(), measures, scope, counted, grouping);
  Printer printer(session);
  switch (options.form) {
    case Form::text: write_text(result, options, printer); break;
    case Form::json: write_json(result, options, printer.out()); break;
    case Form::csv: write_csv(result, printer.out()); break;
  }
  const int status = printer.finish(result.rows.empty() ? nothing_found : done);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_top(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  add_choice(command, "--by", options->by, by_words, "Sort by this.");
  add_choice(command, "--of", options->of, of_words, "A row for each of these.");
  auto* callers = command
                      .add_option_function<std::string>(
                          "--callers",
                          [options](const std::string& pattern) {
                            options->callers = pattern;
                            options->of = GroupBy::caller;
                          },
                          "Who called these functions: --of caller, of their calls.")
                      ->option_text("PATTERN")
                      ->excludes("--of");
  command.add_option("--callees", options->callees, "What these functions called themselves.")
      ->option_text("PATTERN")
      ->excludes(callers);
  command.add_option("--under", options->under, "Only what lies under such calls, or a node.")
      ->option_text("PATTERN|ID");
  command.add_option("--limit", options->limit, "Rows at most; 0 for all. (20)")->option_text("N");
  auto* builtin = command.add_flag("--builtin", options->builtin_only, "PHP's own functions only.");
  command.add_flag("--user", options->user_only, "Functions of scripts only.")->excludes(builtin);
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
