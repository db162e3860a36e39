// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_check_printer.h"

#include <algorithm>
#include <string>

#include "ctcheck/ct_defect_list.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

using Check::CodeInfo;
using Check::Defect;
using Check::Level;
using Check::Part;
using Check::Result;
using Check::Spot;

namespace {

std::string padded(std::string_view text, std::size_t width) {
  std::string result(text);
  if (result.size() < width) result.resize(width, ' ');
  return result;
}

std::string count_of(std::uint64_t count) { return as_count(static_cast<std::int64_t>(count)); }

std::string size_of(const Result& result) {
  std::string text = count_of(result.checkpoints);
  text.append(result.checkpoints == 1 ? " checkpoint, " : " checkpoints, ");
  return text.append(as_bytes(static_cast<std::int64_t>(result.bytes)));
}

// "2 lost, 1 odd".
std::string levels_of(const Result& result) {
  std::string text;
  for (const Level level : {Level::fatal, Level::lost, Level::odd}) {
    const std::uint64_t count = result.count(level);
    if (count == 0) continue;
    text.append(text.empty() ? "" : ", ").append(count_of(count)).append(" ");
    text.append(level_name(level));
  }
  return text;
}

// Where it is: in the file, in its section, and in which checkpoint.
std::string place_of(const Defect& defect) {
  std::string text = std::to_string(defect.file_offset);
  const Spot& spot = defect.spot;
  if (spot.part == Part::file) return text;
  text.append(" (").append(Check::place_name(spot.part, spot.offset));
  if (spot.record != Spot::no_record) {
    text.append(", ").append(type_name(spot.type));
    if (spot.offset != spot.record) {
      text.append(" at ").append(Check::place_name(Part::data, spot.record));
    }
  }
  return text.append(")");
}

}  // namespace

bool is_clean(const Result& result, Level least) {
  return std::all_of(Check::codes.begin(), Check::codes.end(), [&](const CodeInfo& info) {
    return info.level > least || result.count(info.code) == 0;
  });
}

CheckPrinter::CheckPrinter(CheckForm form, Level least, Printer& printer)
    : form_(form),
      least_(least),
      printer_(printer),
      out_(printer.out()),
      json_(printer.out(),
            form == CheckForm::json ? JsonWriter::Form::indented : JsonWriter::Form::compact) {}

void CheckPrinter::begin() {
  if (form_ != CheckForm::json) return;
  json_.begin_object();
  json_.key("schema");
  json_.word("cttool.check/1");
  json_.key("files");
  json_.begin_array();
}

void CheckPrinter::print(const CheckedFile& file) {
  switch (form_) {
    case CheckForm::text: print_text(file); break;
    case CheckForm::json:
      json_.element();
      write_file(file);
      break;
    case CheckForm::jsonl:
      write_file(file);
      out_.put('\n');
      break;
  }
}

void CheckPrinter::end() {
  if (form_ != CheckForm::json) return;
  json_.end_array();
  json_.end_object();
  out_.put('\n');
}

void CheckPrinter::print_text(const CheckedFile& file) {
  const Result& result = file.result;
  std::string line = shown_text(file.name).append(": ");
  if (!file.failure.empty()) {
    out_.put(line.append(printer_.style().bad("unreadable")).append(": "));
    out_.put(shown_text(file.failure).append("\n"));
    return;
  }
  if (result.is_clean()) {
    out_.put(line.append("clean (").append(size_of(result)).append(")\n"));
    return;
  }
  const std::string levels = levels_of(result);
  line.append(is_clean(result, Level::lost) ? levels : printer_.style().bad(levels));
  out_.put(line.append(" (").append(size_of(result)).append(")\n"));
  for (const Defect& defect : result.defects) {
    if (is_listed(defect)) print_defect(defect);
  }
  print_unlisted(result);
}

