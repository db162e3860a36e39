// SPDX-License-Identifier: MIT
//
// What can go wrong when a trace is written. Errors are values: nothing here throws, logs or ends
// the process.
#pragma once

#include <cstdint>
#include <string_view>

namespace CT::Write {

enum class Error : std::uint8_t {
  none,

  // What a caller has to live with.
  payload_too_large,  // of a record: above Format::largest_payload
  section_too_large,  // above Limits::section_bytes, or 4 GiB
  no_memory,
  lost,  // a section file or the destination could not be written, or read again: see the errno

  // What a caller did wrong.
  no_record,      // a field or an end without a begin
  record_open,    // a begin, a flush or a finish, before the end of the record
  unknown_type,   // begin of a type that has no row in the table of types
  wrong_field,    // a field that does not come next in the record, or one that is missing
  unbalanced,     // an array that is not closed, or closed without having been open
  key_alone,      // an array that ends with a key for which there is no value
  no_checkpoint,  // bytes to be copied that are not one whole checkpoint
};

// In words, in lower case and without a stop: "the payload is above 16,777,215 bytes".
std::string_view describe(Error error) noexcept;

}  // namespace CT::Write
