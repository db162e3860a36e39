// SPDX-License-Identifier: MIT
#include "ctsalvage/ct_whole.h"

#include <algorithm>
#include <memory>

#include "ctsalvage/ct_judge.h"

namespace CT::Salvage {

namespace {

using Checkpoint::Role;

// The request's tree as the reader builds it, as far as it matters what is open.
class OpenNodes {
 public:
  // False for what the reader would not take.
  bool take(const Frame& frame, std::uint64_t offset, std::uint64_t start) {
    const Role role = frame.role();
    if (is_over_ || (role == Role::root) != !has_begun_) return false;
    switch (role) {
      case Role::root: has_begun_ = true; return true;
      case Role::root_end: is_over_ = true; return true;
      case Role::span: open_.push_back({offset, frame.type()}); return true;
      case Role::span_end: return close(frame, start);
      default: return true;
    }
  }

 private:
  struct Open {
    std::uint64_t offset;
    Checkpoint::Type type;
  };

  bool close(const Frame& frame, std::uint64_t start) {
    auto found = open_.end();
    if (!open_.empty() && open_.back().offset == start) {
      --found;
    } else {
      found = std::lower_bound(
          open_.begin(), open_.end(), start,
          [](const Open& node, std::uint64_t offset) { return node.offset < offset; });
      if (found == open_.end() || found->offset != start) return false;
    }
    using Checkpoint::Type;
    if (frame.type() == Type::INCLUDE_RETURN && found->type != Type::INCLUDE_CALL) return false;
    open_.erase(found, open_.end());
    return true;
  }

  std::vector<Open> open_;
  bool has_begun_ = false;
  bool is_over_ = false;
};

}  // namespace

bool is_whole(Bytes file, std::uint64_t& checkpoints) {
  const Header header = Header::read(file);
  if (!header.is_there || Header::size + header.sections_size() != file.size()) return false;
  const Order order((header.flags & Header::big_endian_flag) != 0);
  const Bytes data = file.subspan(Header::size, header.data_size);
  const Bytes add_data = file.subspan(Header::size + data.size());
  const auto names = std::make_unique<Names>(
      Section(add_data.data(), add_data.size(), header.orig_add_data), order);
  OpenNodes nodes;
  std::uint64_t count = 0;
  for (std::uint64_t at = 0; at != data.size(); ++count) {
    if (data.size() - at < Format::header_word_size) return false;
    const Frame frame = frame_at(data.data() + at, order);
    if (frame.whole_size() > data.size() - at) return false;
    if (judge(frame, order, *names) != Judgement::whole) return false;
    std::uint64_t start = 0;
    if (frame.is_end()) {
      const std::uint64_t reference = order.u64(frame.reference());
      if (reference == 0) return false;
      start = reference - header.orig_data;
    }
    if (!nodes.take(frame, at, start)) return false;
    at += frame.whole_size();
  }
  checkpoints = count;
  return true;
}

}  // namespace CT::Salvage
