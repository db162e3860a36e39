// SPDX-License-Identifier: MIT
#include "measure.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <optional>
#include <stdexcept>

namespace CT::Bench {

namespace {

void limit(decltype(RLIMIT_CPU) resource, std::uint64_t most) {
  const rlimit both = {most, most};
  setrlimit(resource, &both);
}

void redirect(int from, int to) {
  dup2(from, to);
  if (from != to) close(from);
}

[[noreturn]] void become(const std::vector<std::string>& command, const Limits& limits, int output,
                         const char* error_file) {
  redirect(open("/dev/null", O_RDONLY), STDIN_FILENO);
  redirect(output >= 0 ? output : open(limits.sink, O_WRONLY | O_CREAT | O_TRUNC, 0600),
           STDOUT_FILENO);
  const char* errors = error_file != nullptr ? error_file : "/dev/null";
  redirect(open(errors, O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, limits.seconds);
  if (limits.memory != 0) limit(RLIMIT_AS, limits.memory);
  alarm(2 * limits.seconds);
  std::vector<char*> words;
  for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  execv(words[0], words.data());
  _exit(127);
}

std::uint64_t read_up_to(int descriptor, std::uint64_t most) {
  static char buffer[1 << 16];
  std::uint64_t done = 0;
  while (done < most) {
    const ssize_t got =
        read(descriptor, buffer, std::min<std::uint64_t>(sizeof buffer, most - done));
    if (got <= 0) break;
    done += static_cast<std::uint64_t>(got);
  }
  return done;
}

// Keeps this process and the ones it starts on the processor where it runs. What a pipe costs
// depends on whether its ends share one, and that would be left to chance.
class SameProcessor {
 public:
  SameProcessor() {
    sched_getaffinity(0, sizeof before_, &before_);
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<unsigned>(sched_getcpu()), &one);
    sched_setaffinity(0, sizeof one, &one);
  }
  ~SameProcessor() { sched_setaffinity(0, sizeof before_, &before_); }
  SameProcessor(const SameProcessor&) = delete;
  SameProcessor& operator=(const SameProcessor&) = delete;

 private:
  cpu_set_t before_ = {};
};

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

std::string meaning(int signal) {
  if (signal == SIGPIPE) return {};
  if (signal == SIGXCPU || signal == SIGALRM || signal == SIGKILL) return "stopped at the limit";
  return std::string("crashed: ") + strsignal(signal);
}

}  // namespace

Usage run(const std::vector<std::string>& command, const Limits& limits, const char* error_file) {
  std::optional<SameProcessor> same_processor;
  if (limits.output != 0) same_processor.emplace();
  int ends[2] = {-1, -1};
  if (limits.output != 0 && pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) become(command, limits, ends[1], error_file);
  Usage usage;
  if (limits.output != 0) {
    close(ends[1]);
    usage.output = read_up_to(ends[0], limits.output);
    close(ends[0]);
  }
  int status = 0;
  rusage cost = {};
  if (wait4(child, &status, 0, &cost) != child) throw std::runtime_error("no child");
  usage.seconds = seconds(cost.ru_utime) + seconds(cost.ru_stime);
  usage.mebibytes = static_cast<double>(cost.ru_maxrss) / 1024;
  if (WIFEXITED(status)) usage.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) usage.failure = meaning(WTERMSIG(status));
  return usage;
}

}  // namespace CT::Bench
