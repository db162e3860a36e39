// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_queries.h"

#include <QHashFunctions>
#include <algorithm>
#include <unordered_map>

#include "ctmeasure/ct_database_call.h"
#include "ctmeasure/ct_elapsed.h"
#include "ctmeasure/ct_sql_text.h"

namespace CT {

namespace {

using Known = DatabaseCall::Known;
using Action = DatabaseCall::Action;

std::uint64_t mixed(std::uint64_t hash, std::uint64_t more) {
  constexpr std::uint64_t odd = 0x9E37'79B9'7F4A'7C15;
  hash = (hash ^ more) * odd;
  return hash ^ (hash >> 32);
}

struct TextHash {
  std::size_t operator()(const std::string& text) const {
    return ::qHashBits(text.data(), text.size(), QHashSeed::globalSeed());
  }
};

// The calls around a node. Nodes are asked for in rising order, so what lies around them is a
// stack, and each call is looked at once.
class CallStack {
 public:
  struct Around {
    NodeId id = Storage::no_node;
    std::uint64_t hash = 0;
    NodeId entered_by = Storage::no_node;  // of the database layer
  };

  explicit CallStack(const Trace& trace, const Measures& measures)
      : trace_(trace), measures_(measures), layers_(trace.functions().size(), Layer::unknown) {}

  // Of the node as if it was one around others.
  Around of(NodeId id) {
    while (!open_.empty() && trace_.last(open_.back().id) < id) open_.pop_back();
    const NodeId known = open_.empty() ? Storage::no_node : open_.back().id;
    const std::size_t bottom = open_.size();
    for (NodeId above = trace_.parent(id); above != known; above = trace_.parent(above)) {
      open_.push_back({above});
    }
    std::reverse(open_.begin() + static_cast<std::ptrdiff_t>(bottom), open_.end());
    for (std::size_t i = bottom; i != open_.size(); ++i) {
      open_[i] = inside(i != 0 ? open_[i - 1] : Around(), open_[i].id);
    }
    return inside(open_.empty() ? Around() : open_.back(), id);
  }

 private:
  enum class Layer : std::uint8_t { unknown, yes, no };

  Around inside(const Around& around, NodeId id) {
    const std::int32_t function = measures_[id].function;
    const auto view = CheckpointView::at(trace_.file(), trace_.begin_offset(id));
    const Checkpoint::Base record(view, trace_.storage().entities());
    Around made = {
        id, mixed(mixed(around.hash, static_cast<std::uint32_t>(function)), record.line_no())};
    if (function >= 0 && is_layer(static_cast<std::size_t>(function))) {
      made.entered_by = around.entered_by != Storage::no_node ? around.entered_by : id;
    }
    return made;
  }

  // Functions of PHP, such as those that call another one, are no callers of interest.
  bool is_layer(std::size_t function) {
    Layer& layer = layers_[function];
    if (layer == Layer::unknown) {
      const auto& entry = trace_.functions()[function];
      layer = !entry.is_user() || is_database_layer(entry) ? Layer::yes : Layer::no;
    }
    return layer == Layer::yes;
  }

  const Trace& trace_;
  const Measures& measures_;
  std::vector<Around> open_;
  std::vector<Layer> layers_;
};

// What a call was given, as far as statements are told by it.
struct Said {
  Checkpoint::String first_text;
  Checkpoint::String second_text;
  std::uint32_t this_handle = 0;
  std::uint32_t first_handle = 0;  // of an object that is the first argument
  std::string connection;
};

class QueryFinder {
 public:
  QueryFinder(const Trace& trace, const Measures& measures)
      : trace_(trace), stack_(trace, measures) {}

  void add(NodeId id, const DatabaseCall& call) {
    const Node::Base node = trace_.node(id);
    const Said said = said_to(*node.begin_as<Checkpoint::FunctionCall>());
    const CallStack::Around around = stack_.of(id);
    Query query = {id, Storage::no_node, around.entered_by, {}, around.hash, false};
    query.only_prepares = call.action == Action::prepare;
    if (call.action == Action::execute) {
      const std::int64_t prepared = find(call.known, said);
      if (prepared >= 0) {
        query.text = found_[static_cast<std::size_t>(prepared)].text;
        query.prepared_by = found_[static_cast<std::size_t>(prepared)].id;
      }
    } else {
      query.text = call.known == Known::by_name ? said.second_text : said.first_text;
    }
    found_.push_back(query);
    if (call.action != Action::execute) keep(call.known, said, node);
  }

