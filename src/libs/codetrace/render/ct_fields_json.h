// SPDX-License-Identifier: MIT
//
// Fields as the members of a JSON object, sorted as they are in the document.
#pragma once

#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_rendered.h"
#include "codetrace/render/ct_value_json.h"
#include "codetrace/tree/ct_fields.h"

namespace CT {

// Working memory, reused from object to object.
struct JsonRoom {
  Checkpoint::ValueJsonWriter values;
  RenderedTexts texts;  // by place: texts that many objects share
};

// One whole object. Without room its fields must be plain: neither values nor lists of them.
void write_json(const Fields& fields, JsonWriter& out, JsonRoom* room = nullptr);

// What a class or a function consists of.
void write_json(const Checkpoint::ClassEntry& entry, JsonWriter& out);
void write_json(const Checkpoint::Function& function, JsonWriter& out);

}  // namespace CT
