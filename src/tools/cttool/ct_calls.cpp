// SPDX-License-Identifier: MIT
//
// cttool calls: those that match, one a line.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "codetrace/render/ct_number.h"
#include "tools/cttool/ct_call_filter.h"
#include "tools/cttool/ct_call_printer.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_names.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_sql_condition.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

using Form = CallForm;
const Words<Form> form_words = {
    {"text", Form::text}, {"json", Form::json}, {"jsonl", Form::jsonl}, {"csv", Form::csv}};

enum class Order { start, total, own, memory };
const Words<Order> order_words = {{"start", Order::start},
                                  {"total", Order::total},
                                  {"own", Order::own},
                                  {"memory", Order::memory}};

struct Options {
  std::string file;
  CallConditions conditions;
  std::string under;
  std::string where;
  std::size_t limit = 0;
  CallFormat format;
  Order order = Order::start;
  bool count = false;
};

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

// The calls that match, in the order that is asked for.
std::vector<NodeId> sorted(std::vector<NodeId> found, const Measures& measures, Order order) {
  const auto figure = [&](NodeId id) {
    return order == Order::total ? measures[id].total_ns
           : order == Order::own ? measures.own(id).ns
                                 : measures.own(id).memory;
  };
  std::stable_sort(found.begin(), found.end(),
                   [&](NodeId a, NodeId b) { return figure(a) > figure(b); });
  return found;
}

// Why there is nothing, as far as that can be told.
void say_nothing(const Options& options, const Trace& trace, const CallFilter& filter) {
  for (const std::string& pattern : options.conditions.patterns) {
    NamedFunctions named;
    if (named.find(trace, {pattern}) && named.is_empty()) say_none(trace, pattern);
  }
  filter.say_other_classes();
}

class Search {
 public:
  Search(const Options& options, const Measures& measures, CallPrinter& calls, Printer& printer)
      : options_(options), measures_(measures), calls_(calls), printer_(printer) {}

  // How many there are.
  std::size_t run(const Scope& scope, CallFilter& filter, const SqlCondition& where) {
    std::vector<NodeId> kept;
    for_each_call(scope, filter, where, [&](NodeId id) {
      if (options_.count) {
        ++found_;
      } else if (options_.order != Order::start) {
        kept.push_back(id);
      } else {
        put(id);
      }
      return printer_.ok();
    });
    for (const NodeId id : sorted(std::move(kept), measures_, options_.order)) put(id);
    finish();
    return found_;
  }

 private:
  void put(NodeId id) {
    if (found_++ == 0) calls_.begin();
    if (options_.limit == 0 || found_ <= options_.limit) calls_.print(id);
  }
  void finish();

  const Options& options_;
  const Measures& measures_;
  CallPrinter& calls_;
  Printer& printer_;
  std::size_t found_ = 0;
};

void Search::finish() {
  Writer& out = printer_.out();
  if (options_.count) {
    put_unsigned(out, found_);
    return out.put('\n');
  }
  if (found_ == 0 && options_.format.form == Form::json) calls_.begin();
  if (found_ != 0 || options_.format.form == Form::json) calls_.end();
  if (options_.limit == 0 || found_ <= options_.limit || options_.format.form != Form::text) return;
  const auto left_out = static_cast<std::int64_t>(found_ - options_.limit);
  out.put("\n\xE2\x80\xA6 " + as_count(left_out) + " more; --limit 0 shows all\n");
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
  CallPrinter calls(options.format, options.file, input.trace(), measures, printer);
  const std::size_t found = Search(options, measures, calls, printer).run(scope, filter, where);
  const int status = printer.finish(found != 0 ? done : nothing_found);
  if (found == 0) say_nothing(options, input.trace(), filter);
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
          [&conditions, &messages = options->format.messages](const std::string& name) {
            conditions.threw = true;
            messages = true;
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
  command.add_flag("--path", options->format.path, "Print the way down to each.");
  command.add_flag("--count", options->count, "Print only how many there are.");
  add_choice(command, "--by", options->order, order_words, "The most of it first.");
  add_count(command, "--limit", options->limit, "Calls at most; 0 for all. (0)");
  add_choice(command, "--format", options->format.form, form_words, "Print them so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
