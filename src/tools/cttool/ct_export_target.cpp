// SPDX-License-Identifier: MIT
#include "tools/cttool/ct_export_target.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "tools/common/ct_failure.h"

namespace CT::Tool {

namespace {

bool is_same_file(const std::string& name, const std::string& trace) {
  struct stat a = {};
  struct stat b = {};
  return stat(name.c_str(), &a) == 0 && S_ISREG(a.st_mode) &&
         (trace == "-" ? fstat(STDIN_FILENO, &b) : stat(trace.c_str(), &b)) == 0 &&
         a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// To close a file that was only read; nothing can be lost then.
struct CloseFile {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

}  // namespace

bool choose_output(const std::string& wanted, const std::string& usual, std::string& name) {
  name = wanted == "-" ? std::string() : wanted;
  if (!wanted.empty() || isatty(STDOUT_FILENO) != 1) return true;
  name = usual;
  if (access(name.c_str(), F_OK) != 0) return true;
  std::fprintf(stderr, "%s is there already; -o %s writes it anew\n", name.c_str(), name.c_str());
  return false;
}

ExportTarget::ExportTarget(std::string name, bool is_zipped, Session& session)
    : name_(std::move(name)), is_zipped_(is_zipped), session_(session) {}

QString ExportTarget::shown_name() const {
  return name_.empty() ? Output::standard_output_name() : QString::fromStdString(name_);
}

bool ExportTarget::refuse(const QString& reason) {
  fail(open_output_failed, shown_name(), reason);
  return false;
}

bool ExportTarget::open(const std::string& trace) {
  if (!name_.empty()) {
    if (is_same_file(name_, trace)) {
      return refuse(QStringLiteral("it is the Code Trace file itself"));
    }
    if (!whole_.emplace(name_).begin()) return refuse(qt_error_string(errno));
  }
  output_.emplace(whole_ ? QString::fromStdString(whole_->path()) : QString(), session_.standard);
  if (!output_->open([](int) { return false; })) return refuse(output_->error_message());
  if (is_zipped_) gzip_.emplace(*output_);
  writer_.emplace(is_zipped_ ? static_cast<Sink&>(*gzip_) : *output_);
  return true;
}

std::string ExportTarget::file() const {
  return whole_ && !whole_->is_in_place() ? whole_->path() : std::string();
}

int ExportTarget::copy(const std::string& path) {
  constexpr std::size_t piece = std::size_t{64} * 1024;
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (file == nullptr) return errno;
  std::vector<char> bytes(piece);
  std::size_t size = 0;
  while (writer_->ok() && (size = std::fread(bytes.data(), 1, piece, file.get())) != 0) {
    writer_->put(std::string_view(bytes.data(), size));
  }
  return std::ferror(file.get()) != 0 ? EIO : 0;
}

int ExportTarget::finish(int status) {
  writer_->flush();
  if (gzip_ && writer_->ok()) static_cast<void>(gzip_->finish());
  if (!output_->close()) {
    if (!output_->is_pipe_closed()) fail(write_failed, shown_name(), output_->error_message());
    return failed;
  }
  if (whole_ && !whole_->finish()) {
    fail(write_failed, shown_name(), qt_error_string(errno));
    return failed;
  }
  return status;
}

int ExportTarget::give_up(const std::string& reason) {
  fail(write_failed, shown_name(), QString::fromStdString(reason));
  return failed;
}

}  // namespace CT::Tool
