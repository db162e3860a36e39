// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_checkpoint.h"

#include <algorithm>

#include "codetrace/model/ct_value_tape.h"

namespace CT::Checkpoint {

namespace {

// Steps over one field as it is stored; enters what it refers to.
void scan_field(Format::Field field, Cursor& cursor, Entities* entities) {
  switch (field) {
    case Format::Field::none: break;
    case Format::Field::reference: cursor.bytes(Format::reference_size); break;
    case Format::Field::u32: cursor.bytes(4); break;
    case Format::Field::cut_text: get_cut_str(cursor); break;
    case Format::Field::inline_text: get_inline_str(cursor); break;
    case Format::Field::value: scan_values(cursor, 1, entities); break;
    case Format::Field::arguments: scan_values(cursor, cursor.u32(), entities); break;
    case Format::Field::header_line:
      if (cursor.u8() < Format::first_operation_without_line) get_cut_str(cursor);
      break;
  }
}

constexpr bool is_call(Type type) {
  return type == Type::FUNCTION_CALL || type == Type::METHOD_CALL;
}
constexpr bool is_end(Type type) { return type_info(type).role == Role::span_end; }

static_assert(std::all_of(types.begin(), types.end(),
                          [](const TypeInfo& info) {
                            return !(is_call(info.type) || is_end(info.type)) ||
                                   info.layout[0] == Format::Field::reference;
                          }),
              "what places a record is its first field");

}  // namespace

inline Base::Base(const CheckpointView& view, const Entities* entities) {
  const Type type = type_of_code(view.type());
  if (!view.is_valid() || type == Type::INVALID) return;
  file_ = &view.file();
  checkpoint_ = view.checkpoint();
  entities_ = entities;
  type_ = type;
  size_ = view.size();
  if (size_ != 0) place_common_fields(view.presence());
  valid_ = size_ != 0 || !type_info(type).needs_payload;
}

// What places it in the tree must be there: the function of a call, the begin that an end refers
// to. The cursor, at its own fields, is led behind that.
template <class Find>
inline void Base::place_in_tree(Cursor& cursor, Find find) {
  if (!valid_) return;
  if (is_call(type_)) {
    function_ = find(cursor.u64());
    valid_ = function_ != nullptr;
  } else if (is_end(type_)) {
    valid_ = cursor.bytes(Format::reference_size) != nullptr;
  }
}

Base::Base(const CheckpointView& view, const Entities& entities) : Base(view, &entities) {
  Cursor cursor = own();
  place_in_tree(cursor, [&](std::uint64_t reference) { return entities.find_function(reference); });
}

Base Base::sighted(const CheckpointView& view, Entities& entities) {
  Base record(view, &entities);
  Cursor cursor = record.own();
  record.place_in_tree(cursor,
                       [&](std::uint64_t reference) { return entities.add_function(reference); });
  record.damage_ = record.scan(cursor, is_call(record.type_) || is_end(record.type_), &entities);
  return record;
}

// Mostly all are there, and eight sizes tell where they end.
inline void Base::place_common_fields(std::uint8_t presence) {
  own_ = Format::common_sizes[presence];
  if (own_ <= size_) {
    flags_ = presence;
  } else {
    place_cut_fields(presence);
  }
}

void Base::place_cut_fields(std::uint8_t presence) {
  cut_ = true;
  Cursor cursor = cursor_at(0);
  const auto read = [&](std::uint8_t bit, std::uint32_t first, std::uint32_t second) {
    if ((presence & bit) == 0) return;
    cursor.bytes(first);
    cursor.bytes(second);
    if (cursor.ok()) flags_ |= bit;
  };
  read(1, 8, 4);
  read(2, 8, 0);
  read(4, 8, 4);
  own_ = static_cast<std::uint32_t>(cursor.position() - payload());
}

void Base::reset(ValueTape& tape) const {
  tape.reset(file_, size_ != 0 ? payload() : nullptr, size_, entities_);
}

String Base::referenced_text(std::size_t offset) const {
  Cursor cursor = own();
  cursor.bytes(offset);
  return section_str_at(cursor.ok() ? file_->add_data().resolve(cursor.u64()) : nullptr);
}

std::uint32_t Base::look_for_damage() const {
  Cursor cursor = cursor_at(own_);
  return scan(cursor, false, nullptr);
}

// The cursor stands at the own fields; behind the first of them if that was read to place the
// record. A record that is not valid is looked at no further than the field that makes it so.
std::uint32_t Base::scan(Cursor& cursor, bool is_placed, Entities* entities) const {
  if (size_ == 0) return no_damage;
  if (cut_) return own_;
  const auto place = [&] { return static_cast<std::uint32_t>(cursor.position() - payload()); };
  if (is_placed && !cursor.ok()) return place();
  const TypeInfo::Layout& layout = type_info(type_).layout;
  for (std::size_t field = is_placed ? 1 : 0; field != layout.size(); ++field) {
    if (layout[field] == Format::Field::none || (field != 0 && !valid_)) break;
    scan_field(layout[field], cursor, entities);
    if (!cursor.ok()) return place();
  }
  return no_damage;
}

std::shared_ptr<const Base> make_record(const CheckpointView& view, Entities* entities) {
  if (type_info(type_of_code(view.type())).role == Role::none) return nullptr;
  struct Kept {
    std::shared_ptr<Entities> entities;
    Base record;
  };
  auto kept = std::make_shared<Kept>();
  kept->entities = entities != nullptr ? entities->shared_from_this()
                                       : Entities::make(view.file(), Entities::Numbering::none);
  kept->record = Base::sighted(view, *kept->entities);
  return {kept, &kept->record};
}

}  // namespace CT::Checkpoint
