// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_salvage_text.h"

#include <fmt/format.h>

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

using Salvage::Change;
using Salvage::change_info;
using Salvage::Report;
using Salvage::Sure;

std::string count(std::uint64_t number) { return as_count(static_cast<std::int64_t>(number)); }

std::string some(std::uint64_t number, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count(number), number == 1 ? one : many);
}

std::string_view word(Sure sure) {
  switch (sure) {
    case Sure::certain: return "certain";
    case Sure::likely: return "likely";
    case Sure::guess: return "guess";
  }
  return "";
}

std::string_view word(Salvage::Outcome outcome) {
  switch (outcome) {
    case Salvage::Outcome::dropped: return "dropped";
    case Salvage::Outcome::repaired: return "repaired";
    case Salvage::Outcome::invented: return "invented";
    case Salvage::Outcome::missing: return "missing";
  }
  return "";
}

std::uint64_t invented(const Report& report) {
  return report.sum(Change::startup_invented).count + report.sum(Change::begin_invented).count;
}

// "  dropped   12 times 81,000 bytes ...: at 36 (11,473), ..."
std::string line_of(const Report& report, const Salvage::ChangeInfo& info) {
  constexpr std::uint64_t most = 4;
  const Report::Sum& sum = report.sum(info.change);
  std::string line = fmt::format("  {:<8}  {}", word(info.outcome), info.text);
  if (info.change == Change::name_invented) return line + fmt::format(": {}\n", count(sum.count));
  line += sum.places == 1 ? ":" : fmt::format(", {} places:", count(sum.places));
  std::uint64_t listed = 0;
  for (const Report::Event& event : report.events()) {
    if (event.change != info.change) continue;
    if (++listed > most) break;
    line += fmt::format("{} at {}", listed == 1 ? "" : ",", event.offset);
    if (event.bytes != 0) line += fmt::format(" ({})", some(event.bytes, "byte", "bytes"));
  }
  if (sum.places > most) line += fmt::format(", … {} more", count(sum.places - most));
  return line + "\n";
}

std::string header_text(const Report& report) {
  std::string text;
  for (const Salvage::Fact& fact : report.facts) {
    if (fact.is_from_header) continue;
    text += fmt::format("{} {} {} ({})", text.empty() ? "" : ",", fact.name, fact.value,
                        word(fact.sure));
  }
  if (text.empty()) return text;
  return fmt::format("  header    {}; by the content:{}\n",
                     report.has_header ? "not right" : "not there", text);
}

void put(JsonWriter& json, std::string_view key, std::uint64_t number) {
  json.key(key);
  json.number(static_cast<std::int64_t>(number));
}

void put_header(const Report& report, JsonWriter& json) {
  json.key("header");
  json.begin_array();
  for (const Salvage::Fact& fact : report.facts) {
    json.element();
    json.begin_object();
    json.key("field");
    json.word(fact.name);
    json.key("value");
    json.text(fact.value);
    json.key("from");
    json.word(fact.is_from_header ? "header" : "content");
    json.key("sure");
    json.word(word(fact.sure));
    json.end_object();
  }
  json.end_array();
}

void put_changes(const Report& report, JsonWriter& json) {
  json.key("changes");
  json.begin_array();
  for (const Salvage::ChangeInfo& info : Salvage::change_infos) {
    const Report::Sum& sum = report.sum(info.change);
    if (sum.places == 0) continue;
    json.element();
    json.begin_object();
    json.key("kind");
    json.word(info.code);
    json.key("outcome");
    json.word(word(info.outcome));
    json.key("text");
    json.word(info.text);
    put(json, "places", sum.places);
    put(json, "count", sum.count);
    put(json, "bytes", sum.bytes);
    json.end_object();
  }
  json.end_array();
}

void put_places(const Report& report, JsonWriter& json) {
  json.key("places");
  json.begin_array();
  for (const Report::Event& event : report.events()) {
    json.element();
    json.begin_object();
    json.key("kind");
    json.word(change_info(event.change).code);
    put(json, "offset", event.offset);
    put(json, "bytes", event.bytes);
    put(json, "count", event.count);
    json.end_object();
  }
  json.end_array();
  std::uint64_t all = 0;
  for (const Salvage::ChangeInfo& info : Salvage::change_infos) {
    all += report.sum(info.change).places;
  }
  put(json, "places_left_out", all - report.events().size());
}

}  // namespace

std::string salvage_text(const Salvage::Salvaged& made, const SalvageNames& names) {
  const Report& report = made.report;
  const std::string wrote = names.output == "-"
                                ? std::string()
                                : fmt::format("wrote {}, {}\n", shown_text(names.output),
                                              as_bytes(static_cast<std::int64_t>(made.size())));
  const std::string kept = some(report.kept, "checkpoint", "checkpoints");
  const std::string trace = shown_text(names.trace);
  if (report.is_whole) {
    return fmt::format("{}: whole, {}, and copied as it is\n{}", trace, kept, wrote);
  }
  std::string text =
      fmt::format("{}: {} kept, {} of them repaired; {} dropped; {} invented\n", trace, kept,
                  count(report.count(Salvage::Outcome::repaired)),
                  count(report.count(Salvage::Outcome::dropped)), count(invented(report)));
  text += header_text(report);
  for (const Salvage::ChangeInfo& info : Salvage::change_infos) {
    if (report.sum(info.change).places != 0) text += line_of(report, info);
  }
  return text + wrote;
}

void write_salvage_json(const Salvage::Salvaged& made, const SalvageNames& names, Writer& out) {
  const Report& report = made.report;
  JsonWriter json(out);
  json.begin_object();
  json.key("schema");
  json.word("cttool.salvage/1");
  json.key("trace");
  json.text(names.trace);
  json.key("output");
  json.text(names.output);
  put(json, "size", made.size());
  json.key("whole");
  json.boolean(report.is_whole);
  json.key("has_header");
  json.boolean(report.has_header);
  put(json, "kept", report.kept);
  put(json, "repaired", report.count(Salvage::Outcome::repaired));
  put(json, "dropped", report.count(Salvage::Outcome::dropped));
  put(json, "invented", invented(report));
  put(json, "names_invented", report.sum(Change::name_invented).count);
  put_header(report, json);
  put_changes(report, json);
  put_places(report, json);
  json.end_object();
  out.put('\n');
}

}  // namespace CT::Tool
