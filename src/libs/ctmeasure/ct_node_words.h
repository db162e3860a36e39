// SPDX-License-Identifier: MIT
//
// What nodes are called and told about in words of users, the same in every output.
#pragma once

#include <cstdint>
#include <string_view>

#include "codetrace/model/ct_string.h"
#include "codetrace/tree/ct_node.h"

namespace CT {

// The kind of a node: request, call, include, write, flush, header, send_headers, exit, error,
// event.
std::string_view kind_of(Node::Type type);

// What became of a node: "ended", "threw" or "open"; empty for a point.
std::string_view outcome_of(const Node::Base& node);

// The name of PHP's constant for the level of an error, such as "E_WARNING"; empty for a number
// that has none.
std::string_view error_level(std::uint32_t number);

// The bytes of a text before the tracer cut it.
std::int64_t whole_size(const Checkpoint::String& text);

}  // namespace CT
