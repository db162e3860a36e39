// SPDX-License-Identifier: MIT
//
// Numbers as the outputs print them. The forms of doubles are Qt's: `QString::number(d, 'g', 6)` in
// text and `QJsonDocument` in JSON; tests hold them equal to Qt on random values.
#pragma once

#include <cstdint>

#include "codetrace/render/ct_writer.h"
#include "kcommon/k_timestamp.h"

namespace CT {

// As ct_digits.h says of each.
void put_signed(Writer& out, std::int64_t value);
void put_unsigned(Writer& out, std::uint64_t value);
void put_pointer(Writer& out, std::uint64_t address);
void put_timestamp(Writer& out, const KTime::Timestamp& time);

// Six significant digits, exact ties away from zero, no minus sign on zero, "nan" of either sign.
void put_double_text(Writer& out, double value);

// Shortest digits that read back the same, in decimal or exponent form, whichever is shorter;
// "null" for what JSON has no number for.
void put_double_json(Writer& out, double value);

}  // namespace CT
