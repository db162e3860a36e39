// SPDX-License-Identifier: MIT
#include "process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace CT::Test {

namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Only calls that are safe between fork and exec.
[[noreturn]] void run_child(const char* program, char* const* words, const char* folder,
                            const char* out, const char* err) {
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
  const int input = open("/dev/null", O_RDONLY);
  const int output = open(out, flags, 0600);
  const int error = open(err, flags, 0600);
  if (dup2(input, STDIN_FILENO) >= 0 && dup2(output, STDOUT_FILENO) >= 0 &&
      dup2(error, STDERR_FILENO) >= 0 && chdir(folder) == 0) {
    execv(program, words);
  }
  _exit(127);
}

}  // namespace

ProcessResult run_process(const std::filesystem::path& program,
                          const std::vector<std::string>& words,
                          const std::filesystem::path& folder) {
  // Files, not pipes: the outputs may be of any size and are read when the program has ended.
  const TemporaryFolder outputs;
  const std::string out = outputs.path() / "out";
  const std::string err = outputs.path() / "err";
  std::vector<std::string> copies = words;
  std::vector<char*> pointers;
  for (std::string& word : copies) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  setenv("LC_ALL", "C.UTF-8", 1);

  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child == 0) {
    run_child(program.c_str(), pointers.data(), folder.c_str(), out.c_str(), err.c_str());
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) fail("waitpid");
  }
  ProcessResult result;
  result.standard_output = read_file(out);
  result.standard_error = read_file(err);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

TemporaryFolder::TemporaryFolder() {
  std::string name = std::filesystem::temp_directory_path() / "codetrace-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) fail(name);
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) fail(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write_file(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  if (!file.flush()) fail(path);
}

}  // namespace CT::Test
