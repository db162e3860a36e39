// SPDX-License-Identifier: MIT
//
// cttool calls: those that match, one a line.
#include <CLI/CLI.hpp>
#include <memory>

#include "codetrace/render/ct_number.h"
#include "ctexport/ct_csv_text.h"
#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_call_filter.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_node_json.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_sql_condition.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json, jsonl, csv };
const Words<Form> form_words = {
    {"text", Form::text}, {"json", Form::json}, {"jsonl", Form::jsonl}, {"csv", Form::csv}};

struct Options {
  std::string file;
  CallConditions conditions;
  std::string under;
  std::string where;
  std::size_t limit = 0;
  Form form = Form::text;
  bool path = false;
  bool count = false;
};

// Prints calls in one of the forms.
class CallPrinter {
 public:
  CallPrinter(const Options& options, const Trace& trace, const Measures& measures,
              Printer& printer)
      : options_(options),
        measures_(measures),
        out_(printer.out()),
        width_(printer.width()),
        lines_(trace, measures),
        nodes_(trace, measures),
        json_(printer.out(),
              options.form == Form::json ? JsonWriter::Form::indented : JsonWriter::Form::compact),
        trace_(trace) {}

  void begin();
  void print(NodeId id);
  void end();

 private:
  void print_text(NodeId id);
  void print_json(NodeId id);
  void print_csv(NodeId id);

  const Options& options_;
  const Measures& measures_;
  Writer& out_;
  std::size_t width_;
  NodeLines lines_;
  NodeJson nodes_;
  JsonWriter json_;
  const Trace& trace_;
};

void CallPrinter::begin() {
  switch (options_.form) {
    case Form::text: out_.put("      id    start ms    total ms  place  call\n"); break;
    case Form::json:
      json_.begin_object();
      json_.key("schema");
      json_.word("cttool.calls/1");
      json_.key("trace");
      json_.text(options_.file);
      json_.key("calls");
      json_.begin_array();
      break;
    case Form::jsonl: break;
    case Form::csv:
      out_.put(
          "id,parent,depth,name,start_ns,total_ns,own_ns,file,line,outcome,this,args,"
          "returned,thrown\n");
  }
}

void CallPrinter::print(NodeId id) {
  switch (options_.form) {
    case Form::text: print_text(id); break;
    case Form::json:
      json_.element();
      print_json(id);
      break;
    case Form::jsonl:
      print_json(id);
      out_.put('\n');
      break;
    case Form::csv: print_csv(id); break;
  }
}

void CallPrinter::end() {
  if (options_.form != Form::json) return;
  json_.end_array();
  json_.end_object();
  out_.put('\n');
}

void CallPrinter::print_text(NodeId id) {
  if (options_.path) {
    std::string way;
    for (const NodeId above : lines_.way_to(id)) way += lines_.label(above) + " > ";
    out_.put(fitted(way, width_) + "\n");
  }
  const Measure& measure = measures_[id];
  const auto right = [&](const std::string& text, std::size_t columns) {
    return text.size() < columns ? std::string(columns - text.size(), ' ') + text : text;
  };
  const std::string place = lines_.place(id);
  out_.put(fitted(right(std::to_string(id), 8) + right(as_ms(measure.start_ns), 12) +
                      right(as_ms(measure.total_ns), 12) + "  " + (place.empty() ? "-" : place) +
                      "  " + lines_.line(id),
                  width_));
  out_.put('\n');
}

void CallPrinter::print_json(NodeId id) {
  json_.begin_object();
  nodes_.write_measures(id, json_);
  nodes_.write_values(id, json_);
  if (options_.path) {
    json_.key("path");
    json_.begin_array();
    for (const NodeId above : lines_.way_to(id)) {
      json_.element();
      json_.number(std::int64_t{above});
    }
    json_.end_array();
  }
  json_.end_object();
}

