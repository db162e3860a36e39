// SPDX-License-Identifier: MIT
//
// cttool salvage: a valid trace of what is left of one.
#include "ctsalvage/ct_salvage.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_export_target.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_raw_input.h"
#include "tools/cttool/ct_salvage_text.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Format { text, json };

struct Options {
  std::string file;
  std::string data;
  std::string add_data;
  std::string output;
  Format format = Format::text;

  [[nodiscard]] const std::string& trace() const { return data.empty() ? file : data; }
};

int refuse(const char* why) {
  std::fprintf(stderr, "%s\n", why);
  return failed;
}

int check(const Options& options) {
  if (options.file.empty() == (options.data.empty() && options.add_data.empty())) {
    return refuse("cttool salvage takes either FILE, or --data and --add-data");
  }
  if (options.data.empty() != options.add_data.empty()) {
    return refuse("--data and --add-data belong together");
  }
  if (options.format == Format::json && options.output == "-") {
    return refuse("standard output cannot take both the trace and --format json");
  }
  std::error_code none;
  if (!options.add_data.empty() &&
      std::filesystem::equivalent(options.add_data, options.output, none)) {
    return refuse("-o is the file of --add-data itself");
  }
  return done;
}

bool open(RawInput& input, const std::string& name) {
  if (!input.open(name)) return false;
  if (!input.archive_damage().empty()) {
    std::fprintf(stderr, "%s: the archive is damaged, %s; what comes before that is looked at\n",
                 shown_text(name).c_str(), input.archive_damage().c_str());
  }
  return true;
}

int write(const Salvage::Salvaged& made, const Options& options, Session& session) {
  const std::string name = options.output == "-" ? std::string() : options.output;
  ExportTarget target(name, false, session);
  if (!target.open(options.trace())) return failed;
  for (const Salvage::Bytes& part : made.parts()) {
    target.out().put(std::string_view(Section::as_chars(part.data()), part.size()));
  }
  return target.finish(done);
}

int tell(const Salvage::Salvaged& made, const Options& options, Session& session) {
  const SalvageNames names = {options.trace(), options.output};
  if (options.format == Format::text) {
    const std::string text = salvage_text(made, names);
    std::fwrite(text.data(), 1, text.size(), stderr);
    return done;
  }
  Printer printer(session);
  write_salvage_json(made, names, printer.out());
  return printer.finish(done);
}

int run(const Options& options, Session& session) {
  if (const int status = check(options); status != done) return status;
  RawInput data(session.max_size);
  RawInput add_data(session.max_size);
  if (!open(data, options.trace())) return failed;
  if (!options.add_data.empty() && !open(add_data, options.add_data)) return failed;
  const Salvage::Salvaged made = options.data.empty()
                                     ? Salvage::salvage(data.bytes())
                                     : Salvage::salvage(data.bytes(), add_data.bytes());
  if (!made.report.is_whole && made.report.kept == 0) {
    std::fprintf(stderr, "%s: there is no checkpoint in it, and nothing was written\n",
                 shown_text(options.trace()).c_str());
    return nothing_found;
  }
  const int status = write(made, options, session);
  return status == done ? tell(made, options, session) : status;
}

}  // namespace

VerbRun define_salvage(CLI::App& command) {
  auto options = std::make_shared<Options>();
  command.add_option("FILE", options->file, "What is left of a trace; - is standard input.");
  command
      .add_option("-o,--output", options->output,
                  "Into this file, once it is whole; - is standard output.")
      ->option_text("OUT")
      ->required();
  command
      .add_option("--data", options->data,
                  "In place of FILE: DATA alone, as a recording leaves it that has not ended.")
      ->option_text("FILE");
  command.add_option("--add-data", options->add_data, "The same for ADD DATA.")
      ->option_text("FILE");
  add_choice(command, "--format", options->format,
             Words<Format>{{"text", Format::text}, {"json", Format::json}},
             "The report: on standard error, or as JSON on standard output.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
