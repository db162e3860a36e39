// SPDX-License-Identifier: MIT
//
// cttool sql: queries over the tables of a trace.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ctsql/ct_database.h"
#include "ctsql/ct_script.h"
#include "ctsql/ct_tables.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_sql_error.h"
#include "tools/cttool/ct_sql_print.h"
#include "tools/cttool/ct_sql_stop.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

const Words<SqlForm> form_words = {{"table", SqlForm::table},
                                   {"csv", SqlForm::csv},
                                   {"json", SqlForm::json},
                                   {"jsonl", SqlForm::jsonl},
                                   {"markdown", SqlForm::markdown}};

struct Options {
  std::string file;
  std::vector<std::string> queries;
  SqlForm form = SqlForm::table;
  std::optional<double> timeout;
};

bool say(const std::string& what) {
  std::fprintf(stderr, "cttool: %s\n", what.c_str());
  return false;
}

// The query from standard input, if none is on the command line.
bool read_queries(Options& options) {
  if (!options.queries.empty()) return true;
  if (options.file == "-") return say("standard input is the trace; QUERY is required then");
  if (isatty(STDIN_FILENO) != 0) {
    std::fputs("cttool: reads the query from standard input; Ctrl-D ends it\n", stderr);
  }
  std::string text;
  char block[4096];
  while (const std::size_t size = std::fread(block, 1, sizeof block, stdin)) {
    text.append(block, size);
  }
  if (std::ferror(stdin) != 0) return say("cannot read the query from standard input");
  options.queries.push_back(text);
  return true;
}

// The words of a command such as ".schema calls"; empty for a query.
std::vector<std::string> command_of(const std::string& text) {
  constexpr const char* blanks = " \t\r\n;";
  std::vector<std::string> words;
  for (std::size_t at = text.find_first_not_of(blanks); at != std::string::npos;) {
    const std::size_t end = std::min(text.find_first_of(blanks, at), text.size());
    words.push_back(text.substr(at, end - at));
    if (words.front().front() != '.') return {};
    at = text.find_first_not_of(blanks, end);
  }
  return words;
}

// Without quotes around it a shell takes ".schema calls" apart.
void join_command(std::vector<std::string>& queries) {
  if (queries.size() != 2 || command_of(queries[0]).size() != 1) return;
  if (Sql::find_table(queries[1]) == nullptr) return;
  queries = {queries[0] + " " + queries[1]};
}

// Prints what ".schema" asks for. Returns why it cannot; empty if it did.
std::string put_schema(const std::vector<std::string>& words, Writer& out) {
  if (words.front() != ".schema" || words.size() > 2) {
    return "there is no command " + words.front() + " so; there is .schema [TABLE]";
  }
  if (words.size() == 1) {
    out.put(Sql::schema_text());
    return {};
  }
  const Sql::Table* table = Sql::find_table(words[1]);
  if (table == nullptr) return "there is no table " + words[1] + "; .schema lists them";
  out.put(Sql::schema_text(*table));
  return {};
}

class Run {
 public:
  Run(const Options& options, Sql::Database& database, QueryStop& stop, Printer& printer)
      : options_(options),
        database_(database),
        stop_(stop),
        printer_(printer),
        results_(make_result_printer(options.form, options.file, printer.width(), printer.out())) {}

  // What went wrong, to be said when all is printed; empty for nothing.
  [[nodiscard]] const std::string& complaint() const { return complaint_; }

  // The exit status.
  int all() {
    results_->begin();
    for (const std::string& query : options_.queries) {
      if (!one(query)) return failed;
    }
    results_->end();
    return found_ ? done : nothing_found;
  }

 private:
  bool one(const std::string& query) {
    const auto words = command_of(query);
    if (!words.empty()) {
      found_ = true;
      return run_command(words);
    }
    Sql::Script script(database_, query);
    while (Sql::Statement* statement = script.next()) {
      results_->begin_result(statement->get());
      while (printer_.ok() && statement->step()) {
        found_ = true;
        results_->put_row(statement->get());
      }
      results_->end_result();
      if (!printer_.ok()) return false;
    }
    if (!script.error()) return true;
    complaint_ = script.error()->is_stopped ? "cttool: the query is " + stop_.reason() + "\n"
                                            : error_text(*script.error(), query);
    return false;
  }

  bool run_command(const std::vector<std::string>& words) {
    const std::string why = options_.form == SqlForm::table
                                ? put_schema(words, printer_.out())
                                : words.front() + " is text; it has no --format";
    if (!why.empty()) complaint_ = "cttool: " + shown_text(why) + "\n";
    return why.empty();
  }

  const Options& options_;
  Sql::Database& database_;
  QueryStop& stop_;
  Printer& printer_;
  std::unique_ptr<ResultPrinter> results_;
  std::string complaint_;
  bool found_ = false;
};

int run(Options options, Session& session) {
  if (!read_queries(options)) return failed;
  join_command(options.queries);
  Input input(session);
  if (!input.open(options.file)) return failed;
  const Measures measures(input.trace());
  Sql::Database database(std::make_shared<Sql::TraceData>(input.trace(), measures, options.file));
  if (!database.error().empty()) return say(database.error()) ? done : failed;
  QueryStop stop(options.timeout);
  database.set_stop([&] { return stop.is_wanted(); });
  Printer printer(session);
  Run work(options, database, stop, printer);
  const int status = printer.finish(work.all());
  std::fputs(work.complaint().c_str(), stderr);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_sql(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  command.add_option("QUERY", options->queries,
                     "Of SQLite, or .schema [TABLE]; else standard input.");
  add_choice(command, "--format", options->form, form_words, "Print rows so.");
  command.add_option("--timeout", options->timeout, "End a query that takes longer.")
      ->option_text("SECONDS")
      ->check(CLI::PositiveNumber);
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
