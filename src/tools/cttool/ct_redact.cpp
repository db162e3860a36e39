// SPDX-License-Identifier: MIT
//
// cttool redact: a copy of a trace without its secrets.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ctredact/ct_redactor.h"
#include "ctredact/ct_secret_set.h"
#include "tools/cttool/ct_byte_input.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_export_target.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_redact_report.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json };
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}};

struct Options {
  std::string file;
  std::string output;
  std::vector<std::string> rules;
  std::vector<std::string> values;
  std::string key;
  bool is_strict = false;
  Form form = Form::text;
};

// The trace goes where the other outputs go.
class WriterDestination final : public Write::Destination {
 public:
  explicit WriterDestination(StreamWriter& out) : out_(out) {}
  bool write(std::span<const unsigned char> bytes) noexcept override {
    const void* const begin = bytes.data();
    out_.put(std::string_view(static_cast<const char*>(begin), bytes.size()));
    return out_.ok();
  }

 private:
  StreamWriter& out_;
};

// All of a small file. False after it was said why.
bool read_whole(const std::string& name, std::string& text) {
  constexpr std::int64_t piece = 4096;
  constexpr std::size_t most = std::size_t{16} << 20;
  ByteInput input;
  unsigned char bytes[piece];
  std::int64_t size = -1;
  int error = 0;
  errno = 0;
  if (!input.open(name)) {
    error = errno != 0 ? errno : EISDIR;
  } else {
    while (text.size() <= most && (size = input.read(bytes, piece)) > 0) {
      text.append(bytes, bytes + size);
    }
    error = input.error();
  }
  if (size == 0) return true;
  const char* const reason = error != 0 ? std::strerror(error) : "it is too large";
  std::fprintf(stderr, "%s: %s\n", shown_text(name).c_str(), reason);
  return false;
}

// False after it was said what is wrong.
bool read_rules(const Options& options, Redact::Rules& rules) {
  std::string wrong = rules.add(Redact::built_in_rules());
  std::string name = "the built-in rules";
  for (const std::string& file : options.rules) {
    std::string text;
    if (!wrong.empty()) break;
    if (!read_whole(file, text)) return false;
    name = file;
    wrong = rules.add(text);
  }
  if (wrong.empty()) return true;
  std::fprintf(stderr, "%s, %s\n", shown_text(name).c_str(), shown_text(wrong).c_str());
  return false;
}

bool read_secrets(const Options& options, Redact::Options& how) {
  how.is_strict = options.is_strict;
  how.values = options.values;
  for (const std::string& value : options.values) {
    if (value.size() >= Redact::SecretSet::shortest) continue;
    // Not the value: it is secret.
    std::fprintf(
        stderr,
        "a value of less than %zu bytes would be masked in the middle of other words; name "
        "its place by a rule\n",
        Redact::SecretSet::shortest);
    return false;
  }
  if (options.key.empty()) {
    how.key = Redact::random_key();
    return true;
  }
  if (!read_whole(options.key, how.key)) return false;
  if (!how.key.empty()) return true;
  std::fprintf(stderr, "%s: an empty key hides nothing\n", shown_text(options.key).c_str());
  return false;
}

int report(const Options& options, const Redact::Rules& rules, const Redact::Redactor& redactor,
           Session& session) {
  if (options.form == Form::text) {
    print_redact_report(rules, redactor, session.full ? 0 : terminal_width(STDERR_FILENO), stderr);
    return done;
  }
  ExportTarget target({}, false, session);
  if (!target.open({})) return failed;
  write_redact_json(options.file, options.output, rules, redactor, target.out());
  return target.finish(done);
}

int run(const Options& options, Session& session) {
  const bool is_stream = options.output == "-";
  if (is_stream && (options.form == Form::json || isatty(STDOUT_FILENO) == 1)) {
    std::fprintf(stderr,
                 "the trace and %s do not both go to standard output; name a file with -o\n",
                 options.form == Form::json ? "the report" : "what a terminal shows");
    return failed;
  }
  Redact::Rules rules;
  Redact::Options how;
  if (!read_rules(options, rules) || !read_secrets(options, how)) return failed;
  Input input(session);
  if (!input.open(options.file)) return failed;
  ExportTarget target(is_stream ? std::string() : options.output, false, session);
  if (!target.open(options.file)) return failed;
  Redact::Redactor redactor(input.trace(), rules, std::move(how));
  if (!redactor.run()) return target.give_up(std::string(redactor.error()));
  WriterDestination destination(static_cast<StreamWriter&>(target.out()));
  // What could not be written is said by the target.
  static_cast<void>(redactor.write(destination));
  int status = target.finish(done);
  if (status == done) status = report(options, rules, redactor, session);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_redact(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  command.add_option("-o,--output", options->output, "Into this file; - is standard output.")
      ->option_text("OUT")
      ->required();
  command.add_option("--rules", options->rules, "More rules, as in share/codetrace/redact.rules.")
      ->option_text("FILE")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command.add_option("--value", options->values, "This is secret, wherever it stands.")
      ->option_text("TEXT")
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  command
      .add_option("--key", options->key,
                  "Equal masks in every trace that is redacted with the bytes of this file.")
      ->option_text("FILE");
  command.add_flag("--strict", options->is_strict,
                   "Mask all texts but the names of what is built in.");
  add_choice(command, "--format", options->form, form_words,
             "The report: on standard error, or JSON on standard output.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
