// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_help.h"

#include <algorithm>

namespace CT::Tool {

namespace {

constexpr std::size_t widest_verb = 12;

// A name, and what it means in a column of its own.
std::string line(const std::string& name, const std::string& meaning, std::size_t width = 28) {
  const std::string start = "  " + name;
  return start +
         (start.size() + 1 < width ? std::string(width - start.size(), ' ')
                                   : "\n" + std::string(width, ' ')) +
         meaning + "\n";
}

std::string names_of(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += "-" + name + ", ";
  for (const std::string& name : option.get_lnames()) names += "--" + name + ", ";
  names.resize(names.size() - 2);
  const std::string& value = option.get_option_text();
  return value.empty() ? names : names + " " + value;
}

std::string usage(const CLI::App& app) {
  if (app.get_parent() == nullptr) return "Usage: cttool VERB [OPTIONS] FILE\n";
  std::string text = "Usage: cttool " + app.get_name() + " [OPTIONS]";
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_positional()) continue;
    const std::string more = option->get_expected_max() > 1 ? "..." : "";
    const std::string name = option->get_name(true) + more;
    text += option->get_required() ? " " + name : " [" + name + "]";
  }
  return text + "\n";
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/,
                                     CLI::AppFormatMode /*mode*/) const {
  std::string text = app->get_description() + "\n\n" + usage(*app) + "\n";
  for (const CLI::Option* option : app->get_options()) {
    if (option->get_positional()) text += line(option->get_name(true), option->get_description());
  }
  for (const CLI::App* verb : app->get_subcommands({})) {
    text += line(verb->get_name(), verb->get_description(), widest_verb);
  }
  text += "\n";
  for (const CLI::Option* option : app->get_options()) {
    if (!option->get_positional()) text += line(names_of(*option), option->get_description());
  }
  if (app->get_parent() != nullptr) text += "\nOptions of all verbs: cttool --help\n";
  return text + "\nExamples:\n" + app->get_footer();
}

}  // namespace CT::Tool
