// SPDX-License-Identifier: MIT
//
// cttool top: a profile as a table.
#include <CLI/CLI.hpp>
#include <array>
#include <memory>
#include <utility>

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_number.h"
#include "ctexport/ct_csv_text.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_closure.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_top_profile.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json, csv };

struct Options {
  std::string file;
  std::string under;
  TopChoice choice;
  Form form = Form::text;
};

const Words<TopBy> by_words = {{"own", TopBy::own},
                               {"total", TopBy::total},
                               {"calls", TopBy::calls},
                               {"memory", TopBy::memory}};
const Words<GroupBy> of_words = {
    {"function", GroupBy::function}, {"class", GroupBy::class_}, {"namespace", GroupBy::namespace_},
    {"folder", GroupBy::folder},     {"file", GroupBy::file},    {"line", GroupBy::line},
    {"caller", GroupBy::caller}};
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}, {"csv", Form::csv}};

std::string place_of(const Group& group) {
  if (group.file.empty() || group.line == 0) return group.file;
  return group.file + ":" + std::to_string(group.line);
}

std::string shown_name(const Group& group) {
  const std::string place = closure_place(group.name, group.file, group.line);
  if (place.empty()) return shown_text(group.name);
  return shown_text(closure_name(group.name).append(" ").append(place));
}

// Own time that is in no row, in lines of that width; none if there is none.
std::string elsewhere_of(const TopResult& result, std::size_t width) {
  const std::array parts = {std::pair("includes", result.includes_ns),
                            std::pair("output", result.output_ns),
                            std::pair("the request itself", result.request_ns),
                            std::pair("other calls", result.other_calls_ns)};
  std::string lines;
  std::string line = result.other_calls_ns == 0 ? "Not in calls:" : "Not in these calls:";
  const std::size_t title = line.size();
  for (const auto& [what, own_ns] : parts) {
    if (own_ns == 0) continue;
    const std::string part = std::string(" ").append(what).append(" ").append(as_ms(own_ns));
    constexpr std::size_t unit = 4;  // " ms,"
    if (line.size() != title || !lines.empty()) line += ",";
    if (width != 0 && line.size() + part.size() + unit > width) {
      lines.append(line).append("\n");
      line = " ";
    }
    line.append(part).append(" ms");
  }
  return line.size() == title && lines.empty() ? lines : lines.append(line).append("\n");
}

// What the rows do not say: with it they add up to the whole, unless only some functions matter.
void write_rest(const TopResult& result, const TopChoice& choice, Printer& printer) {
  std::string lines;
  if (!result.left_out.empty()) {
    ProfileRow rest;
    for (const TopRow& row : result.left_out) {
      rest.own_ns += row.sums.own_ns;
      rest.calls += row.sums.calls;
    }
    lines += "\xE2\x80\xA6 " + as_count(static_cast<std::int64_t>(result.left_out.size()));
    lines += " more: " + as_ms(rest.own_ns) + " ms own, " + as_count(rest.calls);
    lines += " calls; --limit 0 shows all\n";
  }
  const bool is_of_some = !choice.callers.empty() || !choice.callees.empty();
  if (!is_of_some) lines += elsewhere_of(result, printer.width());
  if (!lines.empty()) printer.out().put("\n" + lines);
}

void write_text(const TopResult& result, const Options& options, Printer& printer) {
  using Align = TextTable::Align;
  const bool has_places = options.choice.of == GroupBy::function ||
                          options.choice.of == GroupBy::class_ ||
                          options.choice.of == GroupBy::caller;
  std::vector<TextTable::Column> columns = {
      {"own ms", Align::right},     {"own %", Align::right},
      {"total ms", Align::right},   {"calls", Align::right},
      {"own memory", Align::right}, {word_of(of_words, options.choice.of), Align::left}};
  if (has_places) columns.push_back({"defined in", Align::left});
  TextTable table(columns);
  for (const TopRow& row : result.rows) {
    std::vector<std::string> cells = {
        as_ms(row.sums.own_ns),        as_percent(row.sums.own_ns, result.whole_ns),
        as_ms(row.sums.total_ns),      as_count(row.sums.calls),
        as_bytes(row.sums.own_memory), shown_name(*row.group)};
    if (has_places) cells.push_back(shown_text(place_of(*row.group)));
    table.add(std::move(cells));
  }
  printer.put(table);
  write_rest(result, options.choice, printer);
}

void write_elsewhere(const TopResult& result, JsonWriter& json) {
  json.key("elsewhere");
  json.begin_object();
  const auto put = [&](const char* key, std::int64_t own_ns) {
    json.key(key);
    json.number(own_ns);
  };
  put("includes_ns", result.includes_ns);
  put("output_ns", result.output_ns);
  put("request_ns", result.request_ns);
  put("other_calls_ns", result.other_calls_ns);
  json.end_object();
}

void write_json(const TopResult& result, const Options& options, Writer& out) {
  JsonWriter json(out);
  json.begin_object();
  json.key("schema");
  json.word("cttool.top/1");
  json.key("trace");
  json.text(options.file);
  json.key("by");
  json.word(word_of(by_words, options.choice.by));
  json.key("of");
  json.word(word_of(of_words, options.choice.of));
  json.key("whole_ns");
  json.number(result.whole_ns);
  json.key("left_out");
  json.number(static_cast<std::int64_t>(result.left_out.size()));
  write_elsewhere(result, json);
  json.key("rows");
  json.begin_array();
  for (const TopRow& row : result.rows) {
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

void write_csv(const TopResult& result, Writer& out) {
  out.put("name,own_ns,total_ns,calls,own_memory,builtin,file,line\n");
  for (const TopRow& row : result.rows) {
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
  TopProfile profile(options.choice, input.trace(), measures);
  if (!profile.find()) return failed;
  const TopResult result = profile.of(scope);
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
  add_choice(command, "--by", options->choice.by, by_words, "Sort by this.");
  add_choice(command, "--of", options->choice.of, of_words, "A row for each of these.");
  auto* callers = command
                      .add_option_function<std::string>(
                          "--callers",
                          [options](const std::string& pattern) {
                            options->choice.callers = pattern;
                            options->choice.of = GroupBy::caller;
                          },
                          "Who called these: --of caller, of their calls.")
                      ->option_text("PATTERN")
                      ->excludes("--of");
  command
      .add_option("--callees", options->choice.callees, "What these functions called themselves.")
      ->option_text("PATTERN")
      ->excludes(callers);
  command.add_option("--under", options->under, "Only what lies under such calls, or a node.")
      ->option_text("PATTERN|ID");
  command.add_option("--limit", options->choice.limit, "Rows at most; 0 for all. (20)")
      ->option_text("N");
  auto* builtin =
      command.add_flag("--builtin", options->choice.builtin_only, "PHP's own functions only.");
  command.add_flag("--user", options->choice.user_only, "Functions of scripts only.")
      ->excludes(builtin);
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
