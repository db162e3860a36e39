// SPDX-License-Identifier: MIT
#include "writer_model.h"

#include <algorithm>

#include "writer_words.h"

namespace CT::Fuzz {

using Format::Field;

void WriterModel::begin(Checkpoint::Type type, const std::string& words) {
  if (open_) return fail();
  type_ = &type_info(type);
  open_ = true;
  failed_ = type >= Checkpoint::Type::INVALID;
  lacks_function_ = in_arguments_ = false;
  arrays_.clear();
  depth_ = field_ = 0;
  common_ = std::string(type_->name) + " " + words;
  words_.clear();
}

Field WriterModel::coming_field() const {
  return field_ < type_->layout.size() ? type_->layout[field_] : Field::none;
}

void WriterModel::leave_arguments() {
  if (in_arguments_) ++field_;
  in_arguments_ = false;
}

void WriterModel::field(Field kind, const std::string& words) {
  if (!open_) return;
  leave_arguments();
  if (!arrays_.empty() || coming_field() != kind) return fail();
  if (kind == Field::arguments) {
    in_arguments_ = true;
    return;
  }
  ++field_;
  words_ += words;
}

bool WriterModel::is_dropping() const {
  return !arrays_.empty() &&
         (!arrays_.back().counts || arrays_.back().replaced || arrays_.back().cut);
}

void WriterModel::value(const std::string& words) {
  if (!open_ || is_dropping()) return;
  if (arrays_.empty()) {
    if (!in_arguments_ && coming_field() == Field::arguments) in_arguments_ = true;
    if (in_arguments_) {
      words_ += words;
    } else {
      field(Field::value, words);
    }
    return;
  }
  Array& array = arrays_.back();
  if (!array.has_key && array.pairs == limits_.array_elements) {
    array.cut = true;
  } else if (!array.has_key) {
    array.key = words;
    array.has_key = true;
  } else {
    array.words += array.key + words;
    array.has_key = false;
    ++array.pairs;
  }
}

void WriterModel::begin_array() {
  if (!open_) return;
  Array array;
  if (is_dropping()) {
    array.counts = false;
  } else {
    array.replaced = depth_ >= limits_.depth;
    if (!array.replaced) ++depth_;
  }
  arrays_.push_back(array);
}

void WriterModel::end_array() {
  if (!open_) return;
  if (arrays_.empty()) return fail();
  const Array array = arrays_.back();
  arrays_.pop_back();
  if (!array.counts) return;
  if (array.replaced) return value("[ !] ");
  --depth_;
  if (array.has_key) return fail();
  value(array.words + (array.cut ? "!] " : "] "));
}

void WriterModel::cut_rest() {
  if (!open_ || is_dropping()) return;
  if (arrays_.empty() || arrays_.back().has_key) return fail();
  arrays_.back().cut = true;
}

std::optional<std::string> WriterModel::end() {
  if (!open_) return std::nullopt;
  open_ = false;
  leave_arguments();
  if (coming_field() == Field::arguments) ++field_;
  if (failed_ || !arrays_.empty() || coming_field() != Field::none) return std::nullopt;
  return common_ + (lacks_function_ ? "invalid" : words_);
}

std::string WriterModel::kept(std::string_view text, std::uint64_t original_size) const {
  constexpr std::uint64_t most = 0x7FFFFFFF;
  const std::uint64_t size = std::min(std::max<std::uint64_t>(text.size(), original_size), most);
  std::size_t end = std::min<std::size_t>(text.size(), limits_.string_bytes);
  // The texts here are UTF-8.
  while (end != 0 && end != text.size() && (text[end] & 0xC0) == 0x80) --end;
  return text_words(text.substr(0, end), size);
}

}  // namespace CT::Fuzz
