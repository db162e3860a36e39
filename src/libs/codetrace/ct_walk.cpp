// SPDX-License-Identifier: MIT
#include "codetrace/ct_walk.h"

#include <algorithm>

#include "kcommon/k_logger.h"

namespace CT {

namespace {

Checkpoint::Type type_of(const CheckpointView& view) {
  return std::min(static_cast<Checkpoint::Type>(view.type()), Checkpoint::Type::INVALID);
}

void report_damage(const CheckpointView& view, std::uint32_t payload_offset) {
  klog(0, "{} checkpoint at DATA offset {}: damaged at payload offset {} of {}",
       type_name(type_of(view)), view.offset(), payload_offset, view.size());
}

void report_broken(const CheckpointView& view) {
  const bool in_header = view.is_header_broken();
  klog(0, "{} checkpoint at DATA offset {}: {} needs {} bytes, {} bytes left",
       type_name(in_header ? Checkpoint::Type::INVALID : type_of(view)), view.offset(),
       in_header ? "header word" : "payload", view.wanted(), view.left());
}

}  // namespace

void read_checkpoints(const File& file, Storage& storage, const RecordVisitor& visit) {
  CheckpointView view(file);
  Checkpoint::Record room;
  while (view.step()) {
    const Checkpoint::Base* record = room.decode(view, &storage);
    if (record == nullptr) {
      klog(0, "Invalid checkpoint type {}", static_cast<unsigned>(type_of(view)));
      continue;
    }
    if (record->damage()) report_damage(view, *record->damage());
    storage.add_checkpoint(*record);
    if (visit && !visit(*record)) return;
  }
  if (view.is_broken()) report_broken(view);
}

}  // namespace CT
