// SPDX-License-Identifier: MIT
#include "tools/common/ct_whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace CT::Tool {

namespace {

constexpr std::array signals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// What a signal removes; empty for nothing. Written only while those signals are held back.
std::array<char, PATH_MAX> unfinished{};

void remove_and_end(int signal) {
  if (unfinished[0] != '\0') unlink(unfinished.data());
  raise(signal);  // SA_RESETHAND: this one ends the process
}

class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : signals) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_{};
};

// Those that somebody ignores, as nohup does, stay ignored.
void watch_signals() {
  for (const int signal : signals) {
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_DFL) continue;
    action.sa_handler = remove_and_end;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    sigaction(signal, &action, nullptr);
  }
}

// The file that a name leads to, through links; the name itself for one that is not there.
std::string target_of(const std::string& name) {
  const std::unique_ptr<char, decltype(&std::free)> real(realpath(name.c_str(), nullptr),
                                                         &std::free);
  return real != nullptr ? real.get() : name;
}

mode_t usual_mode() {
  constexpr mode_t everybody = 0666;
  const mode_t mask = umask(0);
  umask(mask);
  return everybody & ~mask;
}

}  // namespace

WholeFile::~WholeFile() {
  if (!is_begun_ || is_in_place_) return;
  unlink(path_.c_str());
  forget();
}

bool WholeFile::begin() {
  name_ = target_of(name_);
  struct stat old = {};
  const bool exists = stat(name_.c_str(), &old) == 0;
  if (exists && !S_ISREG(old.st_mode)) {
    path_ = name_;
    is_in_place_ = true;
    errno = EISDIR;
    return !S_ISDIR(old.st_mode);
  }
  path_ = name_.substr(0, name_.rfind('/') + 1) + ".cttool-XXXXXX";
  errno = ENAMETOOLONG;
  if (path_.size() >= unfinished.size()) return false;
  watch_signals();
  const SignalsHeld held;
  const int descriptor = mkstemp(path_.data());
  if (descriptor < 0) return false;
  path_.copy(unfinished.data(), path_.size());
  unfinished[path_.size()] = '\0';
  is_begun_ = true;
  constexpr mode_t permissions = 0777;
  const bool is_made =
      fchmod(descriptor, exists ? old.st_mode & permissions : usual_mode()) == 0 || errno == EPERM;
  return (close(descriptor) == 0 || errno == EINTR) && is_made;
}

bool WholeFile::finish() {
  if (is_in_place_) return true;
  const SignalsHeld held;
  if (std::rename(path_.c_str(), name_.c_str()) != 0) return false;
  forget();
  is_begun_ = false;
  return true;
}

void WholeFile::forget() { unfinished[0] = '\0'; }

}  // namespace CT::Tool
