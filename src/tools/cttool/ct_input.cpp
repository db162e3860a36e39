// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_input.h"

#include <QString>
#include <cstdio>

#include "codetrace/render/ct_document.h"
#include "tools/common/ct_failure.h"

namespace CT::Tool {

namespace {

// Each finding as a line on standard error.
class Lister final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    MemoryWriter line;
    write_text(finding, line);
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.view().data());
  }
};

}  // namespace

bool Input::open(const std::string& name) {
  name_ = name;
  Lister lister;
  if (trace_.open(name == "-" ? "/dev/stdin" : name, session_.lists_findings ? &lister : nullptr)) {
    return true;
  }
  fail(open_failed, QString::fromStdString(name), QString::fromStdString(trace_.error_message()));
  return false;
}

void Input::say_damage() const {
  const Summary& found = trace_.summary();
  if (found.is_clean() || session_.lists_findings) return;
  const std::uint64_t places =
      found.skipped + found.damaged + found.rejected + found.repaired + (found.is_broken ? 1 : 0);
  std::fprintf(stderr, "%s: %llu %s damaged or odd; -v lists %s\n", name_.c_str(),
               static_cast<unsigned long long>(places), places == 1 ? "place is" : "places are",
               places == 1 ? "it" : "them");
}

void add_file(CLI::App& command, std::string& name) {
  command.add_option("FILE", name, "The trace; - is standard input.")->required();
}

}  // namespace CT::Tool
