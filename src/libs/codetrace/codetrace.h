// SPDX-License-Identifier: MIT
//
// The library for programs that read Code Trace files: include this, link CodeTrace::codetrace.
//
// A run has three objects, declared in this order because each borrows from the one before it:
//
//   CT::File       the file's bytes, from disk or memory, checked as a whole
//   CT::Storage    the tree of the request, with its functions and classes
//   CT::NodeReader one node of the tree at a time
//
// The tree, on standard output:
//
//   CT::File file(QStringLiteral("request.ct"));
//   if (!file.open()) {
//     std::fprintf(stderr, "%s\n", qPrintable(file.error_message()));
//     return 1;
//   }
//   CT::Storage storage(file);
//   CT::read_checkpoints(file, storage);
//   CT::MemoryWriter text;
//   CT::write_text(storage, text);  // or write_json, write_headers, write_binary
//   std::fwrite(text.view().data(), 1, text.size(), stdout);
//
// Its calls, by node and by checkpoint:
//
//   CT::NodeReader nodes(storage);
//   for (CT::Storage::NodeId id = 0; id < storage.node_count(); ++id) {
//     const CT::Node::Base& node = nodes.read(id);
//     const auto* call = node.begin_as<CT::Checkpoint::FunctionCall>();
//     if (call == nullptr) continue;
//     const std::string_view name = call->function()->name().view();
//     for (const CT::Checkpoint::KVal& value : call->args()) { ... }
//   }
//
// Checkpoints without a tree: CT::CheckpointView steps through a file, CT::Checkpoint::Record or
// make_record makes a record of where it stands. Qt's JSON classes: CT::as_json, KVal::as_json,
// Node::Base::to_json. Output in pieces: a CT::StreamWriter over a CT::Sink of yours.
//
// Ownership. The file owns the bytes and everything points into them, so it outlives records,
// nodes, values and texts, and is not opened again while they live. A reference from a Record or a
// NodeReader ends with its next use; make_record and Storage::node give objects of their own.
// Functions, classes and values are shared and do not change.
//
// Errors are values. CT::File::open returns false and says why; a Writer whose sink failed is not
// ok(); damaged bytes give records that are not valid, absent texts and undef values. Nothing
// throws but the standard library when memory ends. What is odd about a file goes to the log,
// which is silent until KLogger::instance().addSink() is called.
//
// Threads. None are started and nothing is locked; the log belongs to the whole process. Use the
// library from one thread at a time.
//
// A function or class that is neither marked CODETRACE_EXPORT nor inline is the library's own.
#pragma once

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/model/ct_view.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "codetrace/tree/ct_fields.h"
#include "codetrace/tree/ct_node.h"
