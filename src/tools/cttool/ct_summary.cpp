// SPDX-License-Identifier: MIT
//
// cttool summary: one screen about a request, or a line each about several.
#include <CLI/CLI.hpp>
#include <memory>

#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_summary_json.h"
#include "tools/cttool/ct_summary_page.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json };
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}};

struct Options {
  std::vector<std::string> files;
  Form form = Form::text;
};

PageSize page_for(const Session& session, const Printer& printer) {
  PageSize page;
  if (printer.width() != 0) page.columns = printer.width();
  if (session.full) page = {PageSize::any, PageSize::any};
  return page;
}

void write_text(const SummaryFacts& facts, const PageSize& page, Printer& printer) {
  std::vector<SectionText> texts;
  for (const Section& section : sections()) texts.push_back(section.text(facts, page));
  printer.out().put(page_of(std::move(texts), page, printer.style()));
}

int run_one(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.files.front())) return failed;
  const SummaryFacts facts(input.trace(), SummaryFacts::Of::all);
  Printer printer(session);
  if (options.form == Form::text) {
    write_text(facts, page_for(session, printer), printer);
  } else {
    write_summary_json(options.files.front(), facts, JsonWriter::Form::indented, printer.out());
  }
  const int status = printer.finish(done);
  input.say_damage();
  return status;
}

std::vector<std::string> cells_of(const std::string& file, const SummaryFacts& facts, bool full) {
  constexpr std::size_t file_columns = 30;
  const RequestFacts& request = facts.request;
  const Checkpoint::String& url = request.url.is_present() ? request.url : request.uri;
  return {facts.response.status().value_or(0) != 0 ? std::to_string(*facts.response.status()) : "-",
          as_ms(request.total_ns),
          request.memory_peak ? as_bytes(static_cast<std::int64_t>(*request.memory_peak)) : "-",
          as_count(request.errors),
          as_count(static_cast<std::int64_t>(facts.thrown.size())),
          as_count(request.open),
          full ? shown_text(file) : end_of(shown_text(file), file_columns),
          shown_text(url.view())};
}

// A trace that cannot be read does not end the run.
int run_many(const Options& options, Session& session) {
  using Align = TextTable::Align;
  TextTable table({{"status", Align::right},
                   {"ms", Align::right},
                   {"peak", Align::right},
                   {"errors", Align::right},
                   {"thrown", Align::right},
                   {"open", Align::right},
                   {"trace", Align::left},
                   {"url", Align::left}});
  Printer printer(session);
  int status = done;
  for (const std::string& file : options.files) {
    Input input(session);
    if (!input.open(file)) {
      status = failed;
      continue;
    }
    const SummaryFacts facts(input.trace(), options.form == Form::text ? SummaryFacts::Of::a_line
                                                                       : SummaryFacts::Of::all);
    if (options.form == Form::text) {
      table.add(cells_of(file, facts, session.full));
    } else {
      write_summary_json(file, facts, JsonWriter::Form::compact, printer.out());
    }
    input.say_damage();
  }
  if (options.form == Form::text) printer.put(table);
  return printer.finish(status);
}

}  // namespace

VerbRun define_summary(CLI::App& command) {
  auto options = std::make_shared<Options>();
  command.add_option("FILE", options->files, "The trace; - is standard input. Of several a line.")
      ->required();
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) {
    return options->files.size() == 1 ? run_one(*options, session) : run_many(*options, session);
  };
}

}  // namespace CT::Tool
