// SPDX-License-Identifier: MIT
//
// The types of checkpoints: one table that says of each its name, its record class, what it does in
// the tree and how its own fields are stored. Whatever depends on a type asks this table; a type
// that is missing from it does not compile.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <utility>

#include "codetrace/model/ct_format.h"
#include "kcommon/k_export.h"

namespace CT::Node {

// The types of the tree's nodes.
enum class Type : std::int32_t {
  STARTUP,
  FUNCTION_CALL,
  METHOD_CALL,
  INCLUDE_CALL,
  SAPI_WRITE,
  SAPI_FLUSH,
  SAPI_HEADER,
  SAPI_SEND_HEADERS,
  SCRIPT_EXIT,
  SCRIPT_ERROR,
  CRASH,  // no node of this type is ever made
  USER_EVENT,
};

}  // namespace CT::Node

namespace CT::Checkpoint {

enum class Type : std::uint8_t {
  STARTUP,
  SHUTDOWN,
  FUNCTION_CALL,
  METHOD_CALL,
  FUNCTION_RETURN,
  FUNCTION_EXCEPTION,
  INCLUDE_CALL,
  INCLUDE_RETURN,
  INCLUDE_EXCEPTION,
  SAPI_WRITE_START,
  SAPI_WRITE_END,
  SAPI_FLUSH,
  SAPI_HEADER,
  SAPI_SEND_HEADERS,
  SCRIPT_EXIT,
  SCRIPT_ERROR,
  CRASH,  // named, but never decoded
  USER_EVENT,
  INVALID,  // every code above, and a record before it is decoded
};

inline constexpr std::size_t type_count = static_cast<std::size_t>(Type::INVALID);

// What a checkpoint does in the tree.
enum class Role : std::uint8_t {
  root,      // opens the request
  root_end,  // closes it
  span,      // opens a node
  span_end,  // closes the node whose begin it refers to
  leaf,      // is a node
  none,      // is nothing: it is not decoded
};

class Base;
class Startup;
class Shutdown;
class FunctionCall;
class FunctionReturn;
class FunctionException;
class IncludeCall;
class IncludeReturn;
class IncludeException;
class SapiWriteStart;
class SapiWriteEnd;
class SapiFlush;
class SapiHeader;
class SapiSendHeaders;
class ScriptExit;
class ScriptError;
class UserEvent;

// One row of the table.
struct TypeInfo {
  using Layout = std::array<Format::Field, 4>;

