// SPDX-License-Identifier: MIT
#include "trace_builder.h"

#include <algorithm>

namespace CT::Test {

TraceBuilder::TraceBuilder(ByteOrder order, Ref orig_data, Ref orig_add_data)
    : order_(order), orig_data_(orig_data), orig_add_data_(orig_add_data) {}

Ref TraceBuilder::text(std::string_view text) {
  if (text.data() == nullptr) return 0;
  const auto known = texts_.find(text);
  if (known != texts_.end()) return known->second;
  return texts_.emplace(text, new_text(text)).first->second;
}

Ref TraceBuilder::new_text(std::string_view text) { return add_data(Fields().raw(text).u8(0)); }

Ref TraceBuilder::klass(const ClassDraft& draft) {
  const Ref name = text(draft.name);
  const Ref file = text(draft.file);
  return add_data(Fields()
                      .u8(draft.type)
                      .raw(std::string(7, '\0'))
                      .u64(name)         // offset 8
                      .u32(draft.flags)  // 16
                      .u32(0)
                      .u64(file)  // 24
                      .u32(draft.line));
}

Ref TraceBuilder::function(const FunctionDraft& draft) {
  const Ref name = text(draft.name);
  const Ref file = text(draft.file);
  std::string rest(draft.rest_of_type);
  rest.resize(7, '\0');
  return add_data(Fields()
                      .u8(draft.type)
                      .raw(rest)
                      .u64(name)               // offset 8
                      .u64(draft.class_entry)  // 16
                      .u32(draft.flags)        // 24
                      .u32(0)
                      .u64(file)  // 32
                      .u32(draft.line));
}

Ref TraceBuilder::add_data(const Fields& fields) {
  const Ref ref = add_data_end();
  add_data_ += fields.encode(order_);
  return ref;
}

Ref TraceBuilder::add(const CheckpointDraft& checkpoint) {
  const Ref ref = data_end();
  data_ += checkpoint.encode(order_);
  return ref;
}

Ref TraceBuilder::data(const Fields& fields) {
  const Ref ref = data_end();
  data_ += fields.encode(order_);
  return ref;
}

void TraceBuilder::cut_data(std::size_t count) {
  data_.resize(data_.size() - std::min(count, data_.size()));
}
void TraceBuilder::cut_add_data(std::size_t count) {
  add_data_.resize(add_data_.size() - std::min(count, add_data_.size()));
  texts_.clear();  // some may be gone
}
void TraceBuilder::patch_data(std::size_t offset, std::string_view bytes) {
  data_.replace(offset, bytes.size(), bytes);
}
void TraceBuilder::patch_add_data(std::size_t offset, std::string_view bytes) {
  add_data_.replace(offset, bytes.size(), bytes);
  texts_.clear();
}

std::string TraceBuilder::build() const {
  const auto size_of = [](const std::string& section) {
    return static_cast<std::uint32_t>(section.size());
  };
  const std::uint8_t true_flags = order_ == ByteOrder::big ? 0x02 : 0x00;
  // The header is big-endian in every file.
  std::string file = Fields()
                         .raw(magic_)
                         .u8(version_)
                         .u8(flags_.value_or(true_flags))
                         .u32(request_id_)
                         .u32(php_api_)
                         .u32(data_size_.value_or(size_of(data_)))
                         .u32(add_data_size_.value_or(size_of(add_data_)))
                         .u64(orig_data_)
                         .u64(orig_add_data_)
                         .encode(ByteOrder::big);
  file += data_;
  file += add_data_;
  file.resize(file.size() - std::min(cut_file_, file.size()));
  return file + behind_;
}

}  // namespace CT::Test
