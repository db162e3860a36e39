// SPDX-License-Identifier: MIT
//
// cttool report: a trace as one page to look at and to hand on.
#include "ctreport/ct_report.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

#include "ctexport/ct_export_formats.h"
#include "tools/cttool/ct_chosen_nodes.h"
#include "tools/cttool/ct_export_target.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_response_json.h"
#include "tools/cttool/ct_summary_json.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_tree_filters.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

constexpr std::uint64_t usual_max_size = std::uint64_t{64} << 20;

struct Options {
  std::string file;
  std::string output;
  std::uint64_t max_size = usual_max_size;
  TreeFilters filters;
};

std::string size_text(std::uint64_t bytes) { return as_bytes(static_cast<std::int64_t>(bytes)); }

// What the page tells of the trace as a whole.
void add_documents(const std::string& file, const SummaryFacts& facts, Report::Report& report) {
  report.add_document("summary", [&](Writer& out) {
    write_summary_json(file, facts, JsonWriter::Form::compact, out);
  });
  report.add_document("response", [&](Writer& out) {
    ResponseJson json(facts.trace, facts.measures, facts.response, ResponseJson::Body::left_out,
                      JsonWriter::Form::compact, out);
    json.write(file, nullptr);
  });
}

// False after it was said why.
bool fill(Report::Report& report, const Export::Source& source, const Options& options) {
  if (report.add_nodes(source)) return true;
  constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
  const std::string enough = std::to_string(report.size() / mebibyte + 2);
  std::fprintf(stderr,
               "%s: without any values the page has %s, and --max-size allows %s\n"
               "--max-size %sM is enough; --min 1%%, --depth, --under or --no-builtin leave less "
               "to show\n",
               shown_text(options.file).c_str(), size_text(report.size()).c_str(),
               size_text(options.max_size).c_str(), enough.c_str());
  return false;
}

// Of a page on standard output nothing is said but what is missing in it.
void say_what_was_written(const std::string& name, const Report::Report& report,
                          const Options& options) {
  std::string line;
  if (!name.empty()) {
    line += "wrote " + shown_text(name) + ", ";
    line += size_text(report.size());
  }
  if (report.left_out() != 0) {
    if (!line.empty()) line += "; ";
    line += "left out the values of " + as_count(report.left_out()) + " nodes, the longest ";
    line += as_ms(report.longest_left_out_ns()) + " ms, to stay below ";
    line += size_text(options.max_size) + " (--max-size)";
  }
  if (!line.empty()) std::fprintf(stderr, "%s\n", line.c_str());
}

int run(const Options& options, Session& session) {
  std::string name;
  const std::string usual = Export::base_name(options.file) + ".html";
  if (!choose_output(options.output, usual, name)) return failed;
  Input input(session);
  if (!input.open(options.file)) return failed;
  Report::Report report(Report::built_page(), options.max_size);
  Measures measures;
  NodeSet chosen;
  ExportTarget target(name, false, session);
  {
    SummaryFacts facts(input.trace(), SummaryFacts::Of::all);
    const int choice =
        choose_nodes(options.filters, input.trace(), facts.measures, "report", chosen);
    if (choice != done) return choice;
    if (!target.open(options.file)) return failed;
    add_documents(options.file, facts, report);
    measures = std::move(facts.measures);
  }
  const Export::Source source = {input.trace(), measures, chosen, options.file};
  if (!fill(report, source, options)) return failed;
  report.write(target.out());
  const int status = target.finish(done);
  if (status == done) say_what_was_written(name, report, options);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_report(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  command.add_option("-o,--output", options->output, "Into this file; - is standard output.")
      ->option_text("OUT");
  command.add_option("--max-size", options->max_size, "What the page may have at most. (64M)")
      ->option_text("SIZE")
      ->transform(CLI::AsSizeValue(false));
  add_tree_filters(command, options->filters);
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
