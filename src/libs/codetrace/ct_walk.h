// SPDX-License-Identifier: MIT
//
// The walk over all checkpoints of a file: each becomes a record, goes into the tree, and is shown
// to the caller. Unknown types and damage are logged here, once each, with type and place.
#pragma once

#include <functional>

#include "codetrace/ct_file.h"
#include "codetrace/ct_storage.h"
#include "codetrace/model/ct_records.h"
#include "kcommon/k_export.h"

namespace CT {

// Called for every record in file order, valid or not, after it went into the tree; the record
// lives until the call returns. False ends the walk.
using RecordVisitor = std::function<bool(const Checkpoint::Base&)>;

// Requires: a storage made for this file. An unopened file has no checkpoints.
CODETRACE_EXPORT void read_checkpoints(const File& file, Storage& storage,
                                       const RecordVisitor& visit = {});

}  // namespace CT
