// SPDX-License-Identifier: MIT
#include "random_request.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "short_inline_text.h"

namespace CT::Test {

namespace {

constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();

// Around the half microseconds and the full second, where rounding decides.
constexpr std::array<std::uint32_t, 16> nanosecond_edges = {0,
                                                            1,
                                                            499,
                                                            500,
                                                            501,
                                                            1499,
                                                            1500,
                                                            499'999'499,
                                                            499'999'500,
                                                            999'998'500,
                                                            999'999'499,
                                                            999'999'500,
                                                            999'999'999,
                                                            1'000'000'000,
                                                            2'147'483'648,
                                                            4'294'967'295};

constexpr std::array<std::uint64_t, 7> second_edges = {
    0, 1, most, most / 2, most / 2 + 1, 1ULL << 32U, 1ULL << 53U};

constexpr std::array<std::uint64_t, 7> memory_edges = {
    0, 1, most, most / 2, most / 2 + 1, 1ULL << 32U, (1ULL << 53U) + 1};

constexpr std::array<std::uint32_t, 7> number_edges = {0,   1,           200,        2147483647,
                                                       404, 2147483648U, 4294967295U};

template <class Items>
auto any(Awkward& random, const Items& items) {
  return items[random.below(items.size())];
}

}  // namespace

RandomRequest::RandomRequest(Awkward& random, RandomEntities& entities, RequestStyle style)
    : random_(random),
      entities_(entities),
      values_(random, entities.names()),
      style_(style),
      flags_(random.below(16)) {}

void RandomRequest::write(std::size_t count) {
  if (style_.rough && random_.one_in(8)) step();
  if (!style_.rough || !random_.one_in(20)) startup();
  for (; count != 0; --count) step();
  if (style_.rough && random_.one_in(3)) return;
  if (!style_.rough) {
    while (!open_.empty()) end();
  }
  add(CheckpointDraft::shutdown());
  if (style_.rough && random_.one_in(4)) step();
}

void RandomRequest::step() {
  const std::size_t dice = random_.below(100);
  if (style_.rough && dice < 12) {
    dice < 8 ? wrong_end() : misplaced();
  } else if (dice < 45) {
    begin();
  } else if (dice < 72 && !open_.empty()) {
    end();
  } else {
    leaf();
  }
}

void RandomRequest::startup() {
  const Ref url = entities_.text();
  const Ref uri = entities_.text();
  const Ref host = entities_.text();
  add(CheckpointDraft::startup(url, uri, host, entities_.text()));
}

void RandomRequest::begin() {
  switch (random_.below(6)) {
    case 0:
      open_.push_back({add(CheckpointDraft::include_call(entities_.text())), Kind::include});
      break;
    case 1:
      open_.push_back({add(CheckpointDraft::sapi_write_start(values_.cut_string())), Kind::body});
      break;
    case 2:
    case 3: call(true); break;
    default: call(false);
  }
  seen_.push_back(open_.back());
}

void RandomRequest::call(bool method) {
  const Ref function = entities_.function();
  std::optional<Fields> self;
  if (method) self = random_.one_in(6) ? values_.any() : values_.object();
  const std::vector<Fields> args = values_.several(3);
  auto count = static_cast<std::uint32_t>(args.size());
  if (style_.rough && random_.one_in(12)) {
    count = random_.one_in(3) ? any(random_, number_edges) : count + 1;
  }
  open_.push_back({add(CheckpointDraft::call_with_count(function, self, count, args)), Kind::call});
}

void RandomRequest::end() {
  const Open last = open_.back();
  open_.pop_back();
  end_of(last.begin, last.kind);
}

void RandomRequest::end_of(Ref start, Kind kind) {
  const bool threw = random_.one_in(4);
  switch (kind) {
    case Kind::call: {
      const Fields value = values_.any();
      add(threw ? CheckpointDraft::function_exception(start, value)
                : CheckpointDraft::function_return(start, value));
      break;
    }
    case Kind::include:
      add(threw ? CheckpointDraft::include_exception(start, values_.any())
                : CheckpointDraft::include_return(start));
      break;
    case Kind::body: add(CheckpointDraft::sapi_write_end(start));
  }
}

// Of an outer begin, of another kind, once more, of something that is no begin.
void RandomRequest::wrong_end() {
  static constexpr std::array kinds = {Kind::call, Kind::include, Kind::body};
  const Kind kind = any(random_, kinds);
  const bool of_open = !open_.empty() && random_.one_in(2);
  if (of_open) {
    const std::size_t at = random_.below(open_.size());
    const Open outer = open_[at];
    end_of(outer.begin, random_.one_in(2) ? kind : outer.kind);
    // Sometimes it is taken for open still, and ended again later.
    if (!random_.one_in(4)) open_.resize(at);
  } else if (!seen_.empty() && !random_.one_in(3)) {
    const Open before = any(random_, seen_);
    end_of(before.begin, random_.one_in(2) ? kind : before.kind);
  } else {
    end_of(entities_.wild(), kind);
  }
}

void RandomRequest::misplaced() {
  switch (random_.below(6)) {
    case 0: startup(); break;
    case 1:
      if (random_.one_in(3)) add(CheckpointDraft::shutdown());
      break;
    case 2: add(CheckpointDraft::raw(16).more(unread_bytes())); break;
    case 3: {
      const auto type = static_cast<std::uint8_t>(random_.below(32));
      add(CheckpointDraft::raw(type).more(unread_bytes()));
      break;
    }
    case 4:  // nothing behind the header word
      entities_.trace().add(CheckpointDraft::raw(static_cast<std::uint8_t>(random_.below(18))));
      break;
    default: {
      const auto type = static_cast<std::uint8_t>(18 + random_.below(14));
      add(CheckpointDraft::raw(type).more(unread_bytes()));
    }
  }
}

// Types 13 and 15 would take them for an inline text, so they are short.
Fields RandomRequest::unread_bytes() {
  const std::string bytes = random_.bytes(2);
  return Fields().raw(std::string_view(bytes).substr(0, 11));
}

void RandomRequest::leaf() {
  switch (random_.below(7)) {
    case 0: add(CheckpointDraft::sapi_flush()); break;
    case 1:
    case 2: header(); break;
    case 3: {
      const std::uint32_t code = any(random_, number_edges);
      add(CheckpointDraft::raw(13, Fields().u32(code).append(inline_text())));
      break;
    }
    case 4: {
      const std::uint32_t number = any(random_, number_edges);
      add(CheckpointDraft::raw(15, Fields().u32(number).append(inline_text())));
      break;
    }
    case 5: add(CheckpointDraft::script_exit()); break;
    default: {
      const Ref name = entities_.text();
      add(CheckpointDraft::user_event(name, any(random_, number_edges)));
    }
  }
}

void RandomRequest::header() {
  const std::size_t op = random_.one_in(20) ? random_.below(256) : random_.below(10);
  const bool line = op < 3 || random_.one_in(6);
  add(CheckpointDraft::sapi_header(static_cast<std::uint8_t>(op),
                                   line ? values_.cut_string() : Fields()));
}

// Every relation of the length that is told, the first NUL, and the payload's end.
Fields RandomRequest::inline_text() {
  static constexpr std::array<std::uint64_t, 5> lengths = {1ULL << 32U, 1ULL << 63U, most, most - 8,
                                                           1ULL << 31U};
  std::string bytes = random_.bytes(6);
  std::uint64_t told = bytes.size();
  switch (random_.below(9)) {
    case 0: told = 0; break;
    case 1:
      bytes.clear();
      told = 0;
      break;
    case 2: break;                           // no NUL at the end
    case 3: told = bytes.size() + 1; break;  // neither the last byte nor the NUL
    case 4: told = any(random_, lengths); break;
    case 5:
      told = random_.below(bytes.size() + 3);
      bytes += '\0';
      break;
    case 6:
      bytes.insert(random_.below(bytes.size() + 1), 1, '\0');
      told = bytes.size();
      break;
    case 7: bytes += '\0' + random_.bytes(2); break;
    default: bytes += '\0';
  }
  if (!style_.short_inline_texts && is_short_inline_text(told, bytes)) {
    std::replace(bytes.begin(), bytes.end(), '\0', '0');
  }
  return Fields().inline_text(told, bytes);
}

Ref RandomRequest::add(CheckpointDraft draft) {
  const std::size_t flags = flags_ < 8 ? flags_ : random_.below(8);
  move_clock();
  move_memory();
  if ((flags & 1U) != 0) draft.time(seconds_, nanoseconds_);
  if ((flags & 2U) != 0) draft.memory(memory_);
  if ((flags & 4U) != 0) {
    const Ref file = entities_.text();
    draft.location(file, random_.one_in(4) ? any(random_, number_edges) : 7);
  }
  return entities_.trace().add(draft);
}

void RandomRequest::move_clock() {
  const std::size_t dice = random_.below(24);
  if (dice == 0) seconds_ = any(random_, second_edges);
  if (dice == 1) seconds_ = 1'700'000'000;
  if (dice == 2) seconds_ -= 1 + random_.below(3);
  if (dice >= 3 && dice < 8) seconds_ += random_.below(3);
  nanoseconds_ = random_.one_in(2) ? any(random_, nanosecond_edges)
                                   : static_cast<std::uint32_t>(random_.below(1'000'000'000));
}

void RandomRequest::move_memory() {
  const std::size_t dice = random_.below(16);
  if (dice == 0) memory_ = any(random_, memory_edges);
  if (dice == 1) memory_ = 400'000;
  if (dice == 2) memory_ -= random_.below(500'000);
  if (dice > 4) memory_ += random_.below(10'000);
}

}  // namespace CT::Test
