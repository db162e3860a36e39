// SPDX-License-Identifier: MIT
//
// What the client got: the status, the headers as they were sent, the body in the pieces in which
// it was written. Each comes with the node that made it.
//
//   const CT::Response response(trace);
//   response.status(), response.headers(), response.writes() ...
//
// Header operations are applied in the order of the file until the headers are sent, as PHP does:
// to replace is to delete all headers of that name and to add one at the end; names are compared
// without regard to capitals of ASCII. A line that begins with "HTTP/" is no header, but sets the
// status line. Where no record says that headers were sent, all operations count.
//
// What PHP or the web server add by themselves is in no trace.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "codetrace/ct_trace.h"
#include "codetrace/model/ct_string.h"

namespace CT {

// One header operation, and what became of it.
struct HeaderStep {
  enum class Fate : std::uint8_t {
    sent,       // a header or a status that the client got
    replaced,   // by a later one, `ended_by`
    deleted,    // by a later one, `ended_by`
    applied,    // itself deleted headers, or meant to
    too_late,   // the headers were sent already
    not_whole,  // of a damaged record: it has no line
    not_an_op,  // its code is none that PHP has
  };

  NodeId id;                // the header's node
  NodeId ended_by;          // Storage::no_node unless it was replaced or deleted
  Checkpoint::String line;  // borrows the trace; absent where the operation has none
  std::uint8_t op;          // as read, see Checkpoint::HeaderOp
  Fate fate;
  bool is_status;  // sets the status, not a header
};

// One write to the client.
struct BodyPart {
  NodeId id;
  Checkpoint::String body;  // borrows the trace; what the tracer kept of it
  std::uint64_t offset;     // of its first byte in the body, as far as the body was recorded

  // Bytes that were written, and those of them that the tracer cut off.
  [[nodiscard]] std::uint64_t size() const { return body.view().size() + missing(); }
  [[nodiscard]] std::uint64_t missing() const {
    return body.is_cut() ? static_cast<std::uint64_t>(body.orig_sz) - body.length : 0;
  }
};

class Response {
 public:
  // Reads the trace, which must outlive it. Throws std::bad_alloc.
  explicit Response(const Trace& trace);

  // Whether the trace tells of anything that was sent or meant to be.
  [[nodiscard]] bool is_empty() const {
    return steps_.empty() && writes_.empty() && sent_by_ == Storage::no_node;
  }

  // The response code: that of the record that the headers were sent, else that of a status line
  // that a script set last; nothing if neither tells. Signed as in the other outputs.
  [[nodiscard]] std::optional<std::int32_t> status() const { return status_; }
  // Such as "HTTP/1.1 200 OK"; absent where nobody gave one.
  [[nodiscard]] Checkpoint::String status_line() const { return status_line_; }
  // The header operation that set the status; no_node if none did. "Location" and
  // "WWW-Authenticate" do so too, where the code is one that they bring about.
  [[nodiscard]] NodeId status_set_by() const { return status_set_by_; }
  // The node that says that the headers were sent, the first if there are several; no_node for
  // none.
  [[nodiscard]] NodeId sent_by() const { return sent_by_; }
  // The others.
  [[nodiscard]] const std::vector<NodeId>& sent_again() const { return sent_again_; }

  // All header operations in the order of the file.
  [[nodiscard]] const std::vector<HeaderStep>& steps() const { return steps_; }
  // Those of them that are headers of the response, in the order in which they were sent.
  [[nodiscard]] std::vector<HeaderStep> headers() const;

  // In the order of the file.
  [[nodiscard]] const std::vector<BodyPart>& writes() const { return writes_; }
  // Bytes of the body that scripts wrote, and those that the trace holds. The sums saturate.
  [[nodiscard]] std::uint64_t bytes_out() const { return bytes_out_; }
  [[nodiscard]] std::uint64_t bytes_recorded() const { return bytes_recorded_; }
  [[nodiscard]] std::size_t cut_writes() const { return cut_writes_; }

 private:
  friend class HeaderSteps;
  void add_write(const Node::Base& node);
  void add_sent(const Node::Base& node);
  void find_status();

  std::optional<std::int32_t> status_;
  Checkpoint::String status_line_;
  NodeId status_set_by_ = Storage::no_node;
  NodeId sent_by_ = Storage::no_node;
  std::vector<NodeId> sent_again_;
  std::vector<HeaderStep> steps_;
  std::vector<BodyPart> writes_;
  std::uint64_t bytes_out_ = 0;
  std::uint64_t bytes_recorded_ = 0;
  std::size_t cut_writes_ = 0;
};

// What stands before the first colon of a header line, without blanks around it; empty if there is
// no colon.
std::string_view header_name(std::string_view line);
// What stands behind it, likewise; the whole line if there is no colon.
std::string_view header_value(std::string_view line);

}  // namespace CT
