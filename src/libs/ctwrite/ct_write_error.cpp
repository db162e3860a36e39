// SPDX-License-Identifier: MIT
#include "ctwrite/ct_write_error.h"

namespace CT::Write {

std::string_view describe(Error error) noexcept {
  switch (error) {
    case Error::none: return "no error";
    case Error::payload_too_large: return "the payload is above 16,777,215 bytes";
    case Error::section_too_large: return "the section is above its limit";
    case Error::no_memory: return "there is not enough memory";
    case Error::lost: return "the bytes could not be written";
    case Error::no_record: return "no record was begun";
    case Error::record_open: return "the record before was not ended";
    case Error::unknown_type: return "there is no such type of checkpoint";
    case Error::wrong_field: return "the fields are not those of the record's type";
    case Error::unbalanced: return "arrays are not closed as they were opened";
    case Error::key_alone: return "an array ends with a key that has no value";
    case Error::no_checkpoint: return "the bytes are not one whole checkpoint";
  }
  return "unknown error";
}

}  // namespace CT::Write
