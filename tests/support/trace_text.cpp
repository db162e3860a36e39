// SPDX-License-Identifier: MIT
#include "trace_text.h"

#include <optional>

#include "checkpoint_text.h"
#include "trace_builder.h"
#include "trace_values.h"

namespace CT::Test {

namespace {

// What the text must say before anything else, because references depend on it.
struct Setup {
  std::vector<ByteOrder> orders = {ByteOrder::little, ByteOrder::big};
  Ref orig_data = TraceBuilder::default_orig_data;
  Ref orig_add_data = TraceBuilder::default_orig_add_data;
};

Setup read_setup(TextScanner& in) {
  Setup setup;
  while (!in.at_end()) {
    if (in.accept_word("order")) {
      if (in.accept_word("little")) {
        setup.orders = {ByteOrder::little};
      } else if (in.accept_word("big")) {
        setup.orders = {ByteOrder::big};
      } else {
        in.expect_word("both");
      }
    } else if (in.accept_word("base")) {
      const bool data = in.accept_word("data");
      if (!data) in.expect_word("add_data");
      (data ? setup.orig_data : setup.orig_add_data) = in.number();
    } else {
      break;
    }
    in.expect_end_of_line();
  }
  return setup;
}

class TraceReader {
 public:
  TraceReader(const TextScanner& behind_setup, const Setup& setup, ByteOrder order)
      : in_(behind_setup),
        trace_(order, setup.orig_data, setup.orig_add_data),
        values_(in_, trace_),
        checkpoints_(in_, values_) {}

  std::string read() {
    for (; !in_.at_end(); in_.expect_end_of_line()) {
      std::string label;
      const bool labelled = in_.accept_label(label);
      const std::optional<Ref> ref = statement(in_.word("a statement"));
      if (labelled && !ref) in_.fail("this statement can have no label");
      if (labelled) values_.define(label, *ref);
    }
    return trace_.build();
  }

 private:
  std::optional<Ref> statement(const std::string& name) {
    if (checkpoints_.knows(name)) return trace_.add(checkpoints_.read(name));
    if (name == "text") return trace_.new_text(in_.string());
    if (name == "class") return klass();
    if (name == "function") return function();
    if (name == "add_data") return trace_.add_data(values_.fields());
    if (name == "data") return trace_.data(values_.fields());
    if (!damage(name)) in_.fail("unknown statement '" + name + "'");
    return std::nullopt;
  }

  bool damage(const std::string& name) {
    if (name == "set") {
      set();
    } else if (name == "cut_data") {
      trace_.cut_data(in_.number());
    } else if (name == "cut_add_data") {
      trace_.cut_add_data(in_.number());
    } else if (name == "cut_file") {
      trace_.cut_file(in_.number());
    } else if (name == "append_to_file") {
      trace_.append_to_file(values_.fields().encode(trace_.order()));
    } else if (name == "patch_data") {
      const std::size_t offset = in_.number(trace_.data_size());
      trace_.patch_data(offset, values_.fields().encode(trace_.order()));
    } else if (name == "patch_add_data") {
      const std::size_t offset = in_.number(trace_.add_data_size());
      trace_.patch_add_data(offset, values_.fields().encode(trace_.order()));
    } else {
      return false;
    }
    return true;
  }

  void set() {
    const std::string name = in_.word("a header field");
    if (name == "magic") {
      trace_.set_magic(in_.string());
    } else if (name == "version") {
      trace_.set_version(u8());
    } else if (name == "flags") {
      trace_.set_flags(u8());
    } else if (name == "request") {
      trace_.set_request_id(u32());
    } else if (name == "api") {
      trace_.set_php_api(u32());
    } else if (name == "data_size") {
      trace_.set_data_size(u32());
    } else if (name == "add_data_size") {
      trace_.set_add_data_size(u32());
    } else {
      in_.fail("unknown header field '" + name + "'");
    }
  }

  std::uint8_t descriptor_type() {
    if (in_.accept_word("user")) return user_type;
    if (in_.accept_word("internal")) return internal_type;
    in_.expect_word("type");
    return u8();
  }

  Ref klass() {
    ClassDraft draft;
    draft.type = descriptor_type();
    const auto name = optional_string();
    draft.name = view(name);
    if (in_.accept_word("flags")) draft.flags = u32();
    const auto file = in_.accept_word("file") ? optional_string() : std::nullopt;
    draft.file = view(file);
    if (in_.accept_word("line")) draft.line = u32();
    return trace_.klass(draft);
  }

  Ref function() {
    FunctionDraft draft;
    draft.type = descriptor_type();
    const std::string rest = in_.accept_word("rest") ? in_.string() : std::string();
    draft.rest_of_type = rest;
    const auto name = optional_string();
    draft.name = view(name);
    if (in_.accept_word("class")) draft.class_entry = values_.ref();
    if (in_.accept_word("flags")) draft.flags = u32();
    const auto file = in_.accept_word("file") ? optional_string() : std::nullopt;
    draft.file = view(file);
    if (in_.accept_word("line")) draft.line = u32();
    return trace_.function(draft);
  }

  std::uint8_t u8() { return static_cast<std::uint8_t>(in_.number(UINT8_MAX)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(in_.number(UINT32_MAX)); }
  std::optional<std::string> optional_string() {
    if (in_.accept_word("none")) return std::nullopt;
    return in_.string();
  }
  static std::string_view view(const std::optional<std::string>& text) {
    return text ? std::string_view(*text) : std::string_view();
  }

  TextScanner in_;
  TraceBuilder trace_;
  TraceValues values_;
  CheckpointText checkpoints_;
};

}  // namespace

std::vector<BuiltTrace> build_traces(std::string_view text) {
  TextScanner in(text);
  const Setup setup = read_setup(in);
  std::vector<BuiltTrace> traces;
  for (const ByteOrder order : setup.orders) {
    traces.push_back({order, TraceReader(in, setup, order).read()});
  }
  return traces;
}

}  // namespace CT::Test
