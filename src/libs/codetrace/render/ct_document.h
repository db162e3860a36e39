// SPDX-License-Identifier: MIT
//
// The two outputs that need the whole tree: the indented text and the JSON document. Both stream:
// they hold one node at a time. They stop early when the output fails.
#pragma once

#include <cstdint>
#include <functional>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/ct_storage.h"
#include "codetrace/render/ct_writer.h"
#include "kcommon/k_export.h"

class QJsonObject;

namespace CT {

// Told now and then how many nodes are written. Empty if nobody wants to know.
using NodeCounter = std::function<void(Storage::NodeId)>;

// One line a node, two blanks deeper than its parent's; "? " before what is not complete.
CODETRACE_EXPORT void write_text(const Storage& storage, Writer& out,
                                 const NodeCounter& count = {});

// The nodes, functions and classes as QJsonDocument::toJson would print them indented, and one more
// newline.
CODETRACE_EXPORT void write_json(const Storage& storage, Writer& out,
                                 const NodeCounter& count = {});

// The same document for programs that work with Qt's classes: the whole of it in memory.
CODETRACE_EXPORT QJsonObject as_json(const Storage& storage);

// How deep a node stands, told node by node in order of creation.
class CODETRACE_EXPORT Outline {
 public:
  // The number of the node's ancestors among those placed before. A node without parent (negative)
  // is placed under the last one.
  std::size_t place(std::int32_t id, std::int32_t parent_id);

 private:
  PlainArray<std::int32_t> ancestors_;
};

}  // namespace CT
