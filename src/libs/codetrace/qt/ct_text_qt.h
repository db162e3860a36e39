// SPDX-License-Identifier: MIT
//
// Decoded text as a QString.
#pragma once

#include <QString>
#include <string_view>

namespace CT {

// Nothing is dropped, although the text may begin with U+FEFF. Requires: well-formed UTF-8.
QString to_qstring(std::string_view decoded);

}  // namespace CT
