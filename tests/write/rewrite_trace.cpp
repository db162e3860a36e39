// SPDX-License-Identifier: MIT
//
// rewrite_trace IN OUT [--as-before]   reads a trace and writes it again, through section files
//
// With the option it keeps addresses and the order of texts and descriptors, so OUT is IN byte for
// byte where the format leaves no choice. While it runs, OUT.data and OUT.add-data are a recording
// under way.
#include <fcntl.h>
#include <unistd.h>

#include <QString>
#include <cstdio>
#include <string>
#include <string_view>

#include "rewriter.h"

namespace {

using namespace CT;

int open_new(const std::string& path) {
  constexpr mode_t mode = 0600;
  return ::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
}

// The sections of a recording, gone when it is whole.
struct Recording {
  explicit Recording(const std::string& path)
      : data_path(path + ".data"),
        add_data_path(path + ".add-data"),
        files{open_new(data_path), open_new(add_data_path)} {}
  ~Recording() {
    ::close(files.data);
    ::close(files.add_data);
    ::unlink(data_path.c_str());
    ::unlink(add_data_path.c_str());
  }
  Recording(const Recording&) = delete;
  Recording& operator=(const Recording&) = delete;

  std::string data_path;
  std::string add_data_path;
  Write::SectionFiles files;
};

const char* write_trace(const File& file, const std::string& path, Test::Rewriting how) {
  Write::TraceWriter first(Test::rewriting_options(file, Test::Rewriting::anew));
  Test::Rewriter places(file, first);
  if (how == Test::Rewriting::as_before && !places.write()) return "damaged";

  const Recording recording(path);
  Write::TraceWriter writer(Test::rewriting_options(file, how), recording.files);
  Test::Rewriter rewriter(file, writer);
  if (how == Test::Rewriting::as_before) {
    rewriter.entities().lay_down(places.entities().places());
  }
  if (!rewriter.write()) return "damaged, or the sections cannot be written";
  const int out = open_new(path);
  Write::DescriptorDestination destination(out);
  const bool written = writer.finish(destination);
  return ::close(out) == 0 && written ? nullptr : "cannot be written";
}

}  // namespace

int main(int argc, char** argv) {
  const bool as_before = argc == 4 && std::string_view(argv[3]) == "--as-before";
  if (argc != 3 && !as_before) {
    std::fprintf(stderr, "%s IN OUT [--as-before]\n", argv[0]);
    return 2;
  }
  File file(QString::fromLocal8Bit(argv[1]));
  if (!file.open()) {
    std::fprintf(stderr, "%s: %s\n", argv[1], file.error_message().toLocal8Bit().constData());
    return 2;
  }
  const auto how = as_before ? Test::Rewriting::as_before : Test::Rewriting::anew;
  const char* const why = write_trace(file, argv[2], how);
  if (why != nullptr) std::fprintf(stderr, "%s: %s\n", argv[1], why);
  return why != nullptr ? 2 : 0;
}
