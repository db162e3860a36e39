// SPDX-License-Identifier: MIT
#include "ctexport/ct_frames.h"

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/render/ct_rendered.h"
#include "ctmeasure/ct_node_words.h"

namespace CT::Export {

namespace {

// What tells frames apart that are none of a function's: the kind, and of includes the place of the
// file's name.
enum Kind : std::uint64_t { of_function, of_include, of_type };

bool is_nameless(const Checkpoint::Function& function) {
  return function.class_entry() == nullptr &&
         without_byte_order_mark(function.name().view()).empty();
}

}  // namespace

std::int32_t Frames::of_other(NodeId id, const Measure& measure) {
  const bool is_open = splits_open_ && measure.has(Measure::open);
  Kind kind = of_function;
  auto what = static_cast<std::uint64_t>(measure.function);
  if (measure.function < 0) {
    const Node::Type type = trace_.type(id);
    kind = of_type;
    what = static_cast<std::uint64_t>(type);
    if (type == Node::Type::INCLUDE_CALL) {
      const auto include = trace_.node(id).begin_as<Checkpoint::IncludeCall>();
      const char* const name = include ? include->include().data : nullptr;
      const char* const names = Section::as_chars(trace_.file().add_data().data());
      kind = of_include;
      what = name != nullptr ? static_cast<std::uint64_t>(name - names) + 1 : 0;
    }
  }
  const std::uint64_t key = (what << 3) | (std::uint64_t{kind} << 1) | (is_open ? 1 : 0);
  const auto [place, is_new] = others_.try_emplace(key, size());
  return is_new ? add(id, measure, is_open) : place->second;
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

bool Frames::has_short_name(const Frame& frame) const {
  const Section& names = trace_.file().add_data();
  if (frame.function == nullptr) return file(frame).length <= RenderedTexts::longest;
  const Checkpoint::ClassEntry* entry = frame.function->class_entry();
  return RenderedTexts::is_short(names, frame.function->name_place()) &&
         (entry == nullptr || RenderedTexts::is_short(names, entry->name_place()));
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
  if (frame.function != nullptr) {
    return frame.function->is_user() ? frame.function->filename() : Checkpoint::String();
  }
  const auto include = trace_.node(frame.first).begin_as<Checkpoint::IncludeCall>();
  return include ? include->include() : Checkpoint::String();
}

std::uint32_t Frames::line(const Frame& frame) {
  if (frame.function == nullptr) return frame.type == Node::Type::INCLUDE_CALL ? 1 : 0;
  return frame.function->is_user() ? frame.function->line_no() : 0;
}

}  // namespace CT::Export
