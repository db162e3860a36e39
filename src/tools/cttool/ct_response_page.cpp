// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_response_page.h"

#include <algorithm>
#include <array>

#include "tools/cttool/ct_body.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

using Align = TextTable::Align;
using Fate = HeaderStep::Fate;

constexpr std::string_view ellipsis = "\xE2\x80\xA6";

std::string shown_line(const Checkpoint::String& line) {
  std::string text = shown_text(line.view());
  if (line.is_cut()) text += ellipsis;
  return text;
}

std::string number(std::uint64_t count) { return as_count(static_cast<std::int64_t>(count)); }

std::string counted(std::uint64_t count, std::string_view one, std::string_view many) {
  std::string text = number(count);
  text += ' ';
  return text += count == 1 ? one : many;
}

}  // namespace

std::string_view word_of(const HeaderStep& step) {
  constexpr std::array<std::string_view, 7> words = {"sent",     "replaced", "deleted", "deletes",
                                                     "too_late", "damaged",  "unknown"};
  return words[static_cast<std::size_t>(step.fate)];
}

std::string_view operation_of(const HeaderStep& step) {
  constexpr std::array<std::string_view, 5> words = {"replace", "add", "delete", "delete_all",
                                                     "set_status"};
  return step.op < words.size() ? words[step.op] : "unknown";
}

Sighting look_for(const std::string& text, const Response& response, std::size_t limit) {
  Sighting sighting = {text, {}, find_in_body(response, text, limit)};
  for (std::size_t i = 0; i != response.steps().size(); ++i) {
    const std::string_view line = response.steps()[i].line.view();
    if (line.find(text) != std::string_view::npos) sighting.headers.push_back(i);
  }
  return sighting;
}

std::string ResponsePage::status_text() const {
  if (!response_.status_line().is_empty()) return shown_line(response_.status_line());
  if (response_.status()) return "HTTP " + std::to_string(*response_.status());
  return "(no status in the trace)";
}

std::string ResponsePage::maker(NodeId id) {
  const NodeId by = trace_.parent(id);
  if (by == Storage::no_node) return "-";
  const NodeId around = trace_.parent(by);
  const auto call = trace_.node(by).begin_as<Checkpoint::FunctionCall>();
  const bool is_builtin = call && call->function() != nullptr && !call->function()->is_user();
  if (!is_builtin || around == Storage::no_node) return lines_.label(by);
  std::string both = lines_.label(around);
  both += " > ";
  return both += lines_.label(by);
}

// In a table: of a terminal's line the text has half.
std::string ResponsePage::fitted_place(NodeId id) const {
  return printer_.width() == 0 ? place(id) : end_of(place(id), printer_.width() / 4);
}

std::string ResponsePage::fitted_maker(NodeId id) {
  return printer_.width() == 0 ? maker(id) : end_of(maker(id), printer_.width() / 5);
}

std::string ResponsePage::place(NodeId id) const {
  const NodeId by = trace_.parent(id);
  std::string own = lines_.place(id);
  return own.empty() && by != Storage::no_node ? lines_.place(by) : own;
}

void ResponsePage::write_head() {
  out_.put(printer_.style().heading(status_text()));
  out_.put('\n');
  for (const HeaderStep& header : response_.headers()) {
    out_.put(shown_line(header.line));
    out_.put('\n');
  }
}

void ResponsePage::write_text() {
  write_head();
  out_.put('\n');
  write_notes(put_body(response_, printer_.style(), out_));
}

void ResponsePage::write_notes(bool ends_line) {
  std::vector<std::string> notes;
  const auto& steps = response_.steps();
  const auto late = std::count_if(steps.begin(), steps.end(), [](const HeaderStep& step) {
    return step.fate == Fate::too_late;
  });
  if (late != 0) {
    notes.push_back(
        counted(static_cast<std::uint64_t>(late), "header operation", "header operations"));
    notes.back() += " came after the headers were sent; --blame lists all";
  }
  if (response_.sent_by() == Storage::no_node) {
    notes.emplace_back("nothing in the trace says that headers were sent");
  }
  if (response_.cut_writes() != 0) {
    notes.push_back(counted(response_.cut_writes(), "write is", "writes are"));
    notes.back() += " cut in the trace: it has " + number(response_.bytes_recorded());
    notes.back() += " of " + number(response_.bytes_out()) + " bytes";
  }
  if (notes.empty()) return;
  if (!ends_line) out_.put('\n');
  out_.put('\n');
  for (const std::string& note : notes) {
    out_.put(printer_.style().dim(std::string(ellipsis) + " " + note));
    out_.put('\n');
  }
}

namespace {

// Writes that one place of one function made one after the other.
struct WriteFold {
  std::string maker;
  std::string place;
  NodeId id;
  std::size_t count;
  std::uint64_t offset;
  std::uint64_t bytes;
  std::string begin;
};

}  // namespace

