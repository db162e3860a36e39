// SPDX-License-Identifier: MIT
//
// cttool show: one node, whole.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "codetrace/render/ct_number.h"
#include "ctmeasure/ct_exceptions.h"
#include "tools/cttool/ct_call_line.h"
#include "tools/cttool/ct_choice.h"
#include "tools/cttool/ct_format.h"
#include "tools/cttool/ct_input.h"
#include "tools/cttool/ct_names.h"
#include "tools/cttool/ct_node_json.h"
#include "tools/cttool/ct_printer.h"
#include "tools/cttool/ct_source.h"
#include "tools/cttool/ct_text_table.h"
#include "tools/cttool/ct_tree_json.h"
#include "tools/cttool/ct_tree_text.h"
#include "tools/cttool/ct_tree_walk.h"
#include "tools/cttool/ct_verb.h"

namespace CT::Tool {

namespace {

enum class Form { text, json };
const Words<Form> form_words = {{"text", Form::text}, {"json", Form::json}};

struct Options {
  std::string file;
  std::string id;
  Form form = Form::text;
  bool source = false;
  std::size_t limit = 50;  // lines about what it called; 0 for all
};

class NodePage {
 public:
  NodePage(const Trace& trace, const Measures& measures, NodeId id, const Options& options,
           Printer& printer)
      : options_(options),
        printer_(printer),
        trace_(trace),
        measures_(measures),
        id_(id),
        node_(trace.node(id)),
        source_(trace, options.source),
        out_(printer.out()),
        lines_(trace, measures),
        nodes_(trace, measures) {}

  void write_text();
  void write_json();

 private:
  void write_figures();
  void write_values();
  void write_fields();
  void write_exception();
  void write_way();
  void write_children();

  // Null for what is no call.
  [[nodiscard]] const Checkpoint::Function* function() const {
    const std::int32_t place = measures_[id_].function;
    return place >= 0 ? &trace_.functions()[static_cast<std::size_t>(place)] : nullptr;
  }
  void put_line(std::string_view name, std::string_view text) {
    constexpr std::size_t width = 14;
    out_.put(name);
    out_.fill(' ', name.size() < width ? width - name.size() : 1);
    out_.put(text);
    out_.put('\n');
  }
  template <class Write>
  void put_value(std::string_view name, const Write& write) {
    MemoryWriter text;
    JsonWriter json(text);
    write(json);
    if (text.view() == "null") return;
    has_cuts_ = has_cuts_ || text.view().find(Checkpoint::String::cut_marker) != std::string::npos;
    out_.put('\n');
    out_.put(name);
    out_.put('\n');
    put_indented(text.view());
  }
  void put_indented(std::string_view text);
  void put_source(const std::optional<SourceLine>& line);

