// SPDX-License-Identifier: MIT
#include "codetrace/model/ct_value.h"

#include "codetrace/render/ct_text.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/render/ct_value_text.h"

namespace CT::Checkpoint {

KVal::KVal(const CheckpointView& view, Cursor& cursor, EntityCache* cache) {
  auto tape = std::make_shared<ValueTape>();
  tape->reset(view);
  item_ = tape->decode(cursor, cache);
  tape_ = std::move(tape);
}

std::int64_t KVal::as_long() const { return tape_ != nullptr ? tape_->as_long(item_) : 0; }

double KVal::as_double() const { return tape_ != nullptr ? tape_->as_double(item_) : 0; }

String KVal::string() const { return tape_ != nullptr ? tape_->string(item_) : String(); }

bool KVal::is_cut() const { return tape_ != nullptr && tape_->is_cut(item_); }

bool KVal::is_list() const { return tape_ != nullptr && tape_->is_list(item_); }

std::int32_t KVal::declared_count() const {
  return tape_ != nullptr ? tape_->declared_count(item_) : 0;
}

std::vector<std::pair<KVal, KVal>> KVal::elements() const {
  std::vector<std::pair<KVal, KVal>> pairs;
  if (type() != ValueType::array) return pairs;
  for (ValueTape::Index key = item_ + 1; key != tape_->end(item_);) {
    const ValueTape::Index value = tape_->end(key);
    pairs.emplace_back(KVal(tape_, key), KVal(tape_, value));
    key = tape_->end(value);
  }
  return pairs;
}

std::shared_ptr<ClassEntry> KVal::class_entry() const {
  return tape_ != nullptr ? tape_->class_entry(item_) : nullptr;
}

std::uint32_t KVal::object_handle() const {
  return tape_ != nullptr ? tape_->object_handle(item_) : 0;
}

String KVal::resource_name() const {
  return tape_ != nullptr ? tape_->resource_name(item_) : String();
}

std::int64_t KVal::resource_handle() const {
  return tape_ != nullptr ? tape_->resource_handle(item_) : 0;
}

QString KVal::to_string(bool quoted) const {
  if (tape_ == nullptr) return QStringLiteral("undef");
  MemoryWriter text;
  ValueTextWriter().write(*tape_, item_, text, quoted);
  return to_qstring(text.view());
}

QString KVal::to_escaped_string(bool quoted) const {
  if (type() != ValueType::string) return to_string(true);
  const QString escaped = string().to_escaped_string();
  return quoted ? QLatin1Char('"') + escaped + QLatin1Char('"') : escaped;
}

QJsonValue KVal::as_json() const {
  return tape_ != nullptr ? to_qt_json(*tape_, item_) : QJsonValue(QJsonValue::Undefined);
}

}  // namespace CT::Checkpoint
