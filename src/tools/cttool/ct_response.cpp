// SPDX-License-Identifier: MIT
//
// cttool response: what the client got, and who sent it.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>

#include "tools/cttool/ct_body.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_response_json.h"
#include "tools/cttool/ct_response_page.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json };
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}};

struct Options {
  std::string file;
  bool body = false;
  std::optional<std::string> blame;  // empty: of everything
  std::size_t limit = 20;
  bool full = false;
  Form form = Form::text;

  [[nodiscard]] bool has_text() const { return blame && !blame->empty(); }
};

// The body alone; on a terminal in a form that does it no harm.
void put_body_alone(const Response& response, Printer& printer) {
  if (printer.is_terminal()) {
    put_body(response, printer.style(), printer.out());
  } else {
    put_body_bytes(response, printer.out());
  }
}

void say_cuts(const Response& response) {
  for (const BodyPart& write : response.writes()) {
    if (write.missing() == 0) continue;
    const std::string missing = as_count(static_cast<std::int64_t>(write.missing()));
    const std::string end = std::to_string(write.offset + write.body.view().size());
    std::fprintf(stderr, "write %d is cut: %s bytes are missing behind byte %s\n", write.id,
                 missing.c_str(), end.c_str());
  }
}

int print(const Options& options, const Input& input, const Response& response, Printer& printer) {
  if (options.body) {
    put_body_alone(response, printer);
    const int status = printer.finish(done);
    say_cuts(response);
    return status;
  }
  const Measures measures(input.trace());
  ResponsePage page(input.trace(), measures, response, printer);
  std::optional<Sighting> sighting;
  if (options.has_text()) sighting = look_for(*options.blame, response, options.limit);
  if (options.form == Form::json) {
    ResponseJson json(input.trace(), measures, response, ResponseJson::Body::whole,
                      JsonWriter::Form::indented, printer.out());
    json.write(options.file, sighting ? &*sighting : nullptr);
  } else if (sighting) {
    page.write_sighting(*sighting);
  } else {
    options.blame ? page.write_makers(options.full) : page.write_text();
  }
  return printer.finish(sighting && sighting->is_none() ? nothing_found : done);
}

int run(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Response response(input.trace());
  session.full = session.full || options.full;
  Printer printer(session);
  int status = nothing_found;
  if (response.is_empty() && options.form == Form::text) {
    status = printer.finish(nothing_found);
    std::fprintf(stderr, "%s: no header was set and nothing was written\n",
                 shown_text(options.file).c_str());
  } else {
    status = print(options, input, response, printer);
    if (status == done && response.is_empty()) status = nothing_found;
  }
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_response(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  auto* body = command.add_flag("--body", options->body, "The body alone, byte for byte.");
  command
      .add_option_function<std::string>(
          "--blame", [options](const std::string& text) { options->blame = text; },
          "Who set and wrote what; or who wrote TEXT.")
      ->option_text("[TEXT]")
      ->expected(0, 1)
      ->default_str("")
      ->excludes(body);
  add_count(command, "--limit", options->limit,
            "Places of TEXT in the body at most; 0 for all. (20)");
  command.add_flag("--full", options->full, "With --blame: a line for each write, whole.");
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
