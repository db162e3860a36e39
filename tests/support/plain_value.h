// SPDX-License-Identifier: MIT
//
// PlainValue: values of the traced script once more, decoded and printed in the most obvious way,
// by recursion and with Qt's own classes. It shares no code with the library, which is held equal
// to it. It owns copies of its texts. Where the bytes end inside a value, what is not whole is
// undef, and an array keeps the pairs whose key is whole.
#pragma once

#include <QJsonValue>
#include <QString>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fields.h"

namespace CT::Test {

struct PlainPair;

struct PlainValue {
  int type = 0;
  std::int64_t number = 0;  // the long; the handle of an object or resource
  double real = 0;
  std::string text;           // the string's bytes; the name of a class or resource
  std::int32_t orig_sz = -1;  // of a string
  std::optional<std::size_t> class_id;
  bool is_cut = false;  // an array, as the three below
  bool is_list = false;
  std::int32_t count = 0;
  std::vector<PlainPair> pairs;

  // The forms of text and JSON, as the library's to_string and as_json define them.
  QString to_string(bool quoted) const;
  QJsonValue as_json() const;
};

struct PlainPair {
  PlainValue first;
  PlainValue second;
};

class PlainReader {
 public:
  // Names of classes and resources by reference; others are unknown.
  using Names = std::map<Ref, std::string>;

  PlainReader(std::string_view bytes, ByteOrder order, Names names = {})
      : bytes_(bytes), order_(order), names_(std::move(names)) {}

  PlainValue read();

  // False from the first field on that was not whole.
  bool ok() const { return ok_; }
  // Bytes read.
  std::size_t position() const { return at_; }

 private:
  std::uint64_t number(std::size_t width);
  std::string_view take(std::size_t size);
  void read_string(PlainValue& value);
  void read_array(PlainValue& value);
  void read_object(PlainValue& value);
  std::string name(Ref ref) const;

  std::string_view bytes_;
  ByteOrder order_;
  Names names_;
  std::vector<Ref> classes_;  // in order of first sighting
  std::size_t at_ = 0;
  bool ok_ = true;
};

}  // namespace CT::Test
