// SPDX-License-Identifier: MIT
#include "trace_values.h"

#include <charconv>
#include <cstdlib>
#include <limits>

namespace CT::Test {

void TraceValues::define(const std::string& label, Ref ref) {
  if (!labels_.emplace(label, ref).second) in_.fail("label '" + label + "' is used twice");
}

Ref TraceValues::ref() {
  if (in_.at_string()) return trace_.text(in_.string());
  if (in_.at_digit()) return in_.number();
  if (in_.accept_word("none")) return 0;
  const std::string label = in_.word("a reference");
  const auto known = labels_.find(label);
  if (known == labels_.end()) in_.fail("unknown label '" + label + "'");
  return in_.accept("+") ? known->second + in_.number() : known->second;
}

Fields TraceValues::number() {
  const std::string text = in_.number_text();
  const bool real = text.find_first_of(".e") != std::string::npos;
  if (real) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size()) in_.fail("'" + text + "' is no number");
    return value::real(number);
  }
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    in_.fail("'" + text + "' is no 64-bit number");
  }
  return value::integer(number);
}

// With `own_count` the array's header has been written by the caller.
Fields TraceValues::elements(bool own_count) {
  in_.expect("[");
  Fields pairs;
  std::int32_t count = 0;
  while (!in_.accept("]")) {
    if (count > 0) in_.expect(",");
    if (in_.accept("...")) {
      pairs.append(value::cut_marker()).append(value::null());
    } else {
      const Fields first = value();
      if (in_.accept("=>")) {
        pairs.append(first).append(value());
      } else {
        pairs.append(value::integer(count)).append(first);
      }
    }
    ++count;
  }
  return own_count ? pairs : value::array_header(count).append(pairs);
}

std::vector<Fields> TraceValues::value_list() {
  std::vector<Fields> values;
  in_.expect("[");
  while (!in_.accept("]")) {
    if (!values.empty()) in_.expect(",");
    values.push_back(value());
  }
  return values;
}

Fields TraceValues::value() {
  if (in_.at_string()) return value::string(in_.string());
  if (in_.at_number()) return number();
  if (in_.accept("-")) {
    in_.expect_word("inf");
    return value::real(-std::numeric_limits<double>::infinity());
  }
  if (!in_.at_word()) return elements(false);
  return named_value(in_.word("a value"));
}

Fields TraceValues::named_value(const std::string& name) {
  if (name == "undef") return value::undef();
  if (name == "null") return value::null();
  if (name == "false") return value::boolean(false);
  if (name == "true") return value::boolean(true);
  if (name == "nan") return value::real(std::numeric_limits<double>::quiet_NaN());
  if (name == "inf") return value::real(std::numeric_limits<double>::infinity());
  in_.expect("(");
  Fields result;
  if (name == "cut") {
    const std::string text = in_.string();
    in_.expect(",");
    result = value::cut_string(text, static_cast<std::uint32_t>(in_.number(UINT32_MAX)));
  } else if (name == "array") {
    const auto count = static_cast<std::uint32_t>(in_.number(UINT32_MAX));
    in_.expect(",");
    result = value::array_header(static_cast<std::int32_t>(count)).append(elements(true));
  } else if (name == "obj" || name == "res") {
    const Ref what = ref();
    in_.expect(",");
    const std::uint64_t handle = in_.number(name == "obj" ? UINT32_MAX : UINT64_MAX);
    result = name == "obj" ? value::object(what, static_cast<std::uint32_t>(handle))
                           : value::resource(what, handle);
  } else if (name == "nest") {
    const std::uint64_t depth = in_.number();
    in_.expect(",");
    result = value::nest(depth, value());
  } else if (name == "code") {
    result = value::code(static_cast<std::uint8_t>(in_.number(UINT8_MAX)));
  } else if (name == "bits") {
    result = Fields().u8(5).u64(in_.number());
  } else if (name == "hex") {
    result = Fields().raw(in_.hex_bytes());
  } else {
    in_.fail("unknown value '" + name + "'");
  }
  in_.expect(")");
  return result;
}

Fields TraceValues::cut_string() {
  if (!in_.accept_word("cut")) return Fields().cut_string(in_.string());
  in_.expect("(");
  const std::string text = in_.string();
  in_.expect(",");
  const auto size = static_cast<std::uint32_t>(in_.number(UINT32_MAX));
  in_.expect(")");
  return Fields().cut_string(text, size);
}

Fields TraceValues::field(const std::string& name) {
  if (name == "u8") return Fields().u8(static_cast<std::uint8_t>(in_.number(UINT8_MAX)));
  if (name == "u32") return Fields().u32(static_cast<std::uint32_t>(in_.number(UINT32_MAX)));
  if (name == "u64") return Fields().u64(in_.number());
  if (name == "ref") return Fields().u64(ref());
  if (name == "value") return value();
  if (name == "string") return cut_string();
  if (name == "bytes") return Fields().raw(in_.string());
  if (name == "hex") return Fields().raw(in_.hex_bytes());
  in_.fail("unknown field '" + name + "'");
}

Fields TraceValues::fields() {
  Fields result;
  do {
    const std::string name = in_.word("a field");
    in_.expect("(");
    result.append(field(name));
    in_.expect(")");
  } while (!in_.at_end_of_line());
  return result;
}

}  // namespace CT::Test
