// SPDX-License-Identifier: MIT
//
// Calls of TraceWriter, good ones and misuse: what the library reads is what was written, and a
// record that failed is not there. Bytes 0 to 3 say how to write; what follows are the calls.
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "api_world.h"
#include "ctwrite/ct_trace_writer.h"
#include "support.h"
#include "writer_model.h"
#include "writer_words.h"

namespace {

using namespace CT;
using Checkpoint::Type;
using Format::Field;
using Fuzz::number_words;
using Fuzz::text_words;

struct Named {
  Write::Reference reference;
  std::string words;
};

class Program {
 public:
  Program(Fuzz::Moves& moves, const Write::Options& options, const Write::SectionFiles& files)
      : moves_(moves), writer_(options, files), model_(options.limits) {}

  void run();

 private:
  void step();
  void field();
  void value(std::uint8_t kind);
  void begin();
  void end();
  void reference();
  void entity(std::uint8_t kind);
  void check();
  std::string text();
  const Named& any(const std::vector<Named>& of);

  Fuzz::Moves& moves_;
  Write::TraceWriter writer_;
  Fuzz::WriterModel model_;
  const Named none_ = {0, std::string(Fuzz::no_words)};
  std::vector<Named> texts_;
  std::vector<Named> functions_;
  std::vector<Named> classes_;
  std::vector<Named> records_;
  std::vector<std::pair<std::uint32_t, std::string>> expected_;
};

void Program::run() {
  while (!moves_.done()) step();
  writer_.abandon();
  check();
}

// Characters of one to four bytes, such that no text is the marker.
std::string Program::text() {
  static constexpr std::string_view characters[] = {"a", "b", "\xC3\xA4", "\xE2\x82\xAC",
                                                    "\xF0\x9F\x98\x80"};
  std::string text;
  for (std::size_t left = moves_.byte() % 24; left != 0; --left) {
    text += characters[moves_.byte() % std::size(characters)];
  }
  return text;
}

const Named& Program::any(const std::vector<Named>& of) {
  const std::size_t which = moves_.byte() % (of.size() + 1);
  return which == of.size() ? none_ : of[which];
}

void Program::step() {
  const std::uint8_t move = moves_.byte();
  const std::uint8_t kind = move >> 4;
  switch (move & 15) {
    case 0: return begin();
    case 1: return end();
    case 2: return entity(kind);
    case 3: writer_.begin_array(); return model_.begin_array();
    case 4: writer_.end_array(); return model_.end_array();
    case 5: writer_.cut_array(); return model_.value("[ !] ");
    case 6: writer_.cut_rest(); return model_.cut_rest();
    case 7: writer_.arguments(); return model_.field(Field::arguments, {});
    case 8: writer_.abandon(); return model_.abandon();
    case 9:
      Fuzz::expect(writer_.flush() != writer_.is_in_record(), "flushed between records");
      return;
    case 10:
    case 11:
    case 12: return field();
    default: return value(kind);
  }
}

// For what there was no room for there is no reference.
void keep(std::vector<Named>& all, Write::Reference made, const std::string& words) {
  if (made != 0) all.push_back({made, words});
}

void Program::entity(std::uint8_t kind) {
  const std::string name = text();
  const bool shared = (kind & 1) != 0;
  if (kind < 8) {
    const Write::Reference made = shared ? writer_.text(name) : writer_.new_text(name);
    keep(texts_, made, text_words(name));
  } else if (kind < 12) {
    const Write::ClassInfo info = {.type = static_cast<std::uint8_t>(1 + moves_.byte() % 2),
                                   .name = writer_.text(name),
                                   .flags = moves_.number(),
                                   .file = writer_.text(name),
                                   .line = moves_.number()};
    std::string words = "class " + text_words(name) + number_words(info.flags);
    if (info.type == 2) words += text_words(name) + number_words(info.line);
    keep(classes_, shared ? writer_.class_entry(info) : writer_.new_class_entry(info), words);
  } else {
    const Named& of = any(classes_);
    const Write::FunctionInfo info = {.type = static_cast<std::uint8_t>(1 + moves_.byte() % 2),
                                      .name = writer_.text(name),
                                      .class_entry = of.reference,
                                      .flags = moves_.number(),
                                      .file = 0,
                                      .line = moves_.number()};
    std::string words = "function " + text_words(name) + of.words + number_words(info.flags);
    if (info.type == 2) words += none_.words + number_words(info.line);
    keep(functions_, shared ? writer_.function(info) : writer_.new_function(info), words);
  }
}

void Program::begin() {
  const auto type = static_cast<Type>(moves_.byte() % 20);
  const std::uint8_t presence = moves_.byte();
  Write::Common common;
  std::string words;
  if ((presence & 1) != 0) {
    common.timestamp = Write::Timestamp{moves_.number(), moves_.number()};
    words += number_words(static_cast<std::int64_t>(common.timestamp->seconds)) +
             number_words(common.timestamp->nanoseconds);
  }
  if ((presence & 2) != 0) {
    common.memory = moves_.number();
    words += number_words(static_cast<std::int64_t>(*common.memory));
  }
  if ((presence & 4) != 0) {
    const Named& file = any(texts_);
    common.location = Write::Location{file.reference, moves_.number()};
    words += file.words + number_words(common.location->line);
  }
  writer_.begin(type, common);
  model_.begin(type, words);
}

void Program::reference() {
  const Checkpoint::TypeInfo& type = model_.type();
  const bool is_end = type.role == Checkpoint::Role::span_end;
  const bool is_call = type.type == Type::FUNCTION_CALL || type.type == Type::METHOD_CALL;
  const Named& to = any(is_end ? records_ : is_call ? functions_ : texts_);
  if (model_.is_open() && is_call && to.reference == 0) model_.lacks_function();
  writer_.reference(to.reference);
  model_.field(Field::reference, to.words);
}

// As a rule the one that comes next.
void Program::field() {
  const std::uint8_t choice = moves_.byte();
  const Field kind = choice < 240 ? model_.coming_field() : static_cast<Field>(choice & 7);
  const std::uint32_t number = moves_.number();
  switch (kind) {
    case Field::none: return;
    case Field::reference: return reference();
    case Field::u32: writer_.u32(number); return model_.field(kind, number_words(number));
    case Field::cut_text: {
      const std::string line = text();
      writer_.cut_text(line, number);
      return model_.field(kind, model_.kept(line, number));
    }
    case Field::inline_text: {
      const std::string line = text();
      writer_.inline_text(line);
      return model_.field(kind, line.empty() ? none_.words : text_words(line));
    }
    case Field::header_line: {
      const std::string line = text();
      const auto operation = static_cast<std::uint8_t>(number);
      writer_.header_line(operation, line, number);
      const bool has_line = operation < Format::first_operation_without_line;
      return model_.field(
          kind, number_words(operation) + (has_line ? model_.kept(line, number) : none_.words));
    }
    case Field::value:
    case Field::arguments: return value(choice & 15);
  }
}

void Program::value(std::uint8_t kind) {
  const std::uint32_t number = moves_.number();
  const std::int64_t handle = std::int64_t{number} - 5;
  switch (kind) {
    case 0: writer_.undef(); return model_.value("undef ");
    case 1: writer_.null(); return model_.value("null ");
    case 2: writer_.boolean(false); return model_.value("false ");
    case 3: writer_.boolean(true); return model_.value("true ");
    case 4: {
      writer_.real(number / 4.0);
      const auto bits = std::bit_cast<std::int64_t>(number / 4.0);
      return model_.value("real " + number_words(bits));
    }
    case 5: {
      const Named& of = any(classes_);
      writer_.object(of.reference, number);
      return model_.value("object " + of.words + number_words(number));
    }
    case 6: {
      const Named& of = any(texts_);
      writer_.resource(of.reference, handle);
      return model_.value("resource " + of.words + number_words(handle));
    }
    case 7:
    case 8: {
      const std::string line = text();
      writer_.string(line, number);
      return model_.value(model_.kept(line, number));
    }
    default: writer_.integer(handle); return model_.value("long " + number_words(handle));
  }
}

void Program::end() {
  const std::uint64_t size = writer_.data_size();
  const std::optional<std::string> words = model_.end();
  const std::optional<Write::Reference> written = writer_.end();
  Fuzz::expect(written.has_value() == (writer_.error() == Write::Error::none), "an error or none");
  if (writer_.error() == Write::Error::section_too_large) {
    Fuzz::expect(writer_.options().limits.section_bytes != Write::Limits::none, "it has a limit");
    return;
  }
  Fuzz::expect(written.has_value() == words.has_value(), "a record fails when it has to");
  if (!written) return Fuzz::expect(writer_.data_size() == size, "nothing is left of it");
  const std::uint64_t offset = *written - writer_.options().orig_data;
  Fuzz::expect(offset == size, "it lies at the end");
  records_.push_back({*written, number_words(static_cast<std::int64_t>(offset))});
  expected_.emplace_back(static_cast<std::uint32_t>(offset), *words);
}

void Program::check() {
  std::vector<unsigned char> bytes(writer_.file_size());
  Write::MemoryDestination destination(bytes);
  Fuzz::expect(writer_.finish(destination), "a file comes of it, of the size that was told");
  File file{QString()};
  Fuzz::expect(file.open(bytes.data(), bytes.size()), "the file opens");
  const auto ours = Fuzz::words_of(file);
  Fuzz::expect(ours.size() == expected_.size(), "as many records as were written");
  for (std::size_t i = 0; i != ours.size(); ++i) {
    Fuzz::expect(ours[i].first == expected_[i].first, "where they were written");
    Fuzz::expect_equal("a record", ours[i].second, expected_[i].second);
  }
}

std::uint32_t limit_of(std::uint8_t byte) { return byte < 128 ? Write::Limits::none : byte - 128U; }

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::silence_log();
  Fuzz::Moves moves(Fuzz::as_text(data, size));
  const std::uint8_t form = moves.byte();
  Write::Options options;
  options.big_endian = (form & 1) != 0;
  options.limits = {.string_bytes = limit_of(moves.byte()),
                    .array_elements = limit_of(moves.byte()),
                    .depth = limit_of(moves.byte()),
                    .section_bytes = (form & 2) != 0 ? 300 : Write::Limits::none};
  if ((form & 4) == 0) {
    Program(moves, options, {}).run();
    return 0;
  }
  const Write::SectionFiles files = {::memfd_create("data", MFD_CLOEXEC),
                                     ::memfd_create("add_data", MFD_CLOEXEC),
                                     (form & 8) != 0 ? std::size_t{0} : std::size_t{64}};
  Program(moves, options, files).run();
  ::close(files.data);
  ::close(files.add_data);
  return 0;
}
