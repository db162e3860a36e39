// SPDX-License-Identifier: MIT
#include "codetrace/render/ct_json_members.h"

#include <algorithm>
#include <bit>

namespace CT {

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Key::url) + 1> key_names = {
    "arg_count", "args",       "body",
    "class",     "code",       "error_message",
    "error_num", "event_name", "event_sequence",
    "exception", "filename",   "function",
    "header",    "host",       "id",
    "include",   "incomplete", "line_no",
    "mem",       "mem_delta",  "method",
    "ms",        "ms_delta",   "name",
    "op",        "orig_uri",   "parent_id",
    "return",    "status",     "sys_mem",
    "this",      "ts",         "url"};
static_assert(std::is_sorted(key_names.begin(), key_names.end()));
static_assert(!key_names.back().empty() && key_names.size() <= 64);

QString as_qstring(std::string_view ascii) {
  return QString::fromLatin1(ascii.data(), static_cast<qsizetype>(ascii.size()));
}

}  // namespace

std::string_view key_name(Key key) { return key_names[static_cast<std::size_t>(key)]; }

JsonMembers::Member& JsonMembers::set(Key key, Kind kind) {
  const auto slot = static_cast<std::size_t>(key);
  present_ |= std::uint64_t{1} << slot;
  members_[slot].kind = kind;
  return members_[slot];
}

void JsonMembers::text(Key key, std::string_view value) {
  string(key,
         {value.data(), static_cast<std::uint32_t>(value.size()), Checkpoint::String::uncuttable});
}

template <class Visit>
void JsonMembers::for_each(Visit visit) const {
  for (std::uint64_t left = present_; left != 0; left &= left - 1) {
    const auto slot = static_cast<std::size_t>(std::countr_zero(left));
    visit(key_names[slot], members_[slot]);
  }
}

void JsonMembers::write(JsonWriter& out) const {
  out.begin_object();
  for_each([&](std::string_view name, const Member& member) {
    out.key(name);
    switch (member.kind) {
      case Kind::flag: out.boolean(true); break;
      case Kind::integer: out.number(member.integer); break;
      case Kind::real: out.number(member.real); break;
      case Kind::string: member.string.write_json(out); break;
      case Kind::part: member.part->write_json(out); break;
    }
  });
  out.end_object();
}

void JsonMembers::insert_into(QJsonObject& object) const {
  for_each([&](std::string_view name, const Member& member) {
    QJsonValue value;
    switch (member.kind) {
      case Kind::flag: value = true; break;
      case Kind::integer: value = static_cast<qint64>(member.integer); break;
      case Kind::real: value = member.real; break;
      case Kind::string: value = member.string.as_json(); break;
      case Kind::part: value = member.part->to_qt_json(); break;
    }
    object.insert(as_qstring(name), value);
  });
}

QJsonObject JsonMembers::as_json() const {
  QJsonObject object;
  insert_into(object);
  return object;
}

}  // namespace CT
