// SPDX-License-Identifier: MIT
//
// Maps whose keys are hard to sort, or have texts that are far longer than their bytes.
#include <bit>

#include "bytes.h"
#include "worst_cases.h"

namespace CT::Bench {

namespace {

using Test::CheckpointDraft;
using Test::Ref;
using Test::TraceBuilder;

void add_returned(TraceBuilder& trace, const Bytes& value) {
  trace.add(CheckpointDraft::startup());
  const Ref start = trace.add(CheckpointDraft::function_call(trace.function({.name = "f"})));
  trace.add(CheckpointDraft::function_return(start, value.fields()));
}

void map_keys(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) {
    // An odd factor shuffles the numbers of eight digits without meeting one twice.
    const std::string digits = std::to_string(100000000 + i * 7654321 % 100000000);
    bytes.string(std::string_view(digits).substr(1)).null();
  }
  add_returned(trace, bytes);
}

void equal_keys(std::size_t n, TraceBuilder& trace) {
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) bytes.integer(5).null();
  add_returned(trace, bytes);
}

// Sixty-four keys that differ only in their last element.
void array_keys(std::size_t n, TraceBuilder& trace) {
  constexpr std::size_t keys = 64;
  Bytes bytes;
  bytes.array(keys);
  for (std::size_t key = 0; key != keys; ++key) {
    bytes.array(n + 1);
    for (std::size_t i = 0; i != n; ++i) bytes.null().null();
    bytes.integer(key * 37 % keys).null().null();
  }
  add_returned(trace, bytes);
}

// Objects of one class, whose name has 28 bytes for each of them: 16 MiB for the full payload.
void add_objects(std::size_t n, TraceBuilder& trace, bool same_handle) {
  const std::string name(28 * n, 'n');
  const Ref class_entry = trace.klass({.name = name});
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) {
    bytes.object(class_entry, same_handle ? 1 : static_cast<std::uint32_t>(i)).null();
  }
  add_returned(trace, bytes);
}
void object_keys_same(std::size_t n, TraceBuilder& trace) { add_objects(n, trace, true); }
void object_keys(std::size_t n, TraceBuilder& trace) { add_objects(n, trace, false); }

// Resources whose type names are one text from each of its bytes on. Their values are undef, so
// that JSON shows none of them.
void add_overlapping(std::size_t n, TraceBuilder& trace, const std::string& text) {
  const Ref name = trace.text(text);
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) bytes.resource(name + i * 7919 % n, 1).undef();
  add_returned(trace, bytes);
}

// They differ where the shorter one ends.
void overlapping_keys(std::size_t n, TraceBuilder& trace) {
  add_overlapping(n, trace, std::string(16 * n, 'n'));
}

std::string random_letters(std::size_t size) {
  std::string text;
  std::uint64_t random = 1;
  while (text.size() != size) {
    random = random * 6364136223846793005U + 1442695040888963407U;
    text += static_cast<char>('a' + (random >> 33) % 26);
  }
  return text;
}

// They differ in one of their first letters.
void differing_keys(std::size_t n, TraceBuilder& trace) {
  add_overlapping(n, trace, random_letters(16 * n));
}

// Resources with one of two names that are equal byte for byte and stand apart.
void twin_keys(std::size_t n, TraceBuilder& trace) {
  const std::string text(16 * n, 'n');
  const Ref names[] = {trace.new_text(text), trace.new_text(text)};
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) bytes.resource(names[i % 2], 1).undef();
  add_returned(trace, bytes);
}

// A map of n keys whose texts are equal or nearly so: each is an array of sixteen resources, whose
// names are chosen by the bits of the key's number from two. Their values are undef, so that JSON
// shows none of them.
void add_chosen_names(std::size_t n, TraceBuilder& trace, const Ref (&names)[2]) {
  constexpr std::size_t pairs = 8;
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) {
    bytes.array(pairs);
    for (std::size_t bit = 0; bit != 2 * pairs; ++bit) bytes.resource(names[i >> bit & 1], 1);
    bytes.undef();
  }
  add_returned(trace, bytes);
}

