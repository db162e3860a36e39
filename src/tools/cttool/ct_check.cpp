// SPDX-License-Identifier: MIT
//
// cttool check: what is wrong with files.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "tools/common/ct_progress.h"
#include "tools/cttool/ct_check_printer.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

using Check::Level;

struct Options {
  std::vector<std::string> files;
  std::size_t limit = Check::Options().limit;
  Level least = Level::odd;
  CheckForm form = CheckForm::text;
};

const Words<Level> level_words = {
    {"fatal", Level::fatal}, {"lost", Level::lost}, {"odd", Level::odd}};
const Words<CheckForm> form_words = {
    {"text", CheckForm::text}, {"json", CheckForm::json}, {"jsonl", CheckForm::jsonl}};

int run(const Options& options, Session& session) {
  Printer printer(session);
  CheckPrinter checks(options.form, options.least, printer);
  int status = done;
  std::vector<std::string> failures;
  Progress progress(STDOUT_FILENO);
  std::uint64_t count = 0;
  checks.begin();
  check_files(options.files, session.max_size, options.limit, [&](const CheckedFile& file) {
    checks.print(file);
    if (progress.is_wanted()) progress.show("checking", ++count, options.files.size());
    if (!file.failure.empty()) {
      status = failed;
      failures.push_back(shown_text(file.name).append(" : ").append(file.failure));
    } else if (status == done && !is_clean(file.result, options.least)) {
      status = nothing_found;
    }
    return printer.ok();
  });
  checks.end();
  status = printer.finish(status);
  for (const std::string& failure : failures) {
    std::fprintf(stderr, "Failed to open %s\n", failure.c_str());
  }
  return status;
}

}  // namespace

VerbRun define_check(CLI::App& command) {
  auto options = std::make_shared<Options>();
  command.add_option("FILE", options->files, "The files; - is standard input.")->required();
  add_choice(command, "--level", options->least, level_words,
             "What counts as a defect: this and what is graver.");
  command.add_option("--limit", options->limit, "Defects of one code at most; 0 for all. (20)")
      ->option_text("N");
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
