// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_layout.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <utility>

#include "ctsalvage/ct_evidence.h"

namespace CT::Salvage {

namespace {

constexpr std::uint64_t largest_section = std::uint64_t{1} << 32;

std::string hex(std::uint64_t value) {
  std::array<char, 24> text = {};
  std::snprintf(text.data(), text.size(), "0x%llx", static_cast<unsigned long long>(value));
  return text.data();
}

Sure sureness(const Votes& votes) {
  constexpr std::uint64_t many = 8;
  if (votes.for_it >= many && votes.for_it * 4 >= votes.all * 3) return Sure::certain;
  return votes.for_it >= 2 && votes.for_it * 2 > votes.all ? Sure::likely : Sure::guess;
}

class Surveyor {
 public:
  Surveyor(Bytes file, std::optional<Bytes> add_data, Report& report)
      : file_(file), separate_(add_data), report_(report) {}

  Layout run();

 private:
  void choose_order();
  void find_data_origin();
  void find_add_data_origin();
  void find_sections();
  [[nodiscard]] std::uint64_t choose_data_end() const;
  void take_add_data(std::uint64_t begin);
  void end_chains_at(std::uint64_t end);
  [[nodiscard]] bool finds_functions(std::uint64_t said, std::uint64_t other) const;
  void tell_numbers();
  [[nodiscard]] bool ends_at(std::uint64_t offset) const {
    return !layout_.chains.empty() && layout_.chains.back().end == offset;
  }
  void tell(std::string_view name, std::string value, bool is_from_header, Sure sure) {
    report_.facts.push_back({name, std::move(value), is_from_header, sure});
  }

