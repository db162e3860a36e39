// SPDX-License-Identifier: MIT
//
// Where a run's output goes: standard output or a file. It owns the file's descriptor and closes it
// on every path; what could not be written is remembered, so that no lost byte looks like success.
//
// A file is emptied only once it is open and known to be none of the files that the run has read;
// until then everything in it stays.
#pragma once

#include <QString>
#include <functional>
#include <string_view>

#include "codetrace/render/ct_writer.h"
#include "tools/common/ct_descriptors.h"

namespace CT::Tool {

class Output final : public CT::Sink {
 public:
  // Whether an open descriptor is of a file that was read.
  using IsInput = std::function<bool(int descriptor)>;

  // An empty name is standard output. Borrows `standard`.
  Output(QString name, StandardDescriptors& standard)
      : name_(std::move(name)), standard_(standard) {}
  ~Output() override { close(); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // Creates or empties the file. False, with error_message(), if that cannot be done, or if it is
  // an input.
  bool open(const IsInput& is_input);

  // Hands bytes to the system at once. False, with error_message(), if not all of them were taken.
  bool write(std::string_view bytes) override;

  // Closes the file, which may be when a device says that it is full. False if anything was lost.
  bool close();

  // Where the bytes go; negative before open() and after close().
  [[nodiscard]] int descriptor() const { return descriptor_; }
  // What went wrong first.
  [[nodiscard]] const QString& error_message() const { return error_; }
  // The reader of a pipe has left, as `head` does: nobody waits for a message.
  [[nodiscard]] bool is_pipe_closed() const { return pipe_closed_; }
  // As messages call it.
  [[nodiscard]] QString name() const { return name_.isEmpty() ? standard_output_name() : name_; }
  [[nodiscard]] static QString standard_output_name() { return QStringLiteral("standard output"); }

 private:
  bool open_file(const IsInput& is_input);
  [[nodiscard]] bool wait_for_room() const;
  bool fail(int error);
  bool refuse();

  QString name_;
  StandardDescriptors& standard_;
  int descriptor_ = -1;
  QString error_;
  bool pipe_closed_ = false;
};

}  // namespace CT::Tool
