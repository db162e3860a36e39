// SPDX-License-Identifier: MIT
#include "ctredact/ct_redactor.h"

#include <QRandomGenerator>
#include <utility>

#include "ctredact/ct_learner.h"
#include "ctredact/ct_rewriter.h"

namespace CT::Redact {

namespace {

Write::Options writing(const File& file) {
  const FileHeader& header = file.header();
  Write::Options options;
  options.big_endian = file.big_endian();
  options.flags = static_cast<std::uint8_t>(header.flags & ~FileHeader::big_endian_flag);
  options.request_id = header.request_id;
  options.php_api_version = header.php_api_version;
  return options;
}

// What the script wrote, as one text.
void read_body(const File& file, BodyStream& body) {
  CheckpointView view(file);
  while (view.step()) {
    if (Checkpoint::type_of_code(view.type()) != Checkpoint::Type::SAPI_WRITE_START) continue;
    if (view.size() == 0) continue;
    Cursor cursor = view.cursor();
    read_common(view, cursor);
    const Checkpoint::String text = Checkpoint::get_cut_str(cursor);
    body.add(text.view(), text.is_cut());
  }
  body.finish();
}

}  // namespace

std::string random_key() {
  quint32 words[8];
  QRandomGenerator::system()->fillRange(words);
  std::string key;
  for (const quint32 word : words) {
    for (int shift = 0; shift != 32; shift += 8) key += static_cast<char>(word >> shift);
  }
  return key;
}

Redactor::Redactor(const Trace& trace, Rules& rules, Options options)
    : trace_(trace), rules_(rules), options_(std::move(options)), writer_(writing(trace.file())) {}

bool Redactor::run() {
  const File& file = trace_.file();
  const RuleId given = rules_.add_label("--value");
  const RuleId strict = options_.is_strict ? rules_.add_label("--strict") : no_rule;
  TextSecrets secrets(rules_);
  for (const std::string& value : options_.values) secrets.learn_given(value, given);
  AddDataTexts texts(file.add_data());
  Callees callees(file, rules_);
  SecretResults results;
  {
    Learner learner(file, rules_, secrets, texts);
    RecordWalk walk(file, rules_, callees, results, learner);
    walk.learn_results(true);
    for (CheckpointView view(file); view.step();) walk.record(view);
    learner.finish();
  }
  secrets.build();
  secret_count_ = secrets.set().size();
  BodyStream body([&](std::string_view window, std::vector<Range>& ranges) {
    secrets.find(window, true, ranges);
  });
  if (strict == no_rule) read_body(file, body);
  Masks masks(options_.key);
  Rewriter rewriter({trace_, rules_, secrets, texts, body, masks, tally_, writer_, strict});
  RecordWalk walk(file, rules_, callees, results, rewriter);
  for (CheckpointView view(file); view.step();) {
    walk.record(view);
    if (rewriter.is_written()) continue;
    if (writer_.error() != Write::Error::payload_too_large) return false;
    rewriter.set_tight(true);
    walk.record(view);
    rewriter.set_tight(false);
    if (!rewriter.is_written()) return false;
  }
  return true;
}

bool Redactor::write(Write::Destination& destination) { return writer_.finish(destination); }

}  // namespace CT::Redact
