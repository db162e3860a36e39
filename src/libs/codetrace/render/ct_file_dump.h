// SPDX-License-Identifier: MIT
//
// The two outputs that need only the file: the header listing and the hex view of its sections.
#pragma once

#include <cstdint>

#include "codetrace/ct_file.h"
#include "codetrace/render/ct_writer.h"
#include "kcommon/k_export.h"

namespace CT {

// One header field a line. Requires: an open file.
CODETRACE_EXPORT void write_headers(const File& file, Writer& out);

// Both sections as hex, each under a line with its size. Requires: an open file.
CODETRACE_EXPORT void write_binary(const File& file, Writer& out);

// `size` bytes at `bytes` as "0x00, 0x01, ...", sixteen a line; nothing at all for none.
CODETRACE_EXPORT void hexdump(const unsigned char* bytes, std::uint64_t size, Writer& out);

}  // namespace CT
