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

CheckpointSpec CheckpointText::read(const std::string& word) {
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
  CheckpointSpec spec = (this->*types().at(word))();
  if (at_time) spec.time(at_time->seconds, at_time->nanoseconds);
  if (memory) spec.memory(*memory);
  if (file) spec.location(*file, line);
  read_end(spec);
  return spec;
}

void CheckpointText::read_end(CheckpointSpec& spec) {
  if (in_.accept_word("keep")) spec.keep(in_.number());
  if (in_.accept_word("size")) spec.header_size(u32());
  if (in_.accept_word("more")) spec.more(values_.fields());
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

CheckpointSpec CheckpointText::startup() {
  const Ref url = optional_ref("url");
  const Ref uri = optional_ref("uri");
  const Ref host = optional_ref("host");
  return CheckpointSpec::startup(url, uri, host, optional_ref("method"));
}

CheckpointSpec CheckpointText::shutdown() { return CheckpointSpec::shutdown(); }

CheckpointSpec CheckpointText::call() { return any_call(false); }
CheckpointSpec CheckpointText::method() { return any_call(true); }

CheckpointSpec CheckpointText::any_call(bool is_method) {
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
  return CheckpointSpec::call_with_count(callee, self, count, args);
}

CheckpointSpec CheckpointText::function_return() {
  const Ref call = start();
  const Fields returned = in_.accept_word("value") ? values_.value() : value::null();
  return CheckpointSpec::function_return(call, returned);
}

CheckpointSpec CheckpointText::function_exception() {
  const Ref call = start();
  return CheckpointSpec::function_exception(call, thrown());
}

CheckpointSpec CheckpointText::include() { return CheckpointSpec::include_call(values_.ref()); }
CheckpointSpec CheckpointText::include_return() { return CheckpointSpec::include_return(start()); }

CheckpointSpec CheckpointText::include_exception() {
  const Ref call = start();
  return CheckpointSpec::include_exception(call, thrown());
}

CheckpointSpec CheckpointText::write() {
  return CheckpointSpec::sapi_write_start(values_.cut_string());
}
CheckpointSpec CheckpointText::write_end() { return CheckpointSpec::sapi_write_end(start()); }
CheckpointSpec CheckpointText::flush() { return CheckpointSpec::sapi_flush(); }

CheckpointSpec CheckpointText::header() {
  const std::uint8_t op = u8(UINT8_MAX);
  const bool line = in_.at_string() || in_.at_word("cut");
  return CheckpointSpec::sapi_header(op, line ? values_.cut_string() : Fields());
}

CheckpointSpec CheckpointText::send_headers() {
  const std::uint32_t code = u32();
  return CheckpointSpec::sapi_send_headers(code, optional_string());
}

CheckpointSpec CheckpointText::exit() { return CheckpointSpec::script_exit(); }

CheckpointSpec CheckpointText::error() {
  const std::uint32_t number = u32();
  return CheckpointSpec::script_error(number, optional_string());
}

CheckpointSpec CheckpointText::event() {
  const Ref name = values_.ref();
  in_.expect_word("sequence");
  return CheckpointSpec::user_event(name, u32());
}

CheckpointSpec CheckpointText::raw() { return CheckpointSpec::raw(u8(31)); }

}  // namespace CT::Test
