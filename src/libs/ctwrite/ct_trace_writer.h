// SPDX-License-Identifier: MIT
//
// TraceWriter: writes a Code Trace file, record by record, in either byte order, in memory or into
// two files. It needs neither Qt nor the rest of this project, throws nothing and logs nothing.
//
//   CT::Write::TraceWriter writer({.request_id = 7});
//   writer.begin(Type::STARTUP, {.timestamp = Timestamp{1700000000, 0}});
//   for (const char* text : {"http://h/", "/", "h", "GET"}) writer.reference(writer.text(text));
//   writer.end();
//
//   const Reference name = writer.text("strlen");
//   writer.begin(Type::FUNCTION_CALL);
//   writer.reference(writer.function({.name = name}));
//   writer.string("abc");                             // the only argument
//   const std::optional<Reference> call = writer.end();
//
//   writer.begin(Type::FUNCTION_RETURN);
//   writer.reference(call.value_or(0));               // which call it was
//   writer.integer(3);
//   writer.end();
//   if (!writer.finish(destination)) ... describe(writer.error())
//
// What begin() needs between it and end() is told in ct_record_writer.h. A record that failed is
// taken back whole, so both sections are always what a file may have, and writing can go on.
//
// A writer belongs to one thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "codetrace/model/ct_types.h"
#include "ctwrite/ct_add_data.h"
#include "ctwrite/ct_destination.h"
#include "ctwrite/ct_growing_section.h"
#include "ctwrite/ct_record_writer.h"
#include "ctwrite/ct_write_error.h"
#include "ctwrite/ct_write_options.h"

namespace CT::Write {

class TraceWriter final : public RecordWriter {
 public:
  // Both sections in memory.
  explicit TraceWriter(const Options& options) noexcept;
  // In two files, which are borrowed: they stay the caller's to close and to remove. ADD DATA is
  // kept in memory too. Whatever ends the process, what is in the files is whole records, of which
  // all references are good, as long as the system does not tear a write.
  TraceWriter(const Options& options, const SectionFiles& files) noexcept;

  // ADD DATA: the reference of a text, a function or a class, which is laid down once for all that
  // say the same. Can be called while a record is open. A text ends before its first NUL.
  //
  // 0 if it failed. Then it fails the record that is open, or the next one, and so does whatever of
  // this kind is asked for before that record's end.
  Reference text(std::string_view text) noexcept;
  Reference function(const FunctionInfo& info) noexcept;
  Reference class_entry(const ClassInfo& info) noexcept;
  // The same, shared with nothing else. For readers two functions or two classes are the same if
  // they lie at one place.
  Reference new_text(std::string_view text) noexcept;
  Reference new_function(const FunctionInfo& info) noexcept;
  Reference new_class_entry(const ClassInfo& info) noexcept;
  // Bytes as they stand, in the writer's byte order, at the end of the section.
  Reference raw_add_data(std::span<const unsigned char> bytes) noexcept;

  // Begins a record. CRASH has no fields but raw ones.
  void begin(Checkpoint::Type type, const Common& common = {}) noexcept;
  // Ends it: the reference of its checkpoint, which is what the record that ends it carries;
  // nothing if the record failed, and then it was taken back and error() tells why.
  std::optional<Reference> end() noexcept;
  // Takes back the record that is open, if one is.
  void abandon() noexcept;
  // One whole checkpoint in the writer's byte order, header word and payload, of any type.
  std::optional<Reference> copy(std::span<const unsigned char> checkpoint) noexcept;

  // Writes what is still in memory into the section files. False, with error(), if that did not
  // succeed, and then the next one tries again, or if a record is open. Nothing happens without
  // files.
  bool flush() noexcept;

  // Writes the whole file, as it is now: header, DATA, ADD DATA. More may be written behind that,
  // and another file made of it. False, with error(), if the destination failed or a record is
  // open.
  bool finish(Destination& destination) noexcept;

  // Of the last record, text, flush or file: what went wrong, none if nothing did.
  [[nodiscard]] Error error() const noexcept { return error_; }
  // The errno of the last Error::lost, 0 before one.
  [[nodiscard]] int system_error() const noexcept { return system_error_; }

  [[nodiscard]] bool is_in_record() const noexcept { return payload().is_open(); }
  // Whole records only.
  [[nodiscard]] std::uint64_t data_size() const noexcept { return data_.size(); }
  [[nodiscard]] std::uint64_t add_data_size() const noexcept { return add_data_section_.size(); }
  // Of the file that finish() makes.
  [[nodiscard]] std::uint64_t file_size() const noexcept;
  [[nodiscard]] const Options& options() const noexcept { return options_; }

 private:
  using Sharing = AddData::Sharing;

  template <class Make>
  Reference make(const Make& make) noexcept;
  [[nodiscard]] std::optional<Reference> commit() noexcept;
  [[nodiscard]] bool succeeded(Error error) noexcept;
  [[nodiscard]] bool lost() noexcept;

  Options options_;
  GrowingSection data_;
  GrowingSection add_data_section_;
  AddData add_data_;
  std::size_t buffer_ = 0;
  Error error_ = Error::none;
  Error entity_error_ = Error::none;  // of a text or descriptor, up to the end of the record
  int system_error_ = 0;
};

}  // namespace CT::Write
