// SPDX-License-Identifier: MIT
//
// Mends a trace: makes a valid one of what is left of a file that was cut off, overwritten, doubled
// in parts, or whose header is lost. A reader opens the result without a word, and what could not
// be known is called unknown in it. A file that needs nothing comes out as it was; so does every
// result of this.
//
// Work grows with the file's size, for files that were made to be hard, too. Beside the file and
// the result it needs at most some 64 bytes a call. Throws nothing but std::bad_alloc.
#pragma once

#include <array>
#include <vector>

#include "ctsalvage/ct_layout.h"
#include "ctsalvage/ct_salvage_report.h"

namespace CT::Salvage {

struct Salvaged {
  Report report;
  // The bytes of the trace, one after the other. They borrow the file, and what is below.
  [[nodiscard]] std::array<Bytes, 4> parts() const;
  [[nodiscard]] std::uint64_t size() const;

  Bytes whole;  // the file, if it needs nothing
  std::array<unsigned char, Header::size> header = {};
  std::vector<unsigned char> data;
  Bytes add_data;  // of the file
  std::vector<unsigned char> appended;
};

// Borrows the bytes, any bytes. If there is no checkpoint in them, the result has none.
Salvaged salvage(Bytes file);
// Sections without a header.
Salvaged salvage(Bytes data, Bytes add_data);

}  // namespace CT::Salvage
