// SPDX-License-Identifier: MIT
//
// The texts of a map's keys in JSON: compared, to be sorted, and written.
//
// A key of few bytes can have a text of many, the name of a class or resource that a million keys
// share. Names that are not short are therefore not copied: a key keeps the place where one
// belongs, and comparing and writing read it in ADD DATA. What is held follows the bytes of the
// payload.
#pragma once

#include <cstddef>
#include <string_view>

#include "codetrace/bytes/ct_plain_array.h"
#include "codetrace/model/ct_value_tape.h"
#include "codetrace/render/ct_json.h"
#include "codetrace/render/ct_value_text.h"
#include "codetrace/render/ct_writer.h"
#include "codetrace/render/keys/ct_name_hash.h"

namespace CT::Checkpoint {

class KeyTexts {
 public:
  // One key's text: a range of the bytes, and of the names that belong between them.
  struct Key {
    std::size_t begin;
    std::size_t end;
    std::size_t first_name;
    std::size_t last_name;
  };
  // What was there at one moment, to go back to.
  struct Mark {
    std::size_t bytes;
    std::size_t names;
  };

  // Takes the text of an item of the tape.
  Key add(const ValueTape& tape, ValueTape::Index item);

  // The order of the keys of a JSON object: negative, 0 or positive (see json_key_less).
  [[nodiscard]] int compare(const Key& a, const Key& b) const;

  // Whether any key since the mark has a name that was not copied: comparing such keys can be long
  // work, of which hash and identity spare the needless part.
  [[nodiscard]] bool has_names_since(const Mark& mark) const { return names_.size() != mark.names; }
  // Equal for equal texts.
  std::uint64_t hash(const Key& key);
  // Some order in which keys of the same bytes and places of names, and only those, are equal: 0.
  [[nodiscard]] int compare_identity(const Key& a, const Key& b) const;

  // Starts the member of an object that has this key.
  void write(const Key& key, JsonWriter& out) const;

  [[nodiscard]] Mark mark() const { return {bytes_.size(), names_.size()}; }
  void truncate(const Mark& mark);

 private:
  // A name that stands before the byte `at`.
  struct Name {
    std::size_t at;
    const File* file;
    const unsigned char* place;
  };

  // Renders like any text writer, but leaves long names out and notes them.
  class NameNoter final : public ValueTextWriter {
   public:
    explicit NameNoter(KeyTexts& texts) : texts_(texts) {}

   private:
    void write_name(const File& file, const unsigned char* place, Writer& out) override;
    KeyTexts& texts_;
  };

  class Reader;

  [[nodiscard]] std::string_view bytes_of(const Key& key) const {
    return bytes_.view().substr(key.begin, key.end - key.begin);
  }

  MemoryWriter bytes_;
  PlainArray<Name> names_;
  NameHashes hashes_;
  NameNoter noter_{*this};
};

}  // namespace CT::Checkpoint
