// SPDX-License-Identifier: MIT
#include "tools/common/ct_log_sink.h"

#include "kcommon/k_logger.h"

namespace CT::Tool {

void LogSink::report(const Finding& finding) {
  const KLogger::Level level = finding_info(finding.kind).level;
  if (!KLogger::instance().enabled(level)) return;
  line_.clear();
  write_text(finding, line_);
  KLogger::instance().println(level, finding.source_file, finding.source_line, line_.view());
}

}  // namespace CT::Tool