void CallPrinter::print_csv(NodeId id) {
  const Measure& measure = measures_[id];
  const Node::Base node = trace_.node(id);
  const auto put_json = [&](const auto& write) {
    out_.put(',');
    MemoryWriter text;
    JsonWriter json(text, JsonWriter::Form::compact);
    write(json);
    if (text.view() != "null") Export::put_csv(out_, text.view());
  };
  put_signed(out_, id);
  out_.put(',');
  put_signed(out_, trace_.parent(id));
  out_.put(',');
  put_unsigned(out_, trace_.depth(id));
  out_.put(',');
  Export::put_csv(out_, name_of(trace_.functions()[static_cast<std::size_t>(measure.function)]));
  for (const std::int64_t figure : {measure.start_ns, measure.total_ns, measure.own_ns}) {
    out_.put(',');
    put_signed(out_, figure);
  }
  out_.put(',');
  Export::put_csv(out_, node.begin().filename().view());
  out_.put(',');
  if (node.begin().has_location()) put_unsigned(out_, node.begin().line_no());
  out_.put(',');
  out_.put(outcome_of(node));
  put_json([&](JsonWriter& json) { nodes_.write_this(node, json); });
  put_json([&](JsonWriter& json) { nodes_.write_args(node, json); });
  put_json([&](JsonWriter& json) { nodes_.write_result(node, false, json); });
  put_json([&](JsonWriter& json) { nodes_.write_result(node, true, json); });
  out_.put('\n');
}

// Calls `take` with each call that matches, until it returns false.
template <class Take>
void for_each_call(const Scope& scope, CallFilter& filter, const SqlCondition& where,
                   const Take& take) {
  for (const Scope::Range& range : scope.ranges()) {
    for (NodeId id = range.first; id <= range.last; ++id) {
      if (where.takes(id) && filter.takes(id) && !take(id)) return;
    }
  }
}

int run(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Measures measures(input.trace());
  CallFilter filter(input.trace(), measures);
  if (!filter.set(options.conditions)) return failed;
  SqlCondition where;
  if (!where.find(input.trace(), measures, options.where)) return failed;
  Scope scope;
  if (!scope.find(input.trace(), measures, options.under)) return nothing_found;
  Printer printer(session);
  CallPrinter calls(options, input.trace(), measures, printer);
  std::size_t found = 0;
  std::size_t left_out = 0;
  for_each_call(scope, filter, where, [&](NodeId id) {
    if (options.limit != 0 && found == options.limit && !options.count) {
      ++left_out;
      return true;
    }
    if (found++ == 0 && !options.count) calls.begin();
    if (!options.count) calls.print(id);
    return printer.ok();
  });
  if (options.count) {
    put_unsigned(printer.out(), found);
    printer.out().put('\n');
  } else {
    if (found == 0 && options.form == Form::json) calls.begin();
    if (found != 0 || options.form == Form::json) calls.end();
  }
  if (left_out != 0 && options.form == Form::text) {
    printer.out().put("\n\xE2\x80\xA6 " + as_count(static_cast<std::int64_t>(left_out)) +
                      " more; --limit 0 shows all\n");
  }
  const int status = printer.finish(found != 0 ? done : nothing_found);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_calls(CLI::App& command) {
  auto options = std::make_shared<Options>();
  CallConditions& conditions = options->conditions;
  add_file(command, options->file);
  command.add_option("PATTERN", conditions.patterns,
                     "Names of functions, such as Note::* or /^str_/.");
  command.add_option("--arg", conditions.arguments, "An argument has this text, or the Nth one.")
      ->option_text("TEXT|N=TEXT")
      ->expected(1)
      ->take_all();
  command.add_option("--returned", conditions.returned, "The result has this text.")
      ->option_text("TEXT");
  command
      .add_option_function<std::string>(
          "--threw",
          [&conditions](const std::string& name) {
            conditions.threw = true;
            conditions.thrown_class = name == "*" ? "" : name;
          },
          "It threw an exception, of this class.")
      ->option_text("[CLASS]")
      ->expected(0, 1)
      ->default_str("*");
  command.add_flag("--open", conditions.open, "It never ended.");
  command.add_option("--min", conditions.least, "It took at least as long.")->option_text("TIME");
  command.add_option("--under", options->under, "Only what lies under such calls, or a node.")
      ->option_text("PATTERN|ID");
  command.add_option("--file", conditions.file, "It was made from such a file.")
      ->option_text("GLOB");
  command.add_option("--where", options->where, "This is true of it (see cttool help sql).")
      ->option_text("SQL");
  command.add_flag("--path", options->path, "Print the way down to each.");
  command.add_flag("--count", options->count, "Print only how many there are.");
  command.add_option("--limit", options->limit, "Calls at most; 0 for all. (0)")->option_text("N");
  add_choice(command, "--format", options->form, form_words, "Print them so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
