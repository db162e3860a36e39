// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_pager.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace CT::Tool {

namespace {

constexpr int no_such_command = 127;  // as a shell says it

struct Pipe {
  int ends[2] = {-1, -1};  // to read from, to write to

  Pipe() = default;
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close_end(0);
    close_end(1);
  }
  bool open() { return pipe2(ends, O_CLOEXEC) == 0; }
  void close_end(int end) {
    if (ends[end] >= 0) close(ends[end]);
    ends[end] = -1;
  }
};

// Ctrl-C and the like; also before the pager runs, for it may be quick.
void set_keys(void (*handler)(int)) {
  for (const int number : {SIGINT, SIGQUIT}) std::signal(number, handler);
}

// Behind fork(): nothing here allocates. What cannot be run is told through `failure`.
[[noreturn]] void become(char* const* words, int input, int failure) {
  for (const int number : {SIGPIPE, SIGXFSZ}) std::signal(number, SIG_DFL);
  set_keys(SIG_DFL);
  if (dup2(input, STDIN_FILENO) >= 0) execvp(words[0], words);
  const char mark = 0;
  static_cast<void>(!write(failure, &mark, 1));
  _exit(no_such_command);
}

int wait_for(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return 0;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 0;
}

}  // namespace

std::vector<std::string> pager_command(const char* wanted) {
  if (wanted == nullptr) return {"less", "-FRX"};
  const std::string command = wanted;
  if (command.find_first_of("|&;<>()$`\\\"'*?[#~=%\n") != std::string::npos) {
    return {"sh", "-c", command};
  }
  std::istringstream in(command);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  if (words.size() == 1 && words[0] == "cat") return {};
  return words;
}

bool Pager::start() {
  std::vector<std::string> command = pager_command(std::getenv("PAGER"));
  if (command.empty()) return false;
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (std::string& word : command) words.push_back(word.data());
  words.push_back(nullptr);
  Pipe text;
  Pipe failure;
  if (!text.open() || !failure.open()) return false;
  set_keys(SIG_IGN);
  const pid_t child = fork();
  if (child < 0) {
    set_keys(SIG_DFL);
    return false;
  }
  if (child == 0) become(words.data(), text.ends[0], failure.ends[1]);
  failure.close_end(1);
  char mark = 0;
  ssize_t failed = 0;
  do {
    failed = read(failure.ends[0], &mark, 1);
  } while (failed < 0 && errno == EINTR);
  if (failed != 0 || dup2(text.ends[1], STDOUT_FILENO) < 0) {
    text.close_end(1);
    wait_for(child);
    set_keys(SIG_DFL);
    return false;
  }
  child_ = child;
  return true;
}

bool Pager::finish() {
  if (!is_running()) return true;
  const int status = wait_for(child_);
  child_ = -1;
  set_keys(SIG_DFL);
  return status != no_such_command;
}

Pager::~Pager() { finish(); }

}  // namespace CT::Tool
