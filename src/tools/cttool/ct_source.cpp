// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "tools/cttool/ct_text_table.h"

namespace CT::Tool {

namespace {

constexpr std::int64_t largest = std::int64_t{16} << 20;  // of a file, what is looked into
constexpr std::size_t longest = 4096;                     // of a line, what is kept

class Descriptor {
 public:
  // A name that is a pipe or a device is not waited for.
  explicit Descriptor(const std::string& path)
      : number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_;
};

// Picks one line out of a file that comes in pieces.
class LinePicker {
 public:
  explicit LinePicker(std::uint32_t number) : left_(number) {}

  // False once the line is whole.
  bool add(std::string_view piece) {
    while (!piece.empty()) {
      const std::size_t end = piece.find('\n');
      if (left_ == 1) {
        is_found_ = true;
        const std::string_view part = piece.substr(0, end);
        text_.append(part.substr(0, longest - std::min(longest, text_.size())));
      }
      if (end == std::string_view::npos) return true;
      if (--left_ == 0) return false;
      piece.remove_prefix(end + 1);
    }
    return true;
  }
  [[nodiscard]] bool is_found() const { return is_found_; }
  [[nodiscard]] std::string text() && {
    if (text_.ends_with('\r')) text_.pop_back();
    return std::move(text_);
  }

 private:
  std::uint32_t left_;
  bool is_found_ = false;
  std::string text_;
};

// A file never has more bytes here than it said that it has.
bool read_until(int descriptor, std::int64_t size, LinePicker& line) {
  std::array<char, std::size_t{64} << 10> piece = {};
  while (size > 0) {
    const auto wanted =
        static_cast<std::size_t>(std::min(size, static_cast<std::int64_t>(piece.size())));
    const ssize_t got = ::read(descriptor, piece.data(), wanted);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!line.add({piece.data(), static_cast<std::size_t>(got)})) return true;
    size -= got;
  }
  return true;
}

void write_line(const std::optional<SourceLine>& line, JsonWriter& out) {
  if (!line) return out.null();
  out.begin_object();
  out.key("text");
  line->problem.empty() ? out.text(line->text) : out.null();
  out.key("problem");
  line->problem.empty() ? out.null() : out.word(line->problem);
  out.key("newer");
  out.boolean(line->is_newer);
  out.end_object();
}

}  // namespace

std::string SourceLine::words() const {
  std::string words;
  if (!problem.empty()) {
    words += "(";
    words += problem;
    words += ")";
    return words;
  }
  words += "| ";
  words += shown_text(text);
  if (is_newer) words += "   (the file was changed after the request)";
  return words;
}

SourceLine source_line(std::string_view file, std::uint32_t number, std::int64_t seconds) {
  SourceLine found;
  const std::string path(file);
  if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
    found.problem = "is no file";
    return found;
  }
  // What is opened may do something, if it is a device: it is looked at before and after.
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    found.problem = "is not on this machine";
    return found;
  }
  if (!S_ISREG(status.st_mode)) {
    found.problem = "is no regular file";
    return found;
  }
  const Descriptor opened(path);
  if (opened.number() < 0) {
    found.problem = "may not be read";
  } else if (::fstat(opened.number(), &status) != 0 || !S_ISREG(status.st_mode)) {
    found.problem = "is no regular file";
  } else {
    LinePicker line(number);
    const std::int64_t size = std::min<std::int64_t>(status.st_size, largest);
    if (!read_until(opened.number(), size, line)) {
      found.problem = "cannot be read";
    } else if (!line.is_found()) {
      found.problem = status.st_size > largest ? "is too large" : "has no such line any more";
    }
    found.text = std::move(line).text();
    found.is_newer = status.st_mtime > seconds;
  }
  return found;
}

NodeSource::NodeSource(const Trace& trace, bool is_asked_for) : is_asked_for_(is_asked_for) {
  const Node::Base request = trace.node(0);
  if (request.begin().has_timestamp()) seconds_ = request.begin().timestamp().seconds;
}

std::optional<SourceLine> NodeSource::of_call(const Checkpoint::Base& begin) const {
  if (!is_asked_for_ || !begin.has_location()) return std::nullopt;
  return source_line(begin.filename().view(), begin.line_no(), seconds_);
}

std::optional<SourceLine> NodeSource::of_definition(const Checkpoint::Function& function) const {
  if (!is_asked_for_ || !function.is_user()) return std::nullopt;
  return source_line(function.filename().view(), function.line_no(), seconds_);
}

void NodeSource::write(const Checkpoint::Base& begin, const Checkpoint::Function* function,
                       JsonWriter& out) const {
  if (!is_asked_for_) return;
  out.key("source");
  out.begin_object();
  out.key("made_at");
  write_line(of_call(begin), out);
  out.key("defined_in");
  write_line(function != nullptr ? of_definition(*function) : std::nullopt, out);
  out.end_object();
}

}  // namespace CT::Tool
