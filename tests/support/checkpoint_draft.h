// SPDX-License-Identifier: MIT
//
// CheckpointDraft: what one checkpoint of a trace is to hold. The static functions make one of each
// type with its own fields; `time`, `memory` and `location` add the common ones. Ill-formed ones
// are made with `raw`, `keep` and `header_size`. References are the writer's addresses that
// TraceBuilder hands out; 0 means none.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "fields.h"

namespace CT::Test {

class CheckpointDraft {
 public:
  static CheckpointDraft startup(Ref url = 0, Ref uri = 0, Ref host = 0, Ref method = 0);
  static CheckpointDraft shutdown();
  static CheckpointDraft function_call(Ref function, const std::vector<Fields>& args = {});
  static CheckpointDraft method_call(Ref function, const Fields& self,
                                     const std::vector<Fields>& args = {});
  // As the two above, with an argument count of the caller's choice.
  static CheckpointDraft call_with_count(Ref function, const std::optional<Fields>& self,
                                         std::uint32_t count, const std::vector<Fields>& args);
  static CheckpointDraft function_return(Ref start, const Fields& returned = value::null());
  static CheckpointDraft function_exception(Ref start, const Fields& thrown);
  static CheckpointDraft include_call(Ref path);
  static CheckpointDraft include_return(Ref start);
  static CheckpointDraft include_exception(Ref start, const Fields& thrown);
  static CheckpointDraft sapi_write_start(const Fields& body);  // Fields().cut_string(...)
  static CheckpointDraft sapi_write_end(Ref start);
  static CheckpointDraft sapi_flush();  // one byte of payload, without which it is not valid
  static CheckpointDraft sapi_header(std::uint8_t op, const Fields& line = {});
  static CheckpointDraft sapi_send_headers(std::uint32_t code, std::string_view status = {});
  static CheckpointDraft script_exit();
  static CheckpointDraft script_error(std::uint32_t number, std::string_view message = {});
  static CheckpointDraft user_event(Ref name, std::uint32_t sequence);
  // Any type code (5 bits) with any fields of its own.
  static CheckpointDraft raw(std::uint8_t type, const Fields& own = {});

  // Each changes and returns this object.
  CheckpointDraft& time(std::uint64_t seconds, std::uint32_t nanoseconds = 0);
  CheckpointDraft& memory(std::uint64_t bytes);
  CheckpointDraft& location(Ref file, std::uint32_t line);
  CheckpointDraft& more(const Fields& fields);  // appended behind the type's own fields
  // Keeps the first `size` bytes of the payload; the header word tells the same size.
  CheckpointDraft& keep(std::size_t size);
  // The payload size that the header word tells, whatever the payload's real size.
  CheckpointDraft& header_size(std::uint32_t size);

  // The header word and the payload.
  std::string encode(ByteOrder order) const;

 private:
  struct Time {
    std::uint64_t seconds;
    std::uint32_t nanoseconds;
  };
  struct Location {
    Ref file;
    std::uint32_t line;
  };
  Fields payload() const;

  std::uint8_t type_ = 0;
  std::optional<Time> time_;
  std::optional<std::uint64_t> memory_;
  std::optional<Location> location_;
  Fields own_;
  std::optional<std::size_t> keep_;
  std::optional<std::uint32_t> header_size_;
};

// A header word in the given byte order: flags bit 0 timestamp, bit 1 memory, bit 2 location.
std::string header_word(ByteOrder order, std::uint8_t type, std::uint8_t flags, std::uint32_t size);

}  // namespace CT::Test
