// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_pairing.h"

#include <algorithm>

namespace CT::Salvage {

namespace {

using Checkpoint::Type;

// Whether a begin and an end are of one kind.
bool belong_together(Type begin, Type end) {
  switch (end) {
    case Type::INCLUDE_RETURN:
    case Type::INCLUDE_EXCEPTION: return begin == Type::INCLUDE_CALL;
    case Type::SAPI_WRITE_END: return begin == Type::SAPI_WRITE_START;
    default: return begin == Type::FUNCTION_CALL || begin == Type::METHOD_CALL;
  }
}

}  // namespace

Ends::Ends(const unsigned char* file, Order order, std::uint64_t base, const Selection& selection)
    : order_(order), base_(base), runs_(selection.runs) {
  std::uint32_t number = 0;
  // Nothing begins before the request.
  const std::int64_t lowest = selection.has_startup && !runs_.empty() ? runs_.front().place : 0;
  for (const Piece& run : runs_) {
    each_checkpoint(file, order, run.begin, run.end, [&](const Frame& frame, std::uint64_t offset) {
      if (!frame.is_end()) return true;
      const std::int64_t begin = place(frame);
      lasts_.push_back({begin, ++number});
      if (begin >= lowest && begin < run.place_of(offset) && !is_kept(begin)) {
        lost_.push_back({begin, frame.type(), offset, false});
      }
      return true;
    });
  }
  std::sort(lasts_.begin(), lasts_.end(), [](const Last& a, const Last& b) {
    return a.place != b.place ? a.place < b.place : a.number > b.number;
  });
  const auto is_same = [](const Last& a, const Last& b) { return a.place == b.place; };
  lasts_.erase(std::unique(lasts_.begin(), lasts_.end(), is_same), lasts_.end());
  std::stable_sort(lost_.begin(), lost_.end(),
                   [](const LostBegin& a, const LostBegin& b) { return a.place < b.place; });
  lost_.erase(
      std::unique(lost_.begin(), lost_.end(),
                  [](const LostBegin& a, const LostBegin& b) { return a.place == b.place; }),
      lost_.end());
}

std::uint32_t Ends::last(std::int64_t place) const {
  const auto found =
      std::lower_bound(lasts_.begin(), lasts_.end(), place,
                       [](const Last& last, std::int64_t wanted) { return last.place < wanted; });
  return found != lasts_.end() && found->place == place ? found->number : 0;
}

bool Ends::is_kept(std::int64_t place) const {
  const auto behind =
      std::upper_bound(runs_.begin(), runs_.end(), place,
                       [](std::int64_t wanted, const Piece& run) { return wanted < run.place; });
  return behind != runs_.begin() && place < std::prev(behind)->end_place();
}

// Kept: as in the reader, only the return of an include minds what it closes.
bool OpenStack::fits(const Node& node, const Frame& end) const {
  return end.type() != Type::INCLUDE_RETURN || node.begin == Type::INCLUDE_CALL;
}

std::size_t OpenStack::find(std::int64_t place) const {
  if (!nodes_.empty() && nodes_.back().place == place) return nodes_.size() - 1;
  const auto found =
      std::lower_bound(nodes_.begin(), nodes_.end(), place,
                       [](const Node& node, std::int64_t wanted) { return node.place < wanted; });
  return found != nodes_.end() && found->place == place
             ? static_cast<std::size_t>(found - nodes_.begin())
             : nodes_.size();
}

OpenStack::Decision OpenStack::take(std::size_t node, Decision decision) {
  closed_ = nodes_[node];
  if (closed_.lost != nullptr) closed_.lost->is_used = true;
  nodes_.resize(node);
  return decision;
}

// What will never end is off the stack once an end came by that is for something further out, so
// each node is passed once.
OpenStack::Decision OpenStack::close(const Frame& end) {
  const std::uint32_t number = ++number_;
  const std::int64_t place = ends_.place(end);
  const std::size_t node = find(place);
  const bool is_open = node != nodes_.size() && fits(nodes_[node], end);
  if (is_open && node + 1 == nodes_.size()) return take(node, Decision::closes);
  const bool may_close = is_open && ends_.last(place) == number;
  if (!may_close && !nodes_.empty() && ends_.last(nodes_.back().place) == 0 &&
      belong_together(nodes_.back().begin, end.type())) {
    return take(nodes_.size() - 1, Decision::led_back);
  }
  if (may_close) {
    std::size_t top = nodes_.size() - 1;
    while (top != node && ends_.last(nodes_[top].place) <= number) --top;
    nodes_.resize(top + 1);
    if (top == node) return take(node, Decision::closes);
  }
  return ends_.is_kept(place) ? Decision::again : Decision::astray;
}

}  // namespace CT::Salvage