  Bytes file_;
  std::optional<Bytes> separate_;
  Report& report_;
  Layout layout_;
  Header header_;              // as it stands in the file
  bool has_sizes_ = false;     // those of the header fit the file
  bool is_confirmed_ = false;  // the header's origin of DATA is what checkpoints say
  std::optional<Evidence> evidence_;
};

Layout Surveyor::run() {
  if (!separate_) header_ = Header::read(file_);
  has_sizes_ = !separate_ && file_.size() >= Header::size &&
               Header::size + header_.sections_size() == file_.size();
  report_.has_header = header_.is_there;
  layout_.data = file_;
  choose_order();
  find_data_origin();
  find_add_data_origin();
  find_sections();
  tell_numbers();
  return std::move(layout_);
}

// In the order that finds more; in the header's if both find as many.
void Surveyor::choose_order() {
  constexpr std::uint64_t enough = 64;
  const bool said_big = (header_.flags & Header::big_endian_flag) != 0;
  const auto look = [&](bool big_endian) {
    const Order order(big_endian);
    const Looker looker(file_.data(), file_.size(), order, std::nullopt, std::nullopt);
    const bool has_room =
        !separate_ && (header_.is_there || has_sizes_ || looker.begins(Header::size));
    return Evidence(file_, has_room ? Header::size : 0, order);
  };
  const bool first_try = header_.is_there && said_big;
  evidence_.emplace(look(first_try));
  if (!header_.is_there || evidence_->checkpoints() < enough ||
      evidence_->first() != Header::size) {
    Evidence other = look(!first_try);
    const auto weight = [](const Evidence& evidence) {
      return std::pair(evidence.votes().for_it, evidence.checkpoints());
    };
    if (weight(other) > weight(*evidence_)) evidence_.emplace(std::move(other));
  }
  const bool is_big = evidence_->order().big_endian();
  layout_.order = evidence_->order();
  const Sure sure = evidence_->checkpoints() >= enough ? Sure::certain
                    : evidence_->checkpoints() != 0    ? Sure::likely
                                                       : Sure::guess;
  const bool is_said = header_.is_there && is_big == said_big;
  tell("byte_order", is_big ? "big-endian" : "little-endian", is_said,
       is_said ? Sure::certain : sure);
  const std::uint64_t first = evidence_->first().value_or(0);
  const bool has_header = !separate_ && (header_.is_there || has_sizes_ || first == Header::size);
  layout_.data_begin = has_header ? Header::size : first;
}

// What begins where DATA begins says it best. Other checkpoints may have been moved.
void Surveyor::find_data_origin() {
  const std::uint64_t begin = layout_.data_begin;
  Votes votes = evidence_->first_votes();
  const bool is_first = evidence_->first() == begin && votes.for_it >= 2;
  if (!is_first) votes = evidence_->votes();
  const std::uint64_t voted = votes.base + begin;
  const std::uint64_t difference = voted - header_.orig_data;
  constexpr std::uint64_t few = 4;
  const bool is_near = difference + file_.size() <= 2 * file_.size();
  is_confirmed_ = !separate_ && evidence_->supports(header_.orig_data - begin);
  const bool is_said =
      is_confirmed_ || (header_.is_there && (votes.for_it < few || (!is_first && is_near)));
  layout_.header.orig_data = is_said ? header_.orig_data : votes.for_it != 0 ? voted : 0;
  tell("orig_data", hex(layout_.header.orig_data), is_said,
       is_said ? Sure::certain : sureness(votes));
}

void Surveyor::find_add_data_origin() {
  constexpr double most = 0.5;
  const std::uint64_t reach = std::max<std::uint64_t>(header_.add_data_size, file_.size());
  const auto lowest = evidence_->lowest_reference();
  const Range said = {header_.orig_add_data, reach};
  constexpr std::uint64_t few = 16;
  const bool is_said =
      !separate_ && (evidence_->references() < few
                         ? header_.is_there
                         : evidence_->share(said) > most && finds_functions(said.origin, *lowest));
  layout_.header.orig_add_data = is_said ? header_.orig_add_data : lowest.value_or(0);
  if (is_said) tell("orig_add_data", hex(header_.orig_add_data), true, Sure::certain);
  const Range data = {layout_.header.orig_data, 2 * file_.size()};
  const Range add_data = {layout_.header.orig_add_data, is_said ? reach : largest_section};
  const std::uint64_t end =
      has_sizes_ ? Header::size + std::uint64_t{header_.data_size} : file_.size();
  layout_.chains =
      Salvage::find_chains(Looker(file_.data(), end, layout_.order, data,
                                  lowest ? std::optional<Range>(add_data) : std::nullopt),
                           layout_.data_begin);
  layout_.data = file_.first(end);
  if (is_said) return;
  // Once ADD DATA is found its functions tell more.
  find_sections();
  const std::uint64_t origin =
      evidence_->best_origin(layout_.add_data, layout_.header.orig_add_data);
  const bool is_found = evidence_->functions_in(layout_.add_data, origin) != 0;
  layout_.header.orig_add_data = origin;
  tell("orig_add_data", hex(origin), false, is_found ? Sure::likely : Sure::guess);
}

void Surveyor::find_sections() {
  if (separate_) {
    layout_.add_data = *separate_;
    return;
  }
  const std::uint64_t end =
      layout_.data.size() != file_.size() || has_sizes_ ? layout_.data.size() : choose_data_end();
  layout_.data = file_.first(end);
  take_add_data(end);
  end_chains_at(end);
}

// Whether the header's origin is no worse than the other one, where the header has ADD DATA.
bool Surveyor::finds_functions(std::uint64_t said, std::uint64_t other) const {
  std::uint64_t by_said = 0;
  std::uint64_t by_other = 0;
  const std::uint64_t size = file_.size();
  const std::uint64_t by_data = Header::size + std::uint64_t{header_.data_size};
  for (const std::uint64_t begin : {by_data, size - header_.add_data_size}) {
    if (begin > size) continue;
    by_said += evidence_->functions_in(file_.subspan(begin), said);
    by_other += evidence_->functions_in(file_.subspan(begin), other);
  }
  return by_said >= by_other;
}

void Surveyor::end_chains_at(std::uint64_t end) {
  std::vector<Chain>& chains = layout_.chains;
  while (!chains.empty() && chains.back().begin >= end) chains.pop_back();
  if (chains.empty() || chains.back().end <= end) return;
  Chain& last = chains.back();
  std::uint64_t kept = last.begin;
  each_checkpoint(file_.data(), layout_.order, last.begin, last.end,
                  [&](const Frame& frame, std::uint64_t offset) {
                    if (offset + frame.whole_size() > end) return false;
                    kept = offset + frame.whole_size();
                    return true;
                  });
  last.end = kept;
  if (last.begin == last.end) chains.pop_back();
}

// Where checkpoints end is where the header says that DATA ends, or ADD DATA begins; or else where
// the functions that they mention are found best.
std::uint64_t Surveyor::choose_data_end() const {
  const std::uint64_t size = file_.size();
  const std::uint64_t last =
      layout_.chains.empty() ? layout_.data_begin : layout_.chains.back().end;
  std::vector<std::uint64_t> ends;
  if (header_.is_there) {
    const std::uint64_t by_data = Header::size + std::uint64_t{header_.data_size};
    if (header_.add_data_size <= size && ends_at(size - header_.add_data_size)) return last;
    if (ends_at(by_data)) return last;
    if (by_data >= last && by_data <= size) ends.push_back(by_data);
    if (header_.add_data_size <= size - last) ends.push_back(size - header_.add_data_size);
  }
  ends.push_back(last);
  std::uint64_t best = size;
  std::uint64_t most = 0;
  for (const std::uint64_t end : ends) {
    const std::uint64_t found =
        evidence_->functions_in(file_.subspan(end), layout_.header.orig_add_data);
    if (found <= most) continue;
    most = found;
    best = end;
  }
  return best;
}

void Surveyor::take_add_data(std::uint64_t begin) {
  layout_.add_data_offset = begin;
  Bytes rest = file_.subspan(begin);
  if ((header_.is_there || has_sizes_) && header_.add_data_size < rest.size()) {
    const Bytes said = rest.first(header_.add_data_size);
    const std::uint64_t origin = layout_.header.orig_add_data;
    if (evidence_->functions_in(said, origin) >= evidence_->functions_in(rest, origin)) rest = said;
  }
  layout_.add_data = rest.first(std::min<std::uint64_t>(rest.size(), largest_section / 2));
}

void Surveyor::tell_numbers() {
  Header& header = layout_.header;
  const bool is_there = header_.is_there || is_confirmed_ || has_sizes_;
  if (is_there) {
    header.flags = header_.flags;
    header.request_id = header_.request_id;
    header.php_api_version = header_.php_api_version;
  }
  header.is_there = is_there;
  constexpr std::uint8_t order_bit = Header::big_endian_flag;
  header.flags = static_cast<std::uint8_t>(header.flags & ~order_bit);
  if (layout_.order.big_endian()) header.flags |= order_bit;
  const Sure sure = header_.is_there ? Sure::certain : is_there ? Sure::likely : Sure::guess;
  tell("request_id", std::to_string(header.request_id), is_there, sure);
  tell("php_api_version", std::to_string(header.php_api_version), is_there, sure);
  if (separate_) return;
  const std::uint64_t end = layout_.add_data_offset + layout_.add_data.size();
  if (end < file_.size()) report_.add(Change::behind_trace, end, file_.size() - end, 0);
  const std::uint64_t promised = Header::size + header_.sections_size();
  if (header_.is_there && promised > file_.size()) {
    report_.add(Change::section_missing, file_.size(), promised - file_.size(), 0);
  }
}

}  // namespace

Layout lay_out(Bytes file, Report& report) { return Surveyor(file, std::nullopt, report).run(); }

Layout lay_out(Bytes data, Bytes add_data, Report& report) {
  return Surveyor(data, add_data, report).run();
}

}  // namespace CT::Salvage
