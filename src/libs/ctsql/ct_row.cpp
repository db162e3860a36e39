// SPDX-License-Identifier: MIT
#include "ctsql/ct_row.h"

#include <limits>

#include "codetrace/render/ct_json.h"

namespace CT::Sql {

void Row::unsigned_integer(std::uint64_t value) {
  constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (value <= most) return integer(static_cast<std::int64_t>(value));
  cells_->real(static_cast<double>(value));
}

void Row::word(std::string_view text) { text.empty() ? null() : kept_text(text); }

void Row::stored_text(const Checkpoint::String& stored) {
  if (stored.data == nullptr) return null();
  text([&](Writer& out) { stored.write(out); });
}

void Row::function_name(std::int32_t number) {
  const FunctionNames& names = data_.names();
  if (names.has(number)) return kept_text(names.name(number));
  const auto& function = trace().functions()[static_cast<std::size_t>(number)];
  text([&](Writer& out) {
    if (function.class_entry() != nullptr) {
      function.class_entry()->name().write(out);
      out.put("::");
    }
    function.name().write(out);
  });
}

void Row::class_name(std::int32_t number) {
  const auto& function = trace().functions()[static_cast<std::size_t>(number)];
  if (function.class_entry() == nullptr) return null();
  const FunctionNames& names = data_.names();
  if (names.has(number)) return kept_text(names.class_name(number));
  text([&](Writer& out) { function.class_entry()->name().write(out); });
}

void Row::json(const Checkpoint::ValueRef& value) {
  text_.clear();
  JsonWriter out(text_, JsonWriter::Form::compact);
  json_.write(value, out);
  cells_->json(text_.view());
}

void Row::json_array(const Checkpoint::Values& values) {
  text_.clear();
  JsonWriter out(text_, JsonWriter::Form::compact);
  out.begin_array();
  for (const Checkpoint::ValueRef& value : values) {
    out.element();
    json_.write(value, out);
  }
  out.end_array();
  cells_->json(text_.view());
}

}  // namespace CT::Sql
