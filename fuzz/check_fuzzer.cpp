// SPDX-License-Identifier: MIT
//
// Any bytes as a file: what a check says of it agrees with what the reader does, is the same each
// time, and lies within the file. And the bytes as a plan for a trace that is whole, of which a
// check finds nothing lost.
#include <algorithm>
#include <string>
#include <vector>

#include "checked.h"
#include "codetrace/ct_trace.h"
#include "support.h"

namespace {

using namespace CT;
using Check::Defect;
using Check::Level;
using Check::Result;
using Test::CheckpointDraft;
using Test::Fields;

constexpr std::size_t limit = 3;

bool is_same(const Summary& a, const Summary& b) {
  return a.records == b.records && a.skipped == b.skipped && a.damaged == b.damaged &&
         a.rejected == b.rejected && a.repaired == b.repaired && a.is_broken == b.is_broken;
}

void check_reader(const std::string& bytes, const Result& result) {
  Trace trace;
  const void* const begin = bytes.data();
  const bool is_open = trace.open(static_cast<const unsigned char*>(begin), bytes.size());
  Fuzz::expect(is_open == (result.count(Level::fatal) == 0), "what is fatal is refused");
  if (!is_open) return;
  Fuzz::expect(is_same(result.reader, trace.summary()), "the reader counts the same");
  Fuzz::expect(trace.summary().is_clean() || !result.is_clean(),
               "what the reader says is a defect");
}

void check_listing(const std::string& bytes, const Result& result) {
  std::uint64_t last = 0;
  for (const Defect& defect : result.defects) {
    Fuzz::expect(defect.file_offset >= last, "defects are in the order of the file");
    Fuzz::expect(defect.file_offset <= bytes.size(), "a defect lies in the file");
    last = defect.file_offset;
  }
  for (const Check::CodeInfo& info : Check::codes) {
    const auto listed = static_cast<std::uint64_t>(
        std::count_if(result.defects.begin(), result.defects.end(),
                      [&](const Defect& defect) { return defect.code == info.code; }));
    const std::uint64_t wanted = std::min<std::uint64_t>(limit, result.count(info.code));
    Fuzz::expect(listed == wanted, "of each code some are listed");
  }
}

void check_file(const std::string& bytes) {
  const Result result = Test::checked(bytes, {limit, {}});
  check_reader(bytes, result);
  check_listing(bytes, result);
  const Result again = Test::checked(bytes, {limit, {}});
  Fuzz::expect(result.counts == again.counts, "it is the same each time");
  for (std::size_t i = 0; i != result.defects.size(); ++i) {
    Fuzz::expect_equal("what it says", result.defects[i].what, again.defects.at(i).what);
  }
}

// A trace without a fault, as the bytes want it.
class Plan {
 public:
  Plan(const std::uint8_t* data, std::size_t size)
      : at_(data), end_(data + size), trace_(next() % 2 == 0 ? little : big) {
    function_ = trace_.function({.name = "f", .file = "/f.php", .line = 1});
    builtin_ = trace_.function({.type = Test::internal_type, .name = "g"});
    class_ = trace_.klass({.name = "C", .file = "/c.php", .line = 2});
    text_ = trace_.text("text");
  }

  std::string build() {
    add(CheckpointDraft::startup(text_, text_, 0, text_));
    while (at_ != end_) step();
    while (!open_.empty()) end();
    add(CheckpointDraft::shutdown());
    return trace_.build();
  }

 private:
  static constexpr auto little = Test::ByteOrder::little;
  static constexpr auto big = Test::ByteOrder::big;
  enum class Kind { call, include, body };
  struct Open {
    Test::Ref begin;
    Kind kind;
  };

  std::uint8_t next() { return at_ == end_ ? std::uint8_t{0} : *at_++; }

  Fields value() {
    switch (next() % 9) {
      case 0: return Test::value::null();
      case 1: return Test::value::boolean(true);
      case 2: return Test::value::integer(next());
      case 3: return Test::value::real(next());
      case 4: return Test::value::string(std::string(next() % 20, 'x'));
      case 5: return Test::value::cut_string("x", 2U + next());
      case 6: return Test::value::object(class_, next());
      case 7: return Test::value::resource(text_, next());
      default: return Test::value::nest(next(), Test::value::map({}));
    }
  }

  Test::Ref add(CheckpointDraft draft) {
    const std::uint8_t common = next();
    if ((common & 1) != 0) draft.time(1000 + clock_++, common);
    if ((common & 2) != 0) draft.memory(common);
    if ((common & 4) != 0) draft.location(text_, common);
    return trace_.add(draft);
  }

  void begin() {
    switch (next() % 4) {
      case 0: open_.push_back({add(CheckpointDraft::include_call(text_)), Kind::include}); break;
      case 1:
        open_.push_back(
            {add(CheckpointDraft::sapi_write_start(Fields().cut_string("body"))), Kind::body});
        break;
      case 2:
        open_.push_back({add(CheckpointDraft::method_call(function_, value())), Kind::call});
        break;
      default:
        open_.push_back(
            {add(CheckpointDraft::function_call(builtin_, {value(), value()})), Kind::call});
    }
  }

  void end() {
    const auto [begin, kind] = open_.back();
    open_.pop_back();
    const bool threw = next() % 4 == 0;
    switch (kind) {
      case Kind::call:
        add(threw ? CheckpointDraft::function_exception(begin, value())
                  : CheckpointDraft::function_return(begin, value()));
        break;
      case Kind::include:
        add(threw ? CheckpointDraft::include_exception(begin, value())
                  : CheckpointDraft::include_return(begin));
        break;
      case Kind::body: add(CheckpointDraft::sapi_write_end(begin)); break;
    }
  }

  void step() {
    switch (next() % 8) {
      case 0:
      case 1:
      case 2: begin(); break;
      case 3: add(CheckpointDraft::sapi_flush()); break;
      case 4: add(CheckpointDraft::sapi_header(next() % 3, Fields().cut_string("A: b"))); break;
      case 5: add(CheckpointDraft::script_error(next(), "message")); break;
      case 6: add(CheckpointDraft::user_event(text_, next())); break;
      default:
        if (!open_.empty()) end();
    }
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
  Test::TraceBuilder trace_;
  Test::Ref function_ = 0;
  Test::Ref builtin_ = 0;
  Test::Ref class_ = 0;
  Test::Ref text_ = 0;
  std::uint64_t clock_ = 0;
  std::vector<Open> open_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const void* const bytes = data;
  check_file(std::string(static_cast<const char*>(bytes), size));
  const std::string whole = Plan(data, size).build();
  const Result result = Test::checked(whole);
  for (const Defect& defect : result.defects) {
    if (code_info(defect.code).level != Level::odd) Fuzz::expect_equal("whole", defect.what, "");
  }
  check_file(whole);
  return 0;
}
