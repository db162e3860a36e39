// SPDX-License-Identifier: MIT
//
// WriterModel: what a record has to read like after the calls that were made of the writer, or that
// it has to have failed. It builds what it needs in the most obvious way, in words.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/model/ct_types.h"
#include "ctwrite/ct_write_options.h"

namespace CT::Fuzz {

class WriterModel {
 public:
  explicit WriterModel(const Write::Limits& limits) : limits_(limits) {}

  // Each follows the writer's call. `words` are those of what was handed over.
  void begin(Checkpoint::Type type, const std::string& words);
  void field(Format::Field kind, const std::string& words);
  void value(const std::string& words);
  void begin_array();
  void end_array();
  void cut_rest();
  // Ends the record: its words, nothing if it failed or none was open.
  std::optional<std::string> end();
  void abandon() { open_ = false; }

  // The record is no call of anything.
  void lacks_function() { lacks_function_ = true; }

  [[nodiscard]] bool is_open() const { return open_; }
  [[nodiscard]] Format::Field coming_field() const;
  [[nodiscard]] const Checkpoint::TypeInfo& type() const { return *type_; }
  // How the text is kept, in words.
  [[nodiscard]] std::string kept(std::string_view text, std::uint64_t original_size) const;

 private:
  struct Array {
    bool counts = true;  // in the depth of what is kept
    bool replaced = false;
    bool cut = false;
    bool has_key = false;
    std::size_t pairs = 0;
    std::string words = "[ ";
    std::string key;
  };
  [[nodiscard]] bool is_dropping() const;
  void fail() { failed_ = true; }
  void leave_arguments();

  Write::Limits limits_;
  const Checkpoint::TypeInfo* type_ = &Checkpoint::types[0];
  std::string words_;
  std::string common_;
  std::vector<Array> arrays_;
  std::size_t depth_ = 0;
  std::size_t field_ = 0;
  bool in_arguments_ = false;
  bool open_ = false;
  bool failed_ = false;
  bool lacks_function_ = false;
};

}  // namespace CT::Fuzz
