// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_raw_input.h"

#include <QString>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "codetrace/ct_file.h"
#include "tools/common/ct_failure.h"
#include "tools/cttool/ct_format.h"

namespace CT::Tool {

namespace {

constexpr std::uint64_t no_limit = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t largest_file = std::uint64_t{16} << 30;

std::string system_error(int error) {
  // As the library says it of a trace.
  if (error == EISDIR) return "file to open is a directory";
  return qt_error_string(error).toStdString();
}

}  // namespace

bool RawInput::open(const std::string& name) {
  if (load(name)) return true;
  fail(open_failed, QString::fromStdString(name), QString::fromStdString(failure_));
  return false;
}

bool RawInput::load(const std::string& name) {
  content_.reset();
  size_ = 0;
  failure_.clear();
  archive_damage_.clear();
  ByteInput input;
  if (!input.open(name)) return refuse(system_error(input.error()));
  const Archive kind = archive_of(input.first(archive_mark_size));
  return kind != Archive::none ? unpack(input, kind) : read_file(input);
}

bool RawInput::read_file(ByteInput& input) {
  const std::uint64_t size = input.size();
  const std::uint64_t limit = size != 0 ? std::max(max_size_, largest_file) : max_size_;
  const bool is_read = read_all(
      [&input](unsigned char* to, std::size_t room) { return input.read(to, room); }, size, limit);
  return is_read || !failure_.empty() ? is_read : refuse(system_error(input.error()));
}

bool RawInput::unpack(ByteInput& input, Archive kind) {
  const auto unpacker = Decompressor::make(
      kind, [&input](unsigned char* to, std::size_t size) { return input.read(to, size); },
      max_size_);
  const bool is_read = read_all(
      [&unpacker](unsigned char* to, std::size_t size) { return unpacker->read(to, size); }, 0,
      no_limit);
  if (unpacker->is_too_large()) return refuse(beyond_max_size("what is in the archive", max_size_));
  if (input.error() != 0) return refuse(system_error(input.error()));
  if (!is_read) return false;
  archive_damage_ = unpacker->error();
  if (size_ != 0 || archive_damage_.empty()) return true;
  return refuse("the archive is damaged, " + archive_damage_);
}

// Until the end, in room that doubles where no size is known. False with an error of the source, or
// with a failure.
bool RawInput::read_all(const Decompressor::Read& read, std::uint64_t known_size,
                        std::uint64_t limit) {
  constexpr std::uint64_t first_piece = std::uint64_t{1} << 20;
  // One more tells that a file has not grown meanwhile.
  const std::uint64_t first_room = known_size != 0 ? known_size + 1 : first_piece;
  std::uint64_t room = 0;
  std::int64_t got = 1;
  while (got > 0) {
    if (std::max<std::uint64_t>(size_, known_size) > limit) {
      return refuse(beyond_max_size("it", limit));
    }
    if (size_ == room) {
      room = std::max(first_room, 2 * room);
      if (!make_room(room)) return refuse(system_error(ENOMEM));
    }
    got = read(content_.get() + size_, room - size_);
    if (got > 0) size_ += static_cast<std::size_t>(got);
  }
  if (!make_room(size_)) return refuse(system_error(ENOMEM));
  std::memset(content_.get() + size_, 0, File::padding);
  return got == 0;
}

bool RawInput::make_room(std::uint64_t size) {
  auto* const grown =
      static_cast<unsigned char*>(std::realloc(content_.get(), size + File::padding));
  if (grown == nullptr) return false;
  static_cast<void>(content_.release());
  content_.reset(grown);
  return true;
}

bool RawInput::refuse(std::string why) {
  failure_ = std::move(why);
  content_.reset();
  size_ = 0;
  return false;
}

}  // namespace CT::Tool
