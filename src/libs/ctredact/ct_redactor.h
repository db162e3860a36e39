// SPDX-License-Identifier: MIT
//
// A copy of a trace without its secrets: the same nodes with the same times, memory, names and
// structure, and with pseudonyms in place of what the rules call secret, wherever it stands.
//
//   CT::Redact::Rules rules;
//   if (const auto wrong = rules.add(CT::Redact::built_in_rules()); !wrong.empty()) ...
//   CT::Redact::Redactor redactor(trace, rules, {.key = CT::Redact::random_key()});
//   if (!redactor.run() || !redactor.write(destination)) ... redactor.error() ...
//
// Time is linear in the trace. Beside the trace and its copy it takes a few bytes a node, and what
// the secrets take.
#pragma once

#include <string>
#include <vector>

#include "codetrace/ct_trace.h"
#include "ctredact/ct_rules.h"
#include "ctredact/ct_tally.h"
#include "ctwrite/ct_trace_writer.h"

namespace CT::Redact {

struct Options {
  std::string key;                  // of the pseudonyms; any bytes
  std::vector<std::string> values;  // more secrets, each at least SecretSet::shortest bytes
  bool is_strict = false;           // no text stays but the names of what is built in
};

// 32 bytes that nobody can guess.
std::string random_key();

class Redactor {
 public:
  // Borrows the trace; the rules get labels for what stands in no file.
  Redactor(const Trace& trace, Rules& rules, Options options);

  // Makes the copy in memory. False, with error(), if the format has no room for it.
  [[nodiscard]] bool run();
  // Requires: run(). False, with error(), if the destination did not take all.
  [[nodiscard]] bool write(Write::Destination& destination);

  [[nodiscard]] std::string_view error() const { return Write::describe(writer_.error()); }
  [[nodiscard]] const Write::TraceWriter& writer() const { return writer_; }
  [[nodiscard]] const Tally& tally() const { return tally_; }
  [[nodiscard]] std::size_t secret_count() const { return secret_count_; }

 private:
  const Trace& trace_;
  Rules& rules_;
  Options options_;
  Write::TraceWriter writer_;
  Tally tally_;
  std::size_t secret_count_ = 0;
};

}  // namespace CT::Redact
