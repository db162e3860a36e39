// SPDX-License-Identifier: MIT
//
// The values of a call as a few bytes, of which the page makes the line of JSON that they stand
// for (ct_node_members.h). Less is to be written and packed than of such a line; what a page would
// rather not meet has none of these bytes: what is damaged, odd, very long or deep, or no UTF-8.
//
//   call     byte: 1 has `this`, 2 has `returned`, 4 has `thrown`, added up
//            number: how many bytes follow
//            value if it has `this`; number of arguments; these; value if it has a result
//   number   varint (ct_varint.h)
//   value    byte: a Code; what it says is behind it
//   pair     value, the key: a number, a text or `next`; value. Or `cut`, which ends the array
//
// JSON itself begins with another byte, "{".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/render/ct_writer.h"

namespace CT::Report {

class CallBytes {
 public:
  enum class Code : std::uint8_t {
    null,
    false_,
    true_,
    digits,        // byte: size; a number in JSON, or in quotes what is none there
    ascii,         // number: size; a text, of ASCII alone
    text,          // the same in UTF-8
    cut_ascii,     // the same two, of what the tracer cut
    cut_text,      //
    array,         // number: pairs; these
    object,        // number: that of its class + 1, 0 for an unknown one; number: handle
    resource,      // value: its type, a text; value: handle, a number
    next,          // in place of a key: the number of pairs before it
    cut,           // in place of a key: the rest of the array was cut
    not_followed,  // in place of a value in an array: an array that was cut wholly
  };
  enum Part : std::uint8_t { has_this = 1, has_returned = 2, has_thrown = 4 };

  // Bytes of both records that tell of a call; those of longer ones are not worth it.
  static constexpr std::uint32_t longest = 64 * 1024;
  // Arrays around each other.
  static constexpr std::size_t deepest = 32;
  // Bytes of the name of a class or of a type of resources.
  static constexpr std::size_t longest_name = 256;

  // Borrows: the trace.
  explicit CallBytes(const Trace& trace);

  // Empty where a node is no call, or none of which there are such bytes. They last until the next.
  [[nodiscard]] std::string_view of(NodeId id);
  // That node will be asked for soon, which makes it quicker.
  void expect(NodeId id) const;

 private:
  struct Array {
    std::uint32_t left;  // pairs
    std::int64_t next;   // pairs before this one
  };

  void put(Code code) { out_.put(static_cast<char>(code)); }
  bool put_call(NodeId id);
  bool put_values(std::uint32_t count);
  bool put_value();
  bool begin_pair(Array& array, bool& is_cut);
  bool put_object();
  bool put_resource();
  void put_double();
  bool put_text(const Checkpoint::String& string);
  void put_whole(std::int64_t number);
  void put_digits(std::string_view number);

  const Trace& trace_;
  const File& file_;
  const Entities& entities_;
  std::vector<bool> is_known_;  // of classes: whether it has a name in the page
  MemoryWriter head_;
  MemoryWriter out_;
  MemoryWriter number_;
  Cursor at_;
  std::array<Array, deepest> arrays_ = {};
  std::size_t depth_ = 0;
};

// The names of classes by number, as an array of JSON; "" for one that is not known.
void write_classes(const Trace& trace, Writer& out);

}  // namespace CT::Report
