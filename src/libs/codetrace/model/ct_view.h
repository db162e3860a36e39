// SPDX-License-Identifier: MIT
//
// One framed checkpoint, seen in place, and the step from one to the next through DATA. It owns
// nothing; the file must outlive it. A valid view is of a checkpoint that lies wholly in DATA.
//
// A header word or a payload that runs past the end of DATA ends the walk: `step` returns false and
// `broken` tells why.
#pragma once

#include <cassert>
#include <cstdint>
#include <optional>
#include <string_view>

#include "codetrace/bytes/ct_cursor.h"
#include "codetrace/ct_file.h"
#include "codetrace/model/ct_format.h"
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

// The type alone, which is in the first byte.
inline std::uint8_t type_of_header(const unsigned char* word, bool big_endian) {
  return big_endian ? *word >> 3 : *word & Format::type_mask;
}

class CODETRACE_EXPORT CheckpointView {
 public:
  // Where a walk had to stop before the end of DATA.
  struct Broken {
    std::uint32_t offset;  // of the checkpoint that is not whole, in DATA
    bool in_header_word;   // else in its payload, and then the type is known
    std::uint8_t type;     // code; 0 if the header word is not whole
    std::uint64_t wanted;  // bytes
    std::uint64_t left;    // bytes
  };

  // Stands before the first checkpoint. Borrows: the file; one that is not open has no checkpoint.
  explicit CheckpointView(const File& file) : file_(&file) {}

  // The checkpoint whose header word is at `offset` in DATA; not valid if none lies wholly there.
  static CheckpointView at(const File& file, std::uint32_t offset);

  // Goes on to the next checkpoint. False at the end of DATA and when the next one is not whole;
  // the view then stands on no checkpoint.
  bool step();

  [[nodiscard]] const File& file() const { return *file_; }
  // Whether it stands on a checkpoint.
  [[nodiscard]] bool is_valid() const { return checkpoint_ != nullptr; }

  // The address of the header word, which is the checkpoint's identity; null where it stands on
  // none.
  [[nodiscard]] const unsigned char* checkpoint() const { return checkpoint_; }
  // The same as an offset in DATA. Requires: a valid view.
  [[nodiscard]] std::uint32_t offset() const {
    assert(is_valid());
    return static_cast<std::uint32_t>(checkpoint_ - file_->data().data());
  }
  // Null for a checkpoint without payload, and for none.
  [[nodiscard]] const unsigned char* payload() const {
    return size() != 0 ? checkpoint_ + Format::header_word_size : nullptr;
  }
  // By the header word; 0 for no checkpoint.
  [[nodiscard]] std::uint32_t size() const { return header_ >> Format::size_shift; }
  [[nodiscard]] std::uint8_t type() const { return header_ & Format::type_mask; }
  // Which common fields there are: timestamp 1, memory 2, location 4.
  [[nodiscard]] std::uint8_t presence() const {
    return (header_ >> Format::presence_shift) & Format::presence_mask;
  }
  [[nodiscard]] bool has_timestamp() const { return (presence() & 1) != 0; }
  [[nodiscard]] bool has_memory() const { return (presence() & 2) != 0; }
  [[nodiscard]] bool has_location() const { return (presence() & 4) != 0; }

  // Over the payload; failed if there is none.
  [[nodiscard]] Cursor cursor() const { return cursor_at(0); }
  // Over what is left of the payload from `offset` on; failed if that lies behind its end.
  [[nodiscard]] Cursor cursor_at(std::uint32_t offset) const {
    const unsigned char* begin = payload();
    if (begin == nullptr || offset > size()) return {};
    return {begin + offset, begin + size(), file_->big_endian()};
  }

  // Reads an add-data reference at the cursor; the place that it means, or null.
  const unsigned char* get_add_data_ptr(Cursor& cursor) const {
    return file_->add_data().resolve(cursor.u64());
  }

  // Why step() stopped before the end of DATA, if it did.
  [[nodiscard]] const std::optional<Broken>& broken() const { return broken_; }

 private:
  CODETRACE_HIDDEN bool stop(std::optional<Broken> why);

  const File* file_;
  const unsigned char* checkpoint_ = nullptr;
  std::uint32_t header_ = 0;  // normalised: type, three flags, payload size from the low bits up
  bool ended_ = false;
  std::optional<Broken> broken_;
};

inline CheckpointView CheckpointView::at(const File& file, std::uint32_t offset) {
  CheckpointView view(file);
  view.ended_ = true;
  const Section& data = file.data();
  if (offset >= data.size() || data.size() - offset < Format::header_word_size) return view;
  const unsigned char* place = data.data() + offset;
  view.header_ = normalise_header(place, file.big_endian());
  if (view.size() > data.size() - offset - Format::header_word_size) {
    view.header_ = 0;
    return view;
  }
  view.checkpoint_ = place;
  view.ended_ = false;
  return view;
}

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
// n = 0. It ends at its first NUL, or with the payload; it is absent if there is no NUL and fewer
// than n bytes. The cursor fails if not all of it is there.
String get_inline_str(Cursor& cursor);

// The text of ADD DATA at a resolved place; absent for null.
inline String section_str(const File& file, const unsigned char* place) {
  if (place == nullptr) return {};
  const std::string_view text = file.add_data().text(place);
  return {text.data(), static_cast<std::uint32_t>(text.size()), String::uncuttable};
}

}  // namespace Checkpoint
}  // namespace CT
