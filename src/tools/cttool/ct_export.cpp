// SPDX-License-Identifier: MIT
//
// cttool export: a trace in the format of another program.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ctexport/ct_export_formats.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_chosen_nodes.h"
#include "tools/cttool/ct_export_target.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_nearest.h"
#include "tools/cttool/ct_tree_filters.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

using Export::Format;
using Export::Values;
using Export::Weight;

const Words<Weight> weight_words = {
    {"own", Weight::own}, {"memory", Weight::memory}, {"calls", Weight::calls}};
const Words<Values> value_words = {
    {"none", Values::none}, {"short", Values::brief}, {"full", Values::full}};

struct Options {
  std::string file;
  std::string format;
  std::string output;
  TreeFilters filters;
  Export::Options how;
  bool is_zipped = false;
  // Asked whether they were given.
  const CLI::Option* weight = nullptr;
  const CLI::Option* values = nullptr;
};

std::string names_of_formats() {
  std::string list;
  for (const Format& format : Export::formats()) {
    if (!list.empty()) list += '|';
    list += format.name;
  }
  return list;
}

// Null after it was said why.
const Format* format_of(const Options& options) {
  const Format* const format = Export::find_format(options.format);
  if (format != nullptr) return format;
  std::vector<std::string> known;
  for (const Format& one : Export::formats()) known.emplace_back(one.name);
  std::fprintf(stderr, "there is no format %s%s\n", options.format.c_str(),
               guess(options.format, known).c_str());
  constexpr int width = 12;
  for (const Format& one : Export::formats()) {
    std::fprintf(stderr, "  %-*s%s\n", width, one.name, one.meaning);
  }
  return nullptr;
}

// Nobody should believe that an option did something.
bool takes_options(const Format& format, const Options& options) {
  const auto refuse = [&](const char* option) {
    std::fprintf(stderr, "%s makes no difference to %s\n", option, format.name);
    return false;
  };
  if (options.weight->count() != 0 && !format.takes_weight) return refuse("--weight");
  if (options.values->count() != 0 && !format.takes_values) return refuse("--values");
  if (options.how.values == Values::brief && !format.takes_brief_values) {
    return refuse("--values short");
  }
  if (!options.how.table.empty() && !format.takes_table) return refuse("--table");
  if (options.is_zipped && !format.is_zipped_at_will) return refuse("--gzip");
  const bool is_filtered = options.filters.is_hiding() || options.filters.is_cutting();
  const std::string problem = Export::table_problem(options.how.table, is_filtered);
  if (!problem.empty()) std::fprintf(stderr, "%s\n", problem.c_str());
  return problem.empty();
}

int write_stream(const Format& format, const Export::Source& source, const Export::Options& how,
                 ExportTarget& target) {
  format.write(source, how, target.out());
  return target.finish(done);
}

// What has to be a file on the way to a pipe is one for a while.
int write_file(const Format& format, const Export::Source& source, const Export::Options& how,
               ExportTarget& target) {
  if (!target.file().empty()) {
    const std::string error = format.write_file(source, how, target.file());
    return error.empty() ? target.finish(done) : target.give_up(error);
  }
  const char* const folder = std::getenv("TMPDIR");
  WholeFile file(std::string(folder != nullptr && *folder != '\0' ? folder : "/tmp") + "/export");
  if (!file.begin()) return target.give_up(std::string("no file in TMPDIR: ") + strerror(errno));
  const std::string error = format.write_file(source, how, file.path());
  if (!error.empty()) return target.give_up(error);
  if (const int failure = target.copy(file.path()); failure != 0) {
    return target.give_up(strerror(failure));
  }
  return target.finish(done);
}

int run(const Options& options, Session& session) {
  const Format* const format = format_of(options);
  std::string name;
  if (format == nullptr || !takes_options(*format, options)) return failed;
  std::string usual = Export::usual_name(*format, options.how, options.file);
  if (options.is_zipped) usual += ".gz";
  if (!choose_output(options.output, usual, name)) return failed;
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Measures measures(input.trace(), Measures::Own::left_out);
  NodeSet chosen;
  const int choice = choose_nodes(options.filters, input.trace(), measures, "export", chosen);
  if (choice != done) return choice;
  ExportTarget target(name, options.is_zipped, session);
  if (!target.open(options.file)) return failed;
  const Export::Source source = {input.trace(), measures, chosen, options.file};
  const int status = format->write != nullptr ? write_stream(*format, source, options.how, target)
                                              : write_file(*format, source, options.how, target);
  if (status == done && options.output.empty() && !name.empty()) {
    std::fprintf(stderr, "wrote %s\n", name.c_str());
  }
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_export(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  command.add_option("--to", options->format, "The format.")
      ->option_text(names_of_formats())
      ->required();
  command.add_option("-o,--output", options->output, "Into this file; - is standard output.")
      ->option_text("OUT");
  command.add_option("--table", options->how.table, "Of csv (calls) and sqlite (all): which.")
      ->option_text("TABLE");
  options->values = add_choice(command, "--values", options->how.values, value_words,
                               "How much of the arguments.");
  options->weight =
      add_choice(command, "--weight", options->how.weight, weight_words, "Of folded: what counts.");
  command.add_flag("--gzip", options->is_zipped, "Compress JSON; most viewers read that.");
  add_tree_filters(command, options->filters);
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
