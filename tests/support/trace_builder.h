// SPDX-License-Identifier: MIT
//
// TraceBuilder: writes the bytes of a trace file, good or bad, in either byte order. Texts,
// descriptors and checkpoints are appended to the two sections and return their references (the
// writer's addresses), which later ones carry. `build` returns the file with true lengths unless
// the header was overridden. It shares no code with the library under test, on purpose, and checks
// nothing: every wrong file can be written.
//
//   TraceBuilder trace(ByteOrder::big);
//   trace.add(CheckpointDraft::startup(trace.text("http://h/")).time(10).memory(4096));
//   const Ref call = trace.add(CheckpointDraft::function_call(trace.function({.name = "run"})));
//   trace.add(CheckpointDraft::function_return(call, value::integer(1)));
//   const std::string bytes = trace.build();
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "checkpoint_draft.h"
#include "fields.h"

namespace CT::Test {

inline constexpr std::uint8_t user_type = 2;      // functions and classes of a script
inline constexpr std::uint8_t internal_type = 1;  // functions and classes of the runtime

struct ClassDraft {
  std::uint8_t type = user_type;
  std::string_view name = {};  // absent when its data pointer is null: reference 0
  std::uint32_t flags = 0;
  std::string_view file = {};
  std::uint32_t line = 0;
};

struct FunctionDraft {
  std::uint8_t type = user_type;
  std::string_view name = {};
  Ref class_entry = 0;
  std::uint32_t flags = 0;
  std::string_view file = {};
  std::uint32_t line = 0;
  // The seven bytes behind the type byte; fewer are filled up with zeros.
  std::string_view rest_of_type = {};
};

class TraceBuilder {
 public:
  static constexpr Ref default_orig_data = 0x1000'0000;
  static constexpr Ref default_orig_add_data = 0x2000'0000;

  explicit TraceBuilder(ByteOrder order = ByteOrder::little, Ref orig_data = default_orig_data,
                        Ref orig_add_data = default_orig_add_data);

  // ADD DATA. A text is stored once, however often it is asked for; a null view is reference 0.
  Ref text(std::string_view text);
  Ref new_text(std::string_view text);  // never shared
  Ref klass(const ClassDraft& draft);
  Ref function(const FunctionDraft& draft);
  Ref add_data(const Fields& fields);  // anything else
  Ref add_data_end() const { return orig_add_data_ + add_data_.size(); }

  // DATA.
  Ref add(const CheckpointDraft& checkpoint);
  Ref data(const Fields& fields);  // bytes that are no whole checkpoint
  Ref data_end() const { return orig_data_ + data_.size(); }

  // Damage: cut the last `count` bytes off a section (the header tells the new length), put other
  // bytes at an offset (which must lie inside).
  void cut_data(std::size_t count);
  void cut_add_data(std::size_t count);
  void patch_data(std::size_t offset, std::string_view bytes);
  void patch_add_data(std::size_t offset, std::string_view bytes);

  // Header fields; what is not set is true, and the other numbers are 0.
  void set_magic(std::string_view two_bytes) { magic_ = two_bytes; }
  void set_version(std::uint8_t version) { version_ = version; }
  void set_flags(std::uint8_t flags) { flags_ = flags; }  // 0x02 is the big-endian flag
  void set_request_id(std::uint32_t id) { request_id_ = id; }
  void set_php_api(std::uint32_t version) { php_api_ = version; }
  void set_data_size(std::uint32_t size) { data_size_ = size; }
  void set_add_data_size(std::uint32_t size) { add_data_size_ = size; }

  // Damage to the file as a whole: `cut_file` bytes off its end, or bytes behind its end.
  void cut_file(std::size_t count) { cut_file_ = count; }
  void append_to_file(std::string_view bytes) { behind_ += bytes; }

  ByteOrder order() const { return order_; }
  std::size_t data_size() const { return data_.size(); }
  std::size_t add_data_size() const { return add_data_.size(); }

  std::string build() const;

 private:
  ByteOrder order_;
  Ref orig_data_;
  Ref orig_add_data_;
  std::string data_;
  std::string add_data_;
  std::map<std::string, Ref, std::less<>> texts_;

  std::string magic_ = "CT";
  std::uint8_t version_ = 1;
  std::optional<std::uint8_t> flags_;
  std::uint32_t request_id_ = 0;
  std::uint32_t php_api_ = 0;
  std::optional<std::uint32_t> data_size_;
  std::optional<std::uint32_t> add_data_size_;
  std::size_t cut_file_ = 0;
  std::string behind_;
};

}  // namespace CT::Test
