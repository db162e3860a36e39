// SPDX-License-Identifier: MIT
//
// What is odd about a trace, as data. Reading one reports each finding to a sink of the caller's as
// it is met, and counts them in a summary; nothing is printed here and nothing ends the reading.
// One table says of each kind how grave it is and what became of the checkpoint.
#pragma once

#include <array>
#include <cstdint>

#include "codetrace/model/ct_types.h"
#include "kcommon/k_export.h"

namespace CT {

class Writer;

struct CODETRACE_EXPORT Finding {
  enum class Kind : std::uint8_t {
    unknown_code,    // a checkpoint of a type that is not decoded: `first` is its code
    damaged_record,  // a field is not whole: `first` is its offset in the payload of `second` bytes
    broken_header_word,  // DATA ends within it: `first` bytes wanted, `second` left
    broken_payload,      // the same for a payload
    unknown_record,      // a record that the tree has no place for
    second_startup,      // another begin of the request
    nothing_open,        // no request has begun, or it has ended
    wrong_class,         // an end that is not of the class that was asked for
    no_begin,            // no node begins at the address `first` that an end refers to
    wrong_node,          // the node that an end refers to is of the type `node_type`
    not_innermost,  // other nodes are open inside the one that ends, `node`: they lost their ends
    not_open,       // the node that ends is not open: no node is any more
  };

  Kind kind;
  Checkpoint::Type type = Checkpoint::Type::INVALID;  // of the checkpoint
  std::uint32_t offset = 0;                           // of its header word in DATA
  std::int32_t node = -1;
  Node::Type node_type = Node::Type::CRASH;
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  const char* source_file = "";  // where in the source it was found
  int source_line = 0;
};

// What a finding did to its checkpoint.
enum class Effect : std::uint8_t { skipped, damaged, ended_walk, rejected, repaired };

struct FindingInfo {
  Finding::Kind kind;
  std::int8_t level;  // 0 error, 1 warning
  Effect effect;
};

inline constexpr std::array<FindingInfo, 12> findings = {{
    {Finding::Kind::unknown_code, 0, Effect::skipped},
    {Finding::Kind::damaged_record, 0, Effect::damaged},
    {Finding::Kind::broken_header_word, 0, Effect::ended_walk},
    {Finding::Kind::broken_payload, 0, Effect::ended_walk},
    {Finding::Kind::unknown_record, 0, Effect::rejected},
    {Finding::Kind::second_startup, 0, Effect::rejected},
    {Finding::Kind::nothing_open, 0, Effect::rejected},
    {Finding::Kind::wrong_class, 0, Effect::rejected},
    {Finding::Kind::no_begin, 0, Effect::rejected},
    {Finding::Kind::wrong_node, 0, Effect::rejected},
    {Finding::Kind::not_innermost, 1, Effect::repaired},
    {Finding::Kind::not_open, 0, Effect::rejected},
}};

constexpr const FindingInfo& finding_info(Finding::Kind kind) {
  return findings[static_cast<std::size_t>(kind)];
}

static_assert([] {
  for (std::size_t row = 0; row != findings.size(); ++row) {
    if (findings[row].kind != static_cast<Finding::Kind>(row)) return false;
  }
  return true;
}());

// The finding as one line of text, without its level and without a newline.
CODETRACE_EXPORT void write_text(const Finding& finding, Writer& out);

// Takes findings, in the order of the file.
class CODETRACE_EXPORT FindingSink {
 public:
  virtual ~FindingSink() = default;
  virtual void report(const Finding& finding) = 0;
};

// How many of what a reading met.
struct CODETRACE_EXPORT Summary {
  std::uint64_t records = 0;   // decoded, valid or not
  std::uint64_t skipped = 0;   // checkpoints of types that are not decoded
  std::uint64_t damaged = 0;   // records of which not all is whole
  std::uint64_t rejected = 0;  // valid records that do not fit the tree
  std::uint64_t repaired = 0;  // ends that closed a node in which others were open
  bool is_broken = false;      // DATA ends within a checkpoint

  // Whether nothing was found.
  [[nodiscard]] bool is_clean() const {
    return skipped + damaged + rejected + repaired == 0 && !is_broken;
  }
  void count(Effect effect);
};

inline void Summary::count(Effect effect) {
  switch (effect) {
    case Effect::skipped: ++skipped; break;
    case Effect::damaged: ++damaged; break;
    case Effect::ended_walk: is_broken = true; break;
    case Effect::rejected: ++rejected; break;
    case Effect::repaired: ++repaired; break;
  }
}

}  // namespace CT
