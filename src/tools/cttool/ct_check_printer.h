// SPDX-License-Identifier: MIT
//
// Defects of one file after the other, in the forms of `cttool check`.
#pragma once

#include "codetrace/render/ct_json.h"
#include "tools/cttool/ct_check_files.h"
#include "tools/cttool/ct_printer.h"

namespace CT::Tool {

enum class CheckForm { text, json, jsonl };

class CheckPrinter {
 public:
  // Borrows: the printer. Of defects below `least` only the number is printed.
  CheckPrinter(CheckForm form, Check::Level least, Printer& printer);

  void begin();
  void print(const CheckedFile& file);
  void end();

 private:
  void print_text(const CheckedFile& file);
  void print_defect(const Check::Defect& defect);
  void print_unlisted(const Check::Result& result);
  void write_file(const CheckedFile& file);
  void write_counts(const Check::Result& result);
  void write_reader(const Summary& reader);
  void write_defect(const Check::Defect& defect);
  void write_number(const char* key, std::uint64_t number);
  [[nodiscard]] bool is_listed(const Check::Defect& defect) const {
    return code_info(defect.code).level <= least_;
  }

  CheckForm form_;
  Check::Level least_;
  Printer& printer_;
  Writer& out_;
  JsonWriter json_;
};

// Whether nothing of this level, or above it, is wrong.
bool is_clean(const Check::Result& result, Check::Level least);

}  // namespace CT::Tool
