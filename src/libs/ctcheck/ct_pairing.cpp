// SPDX-License-Identifier: MIT
#include "ctcheck/ct_pairing.h"

#include <algorithm>

#include "codetrace/model/ct_view.h"

namespace CT::Check {

using Checkpoint::Role;
using Checkpoint::Type;

void Pairing::add(std::uint32_t offset, const Verdict& record) {
  const Spot spot = {Part::data, offset, record.type, offset};
  const Role role = type_info(record.type).role;
  ++records_;
  if (role == Role::root) return startup(spot);
  if (top_ == none) return reject(spot);
  switch (role) {
    case Role::root_end: shutdown(spot); break;
    case Role::span: open(spot); break;
    case Role::span_end: close(spot, record.start); break;
    case Role::root:
    case Role::leaf:
    case Role::none: break;
  }
}

// Of a checkpoint where no request is open.
void Pairing::reject(const Spot& spot) {
  ++reader_.rejected;
  if (corruption_) {
    ++corruption_->left_out;
  } else if (has_ended_) {
    defects_.add(Code::after_shutdown, spot,
                 [] { return Words{"the checkpoint stands behind SHUTDOWN"}; });
  } else {
    defects_.add(Code::before_startup, spot,
                 [] { return Words{"the checkpoint stands before STARTUP"}; });
  }
}

void Pairing::startup(const Spot& spot) {
  if (begins_.empty()) return open(spot);
  ++reader_.rejected;
  if (corruption_) ++corruption_->left_out;
  defects_.add(Code::startup_twice, spot, [&] {
    return Words{"the request began at " + place_name(Part::data, begins_[0].begin)};
  });
}

void Pairing::open(const Spot& spot) {
  begins_.push_back({static_cast<std::uint32_t>(spot.offset), is_open, top_});
  top_ = static_cast<Index>(begins_.size()) - 1;
}

void Pairing::shutdown(const Spot& spot) {
  while (at(top_).parent != none) leave(top_);
  at(top_).end = static_cast<std::uint32_t>(spot.offset);
  top_ = none;
  has_ended_ = true;
}

// Something around it ends, and it has not.
void Pairing::leave(Index index) {
  Begin& begin = at(index);
  begin.end = is_left;
  top_ = begin.parent;
  const Spot spot = {Part::data, begin.begin, type_at(begin.begin), begin.begin};
  defects_.add(Code::no_end, spot, [] { return Words{"what begins here has no end"}; });
}

void Pairing::close(const Spot& spot, std::uint64_t start) {
  const std::uint64_t offset = start - layout_.header.orig_data;
  const bool is_inside = start != 0 && offset < layout_.data.size();
  const Index index = is_inside ? find(offset) : none;
  if (index == none || at(index).parent == none) return report_no_begin(spot, start);
  if (!has_kind(spot.type, type_at(offset))) {
    // Kept: of the ends only the return of an include looks at what it closes.
    const bool is_rejected = spot.type == Type::INCLUDE_RETURN;
    defects_.add(Code::end_kind, spot, [&] {
      Words words{"the end refers to the " + name_at(offset)};
      if (is_rejected) words.cost = "it is left out, and what it refers to has no end";
      return words;
    });
    if (is_rejected) return void(++reader_.rejected);
  }
  if (index != top_) return close_inner(index, spot);
  at(index).end = static_cast<std::uint32_t>(spot.offset);
  top_ = at(index).parent;
}

void Pairing::close_inner(Index index, const Spot& spot) {
  ++reader_.repaired;
  if (at(index).end != is_open) return corrupt(index, spot);
  while (top_ != index) leave(top_);
  at(index).end = static_cast<std::uint32_t>(spot.offset);
  top_ = at(index).parent;
}

// Kept: an end of what is open no more leaves the reader with nothing that is open.
void Pairing::corrupt(Index index, const Spot& spot) {
  ++reader_.rejected;
  const Begin& begin = at(index);
  const bool has_ended = begin.end != is_left;
  Words words{"the " + name_at(begin.begin)};
  if (has_ended) {
    words.what.append(" ended already at ").append(place_name(Part::data, begin.end));
  } else {
    words.what.append(" ends after what was around it");
  }
  corruption_ = {has_ended ? Code::end_twice : Code::end_late, spot, std::move(words)};
  top_ = none;
}

void Pairing::report_no_begin(const Spot& spot, std::uint64_t start) {
  ++reader_.rejected;
  defects_.add(Code::no_begin, spot, [&] { return Words{why_no_begin(spot, start)}; });
}

std::string Pairing::why_no_begin(const Spot& spot, std::uint64_t start) const {
  const std::uint64_t offset = start - layout_.header.orig_data;
  if (start == 0) return "the end refers to nothing";
  if (offset >= layout_.header.data_size) return "the end refers to a place outside of DATA";
  if (offset == spot.offset) return "the end refers to itself";
  std::string words = "the end refers to ";
  if (offset > spot.offset) {
    return words.append(place_name(Part::data, offset)).append(", which comes behind it");
  }
  if (!frames_.has(offset)) {
    return words.append(place_name(Part::data, offset))
        .append(", which is in the middle of a checkpoint");
  }
  return words.append("the ").append(name_at(offset)).append(", which is no begin in the tree");
}

// Begins rise in the order of the file.
Pairing::Index Pairing::find(std::uint64_t offset) const {
  if (top_ != none && begins_[static_cast<std::size_t>(top_)].begin == offset) return top_;
  const auto* const found =
      std::lower_bound(begins_.begin(), begins_.end(), offset,
                       [](const Begin& begin, std::uint64_t at) { return begin.begin < at; });
  if (found == begins_.end() || found->begin != offset) return none;
  return static_cast<Index>(found - begins_.begin());
}

Type Pairing::type_at(std::uint64_t offset) const {
  return Checkpoint::type_of_code(
      type_of_header(layout_.data.data() + offset, layout_.big_endian()));
}

std::string Pairing::name_at(std::uint64_t offset) const {
  return std::string(type_name(type_at(offset)))
      .append(" at ")
      .append(place_name(Part::data, offset));
}

bool Pairing::has_kind(Type end, Type begin) const {
  switch (end) {
    case Type::FUNCTION_RETURN:
    case Type::FUNCTION_EXCEPTION:
      return begin == Type::FUNCTION_CALL || begin == Type::METHOD_CALL;
    case Type::INCLUDE_RETURN:
    case Type::INCLUDE_EXCEPTION: return begin == Type::INCLUDE_CALL;
    case Type::SAPI_WRITE_END: return begin == Type::SAPI_WRITE_START;
    default: return false;
  }
}

void Pairing::finish() {
  const Spot begin = {Part::data, 0};
  if (begins_.empty()) {
    defects_.forget(Code::before_startup);
    defects_.add(Code::no_startup, begin, [&] {
      Words words{records_ == 0 ? "there is no checkpoint" : "there is no STARTUP"};
      words.cost = records_ == 0 ? "there is nothing to show"
                                 : "the reader leaves out " + counted(records_, "checkpoint");
      return words;
    });
    return;
  }
  if (corruption_) {
    defects_.add(corruption_->code, corruption_->spot, [&] {
      Words words = std::move(corruption_->words);
      words.cost = counted(corruption_->left_out, "later checkpoint");
      words.cost.append(corruption_->left_out == 1 ? " is" : " are");
      words.cost.append(" left out by the reader");
      return words;
    });
    return;
  }
  if (top_ == none) return;
  while (at(top_).parent != none) leave(top_);
  defects_.add(Code::no_shutdown, {Part::data, begins_[0].begin, Type::STARTUP, begins_[0].begin},
               [] { return Words{"what begins here is never shut down"}; });
}

}  // namespace CT::Check
