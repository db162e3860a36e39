// SPDX-License-Identifier: MIT
#include "rewriter.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "codetrace/model/ct_format.h"
#include "codetrace/model/ct_types.h"
#include "codetrace/model/ct_value_types.h"
#include "written_trace.h"

namespace CT::Test {

using Checkpoint::Role;
using Checkpoint::TypeInfo;
using Checkpoint::ValueType;
using Format::Field;

bool Rewriter::write() {
  CheckpointView view(file_);
  while (view.step()) {
    if (!checkpoint(view)) return false;
  }
  return !view.broken();
}

bool Rewriter::checkpoint(const CheckpointView& view) {
  const TypeInfo& row = type_info(Checkpoint::type_of_code(view.type()));
  std::optional<Write::Reference> written;
  if (row.role == Role::none) {
    written = writer_.copy({view.checkpoint(), Format::header_word_size + view.size()});
  } else {
    if (view.size() == 0 && row.needs_payload) return false;
    Cursor at(view.checkpoint() + Format::header_word_size,
              view.checkpoint() + Format::header_word_size + view.size(), file_.big_endian());
    writer_.begin(row.type, common(view, at));
    fields(view, row, at);
    if (!at.ok()) {
      writer_.abandon();
      return false;
    }
    written = writer_.end();
  }
  if (written) begins_[view.offset()] = *written;
  return written.has_value();
}

Write::Common Rewriter::common(const CheckpointView& view, Cursor& at) {
  Write::Common common;
  if (view.has_timestamp()) {
    common.timestamp.emplace();
    common.timestamp->seconds = at.u64();
    common.timestamp->nanoseconds = at.u32();
  }
  if (view.has_memory()) common.memory = at.u64();
  if (view.has_location()) {
    common.location.emplace();
    common.location->file = entities_.text(at.u64());
    common.location->line = at.u32();
  }
  return common;
}

// Bytes that nobody reads are written, too.
void Rewriter::fields(const CheckpointView& view, const TypeInfo& row, Cursor& at) {
  for (const Field each : row.layout) field(row, each, at);
  const std::size_t left = at.left();
  if (view.size() == 0 || left == 0) return;
  writer_.raw({at.bytes(left), left});
}

std::string_view text_of(Cursor& at, std::uint64_t size) {
  const unsigned char* const bytes = at.bytes(size);
  return bytes != nullptr ? std::string_view(Section::as_chars(bytes), size) : std::string_view();
}

struct CutText {
  std::string_view text;
  std::uint64_t original_size;
};

CutText cut_text(Cursor& at) {
  const Checkpoint::String read = Checkpoint::get_cut_str(at);
  if (!at.ok()) return {};
  const std::string_view text = read.view();
  // No text was ever smaller than what was kept of it: there is no way to write that.
  if (read.orig_sz < static_cast<std::int64_t>(text.size())) at = Cursor();
  return {text, static_cast<std::uint64_t>(std::max(read.orig_sz, 0))};
}

void Rewriter::field(const TypeInfo& row, Field field, Cursor& at) {
  switch (field) {
    case Field::none: return;
    case Field::reference: return writer_.reference(reference(row, at.u64()));
    case Field::u32: return writer_.u32(at.u32());
    case Field::cut_text: {
      const CutText text = cut_text(at);
      return writer_.cut_text(text.text, text.original_size);
    }
    case Field::inline_text: {
      const std::uint64_t size = at.u64();
      const std::string_view text = text_of(at, size);
      // Without its NUL it ends elsewhere: it cannot be written like that.
      if (size != 0 && at.u8() != 0) at = Cursor();
      return writer_.inline_text(text);
    }
    case Field::value: return values(at, 1);
    case Field::arguments: writer_.arguments(); return values(at, at.u32());
    case Field::header_line: {
      const std::uint8_t operation = at.u8();
      if (operation >= Format::first_operation_without_line) return writer_.header_line(operation);
      const CutText text = cut_text(at);
      return writer_.header_line(operation, text.text, text.original_size);
    }
  }
}

// Ends refer to a checkpoint, calls to a function, all others to a text.
Write::Reference Rewriter::reference(const TypeInfo& row, std::uint64_t reference) {
  if (reference == 0) return 0;
  if (row.role == Role::span_end) {
    const auto begin = begins_.find(reference - file_.data().origin());
    if (begin != begins_.end()) return begin->second;
    constexpr Write::Reference before_data = 16;
    return writer_.options().orig_data - before_data;
  }
  const bool is_call = row.layout[1] == Field::arguments || row.layout[2] == Field::arguments;
  return is_call ? entities_.function(reference) : entities_.text(reference);
}

void Rewriter::values(Cursor& at, std::uint32_t count) {
  left_.assign(1, count);
  while (at.ok()) {
    if (left_.back() == 0) {
      left_.pop_back();
      if (left_.empty()) return;
      writer_.end_array();
    } else {
      --left_.back();
      value(at);
    }
  }
}

void Rewriter::value(Cursor& at) {
  switch (Checkpoint::value_type_of_code(at.u8())) {
    case ValueType::undef: return writer_.undef();
    case ValueType::null: return writer_.null();
    case ValueType::false_: return writer_.boolean(false);
    case ValueType::true_: return writer_.boolean(true);
    case ValueType::long_: return writer_.integer(at.i64());
    case ValueType::double_: return writer_.real(at.f64());
    case ValueType::string: {
      const CutText text = cut_text(at);
      return writer_.string(text.text, text.original_size);
    }
    case ValueType::array: {
      left_.push_back(2 * static_cast<std::uint64_t>(std::max(at.i32(), 0)));
      return writer_.begin_array();
    }
    case ValueType::object: {
      const Write::Reference class_entry = entities_.class_entry(at.u64());
      return writer_.object(class_entry, at.u32());
    }
    case ValueType::resource: {
      const Write::Reference name = entities_.text(at.u64());
      return writer_.resource(name, at.i64());
    }
  }
}

Write::Options rewriting_options(const File& file, Rewriting how) {
  Write::Options options;
  options.big_endian = file.big_endian();
  options.flags = file.header().flags;
  options.request_id = file.header().request_id;
  options.php_api_version = file.header().php_api_version;
  if (how == Rewriting::as_before) {
    options.orig_data = file.header().orig_data;
    options.orig_add_data = file.header().orig_add_data;
  }
  return options;
}

std::optional<std::string> rewritten(const File& file, Rewriting how) {
  Write::TraceWriter writer(rewriting_options(file, Rewriting::anew));
  Rewriter rewriter(file, writer);
  if (!rewriter.write()) return std::nullopt;
  if (how == Rewriting::anew) return finished(writer);

  Write::TraceWriter again(rewriting_options(file, how));
  Rewriter in_order(file, again);
  in_order.entities().lay_down(rewriter.entities().places());
  if (!in_order.write()) return std::nullopt;
  return finished(again);
}

}  // namespace CT::Test
