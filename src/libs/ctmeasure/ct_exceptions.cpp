// SPDX-License-Identifier: MIT
//
// Three kinds of events are gathered and looked at in the order of the file: calls of constructors
// and of getMessage() on handles that are thrown somewhere, and throws.
#include "ctmeasure/ct_exceptions.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace CT {

namespace {

using Checkpoint::ValueType;

struct Throw {
  NodeId node;
  std::uint32_t handle;
  const Checkpoint::ClassEntry* class_entry;
  bool is_continued = false;       // the node around it threw the same
  NodeId from = Storage::no_node;  // the last node under it that threw the same
};

struct Event {
  enum class Kind : std::uint8_t { constructed, asked, thrown };
  std::uint32_t offset;  // in the file
  Kind kind;
  NodeId node;
  std::uint32_t handle;
};

// Functions by what they do with exceptions.
struct Named {
  std::vector<bool> constructors;
  std::vector<bool> messages;

  explicit Named(const Trace& trace) {
    for (const Checkpoint::Function& function : trace.functions()) {
      const std::string_view name = function.name().view();
      const bool is_method = function.class_entry() != nullptr;
      constructors.push_back(is_method && name == "__construct");
      messages.push_back(is_method && name == "getMessage" && !function.is_user());
    }
  }
};

class ExceptionFinder {
 public:
  ExceptionFinder(const Trace& trace, const Measures& measures)
      : trace_(trace), measures_(measures) {}

  std::vector<Exception> run() {
    find_throws();
    if (throws_.empty()) return {};
    link_throws();
    find_calls();
    std::sort(events_.begin(), events_.end(),
              [](const Event& a, const Event& b) { return a.offset < b.offset; });
    for (const Event& event : events_) look_at(event);
    return std::move(found_);
  }

 private:
  // What is known of a handle.
  struct Known {
    NodeId made_by = Storage::no_node;  // by a constructor; its object was not thrown yet
    Checkpoint::String message;
    std::ptrdiff_t previous = -1;
    std::ptrdiff_t thrown = -1;  // as which exception it was thrown last
  };

  void find_throws() {
    for (NodeId id = 0; id != measures_.node_count(); ++id) {
      if (!ends_thrown(id)) continue;
      const Node::Base node = trace_.node(id);
      const auto end = node.end_as<Checkpoint::EndWithValue>();
      if (!end) continue;
      const Checkpoint::ValueRef value = end->value(tape_);
      if (value.type() != ValueType::object) continue;
      throws_.push_back({id, value.object_handle(), value.class_entry()});
    }
  }

  // By the type of its end alone.
  [[nodiscard]] bool ends_thrown(NodeId id) const {
    const std::uint32_t offset = trace_.end_offset(id);
    if (offset == Storage::no_end) return false;
    const unsigned char* word = trace_.file().data().data() + offset;
    const auto type = Checkpoint::type_of_code(type_of_header(word, trace_.file().big_endian()));
    return type == Checkpoint::Type::FUNCTION_EXCEPTION ||
           type == Checkpoint::Type::INCLUDE_EXCEPTION;
  }

  [[nodiscard]] Throw* throw_of(NodeId node) {
    const auto place =
        std::lower_bound(throws_.begin(), throws_.end(), node,
                         [](const Throw& thrown, NodeId wanted) { return thrown.node < wanted; });
    return place != throws_.end() && place->node == node ? &*place : nullptr;
  }

  void link_throws() {
    std::unordered_set<std::uint32_t> handles;
    for (std::size_t i = throws_.size(); i-- != 0;) {
      Throw& thrown = throws_[i];
      handles.insert(thrown.handle);
      Throw* around = throw_of(trace_.parent(thrown.node));
      if (around == nullptr || around->handle != thrown.handle ||
          around->from != Storage::no_node) {
        continue;
      }
      around->from = thrown.node;
      thrown.is_continued = true;
    }
    for (const Throw& thrown : throws_) {
      if (thrown.from != Storage::no_node) continue;
      events_.push_back(
          {trace_.end_offset(thrown.node), Event::Kind::thrown, thrown.node, thrown.handle});
    }
    handles_ = std::move(handles);
  }