  const Options& options_;
  Printer& printer_;
  const Trace& trace_;
  const Measures& measures_;
  NodeId id_;
  Node::Base node_;
  NodeSource source_;
  Writer& out_;
  NodeLines lines_;
  NodeJson nodes_;
  bool has_cuts_ = false;  // of the values that were written
};

void NodePage::write_text() {
  out_.put(printer_.style().heading("#" + std::to_string(id_) + "  " + lines_.label(id_)));
  out_.put("\n\n");
  write_figures();
  measures_[id_].function >= 0 ? write_values() : write_fields();
  if (outcome_of(node_) == "threw") write_exception();
  if (has_cuts_) {
    out_.put("\n**CUT**: the recording stopped there; the file has no more of it\n");
  }
  write_way();
  write_children();
}

void NodePage::write_figures() {
  const Measure& measure = measures_[id_];
  put_line("kind", kind_of(node_.type()));
  put_line("start", as_ms(measure.start_ns) + " ms");
  if (node_.is_span()) {
    put_line("total", as_ms(measure.total_ns) + " ms");
    put_line("own", as_ms(measures_.own(id_).ns) + " ms");
    const std::string_view outcome = outcome_of(node_);
    put_line("outcome", outcome == "ended" ? std::string(outcome) : printer_.style().bad(outcome));
  }
  if (measure.has(Measure::has_memory)) {
    put_line("memory", as_bytes(static_cast<std::int64_t>(measure.memory)));
  }
  if (measure.has(Measure::has_delta)) {
    put_line("memory delta",
             as_bytes(measure.memory_delta) + ", own " + as_bytes(measures_.own(id_).memory));
  }
  if (const std::string place = lines_.place(id_); !place.empty()) {
    put_line("made at", place);
    put_source(source_.of_call(node_.begin()));
  }
  if (measure.function < 0) return;
  const Checkpoint::Function& called = *function();
  put_line("defined in", called.is_user() ? shown_text(called.filename().view()) + ":" +
                                                std::to_string(called.line_no())
                                          : "PHP itself");
  if (called.is_user()) put_source(source_.of_definition(called));
}

void NodePage::put_source(const std::optional<SourceLine>& line) {
  if (line) put_line("", line->words());
}

void NodePage::write_values() {
  put_value("this", [&](JsonWriter& json) { nodes_.write_this(node_, json); });
  put_value("arguments", [&](JsonWriter& json) { nodes_.write_args(node_, json); });
  put_value("returned", [&](JsonWriter& json) { nodes_.write_result(node_, false, json); });
  put_value("threw", [&](JsonWriter& json) { nodes_.write_result(node_, true, json); });
}

// A JSON text's control characters are escaped already, but for those behind ASCII.
void NodePage::put_indented(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    out_.put("  ");
    out_.put(shown_text(text.substr(0, end)));
    out_.put('\n');
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

// What a node that is no call consists of, but for what write_figures() says.
void NodePage::write_fields() {
  Fields fields;
  ValueRoom room;
  node_.collect(fields, room);
  fields.for_each([&](FieldName name, const FieldValue& value) {
    if (const auto* text = std::get_if<Checkpoint::String>(&value)) {
      put_line(field_name(name), shown_text(text->view()) + (text->is_cut() ? "\xE2\x80\xA6" : ""));
    } else if (const auto* number = std::get_if<std::int64_t>(&value)) {
      if (name == FieldName::error_num || name == FieldName::op || name == FieldName::status) {
        put_line(field_name(name), std::to_string(*number));
      }
    }
  });
  put_value("threw", [&](JsonWriter& json) { nodes_.write_result(node_, true, json); });
}

// What was thrown, beyond its class and handle.
void NodePage::write_exception() {
  for (const Exception& exception : exceptions(trace_, measures_)) {
    for (const Exception::Pass& pass : exception.passes) {
      if (std::find(pass.calls.begin(), pass.calls.end(), id_) == pass.calls.end()) continue;
      const NodeId made_by = exception.made_by;
      const NodeId origin = made_by != Storage::no_node ? made_by : exception.first_thrower();
      out_.put('\n');
      if (exception.message.is_present()) {
        put_line("message", shown_text(exception.message.view()));
      }
      put_line("thrown at", lines_.place(origin) + "  #" + std::to_string(origin));
      put_line("caught in", pass.is_uncaught ? "nothing; it ended the script"
                                             : lines_.label(pass.caught_in) + "  #" +
                                                   std::to_string(pass.caught_in));
      return;
    }
  }
}

void NodePage::write_way() {
  const std::vector<NodeId> way = lines_.way_to(id_);
  if (way.empty()) return;
  out_.put("\nway down\n");
  TextTable table({{"id", TextTable::Align::right},
                   {"total ms", TextTable::Align::right},
                   {"", TextTable::Align::left}});
  for (const NodeId above : way) {
    table.add({std::to_string(above), as_ms(measures_[above].total_ns), lines_.label(above)});
  }
  printer_.put(table);
}

void NodePage::write_children() {
  if (trace_.last(id_) == id_) return;
  out_.put("\ncalled\n");
  NodeSet all(trace_.node_count(), true);
  all.number();
  Folder folder(trace_, measures_, all, FoldBy::runs);
  TreeText text(trace_, measures_, folder, out_, ValueForm::brief, 0);
  text.put_title();
  const TreeCut cut = walk_called(folder, id_, options_.limit, text);
  text.put_cut(cut);
  if (cut.folds != 0) out_.put("\n--limit 0 shows all\n");
}

void NodePage::write_json() {
  JsonWriter json(out_);
  json.begin_object();
  json.key("schema");
  json.word("cttool.show/1");
  json.key("trace");
  json.text(options_.file);
  nodes_.write_measures(id_, json);
  nodes_.write_values(id_, json);
  json.key("path");
  json.begin_array();
  for (const NodeId above : lines_.way_to(id_)) {
    json.element();
    json.number(std::int64_t{above});
  }
  json.end_array();
  json.key("children");
  json.begin_array();
  NodeSet all(trace_.node_count(), true);
  all.number();
  Folder folder(trace_, measures_, all, FoldBy::runs);
  TreeJson folds(trace_, measures_, folder, json, ValueForm::brief);
  walk_called(folder, id_, 0, folds);
  json.end_array();
  source_.write(node_.begin(), function(), json);
  json.end_object();
  out_.put('\n');
}

int run(const Options& options, Session& session) {
  Input input(session);
  if (!input.open(options.file)) return failed;
  const NodeId id = find_node(input.trace(), options.id);
  if (id == Storage::no_node) return nothing_found;
  const Measures measures(input.trace());
  Printer printer(session);
  NodePage page(input.trace(), measures, id, options, printer);
  options.form == Form::json ? page.write_json() : page.write_text();
  const int status = printer.finish(done);
  input.say_damage();
  return status;
}

}  // namespace

VerbRun define_show(CLI::App& command) {
  auto options = std::make_shared<Options>();
  add_file(command, options->file);
  command.add_option("ID", options->id, "The node's number.")->required();
  command.add_flag("--source", options->source,
                   "With its source lines, if they are on this machine.");
  add_count(command, "--limit", options->limit, "Lines about what it called; 0 for all. (50)");
  add_choice(command, "--format", options->form, form_words, "Print it so.");
  return [options](Session& session) { return run(*options, session); };
}

}  // namespace CT::Tool
