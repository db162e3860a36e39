// SPDX-License-Identifier: MIT
//
// The command-line tool: one run from options to exit status, top to bottom.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <new>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_records_dump.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_writer.h"
#include "ct_args.h"
#include "ct_output.h"
#include "ct_progress.h"
#include "kcommon/k_logger.h"

namespace {

// Keeps descriptors 0 to 2 taken, so that no file opened later lands on them. A standard stream
// that was closed stays unusable.
void hold_standard_descriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    const int useless_mode = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    static_cast<void>(open("/dev/null", useless_mode));
  }
}

// Reports as "Failed to open NAME : REASON"; returns the exit status.
int fail(const char* what, const QString& name, const QString& reason) {
  std::fprintf(stderr, "%s %s : %s\n", what, name.toLocal8Bit().constData(),
               reason.toLocal8Bit().constData());
  return 1;
}

constexpr char open_failed[] = "Failed to open";
constexpr char open_output_failed[] = "Failed to open output file";
constexpr char write_failed[] = "Failed to write output file";

// Usage and version went through stdio; tells whether they arrived.
int end_early(const CT::Args& args) {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return args.error ? 1 : 0;
  const int error = errno;
  return error == EPIPE ? 1 : fail(write_failed, CT::Output({}).name(), qt_error_string(error));
}

bool chosen(const CT::Args& args, CT::OutputFormat format) { return args.formats.contains(format); }

// Findings become lines of the log.
class LogSink final : public CT::FindingSink {
 public:
  void report(const CT::Finding& finding) override {
    const KLogger::Level level = CT::finding_info(finding.kind).level;
    if (!KLogger::instance().enabled(level)) return;
    line_.clear();
    CT::write_text(finding, line_);
    KLogger::instance().println(level, finding.source_file, finding.source_line, line_.view());
  }

 private:
  CT::MemoryWriter line_;
};

// Builds the tree, and dumps each checkpoint on the way if that is wanted.
void read_tree(const CT::File& file, bool dumps, CT::Storage& storage, CT::Writer& out,
               CT::Progress& progress) {
  constexpr std::uint64_t now_and_then = 1024;
  std::uint64_t count = 0;
  CT::RecordDumper dumper;
  CT::read_checkpoints(file, storage, [&](const CT::Checkpoint::Base& record) {
    if (count % now_and_then == 0) {
      progress.show("reading", record.offset(), file.data().size());
    }
    if (dumps) {
      if (count != 0) out.put('\n');
      dumper.write(record, out);
    }
    ++count;
    return out.ok();
  });
}

void write_outputs(const CT::Args& args, const CT::File& file, CT::Writer& out,
                   CT::Progress& progress) {
  using CT::OutputFormat;
  if (chosen(args, OutputFormat::HEADERS)) {
    klog(3, "Outputting Code Trace dump file headers");
    CT::write_headers(file, out);
  }
  if (chosen(args, OutputFormat::BINARY)) {
    klog(3, "Outputting Code Trace dump file binary data");
    CT::write_binary(file, out);
  }
  LogSink log;
  CT::Storage storage(file, &log);
  read_tree(file, chosen(args, OutputFormat::DUMP), storage, out, progress);
  const auto count = [&](CT::Storage::NodeId done) {
    progress.show("writing", static_cast<std::uint64_t>(done),
                  static_cast<std::uint64_t>(storage.node_count()));
  };
  if (chosen(args, OutputFormat::JSON)) {
    klog(3, "Outputting Code Trace dump file as a JSON document");
    CT::write_json(storage, out, count);
  }
  if (chosen(args, OutputFormat::TEXT)) {
    klog(3, "Outputting Code Trace dump files as TEXT");
    CT::write_text(storage, out, count);
  }
}

int run(int argc, char** argv) {
  CT::Args args;
  if (!args.init(argc, argv)) return end_early(args);
  CT::File file(args.filename);
  if (!file.open()) return fail(open_failed, args.filename, file.error_message());
  CT::Output output(args.output);
  if (!args.output.isEmpty()) {
    klog(3, "Using {} as the output", args.output.toStdString());
    if (file.is_same_file(args.output)) {
      return fail(open_output_failed, args.output,
                  QStringLiteral("it is the Code Trace file itself"));
    }
  }
  if (!output.open()) {
    return fail(open_output_failed, args.output, output.error_message());
  }
  CT::StreamWriter out(output);
  try {
    CT::Progress progress(output.descriptor());
    write_outputs(args, file, out, progress);
  } catch (const std::bad_alloc&) {
    return fail(write_failed, output.name(), qt_error_string(ENOMEM));
  }
  out.flush();
  if (output.close()) return 0;
  return output.is_pipe_closed() ? 1 : fail(write_failed, output.name(), output.error_message());
}

}  // namespace

int main(int argc, char** argv) {
  hold_standard_descriptors();
  // A file-size limit and a reader that leaves show as failed writes, not as signals.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  KLogger::instance().addSink(std::make_unique<KLogger::StdOutSink>(stdout, stderr, stdout), 1);
  int status = 1;
  try {
    status = run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("Out of memory\n", stderr);
  }
  KLogger::destroyInstance();
  return status;
}
