// SPDX-License-Identifier: MIT
//
// The types of checkpoints: one table that says of each its name, its record class, what it does in
// the tree and how its own fields are stored. Whatever depends on a type asks this table; a type
// that is missing from it does not compile.
#pragma once

#include <algorithm>
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

// One row of the table.
struct TypeInfo {
  using Layout = std::array<Format::Field, 4>;

  Type type;
  std::string_view name;  // as every output shows it
  Role role;
  Node::Type node;             // of root, span and leaf: the node that it begins
  std::string_view node_name;  // as every output shows it; empty for what begins none
  bool needs_payload;          // without one its record is not valid
  Layout layout;               // its own fields, in the order of the file
};

template <class RecordClass>
struct TypeRow {
  using Record = RecordClass;
  TypeInfo info;
};

class Base;

namespace Rows {

using Format::Field;
using N = Node::Type;
inline constexpr Field ref = Field::reference;
inline constexpr N no_node = N::CRASH;

}  // namespace Rows

// A row declares the class of its records. Kept: the node of a method call goes by the name of a
// function call.
// clang-format off
inline constexpr std::tuple type_rows = {
    TypeRow<class Startup>{{Type::STARTUP, "STARTUP", Role::root, Rows::N::STARTUP, "STARTUP", true, {Rows::ref, Rows::ref, Rows::ref, Rows::ref}}},
    TypeRow<class Shutdown>{{Type::SHUTDOWN, "SHUTDOWN", Role::root_end, Rows::no_node, "", false, {}}},
    TypeRow<class FunctionCall>{{Type::FUNCTION_CALL, "FUNCTION_CALL", Role::span, Rows::N::FUNCTION_CALL, "FUNCTION_CALL", true, {Rows::ref, Rows::Field::arguments}}},
    TypeRow<class FunctionCall>{{Type::METHOD_CALL, "METHOD_CALL", Role::span, Rows::N::METHOD_CALL, "FUNCTION_CALL", true, {Rows::ref, Rows::Field::value, Rows::Field::arguments}}},
    TypeRow<class FunctionReturn>{{Type::FUNCTION_RETURN, "FUNCTION_RETURN", Role::span_end, Rows::no_node, "", true, {Rows::ref, Rows::Field::value}}},
    TypeRow<class FunctionException>{{Type::FUNCTION_EXCEPTION, "FUNCTION_EXCEPTION", Role::span_end, Rows::no_node, "", true, {Rows::ref, Rows::Field::value}}},
    TypeRow<class IncludeCall>{{Type::INCLUDE_CALL, "INCLUDE_CALL", Role::span, Rows::N::INCLUDE_CALL, "INCLUDE_CALL", true, {Rows::ref}}},
    TypeRow<class IncludeReturn>{{Type::INCLUDE_RETURN, "INCLUDE_RETURN", Role::span_end, Rows::no_node, "", true, {Rows::ref}}},
    TypeRow<class IncludeException>{{Type::INCLUDE_EXCEPTION, "INCLUDE_EXCEPTION", Role::span_end, Rows::no_node, "", true, {Rows::ref, Rows::Field::value}}},
    TypeRow<class SapiWriteStart>{{Type::SAPI_WRITE_START, "SAPI_WRITE_START", Role::span, Rows::N::SAPI_WRITE, "SAPI_WRITE", true, {Rows::Field::cut_text}}},
    TypeRow<class SapiWriteEnd>{{Type::SAPI_WRITE_END, "SAPI_WRITE_END", Role::span_end, Rows::no_node, "", true, {Rows::ref}}},
    TypeRow<class SapiFlush>{{Type::SAPI_FLUSH, "SAPI_FLUSH", Role::leaf, Rows::N::SAPI_FLUSH, "SAPI_FLUSH", true, {}}},
    TypeRow<class SapiHeader>{{Type::SAPI_HEADER, "SAPI_HEADER", Role::leaf, Rows::N::SAPI_HEADER, "SAPI_HEADER", true, {Rows::Field::header_line}}},
    TypeRow<class SapiSendHeaders>{{Type::SAPI_SEND_HEADERS, "SAPI_SEND_HEADERS", Role::leaf, Rows::N::SAPI_SEND_HEADERS, "SAPI_SEND_HEADERS", true, {Rows::Field::u32, Rows::Field::inline_text}}},
    TypeRow<class ScriptExit>{{Type::SCRIPT_EXIT, "SCRIPT_EXIT", Role::leaf, Rows::N::SCRIPT_EXIT, "SCRIPT_EXIT", false, {}}},
    TypeRow<class ScriptError>{{Type::SCRIPT_ERROR, "SCRIPT_ERROR", Role::leaf, Rows::N::SCRIPT_ERROR, "SCRIPT_ERROR", true, {Rows::Field::u32, Rows::Field::inline_text}}},
    TypeRow<Base>{{Type::CRASH, "CRASH", Role::none, Rows::no_node, "CRASH", false, {}}},
    TypeRow<class UserEvent>{{Type::USER_EVENT, "USER_EVENT", Role::leaf, Rows::N::USER_EVENT, "USER_EVENT", true, {Rows::ref, Rows::Field::u32}}},
};
// clang-format on

// The rows by code; behind them the row of every code that has none.
inline constexpr auto types = std::apply(
    [](const auto&... row) {
      return std::array<TypeInfo, type_count + 1>{
          row.info...,
          TypeInfo{Type::INVALID, "INVALID", Role::none, Rows::no_node, "", false, {}}};
    },
    type_rows);

static_assert(std::tuple_size_v<decltype(type_rows)> == type_count, "a row for each type");
static_assert(
    [] {
      for (std::size_t code = 0; code != types.size(); ++code) {
        if (types[code].type != static_cast<Type>(code)) return false;
      }
      return true;
    }(),
    "rows in the order of the codes");
static_assert(
    [] {
      for (const TypeInfo& row : types) {
        const auto begins_same = [&](const TypeInfo& other) {
          return !other.node_name.empty() && other.node == row.node;
        };
        const bool begins =
            row.role == Role::root || row.role == Role::span || row.role == Role::leaf;
        if (begins && (row.node_name.empty() ||
                       std::count_if(types.begin(), types.end(), begins_same) != 1)) {
          return false;
        }
      }
      return true;
    }(),
    "a node of its own, with a name, for each row that begins one");

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

// What the rows say of each type of node.
struct NodeInfo {
  std::string_view name;  // empty for what is no type
  bool has_nodes;         // whether any checkpoint begins one
  bool is_span;           // takes time
};

inline constexpr auto node_infos = [] {
  using Checkpoint::Role;
  constexpr std::size_t count = [] {
    std::size_t found = 0;
    for (const auto& row : Checkpoint::types) {
      found = std::max(found, static_cast<std::size_t>(row.node) + 1);
    }
    return found;
  }();
  std::array<NodeInfo, count> infos{};
  for (const auto& row : Checkpoint::types) {
    if (row.node_name.empty()) continue;
    infos[static_cast<std::size_t>(row.node)] = {row.node_name, row.role != Role::none,
                                                 row.role == Role::root || row.role == Role::span};
  }
  return infos;
}();

// Of a value outside of the enumeration it is "INVALID".
constexpr NodeInfo node_info(Type type) {
  const auto number = static_cast<std::size_t>(type);
  return number < node_infos.size() ? node_infos[number] : NodeInfo{"INVALID", false, false};
}

// The type's name in outputs and messages.
constexpr std::string_view type_name(Type type) { return node_info(type).name; }

}  // namespace CT::Node
