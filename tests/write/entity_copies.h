// SPDX-License-Identifier: MIT
//
// EntityCopies: texts, functions and classes of a trace that was read, laid down in one that is
// written. What lies at one place there lies at one place here.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

#include "codetrace/ct_file.h"
#include "ctwrite/ct_trace_writer.h"

namespace CT::Test {

class EntityCopies {
 public:
  enum class Kind { text, function, class_entry };
  // What a trace refers to, in the order of ADD DATA.
  using Places = std::map<std::pair<std::uint64_t, Kind>, Write::Reference>;

  // Borrows both.
  EntityCopies(const File& file, Write::TraceWriter& writer) : file_(file), writer_(writer) {}

  // Of a reference of the file; 0 for one that leads to no whole thing of this kind.
  Write::Reference text(std::uint64_t reference);
  Write::Reference function(std::uint64_t reference);
  Write::Reference class_entry(std::uint64_t reference);

  // Lays down all of it now, in the order that it has there, and between it what nothing refers to.
  void lay_down(const Places& places);

  const Places& places() const { return places_; }

 private:
  template <class Copy>
  Write::Reference copy(std::uint64_t reference, Kind kind, const Copy& copy);
  void fill_up(std::uint64_t place);
  Write::Reference new_text(const unsigned char* place);
  // The bytes that a descriptor needs; a null pointer if they are not there.
  const unsigned char* descriptor(std::uint64_t reference, std::uint64_t size,
                                  std::uint64_t user_size) const;
  Cursor cursor(const unsigned char* place) const {
    return {place, file_.add_data().end(), file_.big_endian()};
  }

  const File& file_;
  Write::TraceWriter& writer_;
  Places places_;
  bool laid_down_ = false;
};

}  // namespace CT::Test
