// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_value.h"

namespace CT::Checkpoint {

std::size_t ValueRef::size() const {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& pair : elements()) ++count;
  return count;
}

ValueRef ValueRef::find(std::string_view key) const {
  ValueRef found;
  for (const auto& [candidate, value] : elements()) {
    const bool is_it = candidate.type() == ValueType::string && candidate.string().view() == key;
    if (is_it) found = value;
  }
  return found;
}

ValueRef ValueRef::find(std::int64_t key) const {
  ValueRef found;
  for (const auto& [candidate, value] : elements()) {
    if (candidate.type() == ValueType::long_ && candidate.as_long() == key) found = value;
  }
  return found;
}

std::shared_ptr<ValueTape> make_kept_tape(const CheckpointView& view,
                                          std::shared_ptr<const Entities> entities) {
  struct Kept {
    std::shared_ptr<const Entities> entities;
    ValueTape tape;
  };
  auto kept = std::make_shared<Kept>();
  kept->tape.reset(view, entities.get());
  kept->entities = std::move(entities);
  return {kept, &kept->tape};
}

KVal::KVal(const CheckpointView& view, Cursor& cursor, Entities* entities) {
  std::shared_ptr<Entities> own;
  if (entities == nullptr) {
    own = Entities::make(view.file(), Entities::Numbering::none);
  } else {
    own = entities->shared_from_this();
  }
  Cursor ahead = cursor;
  scan_values(ahead, 1, own.get());
  auto tape = make_kept_tape(view, own);
  const ValueTape::Index item = tape->decode(cursor);
  *this = KVal(std::move(tape), item);
}

}  // namespace CT::Checkpoint
