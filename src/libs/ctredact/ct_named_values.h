// SPDX-License-Identifier: MIT
//
// Values in a text that have a name before them: NAME=VALUE in URLs, forms, connection strings and
// environments, "NAME": "VALUE" in JSON and code, Name: value in headers, the fields of HTML forms,
// and PHP's serialised arrays.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ctredact/ct_shapes.h"

namespace CT::Redact {

// The name that ends before a separator, without quotes; empty if there is none.
struct NameBefore {
  std::string_view name;
  bool begins_line = false;  // nothing but a quote stands before it on its line
  bool is_quoted = false;
};
NameBefore name_before(std::string_view text, std::size_t separator);

// The value behind a separator.
struct ValueBehind {
  Part part;
  bool is_quoted = false;
  bool is_list = false;  // of quoted values, in brackets
};
// Of `=` (also `=>`) and `:`.
ValueBehind value_behind(std::string_view text, std::size_t separator);
// The text in the quotes of s:N:"...". Requires: the colon before N at the place.
Part serialized_text(std::string_view text, std::size_t colon);
// The value of a header, to the end of its line, without the blanks around it.
Part header_value(std::string_view text, std::size_t colon);
// The text of an element of XML, of which the name is set: <name ...>text</name>. Requires: "<" at
// the place.
struct Element {
  std::string_view name;  // without what stands before a colon in it
  Part text;
};
Element element_at(std::string_view text, std::size_t place);
// What follows a part of a form: name="..." at the end of a line, an empty line, and the value on
// the next. Empty if it is none.
Part value_of_form_part(std::string_view text, std::size_t name_end);
// What else an HTML tag has as its value, of the one around a place: value="..." or content="...".
Part value_of_tag(std::string_view text, std::size_t place);

}  // namespace CT::Redact
