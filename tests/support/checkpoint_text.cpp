// SPDX-License-Identifier: MIT
#include "checkpoint_text.h"

#include <optional>

namespace CT::Test {

const std::map<std::string, CheckpointText::Maker>& CheckpointText::types() {
  static const std::map<std::string, Maker> table = {
      {"startup", &CheckpointText::startup},
      {"shutdown", &CheckpointText::shutdown},
      {"call", &CheckpointText::call},
      {"method", &CheckpointText::method},
      {"return", &CheckpointText::function_return},
      {"exception", &CheckpointText::function_exception},
      {"include", &CheckpointText::include},
      {"include_return", &CheckpointText::include_return},
      {"include_exception", &CheckpointText::include_exception},
      {"write", &CheckpointText::write},
      {"write_end", &CheckpointText::write_end},
      {"flush", &CheckpointText::flush},
      {"header", &CheckpointText::header},
      {"send_headers", &CheckpointText::send_headers},
      {"exit", &CheckpointText::exit},
      {"error", &CheckpointText::error},
      {"event", &CheckpointText::event},
      {"raw", &CheckpointText::raw},
  };
  return table;
}

CheckpointDraft CheckpointText::read(const std::string& word) {
  std::optional<Time> at_time;
  std::optional<std::uint64_t> memory;
  std::optional<Ref> file;
  std::uint32_t line = 0;
  if (in_.accept("@")) at_time = time();
  if (in_.accept_word("mem")) memory = in_.number();
  if (in_.accept_word("at")) {
    file = values_.ref();
    in_.expect(":");
    line = u32();
  }
  CheckpointDraft draft = (this->*types().at(word))();
  if (at_time) draft.time(at_time->seconds, at_time->nanoseconds);
  if (memory) draft.memory(*memory);
  if (file) draft.location(*file, line);
  read_end(draft);
  return draft;
}

void CheckpointText::read_end(CheckpointDraft& draft) {
  if (in_.accept_word("keep")) draft.keep(in_.number());
  if (in_.accept_word("size")) draft.header_size(u32());
  if (in_.accept_word("more")) draft.more(values_.fields());
}

// 10.5 is 10 s 500000000 ns; 10+5 is 10 s 5 ns, also for more nanoseconds than a second has.
CheckpointText::Time CheckpointText::time() {
  const std::uint64_t seconds = in_.number();
  if (in_.accept("+")) return {seconds, u32()};
  if (!in_.accept(".")) return {seconds, 0};
  std::string fraction = in_.digits();
  if (fraction.size() > 9) in_.fail("a timestamp has at most nine decimals");
  fraction.resize(9, '0');
  return {seconds, static_cast<std::uint32_t>(std::stoul(fraction))};
}

Ref CheckpointText::optional_ref(std::string_view keyword) {
  return in_.accept_word(keyword) ? values_.ref() : 0;
}

std::string CheckpointText::optional_string() {
  return in_.at_string() ? in_.string() : std::string();
}

Ref CheckpointText::start() {
  in_.expect_word("of");
  return values_.ref();
}

Fields CheckpointText::thrown() {
  in_.expect_word("value");
  return values_.value();
}

CheckpointDraft CheckpointText::startup() {
  const Ref url = optional_ref("url");
  const Ref uri = optional_ref("uri");
  const Ref host = optional_ref("host");
  return CheckpointDraft::startup(url, uri, host, optional_ref("method"));
}

CheckpointDraft CheckpointText::shutdown() { return CheckpointDraft::shutdown(); }

CheckpointDraft CheckpointText::call() { return any_call(false); }
CheckpointDraft CheckpointText::method() { return any_call(true); }

CheckpointDraft CheckpointText::any_call(bool is_method) {
  in_.expect_word("fn");
  const Ref callee = values_.ref();
  std::optional<Fields> self;
  if (is_method) {
    in_.expect_word("this");
    self = values_.value();
  }
  std::vector<Fields> args;
  if (in_.accept_word("args")) args = values_.value_list();
  auto count = static_cast<std::uint32_t>(args.size());
  if (in_.accept_word("count")) count = u32();
  return CheckpointDraft::call_with_count(callee, self, count, args);
}

CheckpointDraft CheckpointText::function_return() {
  const Ref call = start();
  const Fields returned = in_.accept_word("value") ? values_.value() : value::null();
  return CheckpointDraft::function_return(call, returned);
}

CheckpointDraft CheckpointText::function_exception() {
  const Ref call = start();
  return CheckpointDraft::function_exception(call, thrown());
}

CheckpointDraft CheckpointText::include() { return CheckpointDraft::include_call(values_.ref()); }
CheckpointDraft CheckpointText::include_return() {
  return CheckpointDraft::include_return(start());
}

CheckpointDraft CheckpointText::include_exception() {
  const Ref call = start();
  return CheckpointDraft::include_exception(call, thrown());
}

CheckpointDraft CheckpointText::write() {
  return CheckpointDraft::sapi_write_start(values_.cut_string());
}
CheckpointDraft CheckpointText::write_end() { return CheckpointDraft::sapi_write_end(start()); }
CheckpointDraft CheckpointText::flush() { return CheckpointDraft::sapi_flush(); }

CheckpointDraft CheckpointText::header() {
  const std::uint8_t op = u8(UINT8_MAX);
  const bool line = in_.at_string() || in_.at_word("cut");
  return CheckpointDraft::sapi_header(op, line ? values_.cut_string() : Fields());
}

CheckpointDraft CheckpointText::send_headers() {
  const std::uint32_t code = u32();
  return CheckpointDraft::sapi_send_headers(code, optional_string());
}

CheckpointDraft CheckpointText::exit() { return CheckpointDraft::script_exit(); }

CheckpointDraft CheckpointText::error() {
  const std::uint32_t number = u32();
  return CheckpointDraft::script_error(number, optional_string());
}

CheckpointDraft CheckpointText::event() {
  const Ref name = values_.ref();
  in_.expect_word("sequence");
  return CheckpointDraft::user_event(name, u32());
}

CheckpointDraft CheckpointText::raw() { return CheckpointDraft::raw(u8(31)); }

}  // namespace CT::Test
