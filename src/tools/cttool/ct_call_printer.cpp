// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_call_printer.h"

#include <utility>

#include "codetrace/render/ct_number.h"
#include "ctexport/ct_csv_text.h"
#include "ctmeasure/ct_grouping.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

CallPrinter::CallPrinter(const CallFormat& format, std::string file, const Trace& trace,
                         const Measures& measures, Printer& printer)
    : format_(format),
      file_(std::move(file)),
      trace_(trace),
      measures_(measures),
      out_(printer.out()),
      width_(printer.width()),
      lines_(trace, measures),
      nodes_(trace, measures),
      json_(printer.out(), format.form == CallForm::json ? JsonWriter::Form::indented
                                                         : JsonWriter::Form::compact) {}

// One exception ends any number of calls, so it is kept once, and what a line shows of it is short.
void CallPrinter::find_messages() {
  constexpr std::size_t most_columns = 200;
  for (const Exception& exception : exceptions(trace_, measures_)) {
    if (!exception.message.is_present()) continue;
    std::string words = ": \"";
    words += shortened(exception.message.view(), most_columns);
    words += exception.message.is_cut() ? "\"\xE2\x80\xA6" : "\"";
    for (const Exception::Pass& pass : exception.passes) {
      for (const NodeId id : pass.calls) message_of_[id] = messages_.size();
    }
    messages_.push_back(std::move(words));
  }
}

void CallPrinter::begin() {
  if (format_.messages && format_.form == CallForm::text) find_messages();
  switch (format_.form) {
    case CallForm::text: out_.put("      id    start ms    total ms  place  call\n"); break;
    case CallForm::json:
      json_.begin_object();
      json_.key("schema");
      json_.word("cttool.calls/1");
      json_.key("trace");
      json_.text(file_);
      json_.key("calls");
      json_.begin_array();
      break;
    case CallForm::jsonl: break;
    case CallForm::csv:
      out_.put(
          "id,parent,depth,name,start_ns,total_ns,own_ns,file,line,outcome,this,args,"
          "returned,thrown\n");
  }
}

void CallPrinter::print(NodeId id) {
  switch (format_.form) {
    case CallForm::text: print_text(id); break;
    case CallForm::json:
      json_.element();
      print_json(id);
      break;
    case CallForm::jsonl:
      print_json(id);
      out_.put('\n');
      break;
    case CallForm::csv: print_csv(id); break;
  }
}

void CallPrinter::end() {
  if (format_.form != CallForm::json) return;
  json_.end_array();
  json_.end_object();
  out_.put('\n');
}

void CallPrinter::print_text(NodeId id) {
  if (format_.path) {
    std::string way;
    for (const NodeId above : lines_.way_to(id)) way += lines_.label(above) + " > ";
    out_.put(fitted(way, width_) + "\n");
  }
  const Measure& measure = measures_[id];
  const auto right = [&](const std::string& text, std::size_t columns) {
    return text.size() < columns ? std::string(columns - text.size(), ' ') + text : text;
  };
  const std::string place = lines_.place(id);
  std::string line = right(std::to_string(id), 8) + right(as_ms(measure.start_ns), 12);
  line += right(as_ms(measure.total_ns), 12) + "  ";
  // Of a terminal's line the call has most.
  line += place.empty() ? "-" : width_ == 0 ? place : end_of(place, width_ / 4);
  line += "  " + lines_.line(id);
  if (const auto known = message_of_.find(id); known != message_of_.end()) {
    line += messages_[known->second];
  }
  out_.put(fitted(line, width_));
  out_.put('\n');
}

void CallPrinter::print_json(NodeId id) {
  json_.begin_object();
  nodes_.write_measures(id, json_);
  nodes_.write_values(id, json_);
  if (format_.path) {
    json_.key("path");
    json_.begin_array();
    for (const NodeId above : lines_.way_to(id)) {
      json_.element();
      json_.number(std::int64_t{above});
    }
    json_.end_array();
  }
  json_.end_object();
}

void CallPrinter::print_csv(NodeId id) {
  const Measure& measure = measures_[id];
  const Node::Base node = trace_.node(id);
  const auto put_json = [&](const auto& write) {
    out_.put(',');
    MemoryWriter text;
    JsonWriter json(text, JsonWriter::Form::compact);
    write(json);
    if (text.view() != "null") Export::put_csv(out_, text.view());
  };
  put_signed(out_, id);
  out_.put(',');
  put_signed(out_, trace_.parent(id));
  out_.put(',');
  put_unsigned(out_, trace_.depth(id));
  out_.put(',');
  Export::put_csv(out_, name_of(trace_.functions()[static_cast<std::size_t>(measure.function)]));
  for (const std::int64_t figure : {measure.start_ns, measure.total_ns, measures_.own(id).ns}) {
    out_.put(',');
    put_signed(out_, figure);
  }
  out_.put(',');
  Export::put_csv(out_, node.begin().filename().view());
  out_.put(',');
  if (node.begin().has_location()) put_unsigned(out_, node.begin().line_no());
  out_.put(',');
  out_.put(outcome_of(node));
  put_json([&](JsonWriter& json) { nodes_.write_this(node, json); });
  put_json([&](JsonWriter& json) { nodes_.write_args(node, json); });
  put_json([&](JsonWriter& json) { nodes_.write_result(node, false, json); });
  put_json([&](JsonWriter& json) { nodes_.write_result(node, true, json); });
  out_.put('\n');
}

}  // namespace CT::Tool