void ResponsePage::write_makers(bool each) {
  TextTable table({{"id", Align::right},
                   {"what", Align::left},
                   {"made by", Align::left},
                   {"at", Align::left},
                   {"", Align::left}});
  if (response_.sent_by() != Storage::no_node) {
    const NodeId id = response_.sent_by();
    table.add({std::to_string(id), "sends", fitted_maker(id), fitted_place(id), status_text()});
  }
  for (const HeaderStep& step : response_.steps()) {
    std::string what(word_of(step));
    if (step.id == response_.status_set_by()) what = "status";
    if (step.ended_by != Storage::no_node) what += " by #" + std::to_string(step.ended_by);
    std::string line = shown_line(step.line);
    if (step.line.is_empty()) line = "(" + std::string(operation_of(step)) + ")";
    table.add({std::to_string(step.id), what, fitted_maker(step.id), fitted_place(step.id), line});
  }
  constexpr std::size_t begin_width = 40;
  std::vector<WriteFold> folds;
  for (const BodyPart& write : response_.writes()) {
    const WriteFold fold = {maker(write.id), place(write.id), write.id, 1,
                            write.offset,    write.size(),    {}};
    const bool is_same = !folds.empty() && folds.back().maker == fold.maker;
    if (!each && is_same && folds.back().place == fold.place) {
      ++folds.back().count;
      folds.back().bytes += fold.bytes;
    } else {
      folds.push_back(fold);
      folds.back().begin =
          fitted(shown_text(write.body.view().substr(0, 4 * begin_width)), begin_width);
    }
  }
  std::size_t before = 0;
  for (const WriteFold& fold : folds) {
    std::string what = "write " + number(before + 1);
    if (fold.count != 1) what += " to " + number(before + fold.count);
    before += fold.count;
    std::string bytes = counted(fold.bytes, "byte", "bytes");
    bytes += " at " + number(fold.offset) + ": \"" + fold.begin + "\"";
    table.add({std::to_string(fold.id), std::move(what), fitted_maker(fold.id),
               fitted_place(fold.id), bytes});
  }
  printer_.put(table);
  if (folds.size() == before) return;
  out_.put(printer_.style().dim(
      "\n\xE2\x80\xA6 writes of one place in a row have one line; --full shows each"));
  out_.put('\n');
}

// Of a way that is very long, the end.
void ResponsePage::write_way(NodeId id) {
  constexpr std::size_t most = 40;
  std::vector<NodeId> way = lines_.way_to(id);
  const std::size_t left_out = printer_.width() == 0 || way.size() <= most ? 0 : way.size() - most;
  if (left_out != 0) {
    out_.put(printer_.style().dim("  \xE2\x80\xA6 " + number(left_out) +
                                  " more above; --full shows all"));
    out_.put('\n');
  }
  for (std::size_t i = left_out; i != way.size(); ++i) {
    std::string line = "  #" + std::to_string(way[i]);
    line.resize(std::max<std::size_t>(line.size() + 1, 12), ' ');
    line += lines_.label(way[i]);
    if (const std::string at = lines_.place(way[i]); !at.empty()) line += "  " + at;
    out_.put(fitted(line, printer_.width()));
    out_.put('\n');
  }
}

void ResponsePage::write_sighting(const Sighting& sighting) {
  std::string title = "\"" + shown_text(sighting.text) + "\": ";
  title += counted(sighting.body.count, "time", "times") + " in the body, in ";
  title += counted(sighting.headers.size(), "header", "headers");
  out_.put(printer_.style().heading(title));
  out_.put('\n');
  for (const std::size_t place_of_step : sighting.headers) {
    const HeaderStep& step = response_.steps()[place_of_step];
    std::string line = "\nheader #" + std::to_string(step.id) + ", ";
    line += word_of(step);
    if (step.ended_by != Storage::no_node) line += " by #" + std::to_string(step.ended_by);
    line += ": " + shown_line(step.line);
    out_.put(line);
    out_.put('\n');
    write_way(step.id);
  }
  write_body_matches(sighting);
  const std::uint64_t left = sighting.body.count - sighting.body.found.size();
  if (left == 0) return;
  out_.put(printer_.style().dim("\n\xE2\x80\xA6 " + number(left) +
                                " more times in the body; --limit 0 shows all"));
  out_.put('\n');
}

// Those in the same writes together.
void ResponsePage::write_body_matches(const Sighting& sighting) {
  const auto& found = sighting.body.found;
  for (std::size_t i = 0; i != found.size();) {
    const BodyMatch& match = found[i];
    const BodyPart& first = response_.writes()[match.first];
    std::string line = "\nbody, at byte " + number(match.offset);
    std::size_t next = i + 1;
    for (; next != found.size() && found[next].first == match.first &&
           found[next].last == match.last && match.first == match.last;
         ++next) {
      line += ", " + number(found[next].offset);
    }
    line += ": write #" + std::to_string(first.id) + ", from its byte ";
    line += number(match.offset - first.offset) + " of " + number(first.body.view().size());
    if (match.last != match.first) {
      line += ", to write #" + std::to_string(response_.writes()[match.last].id);
    }
    if (const std::string at = lines_.place(first.id); !at.empty()) line += ", at " + at;
    out_.put(line);
    out_.put('\n');
    write_way(first.id);
    if (match.last != match.first) {
      out_.put("and on\n");
      write_way(response_.writes()[match.last].id);
    }
    i = next;
  }
}

}  // namespace CT::Tool