  std::vector<Query> take() { return std::move(found_); }

 private:
  Said said_to(const Checkpoint::FunctionCall& call) {
    Said said;
    said.this_handle = call.this_value(tape_).object_handle();
    bool is_first = true;
    for (const Checkpoint::ValueRef value : call.args(tape_)) {
      if (is_first) said.first_handle = value.object_handle();
      if (is_first && value.type() != Checkpoint::ValueType::string) {
        said.connection =
            std::to_string(value.object_handle()) + "/" + std::to_string(value.resource_handle());
      }
      is_first = false;
      if (value.type() != Checkpoint::ValueType::string) continue;
      (said.first_text.data == nullptr ? said.first_text : said.second_text) = value.string();
      if (said.second_text.data != nullptr) break;
    }
    return said;
  }

  static std::string name_of(const Said& said, const std::string& connection) {
    return connection + ":" + std::string(said.first_text.view());
  }

  [[nodiscard]] std::int64_t find(Known known, const Said& said) const {
    if (known == Known::by_name) {
      const auto place = by_name_.find(name_of(said, said.connection));
      if (place != by_name_.end()) return place->second;
      const auto anywhere = by_name_.find(name_of(said, {}));
      return anywhere != by_name_.end() ? anywhere->second : -1;
    }
    const auto place =
        by_handle_.find(known == Known::by_this ? said.this_handle : said.first_handle);
    return place != by_handle_.end() ? place->second : -1;
  }

  // From now on the statement has the text of the last query.
  void keep(Known known, const Said& said, const Node::Base& node) {
    const auto last = static_cast<std::int64_t>(found_.size()) - 1;
    switch (known) {
      case Known::not_at_all: break;
      case Known::by_this: by_handle_[said.this_handle] = last; break;
      case Known::by_argument: by_handle_[said.first_handle] = last; break;
      case Known::by_result:
        if (const auto end = node.end_as<Checkpoint::FunctionReturn>()) {
          const Checkpoint::ValueRef result = end->value(tape_);
          if (result.type() == Checkpoint::ValueType::object) {
            by_handle_[result.object_handle()] = last;
          }
        }
        break;
      case Known::by_name:
        by_name_[name_of(said, said.connection)] = last;
        by_name_[name_of(said, {})] = last;
        break;
    }
  }

  const Trace& trace_;
  CallStack stack_;
  std::vector<Query> found_;
  Checkpoint::ValueTape tape_;
  std::unordered_map<std::uint32_t, std::int64_t> by_handle_;
  std::unordered_map<std::string, std::int64_t, TextHash> by_name_;
};

}  // namespace

std::vector<Query> queries(const Trace& trace, const Measures& measures) {
  std::vector<const DatabaseCall*> calls;
  bool has_some = false;
  for (const Checkpoint::Function& function : trace.functions()) {
    calls.push_back(database_call_of(function));
    has_some = has_some || calls.back() != nullptr;
  }
  if (!has_some) return {};
  QueryFinder finder(trace, measures);
  for (NodeId id = 0; id != measures.node_count(); ++id) {
    const std::int32_t function = measures[id].function;
    if (function < 0) continue;
    if (const auto* call = calls[static_cast<std::size_t>(function)]) finder.add(id, *call);
  }
  return finder.take();
}

std::vector<LikeQueries> like_queries(const std::vector<Query>& list, const Measures& measures,
                                      bool same_stack) {
  std::vector<LikeQueries> groups;
  std::unordered_map<std::string, std::size_t, TextHash> known;
  for (std::size_t i = 0; i != list.size(); ++i) {
    const Query& query = list[i];
    if (same_stack && query.only_prepares) continue;
    const std::uint64_t stack = same_stack ? query.stack : 0;
    std::string text = like_sql(query.text.view(), query.text.is_cut());
    const auto [place, is_new] =
        known.try_emplace(std::to_string(stack) + " " + text, groups.size());
    if (is_new) groups.push_back({std::move(text), stack, {}, 0, 0, query.id, query.id});
    LikeQueries& group = groups[place->second];
    const Measure& measure = measures[query.id];
    group.which.push_back(i);
    if (!query.only_prepares) ++group.executions;
    group.total_ns = bounded_sum(group.total_ns, measure.total_ns);
    if (measure.total_ns > measures[group.slowest].total_ns) group.slowest = query.id;
  }
  return groups;
}

}  // namespace CT
