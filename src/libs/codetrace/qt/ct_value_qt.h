// SPDX-License-Identifier: MIT
//
// Values, fields and whole documents as Qt's JSON classes, for programs that work with those. The
// same fields and values as the streamed document, to another destination.
#pragma once

#include <cstddef>

#include "codetrace/model/ct_value_ref.h"
#include "codetrace/tree/ct_fields.h"

class QJsonObject;
class QJsonValue;

namespace CT {

// The deepest nesting of arrays that Qt's JSON classes are given: they recurse.
inline constexpr std::size_t qt_json_levels = 1000;

// Undefined for undef, and for values of more than `qt_json_levels` levels.
QJsonValue to_qt_json(const Checkpoint::ValueRef& value);

// Adds the fields to an object.
void insert_into(QJsonObject& object, const Fields& fields);

}  // namespace CT
