// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_grouping.h"

#include <QString>
#include <string_view>

namespace CT {

namespace {

std::string utf8(const Checkpoint::String& text) { return text.to_string().toStdString(); }

std::string before_last(const std::string& text, char separator, std::string_view otherwise) {
  const std::size_t at = text.rfind(separator);
  return at == std::string::npos ? std::string(otherwise) : text.substr(0, at);
}

Group group_of(const Checkpoint::Function& function, GroupBy by) {
  const auto* entry = function.class_entry();
  const std::string file = utf8(function.filename());
  Group group;
  group.is_builtin = !function.is_user();
  switch (by) {
    case GroupBy::function:
    case GroupBy::caller:
      group.name = name_of(function);
      group.file = file;
      group.line = function.line_no();
      break;
    case GroupBy::class_:
      group.name = "(no class)";
      if (entry == nullptr) break;
      group.name = utf8(entry->name());
      group.file = utf8(entry->filename());
      if (!group.file.empty()) group.line = entry->line();
      break;
    case GroupBy::namespace_:
      group.name =
          before_last(utf8(entry != nullptr ? entry->name() : function.name()), '\\', "(global)");
      break;
    case GroupBy::folder:
      group.name = file.empty() ? "(built-in)" : before_last(file, '/', ".");
      break;
    case GroupBy::file:
    case GroupBy::line: group.name = file.empty() ? "(built-in)" : file; break;
  }
  return group;
}

}  // namespace

std::string name_of(const Checkpoint::Function& function) {
  return function.full_name().toStdString();
}

Grouping::Grouping(const Trace& trace, const Measures& measures, GroupBy by)
    : trace_(trace),
      measures_(measures),
      by_(by),
      of_functions_(trace.functions().size(), no_group) {}

std::int32_t Grouping::of(NodeId id) {
  const std::int32_t function = measures_[id].function;
  if (function < 0) return no_group;
  if (by_ == GroupBy::line) return of_line(id);
  return by_ == GroupBy::caller ? of_caller(id) : of_function(function);
}

std::int32_t Grouping::of_function(std::int32_t function) {
  std::int32_t& known = of_functions_[static_cast<std::size_t>(function)];
  if (known != no_group) return known;
  const auto& entry = trace_.functions()[static_cast<std::size_t>(function)];
  const Group group = group_of(entry, by_);
  if (by_ == GroupBy::function || by_ == GroupBy::caller) {
    groups_.push_back(group);
    known = static_cast<std::int32_t>(groups_.size()) - 1;
  } else {
    known = named(group);
  }
  return known;
}

// Two classes of one name are one group.
std::int32_t Grouping::named(const Group& group) {
  const auto next = static_cast<std::int32_t>(groups_.size());
  const auto [place, is_new] = by_name_.try_emplace(group.name, next);
  if (is_new) {
    groups_.push_back(group);
  } else {
    Group& known = groups_[static_cast<std::size_t>(place->second)];
    known.is_builtin = known.is_builtin && group.is_builtin;
  }
  return place->second;
}

std::int32_t Grouping::of_caller(NodeId id) {
  const NodeId caller = trace_.parent(id);
  Group group;
  group.name = "(request)";
  if (caller != Storage::no_node) {
    if (measures_[caller].function >= 0) return of_function(measures_[caller].function);
    if (const auto include = trace_.node(caller).begin_as<Checkpoint::IncludeCall>()) {
      group.file = utf8(include->include());
      group.name = "include " + group.file;
    }
  }
  return named(group);
}

std::int32_t Grouping::of_line(NodeId id) {
  const Node::Base node = trace_.node(id);
  const unsigned char* place = node.begin().filename_place();
  const std::uint32_t line = node.begin().line_no();
  const auto offset = place != nullptr
                          ? static_cast<std::uint64_t>(place - trace_.file().add_data().data()) + 1
                          : 0;
  const auto next = static_cast<std::int32_t>(groups_.size());
  const auto [known, is_new] = by_line_.try_emplace((offset << 32) | line, next);
  if (is_new) {
    Group group;
    group.file = utf8(node.begin().filename());
    group.line = line;
    group.name = place != nullptr ? group.file : "(unknown)";
    if (place != nullptr && line != 0) group.name.append(":").append(std::to_string(line));
    groups_.push_back(group);
  }
  return known->second;
}

}  // namespace CT
