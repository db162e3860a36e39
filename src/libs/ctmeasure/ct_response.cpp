// SPDX-License-Identifier: MIT
#include "ctmeasure/ct_response.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>

namespace CT {

namespace {

using Checkpoint::HeaderOp;
using Fate = HeaderStep::Fate;

constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

// PHP folds the letters of ASCII alone.
std::string folded(std::string_view text) {
  std::string small;
  std::transform(text.begin(), text.end(), std::back_inserter(small), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return small;
}

bool is_status_line(std::string_view line) {
  constexpr std::string_view start = "http/";
  return folded(line.substr(0, start.size())) == start;
}

// The number behind the protocol, as in "HTTP/1.1 404 Not Found".
std::optional<std::int32_t> code_of(std::string_view line) {
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos) return std::nullopt;
  const std::string_view rest = trimmed(line.substr(blank));
  std::int32_t code = 0;
  const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), code);
  return read.ec == std::errc() ? std::optional(code) : std::nullopt;
}

// Whether PHP sets this code by itself when it gets such a header.
bool brings_about(std::string_view line, std::int32_t code) {
  const std::string name = folded(header_name(line));
  return (name == "location" && (code == 201 || (code >= 300 && code < 400))) ||
         (name == "www-authenticate" && code == 401);
}

std::uint64_t saturated_sum(std::uint64_t a, std::uint64_t b) {
  std::uint64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? ~std::uint64_t{0} : sum;
}

}  // namespace

// The headers that are in force, by name; each operation ends those that it replaces or deletes.
class HeaderSteps {
 public:
  explicit HeaderSteps(std::vector<HeaderStep>& steps) : steps_(steps) {}

  void add(const Node::Base& node, bool is_too_late) {
    const auto record = node.begin_as<Checkpoint::SapiHeader>();
    if (!record) return;
    steps_.push_back(
        {node.id(), Storage::no_node, record->header(), record->op(), Fate::sent, false});
    HeaderStep& step = steps_.back();
    if (!record->has_known_op()) {
      step.fate = Fate::not_an_op;
    } else if (!record->is_valid() || (record->has_header_line() && step.line.data == nullptr)) {
      step.fate = Fate::not_whole;
    } else if (is_too_late) {
      step.fate = Fate::too_late;
    } else {
      apply(step);
    }
  }

 private:
  using Headers = std::unordered_map<std::string, std::vector<std::size_t>>;

  void apply(HeaderStep& step) {
    const std::string_view line = step.line.view();
    switch (static_cast<HeaderOp>(step.op)) {
      case HeaderOp::replace:
      case HeaderOp::add: return set(step);
      case HeaderOp::delete_:
        step.fate = Fate::applied;
        return end(folded(trimmed(line.substr(0, line.find(':')))), step.id, Fate::deleted);
      case HeaderOp::delete_all: step.fate = Fate::applied; return delete_all(step.id);
      case HeaderOp::set_status: return set_status(step);
    }
  }

  void set(HeaderStep& step) {
    if (is_status_line(step.line.view())) return set_status(step);
    const std::string name = folded(header_name(step.line.view()));
    if (name.empty()) {
      nameless_.push_back(steps_.size() - 1);
      return;
    }
    if (static_cast<HeaderOp>(step.op) == HeaderOp::replace) end(name, step.id, Fate::replaced);
    in_force_[name].push_back(steps_.size() - 1);
  }

  void set_status(HeaderStep& step) {
    step.is_status = true;
    if (status_) end(*status_, step.id, Fate::replaced);
    status_ = steps_.size() - 1;
  }

  void end(std::size_t step, NodeId by, Fate fate) {
    steps_[step].fate = fate;
    steps_[step].ended_by = by;
  }

  void end(const std::string& name, NodeId by, Fate fate) {
    const auto found = in_force_.find(name);
    if (found == in_force_.end()) return;
    for (const std::size_t step : found->second) end(step, by, fate);
    in_force_.erase(found);
  }

  // Into a new table: emptying a large one again and again would take its whole size each time.
  void delete_all(NodeId by) {
    const Headers ended = std::exchange(in_force_, Headers());
    for (const auto& [name, steps] : ended) {
      for (const std::size_t step : steps) end(step, by, Fate::deleted);
    }
    for (const std::size_t step : nameless_) end(step, by, Fate::deleted);
    nameless_.clear();
  }

  std::vector<HeaderStep>& steps_;
  Headers in_force_;
  std::vector<std::size_t> nameless_;  // lines without a name, which only delete_all() ends
  std::optional<std::size_t> status_;
};

Response::Response(const Trace& trace) {
  HeaderSteps headers(steps_);
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    switch (trace.type(id)) {
      case Node::Type::SAPI_WRITE: add_write(trace.node(id)); break;
      case Node::Type::SAPI_SEND_HEADERS: add_sent(trace.node(id)); break;
      case Node::Type::SAPI_HEADER:
        headers.add(trace.node(id), sent_by_ != Storage::no_node);
        break;
      default: break;
    }
  }
  find_status();
}

void Response::add_write(const Node::Base& node) {
  const auto record = node.begin_as<Checkpoint::SapiWriteStart>();
  if (!record) return;
  const BodyPart& part = writes_.emplace_back(BodyPart{node.id(), record->body(), bytes_recorded_});
  bytes_recorded_ = saturated_sum(bytes_recorded_, part.body.view().size());
  bytes_out_ = saturated_sum(bytes_out_, part.size());
  if (part.missing() != 0) ++cut_writes_;
}

void Response::add_sent(const Node::Base& node) {
  const auto record = node.begin_as<Checkpoint::SapiSendHeaders>();
  if (!record) return;
  if (sent_by_ != Storage::no_node) {
    sent_again_.push_back(node.id());
    return;
  }
  sent_by_ = node.id();
  if (!record->is_valid()) return;
  status_ = static_cast<std::int32_t>(record->code());
  status_line_ = record->status();
}

// What the record of sending does not say is taken from the header operations.
void Response::find_status() {
  for (const HeaderStep& step : steps_) {
    if (step.fate != Fate::sent) continue;
    if (step.is_status) {
      status_set_by_ = step.id;
      const bool has_line = is_status_line(step.line.view());
      const auto code = code_of(step.line.view());
      if (has_line && sent_by_ == Storage::no_node) status_ = code;
      if (has_line && status_line_.is_empty() && (!status_ || code == status_)) {
        status_line_ = step.line;
      }
    } else if (status_ && brings_about(step.line.view(), *status_)) {
      status_set_by_ = step.id;
    }
  }
}

std::vector<HeaderStep> Response::headers() const {
  std::vector<HeaderStep> sent;
  std::copy_if(steps_.begin(), steps_.end(), std::back_inserter(sent),
               [](const HeaderStep& step) { return step.fate == Fate::sent && !step.is_status; });
  return sent;
}

std::string_view header_name(std::string_view line) {
  const std::size_t colon = line.find(':');
  return colon == std::string_view::npos ? std::string_view() : trimmed(line.substr(0, colon));
}

std::string_view header_value(std::string_view line) {
  const std::size_t colon = line.find(':');
  return trimmed(colon == std::string_view::npos ? line : line.substr(colon + 1));
}

}  // namespace CT
