// SPDX-License-Identifier: MIT
#include "checkpoint_draft.h"

#include <string_view>

namespace CT::Test {

CheckpointDraft CheckpointDraft::raw(std::uint8_t type, const Fields& own) {
  CheckpointDraft draft;
  draft.type_ = type;
  draft.own_ = own;
  return draft;
}

CheckpointDraft CheckpointDraft::startup(Ref url, Ref uri, Ref host, Ref method) {
  return raw(0, Fields().u64(url).u64(uri).u64(host).u64(method));
}
CheckpointDraft CheckpointDraft::shutdown() { return raw(1); }

CheckpointDraft CheckpointDraft::function_call(Ref function, const std::vector<Fields>& args) {
  return call_with_count(function, std::nullopt, static_cast<std::uint32_t>(args.size()), args);
}
CheckpointDraft CheckpointDraft::method_call(Ref function, const Fields& self,
                                             const std::vector<Fields>& args) {
  return call_with_count(function, self, static_cast<std::uint32_t>(args.size()), args);
}
CheckpointDraft CheckpointDraft::call_with_count(Ref function, const std::optional<Fields>& self,
                                                 std::uint32_t count,
                                                 const std::vector<Fields>& args) {
  Fields own = Fields().u64(function);
  if (self) own.append(*self);
  own.u32(count);
  for (const Fields& arg : args) own.append(arg);
  return raw(self ? 3 : 2, own);
}
CheckpointDraft CheckpointDraft::function_return(Ref start, const Fields& returned) {
  return raw(4, Fields().u64(start).append(returned));
}
CheckpointDraft CheckpointDraft::function_exception(Ref start, const Fields& thrown) {
  return raw(5, Fields().u64(start).append(thrown));
}

CheckpointDraft CheckpointDraft::include_call(Ref path) { return raw(6, Fields().u64(path)); }
CheckpointDraft CheckpointDraft::include_return(Ref start) { return raw(7, Fields().u64(start)); }
CheckpointDraft CheckpointDraft::include_exception(Ref start, const Fields& thrown) {
  return raw(8, Fields().u64(start).append(thrown));
}

CheckpointDraft CheckpointDraft::sapi_write_start(const Fields& body) { return raw(9, body); }
CheckpointDraft CheckpointDraft::sapi_write_end(Ref start) { return raw(10, Fields().u64(start)); }
CheckpointDraft CheckpointDraft::sapi_flush() { return raw(11, Fields().u8(0)); }
CheckpointDraft CheckpointDraft::sapi_header(std::uint8_t op, const Fields& line) {
  return raw(12, Fields().u8(op).append(line));
}
CheckpointDraft CheckpointDraft::sapi_send_headers(std::uint32_t code, std::string_view status) {
  return raw(13, Fields().u32(code).inline_text(status));
}

CheckpointDraft CheckpointDraft::script_exit() { return raw(14); }
CheckpointDraft CheckpointDraft::script_error(std::uint32_t number, std::string_view message) {
  return raw(15, Fields().u32(number).inline_text(message));
}
CheckpointDraft CheckpointDraft::user_event(Ref name, std::uint32_t sequence) {
  return raw(17, Fields().u64(name).u32(sequence));
}

CheckpointDraft& CheckpointDraft::time(std::uint64_t seconds, std::uint32_t nanoseconds) {
  time_ = Time{seconds, nanoseconds};
  return *this;
}
CheckpointDraft& CheckpointDraft::memory(std::uint64_t bytes) {
  memory_ = bytes;
  return *this;
}
CheckpointDraft& CheckpointDraft::location(Ref file, std::uint32_t line) {
  location_ = Location{file, line};
  return *this;
}
CheckpointDraft& CheckpointDraft::more(const Fields& fields) {
  own_.append(fields);
  return *this;
}
CheckpointDraft& CheckpointDraft::keep(std::size_t size) {
  keep_ = size;
  return *this;
}
CheckpointDraft& CheckpointDraft::header_size(std::uint32_t size) {
  header_size_ = size;
  return *this;
}

Fields CheckpointDraft::payload() const {
  Fields payload;
  if (time_) payload.u64(time_->seconds).u32(time_->nanoseconds);
  if (memory_) payload.u64(*memory_);
  if (location_) payload.u64(location_->file).u32(location_->line);
  payload.append(own_);
  return payload;
}

std::string CheckpointDraft::encode(ByteOrder order) const {
  std::string bytes = payload().encode(order);
  if (keep_ && *keep_ < bytes.size()) bytes.resize(*keep_);
  const int flags = (time_ ? 1 : 0) | (memory_ ? 2 : 0) | (location_ ? 4 : 0);
  const auto size = header_size_.value_or(static_cast<std::uint32_t>(bytes.size()));
  return header_word(order, type_, static_cast<std::uint8_t>(flags), size) + bytes;
}

std::string header_word(ByteOrder order, std::uint8_t type, std::uint8_t flags,
                        std::uint32_t size) {
  const auto byte = [](std::uint32_t number) { return static_cast<char>(number & 0xff); };
  const std::uint32_t code = type;
  const std::uint32_t t = flags & 1U;
  const std::uint32_t m = (flags >> 1U) & 1U;
  const std::uint32_t l = (flags >> 2U) & 1U;
  if (order == ByteOrder::little) {
    // type in bits 0-4, then T, M, L in bits 5, 6, 7.
    return {byte(code | (t << 5) | (m << 6) | (l << 7)), byte(size), byte(size >> 8),
            byte(size >> 16)};
  }
  // type in bits 7-3 of the first byte, then T, M, L in bits 2, 1, 0.
  return {byte((code << 3) | (t << 2) | (m << 1) | l), byte(size >> 16), byte(size >> 8),
          byte(size)};
}

}  // namespace CT::Test
