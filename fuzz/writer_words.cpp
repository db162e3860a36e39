// SPDX-License-Identifier: MIT
#include "writer_words.h"

#include <bit>

#include "codetrace/model/ct_records.h"
#include "support.h"

namespace CT::Fuzz {

namespace {

using Checkpoint::ValueRef;
using Checkpoint::ValueType;

std::string words(const Checkpoint::String& text) {
  if (text.data == nullptr) return std::string(no_words);
  const bool has_size = text.orig_sz != Checkpoint::String::uncuttable;
  return has_size ? text_words(text.view(), static_cast<std::uint64_t>(text.orig_sz))
                  : text_words(text.view());
}

std::string words(const Checkpoint::ClassEntry* entry) {
  if (entry == nullptr) return std::string(no_words);
  std::string all = "class " + words(entry->name()) + number_words(entry->flags());
  if (entry->is_user()) all += words(entry->filename()) + number_words(entry->line());
  return all;
}

std::string words(const Checkpoint::Function& function) {
  std::string all = "function " + words(function.name()) + words(function.class_entry());
  all += number_words(function.flags());
  if (function.is_user()) all += words(function.filename()) + number_words(function.line_no());
  return all;
}

// All values but arrays.
std::string plain_words(const ValueRef& value) {
  switch (value.type()) {
    case ValueType::undef: return "undef ";
    case ValueType::null: return "null ";
    case ValueType::false_: return "false ";
    case ValueType::true_: return "true ";
    case ValueType::long_: return "long " + number_words(value.as_long());
    case ValueType::double_:
      return "real " + number_words(std::bit_cast<std::int64_t>(value.as_double()));
    case ValueType::string: return words(value.string());
    case ValueType::object:
      return "object " + words(value.class_entry()) + number_words(value.object_handle());
    case ValueType::resource:
      return "resource " + words(value.resource_name()) + number_words(value.resource_handle());
    case ValueType::array: break;
  }
  return {};
}

// Without recursion, since arrays are as deep as the input is long.
std::string words(const ValueRef& value) {
  struct Open {
    Checkpoint::Elements::Iterator at;
    Checkpoint::Elements::Iterator end;
    bool at_value;
    bool is_cut;
  };
  std::vector<Open> open;
  std::string all;
  ValueRef next = value;
  while (true) {
    if (next.type() == ValueType::array) {
      all += "[ ";
      open.push_back({next.elements().begin(), next.elements().end(), false, next.is_cut()});
    } else {
      all += plain_words(next);
    }
    while (!open.empty() && open.back().at == open.back().end) {
      all += open.back().is_cut ? "!] " : "] ";
      open.pop_back();
    }
    if (open.empty()) return all;
    Open& inner = open.back();
    next = inner.at_value ? (*inner.at).value : (*inner.at).key;
    if (inner.at_value) ++inner.at;
    inner.at_value = !inner.at_value;
  }
}

std::string call_words(const Checkpoint::FunctionCall& call) {
  Checkpoint::ValueTape tape;
  std::string all = words(*call.function());
  if (call.has_this()) all += words(call.this_value(tape));
  std::uint32_t count = 0;
  for (const ValueRef& value : call.args(tape)) {
    all += words(value);
    ++count;
  }
  expect(count == call.arg_count(), "as many arguments as are told");
  return all;
}

std::string end_words(const Checkpoint::End& end) {
  const std::uint64_t start = end.start();
  const auto data = std::bit_cast<std::uintptr_t>(end.file()->data().data());
  return start == 0 ? std::string(no_words) : number_words(static_cast<std::int64_t>(start - data));
}

// The fields of the record's own class.
template <class Class>
std::string own_words(const Class& record) {
  using namespace Checkpoint;
  if constexpr (std::is_same_v<Class, Startup>) {
    return words(record.url()) + words(record.orig_uri()) + words(record.host()) +
           words(record.method());
  } else if constexpr (std::is_same_v<Class, FunctionCall>) {
    return call_words(record);
  } else if constexpr (std::is_base_of_v<EndWithValue, Class>) {
    ValueTape tape;
    return end_words(record) + words(record.value(tape));
  } else if constexpr (std::is_base_of_v<End, Class>) {
    return end_words(record);
  } else if constexpr (std::is_same_v<Class, IncludeCall>) {
    return words(record.include());
  } else if constexpr (std::is_same_v<Class, SapiWriteStart>) {
    return words(record.body());
  } else if constexpr (std::is_same_v<Class, SapiHeader>) {
    return number_words(record.op()) + words(record.header());
  } else if constexpr (std::is_same_v<Class, SapiSendHeaders>) {
    return number_words(record.code()) + words(record.status());
  } else if constexpr (std::is_same_v<Class, ScriptError>) {
    return number_words(record.error_num()) + words(record.error_message());
  } else if constexpr (std::is_same_v<Class, UserEvent>) {
    return words(record.event_name()) + number_words(record.event_sequence());
  } else {
    return {};
  }
}

std::string words(const Checkpoint::Base& record) {
  std::string all = std::string(type_name(record.type())) + " ";
  if (record.has_timestamp()) {
    all += number_words(record.timestamp().seconds) + number_words(record.timestamp().nanoseconds);
  }
  if (record.has_memory()) all += number_words(static_cast<std::int64_t>(record.memory()));
  if (record.has_location()) all += words(record.filename()) + number_words(record.line_no());
  // Without a function it is no call.
  if (!record.is_valid()) return all + "invalid";
  expect(!record.damage(), "no damage");
  with_record(record, [&](const auto& of_class) { all += own_words(of_class); });
  return all;
}

}  // namespace

std::vector<std::pair<std::uint32_t, std::string>> words_of(const File& file) {
  std::vector<std::pair<std::uint32_t, std::string>> all;
  const auto entities = Entities::make(file);
  CheckpointView view(file);
  while (view.step()) {
    all.emplace_back(view.offset(), words(Checkpoint::Base::sighted(view, *entities)));
  }
  expect(!view.broken(), "nothing but whole checkpoints");
  return all;
}

}  // namespace CT::Fuzz
