// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_mend.h"

#include <algorithm>
#include <limits>

namespace CT::Salvage {

namespace {

using Checkpoint::Role;
using Checkpoint::Type;

constexpr std::string_view lost_value = "unknown#value";
constexpr std::string_view lost_text = "unknown#text";

}  // namespace

std::vector<unsigned char> Mender::run(const Selection& selection, Ends& ends) {
  lost_ = &ends.lost();
  go(selection, ends, false);
  std::uint64_t size = 0;
  for (const Piece& run : selection.runs) size += run.end - run.begin;
  out_.reserve(size);
  if (!selection.has_startup && !selection.runs.empty()) put_startup(selection);
  go(selection, ends, true);
  return std::move(out_);
}

void Mender::go(const Selection& selection, Ends& ends, bool writes) {
  open_.emplace(ends);
  next_lost_ = 0;
  for (const Piece& run : selection.runs) {
    each_checkpoint(file_, order_, run.begin, run.end,
                    [&](const Frame& frame, std::uint64_t offset) {
                      const std::int64_t place = run.place_of(offset);
                      put_lost_begins(place, writes);
                      if (writes && !has_room(frame.whole_size())) {
                        report_.add(Change::too_large, offset, frame.whole_size());
                        return true;
                      }
                      const Role role = frame.role();
                      if (role == Role::span) {
                        open_->open({place, out_.size(), frame.type(), nullptr});
                      } else if (role == Role::span_end) {
                        close(frame, offset, writes);
                        return true;
                      }
                      if (writes) put(frame, offset, std::nullopt);
                      return true;
                    });
  }
}

// The first time all are opened, to see which of them an end closes.
void Mender::put_lost_begins(std::int64_t before, bool writes) {
  for (; next_lost_ != lost_->size() && (*lost_)[next_lost_].place < before; ++next_lost_) {
    LostBegin& lost = (*lost_)[next_lost_];
    if (writes && !lost.is_used) continue;
    Type begin = Type::FUNCTION_CALL;
    if (lost.end == Type::INCLUDE_RETURN || lost.end == Type::INCLUDE_EXCEPTION) {
      begin = Type::INCLUDE_CALL;
    } else if (lost.end == Type::SAPI_WRITE_END) {
      begin = Type::SAPI_WRITE_START;
    }
    open_->open({lost.place, out_.size(), begin, &lost});
    if (writes) put_begin(lost);
  }
}

// For a checkpoint and what may have to be invented for it.
bool Mender::has_room(std::uint64_t size) {
  constexpr std::uint64_t most_of_begin = 24;
  const std::uint64_t invented = 256 + most_of_begin * lost_->size();
  return out_.size() + size + invented <= std::numeric_limits<std::uint32_t>::max();
}

void Mender::close(const Frame& frame, std::uint64_t offset, bool writes) {
  using Decision = OpenStack::Decision;
  const Decision decision = open_->close(frame);
  if (!writes) return;
  switch (decision) {
    case Decision::again: return report_.add(Change::end_again, offset, frame.whole_size());
    case Decision::astray: return report_.add(Change::end_astray, offset, frame.whole_size());
    case Decision::led_back: report_.add(Change::end_led_back, offset, frame.whole_size()); break;
    case Decision::closes: break;
  }
  put(frame, offset, open_->closed().written_at);
}

void Mender::put(const Frame& frame, std::uint64_t offset, std::optional<std::uint64_t> begin) {
  const std::size_t at = out_.size();
  out_.insert(out_.end(), frame.at, frame.at + frame.whole_size());
  ++report_.kept;
  if (frame.size == 0) return;
  PayloadWalk walk(frame, order_, all_values);
  const bool is_whole = walk.run([&](Refers kind, const unsigned char* place) {
    const std::uint64_t old = order_.u64(place);
    const std::uint64_t now = kind == Refers::begin ? origin_ + *begin : names_.now(kind, old);
    if (now != old) order_.put(out_.data() + at + (place - frame.at), now);
  });
  if (is_whole) return;
  report_.add(Change::value_replaced, offset, frame.whole_size());
  mend(at, frame, walk);
}

// What is behind the field that is lost has no place any more.
void Mender::mend(std::size_t at, const Frame& frame, const PayloadWalk& walk) {
  const auto kept = static_cast<std::size_t>(walk.field_begin() - frame.at);
  const Checkpoint::TypeInfo::Layout& layout = frame.info().layout;
  out_.resize(at + kept);
  for (auto field = static_cast<std::size_t>(walk.broken_field()); field != layout.size();
       ++field) {
    const bool is_first = field == static_cast<std::size_t>(walk.broken_field());
    put_lost_field(layout[field], frame, is_first ? walk.field_begin() : nullptr);
  }
  const std::size_t size = out_.size() - at - Format::header_word_size;
  put_header_word(out_.data() + at, frame.code, frame.presence, static_cast<std::uint32_t>(size),
                  order_);
}

// `begin`: where the field stands, if some of it does.
void Mender::put_lost_field(Format::Field field, const Frame& frame, const unsigned char* begin) {
  constexpr auto string = static_cast<unsigned char>(Checkpoint::ValueType::string);
  switch (field) {
    case Format::Field::none: break;
    case Format::Field::reference: put_u64(0); break;
    case Format::Field::u32: put_u32(0); break;
    case Format::Field::cut_text: put_text(lost_text); break;
    case Format::Field::inline_text:
      put_u64(lost_text.size());
      out_.insert(out_.end(), lost_text.begin(), lost_text.end());
      out_.push_back(0);
      break;
    case Format::Field::value:
      out_.push_back(string);
      put_text(lost_value);
      break;
    case Format::Field::arguments: put_lost_arguments(frame, begin); break;
    case Format::Field::header_line:
      out_.push_back(begin != nullptr && begin != frame.payload() + frame.size ? *begin : 0);
      put_text(lost_text);
      break;
  }
}

// The whole ones, and one in place of the first that is not.
void Mender::put_lost_arguments(const Frame& frame, const unsigned char* begin) {
  Frame rest = frame;
  const std::size_t count_at = out_.size();
  put_u32(0);
  std::uint32_t whole = 0;
  const unsigned char* const end = frame.payload() + frame.size;
  if (begin != nullptr && end - begin > 4) {
    PayloadWalk walk(rest, order_, all_values);
    walk.cursor() = Cursor(begin + 4, end, order_.big_endian());
    const unsigned char* from = begin + 4;
    while (true) {
      const std::size_t at = out_.size();
      std::vector<std::pair<Refers, const unsigned char*>> seen;
      walk.values(1,
                  [&](Refers kind, const unsigned char* place) { seen.emplace_back(kind, place); });
      if (!walk.cursor().ok()) break;
      const unsigned char* const to = walk.cursor().position();
      out_.insert(out_.end(), from, to);
      for (const auto& [kind, place] : seen) {
        order_.put(out_.data() + at + (place - from), names_.now(kind, order_.u64(place)));
      }
      from = to;
      ++whole;
    }
  }
  put_lost_field(Format::Field::value, frame, nullptr);
  order_.put(out_.data() + count_at, whole + 1);
}

void Mender::put_startup(const Selection& selection) {
  const Piece& first = selection.runs.front();
  const Frame frame = frame_at(file_ + first.begin, order_);
  constexpr std::uint8_t time_and_memory = 3;
  const bool has_times =
      (frame.presence & time_and_memory) == time_and_memory && frame.size >= frame.common_size();
  const std::uint32_t common = has_times ? Format::timestamp_size + Format::memory_size : 0;
  const std::uint64_t name = names_.add_text("unknown#request");
  out_.resize(Format::header_word_size);
  put_header_word(out_.data(), static_cast<std::uint8_t>(Type::STARTUP),
                  has_times ? time_and_memory : 0, common + 4 * Format::reference_size, order_);
  out_.insert(out_.end(), frame.payload(), frame.payload() + common);
  put_u64(name);
  put_u64(name);
  put_u64(0);
  put_u64(0);
  report_.add(Change::startup_invented, first.begin, 0);
}

// Of what was written it is only known that it is not there.
void Mender::put_begin(const LostBegin& begin) {
  const std::size_t at = out_.size();
  out_.resize(at + Format::header_word_size);
  Type type = Type::FUNCTION_CALL;
  if (begin.end == Type::SAPI_WRITE_END) {
    type = Type::SAPI_WRITE_START;
    put_u32(static_cast<std::uint32_t>(-1));
    put_u32(0);
  } else if (begin.end == Type::INCLUDE_RETURN || begin.end == Type::INCLUDE_EXCEPTION) {
    type = Type::INCLUDE_CALL;
    if (!include_name_) include_name_ = names_.add_text("unknown#include");
    put_u64(*include_name_);
  } else {
    if (!call_name_) call_name_ = names_.add_function("unknown#call");
    put_u64(*call_name_);
    put_u32(0);
  }
  const std::size_t size = out_.size() - at - Format::header_word_size;
  put_header_word(out_.data() + at, static_cast<std::uint8_t>(type), 0,
                  static_cast<std::uint32_t>(size), order_);
  report_.add(Change::begin_invented, begin.told_at, 0);
}

void Mender::put_u32(std::uint32_t value) {
  out_.resize(out_.size() + sizeof value);
  order_.put(out_.data() + out_.size() - sizeof value, value);
}

void Mender::put_u64(std::uint64_t value) {
  out_.resize(out_.size() + sizeof value);
  order_.put(out_.data() + out_.size() - sizeof value, value);
}

void Mender::put_text(std::string_view text) {
  put_u32(static_cast<std::uint32_t>(text.size()));
  out_.insert(out_.end(), text.begin(), text.end());
}

}  // namespace CT::Salvage
