// SPDX-License-Identifier: MIT
#include "codetrace/tree/ct_node.h"

#include <array>

#include "codetrace/render/ct_text.h"

namespace CT::Node {

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Base::Type::USER_EVENT) + 1>
    node_type_names = {"STARTUP",     "FUNCTION_CALL", "FUNCTION_CALL", "INCLUDE_CALL",
                       "SAPI_WRITE",  "SAPI_FLUSH",    "SAPI_HEADER",   "SAPI_SEND_HEADERS",
                       "SCRIPT_EXIT", "SCRIPT_ERROR",  "CRASH",         "USER_EVENT"};

// Differences of unsigned byte counts; they wrap.
std::int64_t difference(std::uint64_t later, std::uint64_t earlier) {
  return static_cast<std::int64_t>(later - earlier);
}

Base::Type call_type(const Base::Record& begin) {
  const bool is_method = begin != nullptr && begin->type() == Checkpoint::Type::METHOD_CALL;
  return is_method ? Base::Type::METHOD_CALL : Base::Type::FUNCTION_CALL;
}

}  // namespace

std::string_view type_name(Base::Type type) {
  const auto row = static_cast<std::size_t>(type);
  return row < node_type_names.size() ? node_type_names[row] : "INVALID";
}

Base::Type type_of_begin(Checkpoint::Type begin) {
  switch (begin) {
    case Checkpoint::Type::STARTUP: return Base::Type::STARTUP;
    case Checkpoint::Type::FUNCTION_CALL: return Base::Type::FUNCTION_CALL;
    case Checkpoint::Type::METHOD_CALL: return Base::Type::METHOD_CALL;
    case Checkpoint::Type::INCLUDE_CALL: return Base::Type::INCLUDE_CALL;
    case Checkpoint::Type::SAPI_WRITE_START: return Base::Type::SAPI_WRITE;
    case Checkpoint::Type::SAPI_FLUSH: return Base::Type::SAPI_FLUSH;
    case Checkpoint::Type::SAPI_HEADER: return Base::Type::SAPI_HEADER;
    case Checkpoint::Type::SAPI_SEND_HEADERS: return Base::Type::SAPI_SEND_HEADERS;
    case Checkpoint::Type::SCRIPT_EXIT: return Base::Type::SCRIPT_EXIT;
    case Checkpoint::Type::SCRIPT_ERROR: return Base::Type::SCRIPT_ERROR;
    case Checkpoint::Type::USER_EVENT: return Base::Type::USER_EVENT;
    default: return Base::Type::CRASH;
  }
}

Base::Base(Type type, Record begin, const KTime::Timestamp& start_time, std::uint64_t start_memory,
           std::int32_t id, std::int32_t parent_id)
    : type_(type), id_(id), parent_id_(parent_id), begin_(std::move(begin)) {
  if (begin_ == nullptr) return;
  if (begin_->has_timestamp()) ms_ = KTime::elapsed_ms(start_time, begin_->timestamp());
  if (begin_->has_memory()) mem_ = difference(begin_->memory(), start_memory);
}

void Base::add_end(Record end) {
  end_ = std::move(end);
  if (begin_ == nullptr || end_ == nullptr) return;
  if (begin_->has_timestamp() && end_->has_timestamp()) {
    ms_delta_ = KTime::elapsed_ms(begin_->timestamp(), end_->timestamp());
  }
  if (begin_->has_memory() && end_->has_memory()) {
    mem_delta_ = difference(end_->memory(), begin_->memory());
  }
}

bool Base::to_text(QString& text) const {
  Workspace work;
  MemoryWriter line;
  const bool has_line = write_text(line, work);
  text += to_qstring(line.view());
  return has_line;
}

bool Base::to_json(QJsonObject& object) const {
  Workspace work;
  JsonMembers members;
  collect(members, work);
  members.insert_into(object);
  return true;
}

FunctionCall::FunctionCall(const Record& begin, const KTime::Timestamp& start_time,
                           std::uint64_t start_memory, std::int32_t id, std::int32_t parent_id)
    : Span(call_type(begin), begin, start_time, start_memory, id, parent_id) {}

}  // namespace CT::Node