void CheckPrinter::print_defect(const Defect& defect) {
  constexpr std::size_t level_width = 5;
  constexpr std::size_t code_width = 17;
  const CodeInfo& info = code_info(defect.code);
  const std::string level = padded(level_name(info.level), level_width);
  std::string line = "  ";
  line.append(info.level == Level::odd ? level : printer_.style().bad(level)).append("  ");
  line.append(padded(info.name, code_width)).append("  at ").append(place_of(defect));
  line.append(": ").append(shown_text(defect.what)).append("; ").append(defect.cost);
  out_.put(line.append("\n"));
}

// What is counted and not listed, a line for each code.
void CheckPrinter::print_unlisted(const Result& result) {
  for (const CodeInfo& info : Check::codes) {
    const auto listed = static_cast<std::uint64_t>(
        std::count_if(result.defects.begin(), result.defects.end(),
                      [&](const Defect& defect) { return defect.code == info.code; }));
    if (result.count(info.code) == listed || info.level > least_) continue;
    std::string line = "  \xE2\x80\xA6 ";
    line.append(count_of(result.count(info.code) - listed)).append(" more ").append(info.name);
    out_.put(printer_.style().dim(line.append("; --limit 0 lists all")).append("\n"));
  }
}

void CheckPrinter::write_number(const char* key, std::uint64_t number) {
  json_.key(key);
  json_.number(static_cast<std::int64_t>(number));
}

void CheckPrinter::write_file(const CheckedFile& file) {
  json_.begin_object();
  json_.key("trace");
  json_.text(file.name);
  json_.key("failure");
  file.failure.empty() ? json_.null() : json_.text(file.failure);
  write_number("bytes", file.result.bytes);
  write_number("checkpoints", file.result.checkpoints);
  json_.key("clean");
  json_.boolean(file.failure.empty() && file.result.is_clean());
  for (const Level level : {Level::fatal, Level::lost, Level::odd}) {
    write_number(std::string(level_name(level)).c_str(), file.result.count(level));
  }
  write_counts(file.result);
  write_reader(file.result.reader);
  json_.key("defects");
  json_.begin_array();
  for (const Defect& defect : file.result.defects) {
    if (!is_listed(defect)) continue;
    json_.element();
    write_defect(defect);
  }
  json_.end_array();
  json_.end_object();
}

void CheckPrinter::write_counts(const Result& result) {
  json_.key("counts");
  json_.begin_object();
  for (const CodeInfo& info : Check::codes) {
    if (result.count(info.code) == 0) continue;
    json_.key(info.name);
    json_.number(static_cast<std::int64_t>(result.count(info.code)));
  }
  json_.end_object();
}

void CheckPrinter::write_reader(const Summary& reader) {
  json_.key("reader");
  json_.begin_object();
  write_number("records", reader.records);
  write_number("skipped", reader.skipped);
  write_number("damaged", reader.damaged);
  write_number("rejected", reader.rejected);
  write_number("repaired", reader.repaired);
  json_.key("broken");
  json_.boolean(reader.is_broken);
  json_.end_object();
}

void CheckPrinter::write_defect(const Defect& defect) {
  const CodeInfo& info = code_info(defect.code);
  const Spot& spot = defect.spot;
  json_.begin_object();
  json_.key("code");
  json_.word(info.name);
  json_.key("level");
  json_.word(level_name(info.level));
  write_number("offset", defect.file_offset);
  json_.key("section");
  if (spot.part == Part::file) {
    json_.null();
  } else {
    json_.word(spot.part == Part::data ? "data" : "add_data");
  }
  json_.key("section_offset");
  spot.part == Part::file ? json_.null() : json_.number(static_cast<std::int64_t>(spot.offset));
  json_.key("type");
  spot.record == Spot::no_record ? json_.null() : json_.word(type_name(spot.type));
  json_.key("record");
  spot.record == Spot::no_record ? json_.null()
                                 : json_.number(static_cast<std::int64_t>(spot.record));
  json_.key("what");
  json_.text(defect.what);
  json_.key("cost");
  json_.text(defect.cost);
  json_.end_object();
}

}  // namespace CT::Tool
