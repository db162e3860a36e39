// SPDX-License-Identifier: MIT
//
// Any trace that opens is redacted: the copy opens, has the same nodes with the same times, memory
// and kinds, is no longer damaged, and holds nothing of a secret that the trace had in a text.
#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>
#include <vector>

#include "codetrace/codetrace.h"
#include "codetrace/render/ct_document.h"
#include "ctmeasure/ct_measures.h"
#include "ctredact/ct_redactor.h"
#include "ctredact/ct_secret_set.h"
#include "support.h"

namespace {

using namespace CT;

// Of the trace's own bytes: what stands in the middle of it is declared to be secret.
std::string some_value(std::string_view bytes) {
  constexpr std::size_t size = 8;
  if (bytes.size() < FileHeader::disk_size + 4 * size) return "not there";
  const std::size_t room = bytes.size() - FileHeader::disk_size - size;
  const auto chosen = static_cast<unsigned char>(bytes[bytes.size() - 1]);
  const std::string value(bytes.substr(FileHeader::disk_size + chosen * room / 256, size));
  // Bytes of numbers and references stay; a text is what people write.
  const bool is_text =
      std::all_of(value.begin(), value.end(), [](char c) { return c > ' ' && c < 127; });
  return is_text ? value : "not there";
}

std::string copy_of(const Trace& trace, const Redact::Options& options) {
  Redact::Rules rules;
  Fuzz::expect(rules.add(Redact::built_in_rules()).empty(), "the built-in rules are rules");
  Redact::Redactor redactor(trace, rules, options);
  Fuzz::expect(redactor.run(), "a copy can be made");
  std::vector<unsigned char> bytes(static_cast<std::size_t>(redactor.writer().file_size()));
  Write::MemoryDestination destination(bytes);
  Fuzz::expect(redactor.write(destination), "a copy can be written");
  const void* const begin = bytes.data();
  return {static_cast<const char*>(begin), bytes.size()};
}

void open(const std::string& bytes, Trace& trace) {
  const void* const begin = bytes.data();
  Fuzz::expect(trace.open(static_cast<const unsigned char*>(begin), bytes.size()), "a copy opens");
}

// What people read of a trace, up to a limit.
std::string shown(const Trace& trace) {
  class TextSink final : public Sink {
   public:
    bool write(std::string_view bytes) override {
      constexpr std::size_t most = std::size_t{4} << 20;
      text.append(bytes);
      return text.size() <= most;
    }
    std::string text;
  };
  TextSink sink;
  StreamWriter out(sink);
  write_text(trace.storage(), out);
  static_cast<void>(out.flush());
  return sink.text;
}

bool is_word(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return std::isalnum(c) != 0; });
}

void expect_same(const Trace& trace, const Trace& copy) {
  Fuzz::expect(trace.node_count() == copy.node_count(), "as many nodes");
  Fuzz::expect(trace.functions().size() == copy.functions().size(), "as many functions");
  Fuzz::expect(trace.classes().size() == copy.classes().size(), "as many classes");
  const Measures before(trace);
  const Measures after(copy);
  for (NodeId id = 0; id != trace.node_count(); ++id) {
    Fuzz::expect(trace.type(id) == copy.type(id), "a node of the same type");
    Fuzz::expect(trace.parent(id) == copy.parent(id), "a node at the same place");
    const bool was_open = trace.end_offset(id) == Storage::no_end;
    Fuzz::expect(was_open == (copy.end_offset(id) == Storage::no_end), "a node ends as it did");
    Fuzz::expect(before[id].total_ns == after[id].total_ns, "a node takes the same time");
    Fuzz::expect(before[id].start_ns == after[id].start_ns, "a node starts when it did");
    Fuzz::expect(before.own(id).memory == after.own(id).memory, "a node takes the same memory");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Trace trace;
  if (!trace.open(data, size)) return 0;
  const std::string_view bytes = Fuzz::as_text(data, size);
  std::string shown_strictly;  // numbers, structure, and names of what is built in
  for (const bool is_strict : {true, false}) {
    Redact::Options options;
    options.key = "fuzz";
    options.is_strict = is_strict;
    options.values = {some_value(bytes)};
    const std::string made = copy_of(trace, options);
    Trace copy;
    open(made, copy);
    expect_same(trace, copy);
    if (is_strict) {
      shown_strictly = shown(copy);
      continue;
    }
    const std::string& value = options.values[0];
    if (is_word(value) && shown_strictly.find(value) == std::string::npos) {
      Fuzz::expect(shown(copy).find(value) == std::string::npos, "a secret is gone");
    }
    const std::string again = copy_of(copy, options);
    Trace third;
    open(again, third);
    expect_same(copy, third);
  }
  return 0;
}
