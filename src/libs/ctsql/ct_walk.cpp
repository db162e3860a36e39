// SPDX-License-Identifier: MIT
#include "ctsql/ct_walk.h"

#include <algorithm>

namespace CT::Sql {

void Walk::start(const Search& search) {
  search_ = search;
  is_at_end_ = search_.is_empty();
  if (is_at_end_) return;
  switch (search_.access) {
    case Access::all: start_all(); break;
    case Access::of_parent: start_children(); break;
    case Access::of_function: start_list(data_.calls().of(search_.key)); break;
    case Access::of_name: start_named(); break;
    case Access::function_by_function:
    case Access::name_by_name: start_functions(); break;
    case Access::above: start_above(); break;
  }
  next();
}

void Walk::start_all() {
  if (table_.rows == RowSet::listed) return start_list(data_.nodes_of(table_.type));
  source_ = Source::range;
  next_ = search_.low;
  const std::int64_t count = table_.rows == RowSet::numbered
                                 ? table_.count(data_)
                                 : std::int64_t{data_.trace().node_count()};
  search_.high = std::min(search_.high, count - 1);
}

// Of a list in rising order only what lies inside the limits is looked at.
void Walk::start_list(std::span<const NodeId> list) {
  source_ = Source::list;
  const auto begin = std::lower_bound(list.begin(), list.end(), search_.low);
  const auto end = std::upper_bound(begin, list.end(), search_.high);
  list_ = {begin, end};
}

void Walk::start_children() {
  source_ = Source::children;
  next_ = Storage::no_node;
  const Trace& trace = data_.trace();
  if (search_.key >= trace.node_count()) return;
  const auto parent = static_cast<NodeId>(search_.key);
  if (trace.last(parent) != parent) next_ = search_.key + 1;
}

void Walk::start_functions() {
  source_ = Source::functions;
  function_ = 0;
  list_ = {};
}

void Walk::start_named() {
  made_ = data_.names().candidates(search_.name);
  if (table_.rows == RowSet::calls) {
    const std::vector<std::int32_t> functions = std::move(made_);
    if (functions.size() == 1) return start_list(data_.calls().of(functions.front()));
    made_ = {};
    for (const std::int32_t function : functions) {
      const auto calls = data_.calls().of(function);
      made_.insert(made_.end(), calls.begin(), calls.end());
    }
    std::sort(made_.begin(), made_.end());
  }
  start_list(made_);
}

void Walk::start_above() {
  made_.clear();
  const Trace& trace = data_.trace();
  if (search_.key < trace.node_count()) {
    for (NodeId id = trace.parent(static_cast<NodeId>(search_.key)); id != Storage::no_node;
         id = trace.parent(id)) {
      made_.push_back(id);
    }
  }
  std::reverse(made_.begin(), made_.end());
  start_list(made_);
}

void Walk::next() {
  is_at_end_ = !step();
  if (!is_at_end_) data_.count_row();
}

bool Walk::step() {
  switch (source_) {
    case Source::range:
      for (; next_ <= search_.high; ++next_) {
        if (!is_row(static_cast<NodeId>(next_))) continue;
        number_ = static_cast<std::int32_t>(next_++);
        return true;
      }
      return false;
    case Source::list: return step_in_list();
    case Source::children:
      while (next_ != Storage::no_node) {
        number_ = static_cast<NodeId>(next_);
        next_ = data_.trace().next_sibling(number_);
        if (is_row(number_)) return true;
      }
      return false;
    case Source::functions:
      const auto order = data_.names().in_order();
      while (!step_in_list()) {
        if (function_ == data_.trace().functions().size()) return false;
        const auto function = search_.access == Access::name_by_name
                                  ? std::int64_t{order[function_]}
                                  : static_cast<std::int64_t>(function_);
        ++function_;
        start_list(data_.calls().of(function));
        source_ = Source::functions;
      }
      return true;
  }
  return false;
}

bool Walk::step_in_list() {
  if (list_.empty()) return false;
  number_ = list_.front();
  // In the order of functions each call lies somewhere else.
  constexpr std::size_t ahead = 12;
  if (list_.size() > ahead) __builtin_prefetch(&data_.measures()[list_[ahead]]);
  list_ = list_.subspan(1);
  return true;
}

bool Walk::is_row(NodeId id) const {
  switch (table_.rows) {
    case RowSet::calls: return data_.measures()[id].function >= 0;
    case RowSet::listed: return data_.trace().type(id) == table_.type;
    case RowSet::nodes:
    case RowSet::numbered:
    case RowSet::above: break;
  }
  return true;
}

}  // namespace CT::Sql
