// SPDX-License-Identifier: MIT
//
// The library for programs that read Code Trace files: include this, link CodeTrace::codetrace.
// docs/library.md is an introduction. A trace, its calls and its text:
//
//   CT::Trace trace;
//   if (!trace.open("request.ct")) {
//     std::fprintf(stderr, "%s\n", trace.error_message().c_str());
//     return 1;
//   }
//   for (CT::NodeId id = 0; id != trace.node_count(); ++id) {
//     const CT::Node::Base node = trace.node(id);
//     const auto call = node.begin_as<CT::Checkpoint::FunctionCall>();
//     if (!call) continue;
//     const std::string_view name = call->function()->name().view();
//     for (const CT::Checkpoint::KVal& argument : call->args()) { ... }
//   }
//   CT::MemoryWriter text;
//   CT::write_text(trace.storage(), text);  // or write_json; write_headers of trace.file()
//
// Checkpoints without a tree: CT::CheckpointView steps through a CT::File, make_record makes a
// record of where it stands. Records on the way into the tree: CT::read_checkpoints with a visitor.
// What a node consists of, as names and values: Node::Base::collect into CT::Fields. Qt's JSON
// classes: CT::as_json, KVal::as_json, Node::Base::to_json. Output in pieces: a CT::StreamWriter
// over a CT::Sink of yours.
//
// Ownership. A Trace owns all that was read, and moving it moves none of it. Nodes, records, texts,
// functions, classes and values borrow from it. What lies on a ValueTape lives until the tape is
// used again. With a CT::File and a CT::Storage of your own, the file must outlive everything.
//
// Errors are values. Trace::open returns false and says why; a Writer whose sink failed is not
// ok(); damaged bytes give records that are not valid, absent texts and undef values. What is odd
// about a trace goes to a CT::FindingSink, if there is one, and is counted in Trace::summary().
// Nothing throws but the standard library when memory ends, and what your own sinks and visitors
// throw.
//
// Threads. None are started. A trace that is open does not change, and its const operations may be
// called from several threads at once; tapes, writers and readers belong to one thread each.
//
// A function or class that is neither marked CODETRACE_EXPORT nor inline is the library's own.
#pragma once

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/ct_trace.h"
#include "codetrace/ct_version.h"
#include "codetrace/model/ct_records.h"
#include "codetrace/model/ct_value.h"
#include "codetrace/model/ct_view.h"
#include "codetrace/render/ct_document.h"
#include "codetrace/render/ct_file_dump.h"
#include "codetrace/render/ct_node_text.h"
#include "codetrace/render/ct_writer.h"
#include "codetrace/tree/ct_diagnostics.h"
#include "codetrace/tree/ct_fields.h"
#include "codetrace/tree/ct_node.h"
