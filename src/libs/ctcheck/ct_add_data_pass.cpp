// SPDX-License-Identifier: MIT
#include "ctcheck/ct_add_data_pass.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "codetrace/bytes/ct_utf8.h"
#include "codetrace/model/ct_format.h"

namespace CT::Check {

void AddDataPass::run(bool finds_unused) {
  finds_unused_ = finds_unused;
  for (std::uint64_t i = 0; i != use_.texts().word_count(); ++i) {
    std::uint64_t bits = use_.texts().word(i) | use_.functions().word(i) | use_.classes().word(i);
    for (; bits != 0; bits &= bits - 1) {
      visit(i * BitSet::word_bits + static_cast<std::uint64_t>(std::countr_zero(bits)));
    }
  }
  check_gap(covered_end_, section_.size());
}

void AddDataPass::visit(std::uint64_t at) {
  if (at > covered_end_) check_gap(covered_end_, at);
  if (use_.functions().has(at)) {
    visit_descriptor(at, "function", Format::Function::size, Format::Function::user_size);
  }
  if (use_.classes().has(at)) {
    visit_descriptor(at, "class", Format::Class::size, Format::Class::user_size);
  }
  if (use_.texts().has(at)) visit_text(at);
}

void AddDataPass::visit_descriptor(std::uint64_t at, const char* what, std::uint64_t size,
                                   std::uint64_t user_size) {
  const bool is_user = section_.data()[at] == Format::user_defined;
  meet_outer(at, Code::overlap, what);
  cover(at, at + (is_user ? user_size : size), what);
  room_end_ = std::max(room_end_, at + user_size);
}

// A text that begins in another one ends with it, so the end is looked for once.
void AddDataPass::visit_text(std::uint64_t at) {
  meet_outer(at, Code::ref_middle, "text");
  if (!has_text_ || at >= text_end_) {
    has_text_ = true;
    const auto room = static_cast<std::size_t>(section_.size() - at);
    const void* const nul = std::memchr(section_.data() + at, 0, room);
    const std::uint64_t length =
        nul != nullptr
            ? static_cast<std::uint64_t>(static_cast<const unsigned char*>(nul) - section_.data()) -
                  at
            : room;
    text_end_ = at + length + (nul != nullptr ? 1 : 0);
    check_text(at, at + length);
    if (nul == nullptr && !layout_.is_add_data_cut()) {
      defects_.add(Code::text_nul, {Part::add_data, at},
                   [] { return Words{"the text goes on to the end of ADD DATA without a NUL"}; });
    }
  }
  cover(at, text_end_, "text");
}

void AddDataPass::check_text(std::uint64_t at, std::uint64_t end) {
  const unsigned char* const stop = section_.data() + end;
  for (const unsigned char* p = section_.data() + at; p != stop;) {
    constexpr unsigned char first_of_many = 0x80;
    const std::size_t length = *p < first_of_many ? 1 : utf8_sequence_length(p, stop);
    if (length == 0) {
      const auto bad = static_cast<std::uint64_t>(p - section_.data());
      defects_.add(Code::utf8, {Part::add_data, at}, [&] {
        return Words{"the text is not UTF-8 from its byte " + std::to_string(bad - at) + " on"};
      });
      return;
    }
    p += length;
  }
}

// Reports what lies in something that was met before.
void AddDataPass::meet_outer(std::uint64_t at, Code code, const char* what) {
  if (at >= covered_end_) return;
  defects_.add(code, {Part::add_data, at}, [&] {
    Words words{std::string("a ").append(what)};
    words.what.append(at == covered_begin_ ? " begins where a " : " begins in the middle of the ");
    words.what.append(covered_what_);
    words.what.append(at == covered_begin_ ? " does" : " at ");
    if (at != covered_begin_) words.what.append(place_name(Part::add_data, covered_begin_));
    return words;
  });
}

void AddDataPass::cover(std::uint64_t at, std::uint64_t end, const char* what) {
  if (end <= covered_end_) return;
  covered_begin_ = at;
  covered_end_ = end;
  covered_what_ = what;
}

// Kept: a few zeros are what aligns a descriptor, or the text behind it.
void AddDataPass::check_gap(std::uint64_t begin, std::uint64_t end) {
  constexpr std::uint64_t most_padding = 7;
  begin = std::max(begin, room_end_);
  if (!finds_unused_ || begin >= end) return;
  const unsigned char* const first = section_.data() + begin;
  const unsigned char* const last = section_.data() + end;
  const bool is_short = end - begin <= most_padding;
  if (is_short && std::all_of(first, last, [](unsigned char byte) { return byte == 0; })) return;
  defects_.add(Code::unused, {Part::add_data, begin},
               [&] { return Words{"nothing refers to " + counted(end - begin, "byte")}; });
}

}  // namespace CT::Check
