// SPDX-License-Identifier: MIT
//
// A streaming JSON writer with the exact bytes of QJsonDocument::toJson: four blanks a level, and
// an empty container on two lines. It keeps no document and no stack, so depth costs nothing; that
// keys are sorted and unique is its callers' affair (see json_key_less).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "codetrace/render/ct_number.h"
#include "codetrace/render/ct_writer.h"

namespace CT {

// How a member of an object begins in an indented document, at the one depth at which the objects
// of nodes, functions and classes stand: comma, line, name. Copied as a block of fixed size.
class MemberStart {
 public:
  static constexpr std::size_t depth = 3;
  static constexpr std::size_t block = 48;

  constexpr MemberStart() = default;
  // `name`: plain ASCII of at most 28 bytes.
  constexpr explicit MemberStart(std::string_view name) {
    add(",\n            \"");
    add(name);
    add("\": ");
  }
  [[nodiscard]] constexpr const char* text() const { return text_; }
  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr std::string_view name() const { return {text_ + 15, size_ - 18}; }

 private:
  constexpr void add(std::string_view part) {
    for (const char c : part) text_[size_++] = c;
  }
  char text_[block + 1] = {};
  std::size_t size_ = 0;
};

class JsonWriter {
 public:
  enum class Form { indented, compact };

  // Borrows: the output.
  explicit JsonWriter(Writer& out, Form form = Form::indented)
      : out_(out), indented_(form == Form::indented) {}

  void begin_object() { begin('{'); }
  void end_object() { end('}'); }
  void begin_array() { begin('['); }
  void end_array() { end(']'); }

  // Starts the next element of an array; exactly one value follows.
  void element() {
    if (!first_) out_.put(',');
    first_ = false;
    if (indented_) new_line();
  }
  // Starts the next member of an object; exactly one value follows. `name` is plain ASCII.
  void key(std::string_view name) {
    begin_key();
    out_.put(name);
    end_key();
  }
  void key(const MemberStart& start) {
    if (!indented_ || depth_ != MemberStart::depth) return key(start.name());
    char* at = out_.room(MemberStart::block);
    const std::size_t skipped = first_ ? 1 : 0;  // the comma
    std::memcpy(at, start.text() + skipped, MemberStart::block);
    out_.advance(at + start.size() - skipped);
    first_ = false;
  }
  // The same for any text: its JSON form is put between the two calls.
  void begin_key() {
    element();
    out_.put('"');
  }
  void end_key() { indented_ ? out_.put("\": ") : out_.put("\":"); }

  void null() { out_.put("null"); }
  void boolean(bool value) { value ? out_.put("true") : out_.put("false"); }
  void number(std::int64_t value) { put_signed(out_, value); }
  void number(double value) { put_double_json(out_, value); }
  // Plain ASCII in which nothing is escaped.
  void word(std::string_view text) {
    out_.put('"');
    out_.put(text);
    out_.put('"');
  }
  // `stored` is decoded as ct_text.h says; `suffix` is plain ASCII behind it.
  void text(std::string_view stored, std::string_view suffix = {});

  [[nodiscard]] Writer& out() { return out_; }
  [[nodiscard]] bool ok() const { return out_.ok(); }

 private:
  void begin(char bracket) {
    out_.put(bracket);
    ++depth_;
    first_ = true;
  }
  void end(char bracket) {
    --depth_;
    if (indented_) new_line();
    out_.put(bracket);
    first_ = false;
  }
  // The usual few levels are copied as one block of fixed size; the rest of it is written over.
  void new_line() {
    constexpr std::size_t usual = 32;
    const std::size_t blanks = 4 * depth_;
    char* room = out_.room(1 + usual);
    *room = '\n';
    if (blanks > usual) {
      out_.advance(room + 1);
      out_.fill(' ', blanks);
      return;
    }
    std::memset(room + 1, ' ', usual);
    out_.advance(room + 1 + blanks);
  }

  Writer& out_;
  std::size_t depth_ = 0;
  bool indented_;
  bool first_ = true;
};

// The order of keys in an object: by UTF-16 code unit, which for text beyond U+FFFF differs from
// the order of the UTF-8 bytes. Both texts are well-formed UTF-8.
bool json_key_less(std::string_view a, std::string_view b);

}  // namespace CT
