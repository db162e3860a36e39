// SPDX-License-Identifier: MIT
//
// The texts of the keys of open maps in JSON: taken from the tape, and written.
//
// A key of few bytes can have a text of many, the name of a class or resource that a million keys
// share. Names that are not short are therefore not copied: a key keeps the place where one
// belongs, and writing reads it in ADD DATA. What is held follows the bytes of the payload.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_value_text.h"
#include "codetrace/render/ct_writer.h"

namespace CT::Checkpoint {

// A member of an open map: its key's text, a range of bytes with names that belong between them,
// and its value. 32 bits are enough: 2^24 bytes of payload make fewer than 2^8 bytes of text each.
struct MapMember {
  std::uint64_t prefix;  // for those who sort
  std::uint32_t begin;
  std::uint32_t end;
  std::uint32_t first_name;
  std::uint32_t value : 31;  // its item on the tape; rises in the order of the payload
  std::uint32_t is_undef : 1;
};

class KeyTexts {
 public:
  // A name that stands before the byte `at`.
  struct Name {
    std::uint32_t at;
    const unsigned char* place;
  };
  // What was there at one moment, to go back to.
  struct Mark {
    std::size_t bytes = 0;
    std::size_t names = 0;
  };

  // Takes the text of the key at an item of the tape. Requires: tapes of one file between two calls
  // of truncate({}).
  MapMember add(const ValueTape& tape, ValueTape::Index key);

  [[nodiscard]] std::string_view bytes() const { return bytes_.view(); }
  [[nodiscard]] std::string_view bytes_of(const MapMember& member) const {
    return bytes().substr(member.begin, member.end - member.begin);
  }
  // The names of a key begin at its `first_name`; null behind the last one.
  [[nodiscard]] const Name* name(const MapMember& member, std::size_t i) const {
    return i < names_.size() && names_[i].at < member.end ? &names_[i] : nullptr;
  }
  [[nodiscard]] bool has_names(const MapMember& member) const {
    return name(member, member.first_name) != nullptr;
  }
  // Asks for the memory around the beginning of a name, if there is one of this number.
  void prefetch_name(std::size_t i) const {
    if (i >= names_.size()) return;
    const unsigned char* const place = names_[i].place;
    __builtin_prefetch(place);
    __builtin_prefetch(place - std::min<std::ptrdiff_t>(64, place - add_data().data()));
  }
  [[nodiscard]] const Section& add_data() const { return file_->add_data(); }

  // Starts the member of an object that has this key. Once the output failed, no name is read.
  void write(const MapMember& member, JsonWriter& out) const;

  [[nodiscard]] Mark mark() const { return {bytes_.size(), names_.size()}; }
  void truncate(const Mark& mark);

 private:
  // Renders like any text writer, but leaves long names out and notes them.
  class NameNoter final : public ValueTextWriter {
   public:
    explicit NameNoter(KeyTexts& texts) : texts_(texts) {}

   private:
    void write_name(const File& file, const unsigned char* place, Writer& out) override;
    KeyTexts& texts_;
  };

  const File* file_ = nullptr;
  MemoryWriter bytes_;
  PlainArray<Name> names_;
  NameNoter noter_{*this};
};

}  // namespace CT::Checkpoint
