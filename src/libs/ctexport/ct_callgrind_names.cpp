// SPDX-License-Identifier: MIT
#include "ctexport/ct_callgrind_names.h"

#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_rendered.h"
#include "ctexport/ct_one_line.h"

namespace CT::Export {

namespace {

// In place of the file of what no script defines, and of what some script does.
constexpr std::string_view internal_file = "php:internal";
constexpr std::string_view unknown_file = "(no file)";

Checkpoint::String as_text(std::string_view text) {
  return {text.data(), static_cast<std::uint32_t>(text.size())};
}

std::uint64_t pair_of(std::int32_t first, std::int32_t second) {
  constexpr unsigned upper_half = 32;
  return (std::uint64_t{static_cast<std::uint32_t>(first)} << upper_half) |
         static_cast<std::uint32_t>(second);
}

}  // namespace

CallgrindNames::CallgrindNames(const Trace& trace, const Frames& frames) : frames_(frames) {
  for (const Checkpoint::Function& function : trace.functions()) {
    Frame frame;
    frame.function = &function;
    frame.type = Node::Type::FUNCTION_CALL;
    if (frames.has_short_name(frame)) ++namesakes_[key_of(frame)];
  }
}

// Name and file, as the format has them.
std::string CallgrindNames::key_of(const Frame& frame) const {
  MemoryWriter key;
  frames_.put_name(frame, key, put_one_line);
  key.put('\n');
  const Checkpoint::String file = file_of(frame);
  if (file.length <= RenderedTexts::longest) put_one_line(key, file.view());
  return std::string(key.view());
}

Checkpoint::String CallgrindNames::file_of(const Frame& frame) const {
  const Checkpoint::String file = frames_.file(frame);
  if (!file.is_empty()) return file;
  const bool is_of_script = frame.function != nullptr ? frame.function->is_user()
                                                      : frame.type == Node::Type::INCLUDE_CALL;
  return as_text(is_of_script ? unknown_file : internal_file);
}

bool CallgrindNames::has_namesakes(const Frame& frame) const {
  if (frame.function == nullptr || !frames_.has_short_name(frame)) return false;
  const auto found = namesakes_.find(key_of(frame));
  return found != namesakes_.end() && found->second > 1;
}

std::int32_t CallgrindNames::unit_of(std::int32_t frame) {
  const auto at = static_cast<std::size_t>(frame);
  if (units_.size() <= at) units_.resize(at + 1);
  if (units_[at].frame >= 0) return units_[at].frame;
  std::int32_t first = frame;
  if (frames_.has_short_name(frames_[frame])) {
    std::string key = key_of(frames_[frame]);
    if (has_namesakes(frames_[frame])) key += std::to_string(Frames::line(frames_[frame]));
    first = by_name_.try_emplace(std::move(key), frame).first->second;
  }
  return units_[at].frame = first;
}

CallgrindNames::Id CallgrindNames::entry(std::int32_t unit, std::int32_t level) {
  const auto next = static_cast<Id>(entries_.size());
  const auto [place, is_new] = by_level_.try_emplace(pair_of(unit, level), next);
  if (is_new) entries_.push_back({unit, level});
  return place->second;
}

CallgrindNames::Id CallgrindNames::function(Id entry, std::int32_t turn) {
  const auto next = static_cast<Id>(functions_.size());
  const auto [place, is_new] =
      by_turn_.try_emplace(pair_of(static_cast<std::int32_t>(entry), turn), next);
  if (is_new) functions_.push_back({entry, turn, false});
  return place->second;
}

void CallgrindNames::put_function(Id number, Writer& out) {
  Function& function = functions_[number];
  out.put('(');
  put_unsigned(out, number + 1);
  out.put(')');
  if (function.is_named) return;
  function.is_named = true;
  out.put(' ');
  const Entry& entry = entries_[function.entry];
  const Frame& frame = frames_[entry.unit];
  frames_.put_name(frame, out, put_one_line);
  if (has_namesakes(frame)) {
    out.put(':');
    put_unsigned(out, Frames::line(frame));
  }
  if (entry.level == 1 && function.turn == 1) return;
  out.put('\'');
  put_signed(out, entry.level);
  if (function.turn == 1) return;
  out.put('.');
  put_signed(out, function.turn);
}

CallgrindNames::Id CallgrindNames::find_file(const Checkpoint::String& file, bool& is_new) {
  const auto next = static_cast<Id>(files_.size() + long_files_.size() + 1);
  if (file.length > RenderedTexts::longest && file.data != nullptr) {
    const auto [place, is_first] = long_files_.try_emplace(file.data, next);
    is_new = is_first;
    return place->second;
  }
  const auto [place, is_first] = files_.try_emplace(std::string(file.view()), next);
  is_new = is_first;
  return place->second;
}

void CallgrindNames::put_file(Id function, Writer& out) {
  const std::int32_t frame = unit_of_function(function);
  Unit& unit = units_[static_cast<std::size_t>(frame)];
  bool is_new = false;
  const Checkpoint::String file = file_of(frames_[frame]);
  if (!unit.has_file) unit.file = find_file(file, is_new);
  unit.has_file = true;
  out.put('(');
  put_unsigned(out, unit.file);
  out.put(')');
  if (!is_new) return;
  out.put(' ');
  put_one_line(out, file.view());
}

}  // namespace CT::Export
