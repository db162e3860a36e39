// SPDX-License-Identifier: MIT
//
// The command-line tool: one run from options to exit status, top to bottom.
#include <cerrno>
#include <new>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_records_dump.h"
#include "codetrace/render/ct_writer.h"
#include "ct_args.h"
#include "kcommon/k_logger.h"
#include "tools/common/ct_failure.h"
#include "tools/common/ct_log_sink.h"
#include "tools/common/ct_output.h"
#include "tools/common/ct_process.h"
#include "tools/common/ct_progress.h"

namespace {

using CT::Tool::fail;
using CT::Tool::open_failed;
using CT::Tool::open_output_failed;
using CT::Tool::write_failed;

bool chosen(const CT::Args& args, CT::OutputFormat format) { return args.formats.contains(format); }

// Builds the tree, and dumps each checkpoint on the way if that is wanted.
void read_tree(const CT::File& file, bool dumps, CT::Storage& storage, CT::Writer& out,
               CT::Tool::Progress& progress) {
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
                   CT::Tool::Progress& progress) {
  for (const CT::FormatRow& row : CT::formats) {
    if (row.of_file == nullptr || !chosen(args, row.format)) continue;
    if (row.said != nullptr) klog(3, "{}", row.said);
    row.of_file(file, out);
  }
  CT::Tool::LogSink log;
  CT::Storage storage(file, &log);
  read_tree(file, chosen(args, CT::OutputFormat::DUMP), storage, out, progress);
  const auto count = [&](CT::Storage::NodeId done) {
    progress.show("writing", static_cast<std::uint64_t>(done),
                  static_cast<std::uint64_t>(storage.node_count()));
  };
  for (const CT::FormatRow& row : CT::formats) {
    if (row.of_tree == nullptr || !chosen(args, row.format)) continue;
    if (row.said != nullptr) klog(3, "{}", row.said);
    row.of_tree(storage, out, count);
  }
}

int run(int argc, char** argv, CT::Tool::StandardDescriptors& standard) {
  CT::Args args;
  if (!args.init(argc, argv)) return CT::Tool::end_of_printing(args.error ? 1 : 0);
  CT::File file(args.filename);
  file.set_log(CT::Tool::log_line);
  if (!file.open()) return fail(open_failed, args.filename, file.error_message());
  CT::Tool::Output output(args.output, standard);
  // Takes its memory before the output is emptied.
  CT::StreamWriter out(output);
  if (!args.output.isEmpty()) klog(3, "Using {} as the output", args.output.toStdString());
  if (!output.open([&](int descriptor) { return file.is_same_file(descriptor); })) {
    return fail(open_output_failed, output.name(), output.error_message());
  }
  try {
    CT::Tool::Progress progress(output.descriptor());
    write_outputs(args, file, out, progress);
  } catch (const std::bad_alloc&) {
    return fail(write_failed, output.name(), qt_error_string(ENOMEM));
  }
  out.flush();
  if (output.close()) return 0;
  return output.is_pipe_closed() ? 1 : fail(write_failed, output.name(), output.error_message());
}

}  // namespace

int main(int argc, char** argv) { return CT::Tool::run_tool(run, argc, argv); }
