// SPDX-License-Identifier: MIT
//
// TempFolder: a folder of its own for a test, gone with it, and ways to put bytes where CT::File
// can find them: into a file, or into a pipe that somebody writes while the test reads.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <csignal>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace CT::Test {

class TempFolder {
 public:
  TempFolder() {
    if (!folder_.isValid()) throw std::runtime_error("no folder for temporary files");
  }

  QString path(const QString& name) const { return folder_.filePath(name); }

  // Writes a file anew and returns its path.
  QString file(const QString& name, std::string_view bytes) const {
    QFile file(path(name));
    const auto size = static_cast<qint64>(bytes.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), size) != size) {
      throw std::runtime_error("cannot write a temporary file");
    }
    return file.fileName();
  }

 private:
  QTemporaryDir folder_;
};

// A named pipe with a thread that writes `bytes` into it, in pieces of `piece`, as soon as it is
// opened for reading, which must happen. A reader that goes away early is no error.
class PipeWriter {
 public:
  PipeWriter(const QString& path, std::string bytes, std::size_t piece)
      : path_(path.toStdString()), bytes_(std::move(bytes)) {
    std::signal(SIGPIPE, SIG_IGN);
    if (::mkfifo(path_.c_str(), 0600) != 0) throw std::runtime_error("cannot make a pipe");
    thread_ = std::thread([this, piece] { write(piece); });
  }
  ~PipeWriter() {
    thread_.join();
    ::unlink(path_.c_str());
  }
  PipeWriter(const PipeWriter&) = delete;
  PipeWriter& operator=(const PipeWriter&) = delete;

 private:
  void write(std::size_t piece) const {
    const int pipe = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
    std::string_view left = bytes_;
    while (!left.empty()) {
      const ssize_t done = ::write(pipe, left.data(), std::min(piece, left.size()));
      if (done <= 0) break;
      left.remove_prefix(static_cast<std::size_t>(done));
    }
    ::close(pipe);
  }

  std::string path_;
  std::string bytes_;
  std::thread thread_;
};

}  // namespace CT::Test
