// SPDX-License-Identifier: MIT
//
// cttool tree: what called what, folded, and cut down to what matters.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "codetrace/render/ct_number.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_least_time.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_tree_choice.h"
#include "tools/cttool/ct_tree_filters.h"
#include "tools/cttool/ct_tree_json.h"
#include "tools/cttool/ct_tree_text.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json };
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}};
const Words<ValueForm> value_words = {
    {"none", ValueForm::none}, {"short", ValueForm::brief}, {"full", ValueForm::full}};
const Words<FoldBy> fold_words = {
    {"runs", FoldBy::runs}, {"all", FoldBy::all}, {"none", FoldBy::none}};

constexpr std::size_t usual_limit = 200;

// The names of those that are so.
std::string listed(std::initializer_list<std::pair<const char*, bool>> options) {
  std::string list;
  for (const auto& [name, is_given] : options) {
    if (!is_given) continue;
    if (!list.empty()) list += ", ";
    list += name;
  }
  return list;
}

struct Options {
  std::string file;
  TreeFilters filters;
  std::optional<std::size_t> limit;
  FoldBy fold = FoldBy::runs;
  ValueForm values = ValueForm::brief;
  Form form = Form::text;
  bool full = false;

  // Whoever says which lines to print gets all of them; so do programs.
  [[nodiscard]] std::size_t lines_at_most() const {
    const bool asks =
        filters.depth || !filters.least.empty() || !filters.nodes.only.empty() || full;
    return limit.value_or(asks || form == Form::json ? 0 : usual_limit);
  }
  // The options that were given of those that leave lines out, and of those that hide nodes.
  [[nodiscard]] std::string cutting_filters() const {
    return listed({{"--depth", filters.depth.has_value()}, {"--min", !filters.least.empty()}});
  }
  [[nodiscard]] std::string hiding_filters() const {
    return listed({{"--hide", !filters.nodes.hidden.empty()},
                   {"--only", !filters.nodes.only.empty()},
                   {"--no-builtin", filters.nodes.no_builtin}});
  }
};

// What is looked at comes to so much.
struct Whole {
  std::int64_t total_ns = 0;
  std::int64_t nodes = 0;
  std::int64_t hidden = 0;         // others, that filters took out
  std::int64_t hidden_own_ns = 0;  // which took so much by themselves
};

Whole whole_of(const Measures& measures, const Scope& scope, const NodeSet& visible) {
  Whole whole;
  for (const Scope::Range& range : scope.ranges()) {
    whole.total_ns += measures[range.first].total_ns;
    for (NodeId id = range.first; id <= range.last; ++id) {
      const bool is_visible = visible.has(id);
      whole.nodes += is_visible ? 1 : 0;
      whole.hidden += is_visible ? 0 : 1;
      whole.hidden_own_ns += is_visible ? 0 : measures.own(id).ns;
    }
  }
  return whole;
}

class TreePrinter {
 public:
  TreePrinter(const Options& options, const Input& input, const Measures& measures,
              const Scope& scope, const Whole& whole, Folder& folder, std::int64_t least_ns)
      : options_(options),
        trace_(input.trace()),
        measures_(measures),
        scope_(scope),
        whole_(whole),
        folder_(folder),
        least_ns_(least_ns) {}

  void print(Printer& printer) {
    const std::size_t limit = options_.lines_at_most();
    TakesFold takes = [this](const Fold& fold, std::uint32_t depth) {
      return (!options_.filters.depth || depth <= *options_.filters.depth) &&
             (least_ns_ == 0 || folder_.sums(fold).total_ns >= least_ns_);
    };
    if (limit != 0 && static_cast<std::int64_t>(limit) < whole_.nodes) {
      chosen_ = choose_lines(trace_, measures_, folder_, scope_, takes, limit);
      takes = [this](const Fold& fold, std::uint32_t) {
        return std::binary_search(chosen_.begin(), chosen_.end(), fold.first);
      };
    }
    options_.form == Form::json ? print_json(takes, printer.out()) : print_text(takes, printer);
  }

 private:
  void print_text(const TakesFold& takes, Printer& printer);
  void print_json(const TakesFold& takes, Writer& out);

  const Options& options_;
  const Trace& trace_;
  const Measures& measures_;
  const Scope& scope_;
  const Whole& whole_;
  Folder& folder_;
  std::int64_t least_ns_;
  std::vector<NodeId> chosen_;
};

void TreePrinter::print_text(const TakesFold& takes, Printer& printer) {
  Writer& out = printer.out();
  TreeText text(trace_, measures_, folder_, out, options_.values,
                options_.full ? 0 : printer.width());
  text.put_title();
  text.put_cut(walk_tree(folder_, scope_, takes, text));
  const std::int64_t left_out = whole_.nodes - text.nodes();
  if (left_out == 0 && whole_.hidden == 0) return;
  out.put('\n');
  if (left_out != 0) {
    out.put("\xE2\x80\xA6 " + as_count(left_out) + " of " + as_count(whole_.nodes) +
            " nodes have no line");
    const std::string filters = options_.cutting_filters();
    if (!filters.empty()) out.put(", as " + filters + " said");
    out.put(chosen_.empty() ? "\n" : "; --limit 0 shows all\n");
  }
  if (whole_.hidden == 0) return;
  out.put("\xE2\x80\xA6 " + as_count(whole_.hidden) + " nodes are hidden, as " +
          options_.hiding_filters() + " said; by themselves they took " +
          as_ms(whole_.hidden_own_ns) + " ms\n");
}

void TreePrinter::print_json(const TakesFold& takes, Writer& out) {
  JsonWriter json(out);
  json.begin_object();
  json.key("schema");
  json.word("cttool.tree/1");
  json.key("trace");
  json.text(options_.file);
  json.key("total_ns");
  json.number(whole_.total_ns);
  json.key("nodes");
  json.number(whole_.nodes);
  json.key("hidden");
  json.begin_object();
  json.key("nodes");
  json.number(whole_.hidden);
  json.key("own_ns");
  json.number(whole_.hidden_own_ns);
  json.end_object();
  json.key("folds");
  json.begin_array();
  TreeJson folds(trace_, measures_, folder_, json, options_.values);
  const TreeCut cut = walk_tree(folder_, scope_, takes, folds);
  json.end_array();
  json.key("left_out");
  folds.write_cut(cut);
  json.end_object();
  out.put('\n');
}

int run(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Measures measures(input.trace());
  NodeSet visible;
  if (!find_visible(input.trace(), measures, options.filters.nodes, visible)) return failed;
  Scope scope;
  if (!scope.find(input.trace(), measures, options.filters.under)) return nothing_found;
  const Whole whole = whole_of(measures, scope, visible);
  const auto least_ns = least_time(options.filters.least, whole.total_ns);
  if (!least_ns) return failed;
  Folder folder(input.trace(), measures, visible, options.fold);
  Printer printer(session);
  if (whole.nodes != 0 || options.form == Form::json) {
    TreePrinter(options, input, measures, scope, whole, folder, *least_ns).print(printer);
  } else {
    std::fputs("no node is left to show\n", stderr);
  }
  const int status = printer.finish(whole.nodes != 0 ? done : nothing_found);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_tree(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  add_tree_filters(command, options->filters);
  add_choice(command, "--fold", options->fold, fold_words,
             "Fold equal siblings in a row, all, or none.");
  add_choice(command, "--values", options->values, value_words, "How much of the arguments.");
  add_count(command, "--limit", options->limit, "Lines; 0 for all. (200; all if filtered)");
  command.add_flag("--full", options->full, "All lines, whole on any terminal.");
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
