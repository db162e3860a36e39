// SPDX-License-Identifier: MIT
#include "random_entities.h"

#include <array>
#include <string_view>

namespace CT::Test {

namespace {

using namespace std::string_view_literals;

constexpr std::array odd_names = {
    ""sv,          "__construct"sv, "__destruct"sv, "__Construct"sv,  "\xEF\xBB\xBF__construct"sv,
    "%1"sv,        "%0 %1 %99"sv,   "%L1"sv,        "App\\Kernel"sv,  "\"quoted\""sv,
    "{closure}"sv, "it's\n"sv,      "\xFF\xFE"sv,   "caf\xC3\xA9"sv,  "**CUT**"sv,
    "GET"sv,       "/index.php"sv,  "http://h/"sv,  "\xEF\xBB\xBF"sv, "a\0b"sv};

// Where the sections lay: usual places, the same place, around 0 and around the last address.
constexpr std::array<Ref, 9> origins = {TraceBuilder::default_orig_data,
                                        TraceBuilder::default_orig_add_data,
                                        0,
                                        1,
                                        0x7FFF'FFFF'FF00,
                                        0x7FFF'FFFF'FFFF'FF80,
                                        0xFFFF'FFFF'FFFF'FF00,
                                        0xFFFF'FFFF'FFFF'FFFF,
                                        0xFFFF'FFF0};

TraceBuilder begin_trace(Awkward& random, ByteOrder order) {
  if (!random.one_in(4)) return TraceBuilder(order);
  const Ref data = origins[random.below(origins.size())];
  const Ref add_data = origins[random.below(origins.size())];
  return TraceBuilder(order, data, add_data);
}

}  // namespace

RandomEntities::RandomEntities(Awkward& random, ByteOrder order, std::size_t wild)
    : random_(random), wild_(wild), names_(order) {
  trace() = begin_trace(random_, order);
  names_.classes.clear();
  names_.resources.clear();
  names_.known.clear();
  for (std::size_t left = 3 + random_.below(8); left != 0; --left) {
    texts_.push_back(trace().new_text(odd_text()));
  }
  for (std::size_t left = 1 + random_.below(4); left != 0; --left) {
    names_.classes.push_back(trace().add_data(class_fields()));
  }
  for (std::size_t left = 2 + random_.below(5); left != 0; --left) {
    functions_.push_back(trace().add_data(function_fields()));
  }
  if (random_.one_in(3)) {
    const bool function = random_.one_in(2);
    const Ref last = trace().add_data(last_descriptor(function));
    (function ? functions_ : names_.classes).push_back(last);
  } else if (random_.one_in(3)) {
    const std::string unended = random_.bytes(4) + "end";
    texts_.push_back(trace().add_data(Fields().raw(unended)));
  }
  names_.classes.push_back(0);
  if (wild_ != 0) names_.classes.push_back(this->wild());
  for (std::size_t left = 3; left != 0; --left) names_.resources.push_back(text());
}

std::string RandomEntities::odd_text() {
  switch (random_.below(4)) {
    case 0: return random_.bytes(5);
    case 1: return random_.text(5);
    default: return std::string(any(odd_names));
  }
}

Ref RandomEntities::text() {
  if (goes_wild()) return wild();
  if (random_.one_in(12)) return 0;
  return any(texts_);
}

Ref RandomEntities::klass() { return goes_wild() ? wild() : any(names_.classes); }
Ref RandomEntities::function() { return goes_wild() ? wild() : any(functions_); }

Ref RandomEntities::wild() {
  const Ref near = random_.below(12);
  const Ref text = any(texts_);
  const Ref section = trace().add_data_end() - trace().add_data_size();
  switch (random_.below(10)) {
    case 0: return trace().add_data_end() - near;
    case 1: return section + near - 2;
    case 2: return trace().data_end() - near;
    case 3: return text + near;
    case 4: return near;
    case 5: return random_.bits();
    case 6: return text + (Ref{1} << (near < 6 ? 32U : 63U));
    case 7: return functions_.empty() ? text : any(functions_) + near;
    case 8: return names_.classes.empty() ? text : any(names_.classes) + near;
    default: return section + random_.below(trace().add_data_size() + 1);
  }
}

std::uint8_t RandomEntities::type_byte() {
  switch (random_.below(8)) {
    case 0: return static_cast<std::uint8_t>(random_.below(256));
    case 1: return 0;
    case 2:
    case 3: return internal_type;
    default: return user_type;
  }
}

std::string RandomEntities::seven_bytes() {
  std::string bytes(7, '\0');
  if (random_.one_in(4)) {
    for (char& byte : bytes) byte = static_cast<char>(random_.below(256));
  }
  return bytes;
}

std::uint32_t RandomEntities::number() {
  static constexpr std::array<std::uint32_t, 5> edges = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
  return random_.one_in(4) ? any(edges) : static_cast<std::uint32_t>(random_.below(1000));
}

Fields RandomEntities::class_fields() {
  Fields fields = Fields().u8(type_byte()).raw(seven_bytes());
  fields.u64(text());
  fields.u32(number()).u32(random_.one_in(4) ? number() : 0);
  return fields.u64(text()).u32(number());
}

Fields RandomEntities::function_fields() {
  Fields fields = Fields().u8(type_byte()).raw(seven_bytes());
  fields.u64(text());
  fields.u64(random_.one_in(2) ? 0 : klass());
  fields.u32(number()).u32(random_.one_in(4) ? number() : 0);
  return fields.u64(text()).u32(number());
}

// One that ends the section, with the bytes that it needs or one less.
Fields RandomEntities::last_descriptor(bool function) {
  const bool user = random_.one_in(2);
  std::string bytes = (function ? function_fields() : class_fields()).encode(trace().order());
  bytes.front() = static_cast<char>(user ? user_type : internal_type);
  const std::size_t needed = function ? (user ? 44 : 28) : (user ? 36 : 20);
  bytes.resize(needed - random_.below(2));
  return Fields().raw(bytes);
}

}  // namespace CT::Test
