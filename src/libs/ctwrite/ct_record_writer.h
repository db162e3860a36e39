// SPDX-License-Identifier: MIT
//
// RecordWriter: the fields and values of one record, in the order of the file. TraceWriter, which
// is one, begins and ends the record.
//
// Fields have to be those of the record's type (`layout` in the table of types), in their order:
// reference(), u32(), cut_text(), inline_text() and header_line() for a field of that kind; for a
// value, one value; for arguments, any number of them, none included. How many there are is counted
// here.
//
// Values are written item by item, without being built first:
//
//   writer.begin_array();
//   writer.string("id");     // the key, any value
//   writer.integer(7);       // the value
//   writer.end_array();
//
// Nothing recurses in their depth. What Limits leave out is accepted and dropped, so a caller need
// not know them; is_dropping() tells it that it may go on to the end of the array at once.
//
// Kept: a string that is spelled like the marker (Format::cut_marker), as a key or within an array,
// is one for every reader; the format has no other way to write it.
//
// Whatever goes wrong fails the record, and from then on its fields do nothing.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "codetrace/model/ct_types.h"
#include "codetrace/model/ct_value_types.h"
#include "ctwrite/ct_bytes.h"
#include "ctwrite/ct_encoding.h"
#include "ctwrite/ct_payload.h"
#include "ctwrite/ct_write_options.h"

namespace CT::Write {

class RecordWriter {
 public:
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  // Fields. A reference is one that text(), function(), class_entry() or end() returned, or 0.
  void reference(Reference to) noexcept;
  void u32(std::uint32_t number) noexcept;
  // With the size that the text had before somebody else cut it; one that is not above its size
  // means that nobody did. Sizes above 2^31 - 1 are written as that.
  void cut_text(std::string_view text, std::uint64_t original_size = 0) noexcept;
  // Readers see it up to its first NUL. Limits do not cut it, since it has no place for a mark.
  void inline_text(std::string_view text) noexcept;
  // The line of operations that have none is not written.
  void header_line(std::uint8_t operation, std::string_view line = {},
                   std::uint64_t original_size = 0) noexcept;
  // Begins the arguments. The first of them does so as well, and so does the record's end, so this
  // is for calls without arguments behind which there are raw bytes.
  void arguments() noexcept;
  // What is left of the record's own fields, and what may follow them, as bytes that are encoded
  // already. More of them may follow, but no other field.
  void raw(std::span<const unsigned char> bytes) noexcept;

  // Values.
  void undef() noexcept { value(Checkpoint::ValueType::undef, 0); }
  void null() noexcept { value(Checkpoint::ValueType::null, 0); }
  void boolean(bool on) noexcept {
    value(on ? Checkpoint::ValueType::true_ : Checkpoint::ValueType::false_, 0);
  }
  void integer(std::int64_t number) noexcept {
    number64(Checkpoint::ValueType::long_, static_cast<std::uint64_t>(number));
  }
  void real(double number) noexcept {
    number64(Checkpoint::ValueType::double_, std::bit_cast<std::uint64_t>(number));
  }
  void string(std::string_view text, std::uint64_t original_size = 0) noexcept;
  void object(Reference class_entry, std::uint32_t handle) noexcept;
  void resource(Reference type_name, std::int64_t handle) noexcept;
  void begin_array() noexcept;  // keys and values by turns up to its end
  void end_array() noexcept;
  // An array of which nothing is kept, marked as cut; it has no end_array().
  void cut_array() noexcept;
  // What follows in the array that is open was not kept: it is marked as cut, and more of it is
  // dropped. Nothing happens where it was cut before.
  void cut_rest() noexcept;

  // Whether values are dropped up to the end of the innermost open array.
  [[nodiscard]] bool is_dropping() const noexcept {
    return current_.kind == Kind::dropped || current_.kind == Kind::array_cut;
  }

 protected:
  RecordWriter(GrowingSection& data, Encoding encoding, const Limits& limits) noexcept
      : payload_(data, limits.section_bytes), encoding_(encoding), limits_(limits) {}
  ~RecordWriter() = default;

  // Begins with the common fields. Requires: no open record.
  void open_record(const Checkpoint::TypeInfo& type, const Common& common) noexcept;
  // The last fields, the counts, and the header word; or what went wrong, and then the record is
  // still to be taken back.
  [[nodiscard]] Error complete_record() noexcept;
  [[nodiscard]] Payload& payload() noexcept { return payload_; }
  [[nodiscard]] const Payload& payload() const noexcept { return payload_; }
  [[nodiscard]] const Encoding& encoding() const noexcept { return encoding_; }

 private:
  enum class Kind : std::uint8_t {
    none,       // between fields
    field,      // a value
    arguments,  // as many as there come
    array,      // of which pairs are kept
    array_cut,  // the marker is written
    dropped,    // an array that is left out
  };
  // What takes values.
  struct Container {
    Kind kind = Kind::none;
    std::uint32_t items = 0;
    std::uint32_t most = 0;      // items; a slower look decides about the next one
    std::uint32_t count_at = 0;  // where its count is; of what is dropped, arrays open within it
  };
  static constexpr std::uint32_t no_limit = std::numeric_limits<std::uint32_t>::max();

  // Begins a value: its code is written. The place for its body; null if it is left out.
  unsigned char* value(Checkpoint::ValueType type, std::size_t body) noexcept {
    if (current_.items == current_.most && !find_place()) return nullptr;
    ++current_.items;
    unsigned char* const to = payload_.room(1 + body);
    if (to == nullptr) return nullptr;
    *to = static_cast<unsigned char>(type);
    return to + 1;
  }
  void number64(Checkpoint::ValueType type, std::uint64_t bits) noexcept {
    if (unsigned char* const to = value(type, sizeof bits)) encoding_.put(to, bits);
  }

  bool find_place() noexcept;
  bool next_field(Format::Field field) noexcept;
  [[nodiscard]] Format::Field coming_field() const noexcept;
  bool is_in_array() const noexcept { return current_.kind >= Kind::array; }
  bool push(Container inner) noexcept;
  void pop() noexcept;
  void put_count(std::uint32_t count) noexcept;
  void close_arguments() noexcept;
  void put_marker_pair() noexcept;
  void put_common(const Common& common) noexcept;

  // A text as it is stored.
  struct Stored {
    std::string_view text;
    std::uint32_t original_size;  // above the text's size if it is cut
    [[nodiscard]] bool is_cut() const noexcept { return original_size > text.size(); }
    [[nodiscard]] std::size_t size() const noexcept { return (is_cut() ? 8 : 4) + text.size(); }
  };
  [[nodiscard]] Stored stored(std::string_view text, std::uint64_t original_size) const noexcept;
  void put_text(unsigned char* to, const Stored& stored) const noexcept;

  Payload payload_;
  Encoding encoding_;
  Limits limits_;
  Container current_;
  Bytes outer_;  // Containers, the outermost first
  std::uint32_t depth_ = 0;
  const Checkpoint::TypeInfo* type_ = nullptr;
  std::uint32_t presence_ = 0;
  std::size_t field_ = 0;  // the next one, in the type's layout
  bool raw_ = false;       // from here on nothing is known of the fields
};

}  // namespace CT::Write
