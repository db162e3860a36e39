// SPDX-License-Identifier: MIT
//
// Entries, packed into blocks of some 128 KiB of whole entries; a longer one is a block by itself.
// No more than one block is in memory, and of a longer entry not much more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "codetrace/render/ct_writer.h"
#include "ctreport/ct_packer.h"

namespace CT::Report {

class EntryBlocks final : public Writer {
 public:
  // Bytes of entries in a block.
  static constexpr std::size_t usual_size = std::size_t{128} * 1024;
  // The first bytes, which are packed well; more of them are packed quickly.
  static constexpr std::uint64_t packed_well = std::uint64_t{2} << 20;

  enum class Of { entries, one_long_entry };
  // Takes a block of so many entries; false if nothing more is wanted.
  using Take = std::function<bool(std::string packed, std::int64_t entries, Of what)>;
  explicit EntryBlocks(Take take);

  // Around each entry, which is put in between. False once nothing is wanted.
  void begin_entry() { entry_ = at_; }
  bool end_entry();
  // The end of the last entry.
  void finish() { cut(at_); }

 private:
  void make_room() override;
  void cut(const char* end);
  [[nodiscard]] Packer& packer();

  Take take_;
  std::unique_ptr<char[]> buffer_;
  const char* entry_;            // where the last entry begins
  std::int64_t entries_ = 0;     // whole ones in the buffer
  bool is_long_ = false;         // the entry has left the buffer
  std::uint64_t long_size_ = 0;  // bytes of it that have
  bool is_wanted_ = true;
  std::uint64_t total_ = 0;  // bytes of whole blocks
  Packer well_{usual_size};
  Packer quick_{0};
};

}  // namespace CT::Report