  void find_calls() {
    const Named named(trace_);
    for (NodeId id = 0; id != measures_.node_count(); ++id) {
      const std::int32_t function = measures_[id].function;
      if (function < 0) continue;
      const auto place = static_cast<std::size_t>(function);
      if (!named.constructors[place] && !named.messages[place]) continue;
      const auto call = trace_.node(id).begin_as<Checkpoint::FunctionCall>();
      const std::uint32_t handle = call->this_value(tape_).object_handle();
      if (!call->has_this() || !handles_.contains(handle)) continue;
      const bool constructs = named.constructors[place];
      const std::uint32_t end = trace_.end_offset(id);
      if (!constructs && end == Storage::no_end) continue;
      events_.push_back({constructs ? trace_.begin_offset(id) : end,
                         constructs ? Event::Kind::constructed : Event::Kind::asked, id, handle});
    }
  }

  void look_at(const Event& event) {
    Known& known = known_[event.handle];
    switch (event.kind) {
      case Event::Kind::constructed: construct(event.node, known); break;
      case Event::Kind::asked: ask(event.node, known); break;
      case Event::Kind::thrown: add_pass(event.node, known); break;
    }
  }

  // A constructor that lies under the one before it is that of a parent class.
  void construct(NodeId id, Known& known) {
    const bool is_parent = known.made_by != Storage::no_node && id <= trace_.last(known.made_by);
    if (!is_parent) known = {.made_by = id, .message = {}};
    const Node::Base node = trace_.node(id);
    bool is_first = true;
    for (const Checkpoint::ValueRef value :
         node.begin_as<Checkpoint::FunctionCall>()->args(tape_)) {
      // The one of PHP itself, which comes last, has it first.
      if (value.type() == ValueType::string && (is_first || known.message.data == nullptr)) {
        known.message = value.string();
      }
      if (value.type() == ValueType::object) note_previous(value.object_handle(), known);
      is_first = false;
    }
  }

  void note_previous(std::uint32_t handle, Known& known) {
    const auto place = known_.find(handle);
    if (place != known_.end() && place->second.thrown >= 0) known.previous = place->second.thrown;
  }

  void ask(NodeId id, const Known& known) {
    if (known.thrown < 0 || known.made_by != Storage::no_node) return;
    Exception& exception = found_[static_cast<std::size_t>(known.thrown)];
    if (exception.message.data != nullptr) return;
    const Node::Base node = trace_.node(id);
    if (const auto end = node.end_as<Checkpoint::FunctionReturn>()) {
      exception.message = end->value(tape_).string();
    }
  }

  [[nodiscard]] bool is_thrown_again(const Throw& first, const Known& known) {
    if (known.thrown < 0 || known.made_by != Storage::no_node) return false;
    if (found_[static_cast<std::size_t>(known.thrown)].class_entry != first.class_entry) {
      return false;
    }
    const std::int32_t function = measures_[first.node].function;
    if (function < 0 || trace_.functions()[static_cast<std::size_t>(function)].is_user()) {
      return true;
    }
    const auto call = trace_.node(first.node).begin_as<Checkpoint::FunctionCall>();
    for (const Checkpoint::ValueRef value : call->args(tape_)) {
      if (value.type() == ValueType::object && value.object_handle() == first.handle) return true;
    }
    return false;
  }

  void add_pass(NodeId id, Known& known) {
    const Throw first = *throw_of(id);
    if (!is_thrown_again(first, known)) {
      Exception made;
      made.handle = first.handle;
      made.class_entry = first.class_entry;
      if (known.made_by != Storage::no_node) {
        made.message = known.message;
        made.made_by = known.made_by;
        made.previous = known.previous;
      }
      known = {};
      known.thrown = static_cast<std::ptrdiff_t>(found_.size());
      found_.push_back(std::move(made));
    }
    Exception::Pass pass = {{id}, Storage::no_node, false};
    for (const Throw* at = throw_of(id); at->is_continued; at = throw_of(pass.calls.back())) {
      pass.calls.push_back(trace_.parent(at->node));
    }
    pass.caught_in = trace_.parent(pass.calls.back());
    pass.is_uncaught =
        pass.caught_in == Storage::no_node || trace_.type(pass.caught_in) == Node::Type::STARTUP;
    found_[static_cast<std::size_t>(known.thrown)].passes.push_back(std::move(pass));
  }

  const Trace& trace_;
  const Measures& measures_;
  Checkpoint::ValueTape tape_;
  std::vector<Throw> throws_;  // by node
  std::unordered_set<std::uint32_t> handles_;
  std::vector<Event> events_;
  std::unordered_map<std::uint32_t, Known> known_;
  std::vector<Exception> found_;
};

}  // namespace

std::vector<Exception> exceptions(const Trace& trace, const Measures& measures) {
  return ExceptionFinder(trace, measures).run();
}

}  // namespace CT
