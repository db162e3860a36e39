// SPDX-License-Identifier: MIT
#include "kcommon/k_logger.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace {

std::string_view word(KLogger::Level level) {
  static constexpr std::array<std::string_view, 5> words = {"error", "warning", "notice", "info",
                                                            "debug"};
  return words[static_cast<std::size_t>(std::clamp<int>(level, 0, words.size() - 1))];
}

}  // namespace

KLogger::StdOutSink::StdOutSink(FILE* /*out*/, FILE* err, FILE* /*log*/) : err_(err) {}

void KLogger::StdOutSink::println(Level level, const char* file, int line, std::string_view text) {
  constexpr Level first_with_place = 3;
  std::string message = fmt::format("{}: {}", word(level), text);
  if (level >= first_with_place) message += fmt::format(" ({}:{})", file, line);
  message += '\n';
  // One write per line, so that lines of processes that share the stream do not mix.
  std::fwrite(message.data(), 1, message.size(), err_);
}

KLogger& KLogger::instance() noexcept {
  // Made in place, so it needs no memory, and never destroyed, so the last destructor may log.
  alignas(KLogger) static std::byte place[sizeof(KLogger)];
  static auto* const logger = new (place) KLogger;
  return *logger;
}

void KLogger::destroyInstance() noexcept {
  KLogger& logger = instance();
  logger.max_verbosity_ = first_max_verbosity;
  // Taken out first: a sink that logs while it is destroyed finds none.
  const std::vector<std::unique_ptr<Sink>> sinks = std::exchange(logger.sinks_, {});
}

void KLogger::addSink(std::unique_ptr<Sink> sink, Level level) {
  if (sink == nullptr) return;
  sinks_.push_back(std::move(sink));
  max_verbosity_ = std::max(max_verbosity_, level);
}

void KLogger::increaseMaxVerbosity(std::string_view steps) {
  constexpr Level highest = std::numeric_limits<Level>::max();
  unsigned count = 1;
  if (!steps.empty()) {
    const char* const end = steps.data() + steps.size();
    const auto [stopped, error] = std::from_chars(steps.data(), end, count);
    if (error == std::errc::result_out_of_range)
      count = highest;
    else if (error != std::errc() || stopped != end)
      return;
  }
  const auto room = static_cast<unsigned>(highest - max_verbosity_);
  max_verbosity_ = static_cast<Level>(max_verbosity_ + static_cast<int>(std::min(count, room)));
}

void KLogger::println(Level level, const char* file, int line, std::string_view text) {
  if (!enabled(level)) return;
  for (const std::unique_ptr<Sink>& sink : sinks_) sink->println(level, file, line, text);
}

void KLogger::format_line(Level level, const char* file, int line, fmt::string_view format,
                          fmt::format_args args) {
  std::string text;
  try {
    text = fmt::vformat(format, args);
  } catch (const fmt::format_error& error) {
    text = fmt::format("Failed to format message: {}", error.what());
  }
  println(level, file, line, text);
}
