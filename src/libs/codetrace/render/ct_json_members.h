// SPDX-License-Identifier: MIT
//
// The members of one JSON object, collected in any order and given out sorted: to the streaming
// writer, or to Qt's classes for programs that use those. One description, two destinations.
//
// It borrows texts and parts, which must live until it is written or cleared.
#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <array>
#include <cstdint>
#include <string_view>

#include "codetrace/model/ct_string.h"
#include "codetrace/render/ct_json.h"
#include "kcommon/k_export.h"

namespace CT {

// Every key of the document's objects, in the order in which they are printed.
enum class Key : std::uint8_t {
  arg_count,
  args,
  body,
  class_,
  code,
  error_message,
  error_num,
  event_name,
  event_sequence,
  exception,
  filename,
  function,
  header,
  host,
  id,
  include,
  incomplete,
  line_no,
  mem,
  mem_delta,
  method,
  ms,
  ms_delta,
  name,
  op,
  orig_uri,
  parent_id,
  return_,
  status,
  sys_mem,
  this_,
  ts,
  url,
};

CODETRACE_EXPORT std::string_view key_name(Key key);

// A member's value that is more than a number or a text.
class CODETRACE_EXPORT JsonPart {
 public:
  virtual ~JsonPart() = default;
  virtual void write_json(JsonWriter& out) const = 0;
  // The same for Qt's classes; Undefined where those cannot hold it.
  [[nodiscard]] virtual QJsonValue to_qt_json() const = 0;

 protected:
  JsonPart() = default;
  JsonPart(const JsonPart&) = default;
  JsonPart& operator=(const JsonPart&) = default;
};

class CODETRACE_EXPORT JsonMembers {
 public:
  void clear() { present_ = 0; }

  // Each key at most once.
  void flag(Key key) { set(key, Kind::flag); }
  void number(Key key, std::int64_t value) { set(key, Kind::integer).integer = value; }
  void real(Key key, double value) { set(key, Kind::real).real = value; }
  void string(Key key, Checkpoint::String value) { set(key, Kind::string).string = value; }
  // An ASCII text of the program's own.
  void text(Key key, std::string_view value);
  void part(Key key, const JsonPart& value) { set(key, Kind::part).part = &value; }

  // One whole object.
  void write(JsonWriter& out) const;
  // Adds the members to `object`.
  void insert_into(QJsonObject& object) const;
  [[nodiscard]] QJsonObject as_json() const;

 private:
  static constexpr std::size_t key_count = static_cast<std::size_t>(Key::url) + 1;

  enum class Kind : std::uint8_t { flag, integer, real, string, part };
  struct Member {
    Kind kind = Kind::flag;
    std::int64_t integer = 0;
    double real = 0;
    const JsonPart* part = nullptr;
    Checkpoint::String string;
  };

  Member& set(Key key, Kind kind);
  template <class Visit>
  void for_each(Visit visit) const;

  std::uint64_t present_ = 0;  // a bit a key
  std::array<Member, key_count> members_;
};

}  // namespace CT
