// SPDX-License-Identifier: MIT
//
// What `cttool redact` says of its work: which rule masked how many values in which kind of place,
// and in which nodes; never a value.
#pragma once

#include <cstdio>
#include <string>

#include "codetrace/render/ct_writer.h"
#include "ctredact/ct_redactor.h"

namespace CT::Tool {

// A table for people.
void print_redact_report(const Redact::Rules& rules, const Redact::Redactor& redactor,
                         std::size_t width, std::FILE* to);
// One document, cttool.redact/1.
void write_redact_json(const std::string& trace, const std::string& output,
                       const Redact::Rules& rules, const Redact::Redactor& redactor, Writer& out);

}  // namespace CT::Tool
