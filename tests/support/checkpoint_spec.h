// SPDX-License-Identifier: MIT
//
// CheckpointSpec: what one checkpoint of a trace is to hold. The static functions make one of each
// type with its own fields; `time`, `memory` and `location` add the common ones. Ill-formed ones
// are made with `raw`, `keep` and `header_size`. References are the writer's addresses that
// TraceBuilder hands out; 0 means none.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "fields.h"

namespace CT::Test {

class CheckpointSpec {
 public:
  static CheckpointSpec startup(Ref url = 0, Ref uri = 0, Ref host = 0, Ref method = 0);
  static CheckpointSpec shutdown();
  static CheckpointSpec function_call(Ref function, const std::vector<Fields>& args = {});
  static CheckpointSpec method_call(Ref function, const Fields& self,
                                    const std::vector<Fields>& args = {});
  // As the two above, with an argument count of the caller's choice.
  static CheckpointSpec call_with_count(Ref function, const std::optional<Fields>& self,
                                        std::uint32_t count, const std::vector<Fields>& args);
  static CheckpointSpec function_return(Ref start, const Fields& returned = value::null());
  static CheckpointSpec function_exception(Ref start, const Fields& thrown);
  static CheckpointSpec include_call(Ref path);
  static CheckpointSpec include_return(Ref start);
  static CheckpointSpec include_exception(Ref start, const Fields& thrown);
  static CheckpointSpec sapi_write_start(const Fields& body);  // Fields().cut_string(...)
  static CheckpointSpec sapi_write_end(Ref start);
  static CheckpointSpec sapi_flush();  // one byte of payload, without which it is not valid
  static CheckpointSpec sapi_header(std::uint8_t op, const Fields& line = {});
  static CheckpointSpec sapi_send_headers(std::uint32_t code, std::string_view status = {});
  static CheckpointSpec script_exit();
  static CheckpointSpec script_error(std::uint32_t number, std::string_view message = {});
  static CheckpointSpec user_event(Ref name, std::uint32_t sequence);
  // Any type code (5 bits) with any fields of its own.
  static CheckpointSpec raw(std::uint8_t type, const Fields& own = {});

  // Each changes and returns this object.
  CheckpointSpec& time(std::uint64_t seconds, std::uint32_t nanoseconds = 0);
  CheckpointSpec& memory(std::uint64_t bytes);
  CheckpointSpec& location(Ref file, std::uint32_t line);
  CheckpointSpec& more(const Fields& fields);  // appended behind the type's own fields
  // Keeps the first `size` bytes of the payload; the header word tells the same size.
  CheckpointSpec& keep(std::size_t size);
  // The payload size that the header word tells, whatever the payload's real size.
  CheckpointSpec& header_size(std::uint32_t size);

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
