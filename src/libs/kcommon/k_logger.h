// SPDX-License-Identifier: MIT
// The process-wide log: messages with a level, filtered by a maximum verbosity, handed to sinks.
//
// The logger owns its sinks. Levels: 0 error, 1 warning, 2 notice, 3 progress of the run, 4 and
// above detail. A message is formatted only when its level is admitted and a sink is there to take
// it, so a silent log costs a comparison. A message that cannot be formatted is replaced by the
// reason; nothing here fails, and nothing throws but the memory for a text or a sink when there is
// none, which leaves the logger as it was. Not thread-safe: one thread logs.
//
// Callers write `klog(1, "{} node with ID {} is lost", name, id)`.
#pragma once

#include <fmt/core.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "k_export.h"

class CODETRACE_EXPORT KLogger {
 public:
  using Level = std::int8_t;

  // Where admitted lines go.
  class Sink {
   public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;
    virtual void println(Level level, const char* file, int line, std::string_view text) = 0;
  };

  // One line per message: a word for the level, the text and, from level 3 up, the place in the
  // source. Borrows the streams. A line that cannot be written is lost without a word.
  class StdOutSink final : public Sink {
   public:
    // Every level goes to `err`, so that standard output carries nothing but the tool's own output.
    StdOutSink(FILE* out, FILE* err, FILE* log);
    void println(Level level, const char* file, int line, std::string_view text) override;

   private:
    FILE* err_;
  };

  // The one logger: at first without sinks, admitting levels 0 and 1. It is there at any time, from
  // the first constructor of the process to the last destructor, and takes no memory to be there.
  static KLogger& instance() noexcept;
  // Destroys the sinks and starts afresh. The logger stays where it is. Sinks that are left when
  // the process ends are not destroyed.
  static void destroyInstance() noexcept;

  // Takes the sink over, unless it is null; the maximum verbosity becomes at least `level`.
  void addSink(std::unique_ptr<Sink> sink, Level level);
  // Raises the maximum verbosity by a decimal number of steps, by one if `steps` is empty and not
  // at all if it is no such number. It stays at 127 once it is there.
  void increaseMaxVerbosity(std::string_view steps);
  [[nodiscard]] Level maxVerbosity() const { return max_verbosity_; }
  // Whether a message of this level would reach a sink.
  [[nodiscard]] bool enabled(Level level) const {
    return level <= max_verbosity_ && !sinks_.empty();
  }

  // Logs a finished text.
  void println(Level level, const char* file, int line, std::string_view text);
  // Logs a text with "{}" placeholders.
  template <class... Args>
  void printf(Level level, const char* file, int line, fmt::string_view format,
              const Args&... args) {
    if (enabled(level)) format_line(level, file, line, format, fmt::make_format_args(args...));
  }

 private:
  KLogger() = default;
  void format_line(Level level, const char* file, int line, fmt::string_view format,
                   fmt::format_args args);

  static constexpr Level first_max_verbosity = 1;

  std::vector<std::unique_ptr<Sink>> sinks_;
  Level max_verbosity_ = first_max_verbosity;
};

// A format together with the place of the call, noted by the compiler as the text is passed.
struct CODETRACE_EXPORT KLogFormat {
  KLogFormat(const char* format, const char* at_file = __builtin_FILE(),
             int at_line = __builtin_LINE())
      : text(format), file(at_file), line(at_line) {}

  const char* text;
  const char* file;
  int line;
};

// Logs to the process-wide logger, naming the caller's source file and line.
template <class... Args>
void klog(KLogger::Level level, KLogFormat format, const Args&... args) {
  KLogger::instance().printf(level, format.file, format.line, format.text, args...);
}
