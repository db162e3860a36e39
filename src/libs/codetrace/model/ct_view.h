// SPDX-License-Identifier: MIT
//
// One framed checkpoint, seen in place, and the step from one to the next through DATA. It owns
// nothing; the file must outlive it.
//
// A header word or a payload that runs past the end of DATA ends the walk: `step` returns false and
// `is_broken` tells.
#pragma once

#include <cstdint>
#include <string_view>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/ct_file.h"
#include "codetrace/model/ct_string.h"
#include "kcommon/k_export.h"

namespace CT {

// The header word in its one form: bits 0-4 type, 5 timestamp, 6 memory, 7 location, 8-31 payload
// size. A big-endian writer lays out its bit fields from the other end, so this is no byte swap.
inline std::uint32_t normalise_header(const unsigned char* word, bool big_endian) {
  Cursor cursor(word, word + sizeof(std::uint32_t), big_endian);
  const std::uint32_t value = cursor.u32();
  if (!big_endian) return value;
  const std::uint32_t lead = value >> 24;
  const std::uint32_t timestamp = (lead & 4) << 3;
  const std::uint32_t memory = (lead & 2) << 5;
  const std::uint32_t location = (lead & 1) << 7;
  return (value << 8) | location | memory | timestamp | (lead >> 3);
}

class CODETRACE_EXPORT CheckpointView {
 public:
  // Stands before the first checkpoint. Borrows: the file; one that is not open has no checkpoint.
  explicit CheckpointView(const File& file) : file_(&file) {}

  // The checkpoint whose header word is at `offset` in DATA, met before: what is found out once at
  // the first sighting (numbers of classes, damage in values) is not looked for again.
  // Requires: an offset that step() reached.
  static CheckpointView revisit(const File& file, std::uint32_t offset);

  // Goes on to the next checkpoint; false at the end of DATA and when the next one is not whole.
  bool step();

  [[nodiscard]] const File& file() const { return *file_; }
  [[nodiscard]] bool is_valid() const { return checkpoint_ != nullptr; }
  [[nodiscard]] bool is_first_sighting() const { return first_sighting_; }

  // The address of the header word, which is the checkpoint's identity.
  [[nodiscard]] const unsigned char* checkpoint() const { return checkpoint_; }
  // The same as an offset in DATA.
  [[nodiscard]] std::uint32_t offset() const {
    return static_cast<std::uint32_t>(checkpoint_ - file_->data().data());
  }
  // Null for a checkpoint without payload.
  [[nodiscard]] const unsigned char* payload() const {
    return size() != 0 ? checkpoint_ + header_size : nullptr;
  }
  [[nodiscard]] std::uint32_t size() const { return header_ >> 8; }
  [[nodiscard]] std::uint8_t type() const { return header_ & 0x1F; }
  [[nodiscard]] bool has_timestamp() const { return (header_ & 0x20) != 0; }
  [[nodiscard]] bool has_memory() const { return (header_ & 0x40) != 0; }
  [[nodiscard]] bool has_location() const { return (header_ & 0x80) != 0; }

  // Over the payload; failed if there is none.
  [[nodiscard]] Cursor cursor() const { return cursor_at(payload()); }
  // Over what is left of the payload from `place` on.
  [[nodiscard]] Cursor cursor_at(const unsigned char* place) const {
    return {place, checkpoint_ + header_size + size(), file_->big_endian()};
  }

  // Reads an add-data reference at the cursor; the place that it means, or null.
  const unsigned char* get_add_data_ptr(Cursor& cursor) const {
    return file_->add_data().resolve(cursor.u64());
  }

  // Why step() stopped before the end of DATA: the bytes wanted there and the bytes left. The view
  // then stands on the checkpoint that is not whole, whose type is known unless its header word is
  // what was cut.
  [[nodiscard]] bool is_broken() const { return wanted_ != 0; }
  [[nodiscard]] bool is_header_broken() const { return is_broken() && header_ == 0; }
  [[nodiscard]] std::uint64_t wanted() const { return wanted_; }
  [[nodiscard]] std::uint64_t left() const { return left_; }

  static constexpr std::uint32_t header_size = 4;

 private:
  void read_header() { header_ = normalise_header(checkpoint_, file_->big_endian()); }

  const File* file_;
  const unsigned char* checkpoint_ = nullptr;
  std::uint32_t header_ = 0;  // normalised: type, three flags, payload size from the low bits up
  bool first_sighting_ = true;
  std::uint64_t wanted_ = 0;
  std::uint64_t left_ = 0;
};

namespace Checkpoint {

// A text in the payload with its length before it, and its original size if the tracer cut it.
// Absent, and the cursor failed, if it is not whole.
inline String get_cut_str(Cursor& cursor) {
  const std::int32_t word = cursor.i32();
  auto length = static_cast<std::uint32_t>(word);
  std::int32_t orig_sz = word;
  if (word < 0) {
    length = cursor.u32();
    // -2^31 has no positive counterpart and stays as it is.
    orig_sz = static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(word));
  }
  const unsigned char* text = cursor.bytes(length);
  if (text == nullptr) return {};
  return {Section::as_chars(text), length, orig_sz};
}

// A text in the payload with a length n before it and a NUL behind its n bytes; none of both for
// n = 0. It ends at its first NUL, or with the payload. Absent if the n bytes are not there.
String get_inline_str(Cursor& cursor);

// The text of ADD DATA at a resolved place; absent for null.
inline String section_str(const File& file, const unsigned char* place) {
  if (place == nullptr) return {};
  const std::string_view text = file.add_data().text(place);
  return {text.data(), static_cast<std::uint32_t>(text.size()), String::uncuttable};
}

}  // namespace Checkpoint
}  // namespace CT