  Type type;
  std::string_view name;  // as every output shows it
  Role role;
  Node::Type node;     // of root, span and leaf: the node that it begins
  bool needs_payload;  // without one its record is not valid
  Layout layout;       // its own fields, in the order of the file
};

template <class RecordClass>
struct TypeRow {
  using Record = RecordClass;
  TypeInfo info;
};

namespace Rows {

using enum Role;
using Format::Field;
using N = Node::Type;
inline constexpr Field ref = Field::reference;
inline constexpr N no_node = N::CRASH;

// clang-format off
inline constexpr std::tuple table = {
    TypeRow<Startup>{{Type::STARTUP, "STARTUP", root, N::STARTUP, true, {ref, ref, ref, ref}}},
    TypeRow<Shutdown>{{Type::SHUTDOWN, "SHUTDOWN", root_end, no_node, false, {}}},
    TypeRow<FunctionCall>{{Type::FUNCTION_CALL, "FUNCTION_CALL", span, N::FUNCTION_CALL, true, {ref, Field::arguments}}},
    TypeRow<FunctionCall>{{Type::METHOD_CALL, "METHOD_CALL", span, N::METHOD_CALL, true, {ref, Field::value, Field::arguments}}},
    TypeRow<FunctionReturn>{{Type::FUNCTION_RETURN, "FUNCTION_RETURN", span_end, no_node, true, {ref, Field::value}}},
    TypeRow<FunctionException>{{Type::FUNCTION_EXCEPTION, "FUNCTION_EXCEPTION", span_end, no_node, true, {ref, Field::value}}},
    TypeRow<IncludeCall>{{Type::INCLUDE_CALL, "INCLUDE_CALL", span, N::INCLUDE_CALL, true, {ref}}},
    TypeRow<IncludeReturn>{{Type::INCLUDE_RETURN, "INCLUDE_RETURN", span_end, no_node, true, {ref}}},
    TypeRow<IncludeException>{{Type::INCLUDE_EXCEPTION, "INCLUDE_EXCEPTION", span_end, no_node, true, {ref, Field::value}}},
    TypeRow<SapiWriteStart>{{Type::SAPI_WRITE_START, "SAPI_WRITE_START", span, N::SAPI_WRITE, true, {Field::cut_text}}},
    TypeRow<SapiWriteEnd>{{Type::SAPI_WRITE_END, "SAPI_WRITE_END", span_end, no_node, true, {ref}}},
    TypeRow<SapiFlush>{{Type::SAPI_FLUSH, "SAPI_FLUSH", leaf, N::SAPI_FLUSH, true, {}}},
    TypeRow<SapiHeader>{{Type::SAPI_HEADER, "SAPI_HEADER", leaf, N::SAPI_HEADER, true, {Field::header_line}}},
    TypeRow<SapiSendHeaders>{{Type::SAPI_SEND_HEADERS, "SAPI_SEND_HEADERS", leaf, N::SAPI_SEND_HEADERS, true, {Field::u32, Field::inline_text}}},
    TypeRow<ScriptExit>{{Type::SCRIPT_EXIT, "SCRIPT_EXIT", leaf, N::SCRIPT_EXIT, false, {}}},
    TypeRow<ScriptError>{{Type::SCRIPT_ERROR, "SCRIPT_ERROR", leaf, N::SCRIPT_ERROR, true, {Field::u32, Field::inline_text}}},
    TypeRow<Base>{{Type::CRASH, "CRASH", none, no_node, false, {}}},
    TypeRow<UserEvent>{{Type::USER_EVENT, "USER_EVENT", leaf, N::USER_EVENT, true, {ref, Field::u32}}},
};
// clang-format on

}  // namespace Rows

// The rows by code; behind them the row of every code that has none.
inline constexpr auto types = std::apply(
    [](const auto&... row) {
      return std::array<TypeInfo, type_count + 1>{
          row.info..., TypeInfo{Type::INVALID, "INVALID", Role::none, Rows::no_node, false, {}}};
    },
    Rows::table);

static_assert(std::tuple_size_v<decltype(Rows::table)> == type_count, "a row for each type");
static_assert(
    [] {
      for (std::size_t code = 0; code != types.size(); ++code) {
        if (types[code].type != static_cast<Type>(code)) return false;
      }
      return true;
    }(),
    "rows in the order of the codes");

// The row of a type; any value may be asked for.
constexpr const TypeInfo& type_info(Type type) {
  return types[type < Type::INVALID ? static_cast<std::size_t>(type) : type_count];
}

// The type of a code in a file: INVALID for one that has no name.
constexpr Type type_of_code(std::uint8_t code) {
  return code < type_count ? static_cast<Type>(code) : Type::INVALID;
}

// The type's name as every output shows it; "INVALID" for a code that has none.
constexpr std::string_view type_name(Type type) { return type_info(type).name; }

}  // namespace CT::Checkpoint

namespace CT::Node {

// The type's name in outputs and messages; "INVALID" for a value outside of the enumeration.
// Kept: a method call goes by the name of a function call.
constexpr std::string_view type_name(Type type) {
  constexpr std::array<std::string_view, 12> names = {
      "STARTUP",     "FUNCTION_CALL", "FUNCTION_CALL", "INCLUDE_CALL",
      "SAPI_WRITE",  "SAPI_FLUSH",    "SAPI_HEADER",   "SAPI_SEND_HEADERS",
      "SCRIPT_EXIT", "SCRIPT_ERROR",  "CRASH",         "USER_EVENT"};
  const auto row = static_cast<std::size_t>(type);
  return row < names.size() ? names[row] : "INVALID";
}

}  // namespace CT::Node
