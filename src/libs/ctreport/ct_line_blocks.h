// SPDX-License-Identifier: MIT
//
// Lines, packed into blocks of some 128 KiB of whole lines; a longer line is a block by itself. No
// more than one block is in memory, and of a longer line no more than that.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "codetrace/render/ct_writer.h"
#include "ctreport/ct_packer.h"

namespace CT::Report {

class LineBlocks final : public Writer {
 public:
  // Bytes of lines in a block.
  static constexpr std::size_t usual_size = std::size_t{128} * 1024;
  // The first bytes, which are packed with the usual effort; more of them with little.
  static constexpr std::uint64_t packed_well = std::uint64_t{4} << 20;

  enum class Of { lines, one_long_line };
  // Takes a block of so many lines; false if nothing more is wanted.
  using Take = std::function<bool(std::string packed, std::int64_t lines, Of what)>;
  explicit LineBlocks(Take take);

  // Around each line, which is put in between, without its end. False once nothing is wanted.
  void begin_line() { line_ = at_; }
  bool end_line();
  // The end of the last line.
  void finish() { cut(at_); }

 private:
  void make_room() override;
  void cut(const char* end);
  [[nodiscard]] Packer& packer();

  Take take_;
  std::unique_ptr<char[]> buffer_;
  const char* line_;             // where the last line begins
  std::int64_t lines_ = 0;       // whole ones in the buffer
  bool is_long_ = false;         // the line has left the buffer
  std::uint64_t long_size_ = 0;  // bytes of it that have
  bool is_wanted_ = true;
  std::uint64_t total_ = 0;  // bytes of whole blocks
  Packer well_{Packer::Effort::usual};
  Packer fast_{Packer::Effort::little};
};

}  // namespace CT::Report
