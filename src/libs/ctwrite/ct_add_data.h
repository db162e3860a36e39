// SPDX-License-Identifier: MIT
//
// AddData: the texts and descriptors of ADD DATA. Each is laid down once, however often it is asked
// for, unless the caller wants one of its own.
//
// Descriptors lie as the engine's structures do: at a multiple of eight bytes from the start of the
// section, with the fields that only user-defined ones have, and padded at their end.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "ctwrite/ct_encoding.h"
#include "ctwrite/ct_growing_section.h"
#include "ctwrite/ct_keyed_hash.h"
#include "ctwrite/ct_place_table.h"
#include "ctwrite/ct_write_error.h"
#include "ctwrite/ct_write_options.h"

namespace CT::Write {

class AddData {
 public:
  enum class Sharing : std::uint8_t {
    shared,  // with whatever says the same
    own,     // a new one
  };

  // Borrows: the section, to which nothing else is appended, and of which all is kept in memory.
  AddData(GrowingSection& section, Encoding encoding, Reference origin, std::uint32_t most) noexcept
      : section_(&section), encoding_(encoding), origin_(origin), most_(most) {}

  // The reference of a text or descriptor, never 0; nothing after a failure, told by error(), and
  // then the section is as before. A text ends before its first NUL.
  std::optional<Reference> text(std::string_view text, Sharing sharing) noexcept;
  std::optional<Reference> function(const FunctionInfo& info, Sharing sharing) noexcept;
  std::optional<Reference> class_entry(const ClassInfo& info, Sharing sharing) noexcept;
  // Bytes as they stand, wherever the section ends; they are shared with nothing.
  std::optional<Reference> raw(std::span<const unsigned char> bytes) noexcept;

  // Why the last one failed.
  [[nodiscard]] Error error() const noexcept { return error_; }

 private:
  enum class Kind : std::uint32_t { text, function, class_entry };

  // What is to lie in ADD DATA: so many bytes, and behind a text its NUL.
  struct Item {
    Kind kind;
    const unsigned char* bytes;
    std::size_t size;
  };
  static constexpr std::uint32_t alignment = 8;

  std::optional<Reference> item(const Item& item, Sharing sharing) noexcept;
  [[nodiscard]] std::uint32_t hash_of(const Item& item) const noexcept;
  [[nodiscard]] bool lies_at(std::uint32_t place, const Item& item) const noexcept;
  std::optional<std::uint32_t> append(const Item& item) noexcept;
  std::nullopt_t fail(Error error) noexcept;

  GrowingSection* section_;
  Encoding encoding_;
  Reference origin_;
  std::uint32_t most_;
  KeyedHash hash_;
  PlaceTable places_;
  Error error_ = Error::none;
};

}  // namespace CT::Write
