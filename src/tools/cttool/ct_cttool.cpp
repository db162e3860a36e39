// SPDX-License-Identifier: MIT
//
// The companion: reads which verb is meant and runs it.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "codetrace/ct_version.h"
#include "tools/common/ct_failure.h"
#include "tools/common/ct_process.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_help.h"
#include "tools/cttool/ct_nearest.h"
#include "tools/cttool/ct_verb.h"

namespace {

using CT::Tool::end_of_printing;
using CT::Tool::failed;
using CT::Tool::Session;
using CT::Tool::Verb;
using CT::Tool::VerbRun;

const CT::Tool::Words<CT::Tool::Color> color_words = {{"auto", CT::Tool::Color::automatic},
                                                      {"always", CT::Tool::Color::always},
                                                      {"never", CT::Tool::Color::never}};

// The whole command line: the verbs with their options, and what each does.
struct CommandLine {
  CLI::App app{"Asks a Code Trace file a question.", "cttool"};
  std::vector<VerbRun> runs;
  std::string help_of;  // of "cttool help VERB"
  CLI::App* help = nullptr;
  Session session;

  explicit CommandLine(CT::Tool::StandardDescriptors& standard) : session{standard} {
    app.set_version_flag("-V,--version", "cttool " CODETRACE_VERSION_STRING,
                         "Print the version and exit.");
    app.set_help_flag("-h,--help", "Print this help and exit.");
    app.add_flag("-v,--verbose", session.lists_findings,
                 "List what is damaged or odd about the trace.");
    CT::Tool::add_choice(app, "--color", session.color, color_words, "Colours on a terminal.");
    app.add_flag("!--no-pager", session.pages, "Do not show long text page by page.");
    app.add_flag("--full", session.full, "Do not cut lines to the terminal's width.");
    app.add_option("--max-size", session.max_size, "What a compressed trace may have at most. (1G)")
        ->option_text("SIZE")
        ->transform(CLI::AsSizeValue(false));
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.formatter(std::make_shared<CT::Tool::HelpFormatter>());
    for (const Verb& verb : CT::Tool::verbs()) {
      CLI::App* command = app.add_subcommand(verb.name, verb.question);
      command->set_help_flag("-h,--help", "Print this help and exit.");
      command->footer(verb.examples);
      runs.push_back(verb.define(*command));
    }
    help = app.add_subcommand("help", "Print the help of a verb.");
    help->add_option("VERB", help_of, "Which one.");
    help->footer("  cttool help top\n");
    app.footer("  cttool summary request.ct\n  cttool help calls\n");
  }

  CLI::App* verb(const std::string& name) {
    for (CLI::App* command : app.get_subcommands({})) {
      if (command->get_name() == name) return command;
    }
    return nullptr;
  }
};

// Not with app.help(), which would print that of the verb on the command line.
int print_help(const CLI::App& app) {
  const std::string text =
      app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
  std::fputs(text.c_str(), stdout);
  return end_of_printing(0) == 0 ? 0 : failed;
}

int unknown_verb(const CommandLine& line, const std::string& name) {
  std::vector<std::string> known;
  for (const CLI::App* command : line.app.get_subcommands({})) known.push_back(command->get_name());
  std::string near = CT::Tool::guess(name, known);
  // A file where a verb is wanted.
  if (access(name.c_str(), F_OK) == 0) near = "; did you mean cttool summary " + name + "?";
  std::fprintf(stderr, "cttool: there is no verb %s%s\nTry 'cttool --help'.\n", name.c_str(),
               near.c_str());
  return failed;
}

// What the command line meant that was not understood.
int usage_error(CommandLine& line, const std::string& what, const std::vector<std::string>& rest) {
  const auto parsed = line.app.get_subcommands();
  if (parsed.empty() && !rest.empty() && !rest.front().starts_with('-')) {
    return unknown_verb(line, rest.front());
  }
  std::vector<std::string> known;
  const CLI::App& command = parsed.empty() ? line.app : *parsed.front();
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
  }
  const auto option = std::find_if(rest.begin(), rest.end(),
                                   [](const std::string& word) { return word.starts_with("--"); });
  const std::string message =
      option == rest.end() ? what
                           : "there is no option " + *option + CT::Tool::guess(*option, known);
  std::fprintf(stderr, "cttool: %s\nTry 'cttool%s%s --help'.\n", message.c_str(),
               parsed.empty() ? "" : " ", parsed.empty() ? "" : command.get_name().c_str());
  return failed;
}

int run(int argc, char** argv, CT::Tool::StandardDescriptors& standard) {
  CommandLine line(standard);
  try {
    line.app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    const auto parsed = line.app.get_subcommands();
    return print_help(parsed.empty() ? line.app : *parsed.front());
  } catch (const CLI::CallForVersion&) {
    std::fputs("cttool " CODETRACE_VERSION_STRING "\n", stdout);
    return end_of_printing(0) == 0 ? 0 : failed;
  } catch (const CLI::ParseError& error) {
    return usage_error(line, error.what(), line.app.remaining(true));
  }
  const auto parsed = line.app.get_subcommands();
  if (parsed.empty()) return print_help(line.app);
  if (parsed.front() == line.help) {
    if (line.help_of.empty()) return print_help(line.app);
    const CLI::App* verb = line.verb(line.help_of);
    return verb != nullptr ? print_help(*verb) : unknown_verb(line, line.help_of);
  }
  std::size_t row = 0;
  while (parsed.front()->get_name() != CT::Tool::verbs()[row].name) ++row;
  return line.runs[row](line.session);
}

}  // namespace

int main(int argc, char** argv) { return CT::Tool::run_tool(run, argc, argv, failed); }