// One name at two places, 100 bytes for each key.
void twin_names_in_keys(std::size_t n, TraceBuilder& trace) {
  const std::string text(100 * n, 'n');
  add_chosen_names(n, trace, {trace.new_text(text), trace.new_text(text)});
}

// Two names that differ in their last words, of which a polynomial modulo 2^64 cannot tell one from
// the other: those of 18 letters for one base, which the reduction of a lattice finds.
void colliding_keys(std::size_t n, TraceBuilder& trace) {
  const std::string text(100 * n, 'n');
  add_chosen_names(
      n, trace,
      {trace.new_text(text + "aaaaabadacaadgfaaa"), trace.new_text(text + "cfcabaaaaacaaaagec")});
}

// The same for every odd base: the sequence of Thue and Morse, and its complement.
void thue_morse_keys(std::size_t n, TraceBuilder& trace) {
  constexpr unsigned letters = 2048;
  std::string words[2];
  for (unsigned i = 0; i != letters; ++i) {
    words[0] += std::popcount(i) % 2 == 0 ? 'a' : 'b';
    words[1] += std::popcount(i) % 2 == 0 ? 'b' : 'a';
  }
  const std::string text(100 * n, 'n');
  add_chosen_names(n, trace, {trace.new_text(text + words[0]), trace.new_text(text + words[1])});
}

// Overlapping names that are printed, of a text that repeats itself: each key begins like many
// others, as far as the shorter one goes.
void late_keys(std::size_t n, TraceBuilder& trace) {
  std::string text = random_letters(100);
  while (text.size() < 16 * n) text += text;
  const Ref name = trace.text(std::string_view(text).substr(0, 16 * n));
  Bytes bytes;
  bytes.array(n);
  for (std::size_t i = 0; i != n; ++i) bytes.resource(name + i * 7919 % n * 16, 1).null();
  add_returned(trace, bytes);
}

// Arrays that differ only in their last element, and one name that is long.
void one_long_name(std::size_t n, TraceBuilder& trace) {
  constexpr std::size_t elements = 250;
  Bytes bytes;
  bytes.array(n + 1);
  bytes.resource(trace.text(std::string(1000, 'n')), 1).null();
  for (std::size_t i = 0; i != n; ++i) {
    bytes.array(elements + 1);
    for (std::size_t element = 0; element != elements; ++element) bytes.null().null();
    bytes.integer(i * 7919 % n).null().null();
  }
  add_returned(trace, bytes);
}

}  // namespace

const std::vector<WorstCase>& key_cases() {
  static const std::vector<WorstCase> cases = {
      {"map_keys", "keys of a map", 599000, "", map_keys},
      {"equal_keys", "keys of a map that are all the same", 838000, "", equal_keys},
      {"array_keys", "elements of each of 64 arrays that are keys", 65000, "", array_keys},
      {"object_keys_same", "keys that are one object with a long class name", 599000, "TD",
       object_keys_same},
      {"object_keys", "keys that are objects of one class with a long name", 599000, "TJD",
       object_keys},
      {"overlapping_keys", "keys that are resources with overlapping names", 200000, "TD",
       overlapping_keys},
      {"differing_keys", "as these, with names that soon differ", 200000, "TD", differing_keys},
      {"twin_keys", "keys that are resources with one name at two places", 200000, "TD", twin_keys},
      {"twin_names_in_keys", "keys with sixteen names, of two that are equal", 30000, "TD",
       twin_names_in_keys},
      {"colliding_keys", "as these, of two that a simple hash takes for equal", 30000, "TD",
       colliding_keys},
      {"thue_morse_keys", "as these, with words that many hashes take for equal", 30000, "TD",
       thue_morse_keys},
      {"late_keys", "keys with overlapping names, printed", 400000, "TJD", late_keys},
      {"one_long_name", "arrays that are keys, and one key with a long name", 15000, "",
       one_long_name},
  };
  return cases;
}

}  // namespace CT::Bench
