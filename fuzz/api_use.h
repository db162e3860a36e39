// SPDX-License-Identifier: MIT
//
// Everything that a program can ask of one thing of the library, asked. What has to hold of the
// answers is expected; most of it is that nothing is read that is not there.
#pragma once

#include <string>

#include "codetrace/codetrace.h"
#include "support.h"

namespace CT::Fuzz {

// Fails once it has been given more than so many bytes, and then must not be asked again.
class FailingSink final : public Sink {
 public:
  explicit FailingSink(std::size_t limit) : left_(limit) {}

  bool write(std::string_view bytes) override {
    expect(!failed_, "no call of a sink that failed");
    failed_ = bytes.size() > left_;
    left_ -= failed_ ? 0 : bytes.size();
    return !failed_;
  }
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  std::size_t left_;
  bool failed_ = false;
};

// Puts every finding in words.
class Words final : public FindingSink {
 public:
  void report(const Finding& finding) override {
    text_.clear();
    write_text(finding, text_);
    expect(text_.size() != 0, "a finding in words");
  }

 private:
  MemoryWriter text_;
};

// Calls `write` with a writer whose sink takes so many bytes.
template <class Write>
void write_to_failing(std::size_t limit, Write write) {
  FailingSink sink(limit);
  StreamWriter out(sink);
  write(out);
  expect(out.flush() != sink.failed() && out.ok() != sink.failed(), "a writer fails with its sink");
}

// The value in all its forms; those that are text are returned.
std::string use(const Checkpoint::KVal& value);
// The value and what lies in it, up to a hundred of them.
void use(const Checkpoint::ValueRef& value);
void use(const Checkpoint::String& text);
void use(const Fields& fields);
void use(const Checkpoint::Function& function);
void use(const Checkpoint::ClassEntry& entry);
// As a record of its own class, and of all classes that it is not of.
void use(const Checkpoint::Base& record);
void use(const Node::Base& node);
// The place of every node, as a trace tells it.
void use_structure(const Trace& trace);

}  // namespace CT::Fuzz
