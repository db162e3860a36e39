// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_call_filter.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <set>

#include "ctmeasure/ct_exceptions.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

bool say(const std::string& what, const std::string& why) {
  std::fprintf(stderr, "%s %s\n", what.c_str(), why.c_str());
  return false;
}

bool is_good(const std::string& text, const std::string& error) {
  return error.empty() || say(text, "is no regular expression: " + error);
}

}  // namespace

TextCondition::TextCondition(const std::string& text) {
  if (Expression::is_one(text)) {
    expression_.emplace(text, Expression::Case::matters);
  } else {
    piece_ = text;
  }
}

bool TextCondition::holds(std::string_view text) const {
  return expression_ ? expression_->matches(text) : text.find(piece_) != std::string_view::npos;
}

bool CallFilter::set(const CallConditions& conditions) {
  if (!named_.find(trace_, conditions.patterns)) return false;
  for (const std::string& argument : conditions.arguments) {
    if (!add_argument(argument)) return false;
  }
  if (!conditions.returned.empty()) {
    returned_.emplace(conditions.returned);
    if (!is_good(conditions.returned, returned_->error())) return false;
  }
  threw_ = conditions.threw;
  wanted_class_ = conditions.thrown_class;
  if (!wanted_class_.empty()) thrown_class_ = NamePattern(wanted_class_);
  if (!is_good(conditions.thrown_class, thrown_class_.error())) return false;
  open_ = conditions.open;
  if (!conditions.least.empty()) {
    const auto least = parse_time(conditions.least);
    if (!least) return say(conditions.least, "is no time, such as 5ms, 250us or 1.5s");
    least_ns_ = *least;
  }
  if (!conditions.file.empty()) file_.emplace(conditions.file);
  return !file_ || is_good(conditions.file, file_->error());
}

// "N=TEXT" is about one argument; any other text about all of them.
bool CallFilter::add_argument(const std::string& text) {
  std::uint32_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool has_number =
      read.ec == std::errc() && read.ptr != text.data() + text.size() && *read.ptr == '=';
  if (has_number && number == 0) return say(text, "names no argument: the first is 1");
  const std::string piece =
      has_number ? std::string(read.ptr + 1, text.data() + text.size()) : text;
  arguments_.push_back({has_number ? number : 0, TextCondition(piece)});
  return is_good(piece, arguments_.back().text.error());
}

bool CallFilter::takes(NodeId id) {
  const Measure& measure = measures_[id];
  if (!named_.has(measure.function) || measure.total_ns < least_ns_) return false;
  if (open_ && trace_.end_offset(id) != Storage::no_end) return false;
  const bool asks_record = !arguments_.empty() || returned_ || threw_ || file_;
  if (!asks_record) return true;
  const Node::Base node = trace_.node(id);
  if (file_ && !file_->matches(node.begin().filename().view())) return false;
  if (!ends_so(node)) return false;
  const auto call = node.begin_as<Checkpoint::FunctionCall>();
  return arguments_.empty() || (call && has_arguments(*call));
}

// A class also by its name without the namespace.
bool CallFilter::is_thrown_class(std::string_view name) const {
  const std::size_t at = name.rfind('\\');
  return thrown_class_.matches(name) ||
         (at != std::string_view::npos && thrown_class_.matches(name.substr(at + 1)));
}

void CallFilter::say_other_classes() const {
  constexpr std::size_t most = 5;
  if (wanted_class_.empty()) return;
  std::vector<std::string> classes;
  std::set<const Checkpoint::ClassEntry*> known;
  for (const Exception& exception : exceptions(trace_, measures_)) {
    const Checkpoint::ClassEntry* const entry = exception.class_entry;
    if (entry == nullptr || !known.insert(entry).second) continue;
    if (is_thrown_class(entry->name().view())) return;
    classes.push_back(shown_text(entry->name().view()));
  }
  std::string thrown = classes.empty() ? "; nothing was thrown" : "; thrown were ";
  for (std::size_t i = 0; i != std::min(most, classes.size()); ++i) {
    thrown.append(i == 0 ? "" : ", ").append(classes[i]);
  }
  if (classes.size() > most) thrown += " and others";
  std::fprintf(stderr, "nothing threw %s%s\n", shown_text(wanted_class_).c_str(), thrown.c_str());
}

bool CallFilter::ends_so(const Node::Base& node) {
  if (threw_) {
    const auto thrown = node.end_as<Checkpoint::FunctionException>();
    if (!thrown) return false;
    const auto value = thrown->value();
    const Checkpoint::ClassEntry* entry = value.class_entry();
    if (!is_thrown_class(entry != nullptr ? entry->name().view() : "")) return false;
  }
  if (!returned_) return true;
  const auto result = node.end_as<Checkpoint::FunctionReturn>();
  if (!result) return false;
  auto values = result->values();
  return returned_->holds(text_of(values));
}

bool CallFilter::has_arguments(const Checkpoint::FunctionCall& call) {
  std::vector<bool> found(arguments_.size());
  auto values = call.arg_values();
  for (std::uint32_t number = 1; values.left != 0 && values.at.ok(); ++number) {
    const std::string_view text = text_of(values);
    if (!values.at.ok() && text.empty()) break;
    for (std::size_t i = 0; i != arguments_.size(); ++i) {
      const Argument& wanted = arguments_[i];
      if (wanted.number != 0 && wanted.number != number) continue;
      found[i] = found[i] || wanted.text.holds(text);
    }
  }
  return std::find(found.begin(), found.end(), false) == found.end();
}

// Of the next value, as PHP would print it; until the next call.
std::string_view CallFilter::text_of(Checkpoint::ValueCursor& values) {
  text_.clear();
  writer_.write(values, text_, Checkpoint::ValueTextWriter::Form::bare);
  return text_.view();
}

}  // namespace CT::Tool
