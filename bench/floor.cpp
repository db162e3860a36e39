// SPDX-License-Identifier: MIT
//
// floor FILE BYTES   the least that any reader has to do: read the file into fresh memory, then
// copy
//                    as many bytes as an output has through a buffer of 64 KiB to standard output
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

int main(int argc, char** argv) {
  struct stat info = {};
  const int file = argc == 3 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
  if (file < 0 || fstat(file, &info) != 0) return 2;
  const auto size = static_cast<std::size_t>(info.st_size);
  const std::unique_ptr<char[]> bytes(new char[size]);
  for (std::size_t at = 0; at < size;) {
    const ssize_t got = read(file, bytes.get() + at, size - at);
    if (got <= 0) return 1;
    at += static_cast<std::size_t>(got);
  }
  static char buffer[64 * 1024];
  std::size_t at = 0;
  for (std::size_t left = std::strtoull(argv[2], nullptr, 10); left != 0;) {
    if (at == size) at = 0;
    const std::size_t piece = std::min({left, sizeof buffer, size - at});
    std::memcpy(buffer, bytes.get() + at, piece);
    for (std::size_t done = 0; done < piece;) {
      const ssize_t put = write(STDOUT_FILENO, buffer + done, piece - done);
      if (put <= 0) return 1;
      done += static_cast<std::size_t>(put);
    }
    at += piece;
    left -= piece;
  }
  return 0;
}
