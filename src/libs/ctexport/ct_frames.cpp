// SPDX-License-Identifier: MIT
#include "ctexport/ct_frames.h"

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_rendered.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

enum Kind : std::uint64_t { of_function, of_include_at, of_type };

// Tells frames apart: `what` is the number of a function or a type, or a place in ADD DATA.
std::uint64_t key_of(Kind kind, std::uint64_t what, bool is_open) {
  return (what << 3) | (std::uint64_t{kind} << 1) | (is_open ? 1 : 0);
}

// Names of nothing but blanks are none to readers either.
bool is_blank(std::string_view stored) {
  return without_byte_order_mark(stored).find_first_not_of(' ') == std::string_view::npos;
}

bool is_nameless(const Checkpoint::Function& function) {
  return function.class_entry() == nullptr && is_blank(function.name().view());
}

}  // namespace

std::int32_t Frames::of_other(NodeId id, const Measure& measure) {
  const bool is_open = splits_open_ && measure.has(Measure::open);
  Kind kind = of_function;
  auto what = static_cast<std::uint64_t>(measure.function);
  if (measure.function < 0) {
    const Node::Type type = trace_.type(id);
    if (type == Node::Type::INCLUDE_CALL) return of_include(id, measure, is_open);
    kind = of_type;
    what = static_cast<std::uint64_t>(type);
  }
  const auto [place, is_new] = others_.try_emplace(key_of(kind, what, is_open), size());
  return is_new ? add(id, measure, is_open) : place->second;
}

// One file may have its name at several places. Very long names, which only a hostile file has, are
// known by their place.
std::int32_t Frames::of_include(NodeId id, const Measure& measure, bool is_open) {
  const auto include = trace_.node(id).begin_as<Checkpoint::IncludeCall>();
  const std::string_view name = include ? include->include().view() : std::string_view();
  bool is_new = false;
  std::int32_t known = 0;
  if (name.size() <= RenderedTexts::longest) {
    std::string key(name);
    if (is_open) key += '\0';
    const auto place = includes_.try_emplace(std::move(key), size());
    is_new = place.second;
    known = place.first->second;
  } else {
    const auto* const names = Section::as_chars(trace_.file().add_data().data());
    const auto at = static_cast<std::uint64_t>(name.data() - names);
    const auto place = others_.try_emplace(key_of(of_include_at, at, is_open), size());
    is_new = place.second;
    known = place.first->second;
  }
  return is_new ? add(id, measure, is_open) : known;
}

std::int32_t Frames::add(NodeId id, const Measure& measure, bool is_open) {
  Frame frame;
  if (measure.function >= 0) {
    frame.function = &trace_.functions()[static_cast<std::size_t>(measure.function)];
  }
  frame.first = id;
  frame.type = trace_.type(id);
  frame.is_open = is_open;
  frames_.push_back(frame);
  return size() - 1;
}

void put_function_name(const Checkpoint::Function& function, Writer& out, PutStored put) {
  if (function.class_entry() != nullptr) {
    put(out, function.class_entry()->name().view());
    out.put("::");
  }
  put(out, function.name().view());
}

bool has_short_name(const Checkpoint::Function& function, const Section& names) {
  const Checkpoint::ClassEntry* entry = function.class_entry();
  return RenderedTexts::is_short(names, function.name_place()) &&
         (entry == nullptr || RenderedTexts::is_short(names, entry->name_place()));
}

bool Frames::has_short_name(const Frame& frame) const {
  return frame.function != nullptr
             ? Export::has_short_name(*frame.function, trace_.file().add_data())
             : file(frame).length <= RenderedTexts::longest;
}

void Frames::put_name(const Frame& frame, Writer& out, PutStored put) const {
  if (frame.function != nullptr) {
    is_nameless(*frame.function) ? out.put("(no name)")
                                 : put_function_name(*frame.function, out, put);
  } else {
    out.put(kind_of(frame.type));
    if (frame.type == Node::Type::INCLUDE_CALL) {
      out.put(' ');
      put(out, file(frame).view());
    }
  }
  if (frame.is_open) out.put(open_suffix);
}

Checkpoint::String Frames::file(const Frame& frame) const {
  Checkpoint::String file;
  if (frame.function != nullptr) {
    if (frame.function->is_user()) file = frame.function->filename();
  } else if (const auto include = trace_.node(frame.first).begin_as<Checkpoint::IncludeCall>()) {
    file = include->include();
  }
  return is_blank(file.view()) ? Checkpoint::String() : file;
}

std::uint32_t Frames::line(const Frame& frame) {
  if (frame.function == nullptr) return frame.type == Node::Type::INCLUDE_CALL ? 1 : 0;
  return frame.function->is_user() ? frame.function->line_no() : 0;
}

}  // namespace CT::Export
