// SPDX-License-Identifier: MIT
#include "ctwrite/ct_trace_writer.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include "ctwrite/ct_file_header.h"

namespace CT::Write {

// The base is given a section that is made after it; it looks at it only when a record begins.
TraceWriter::TraceWriter(const Options& options) noexcept : TraceWriter(options, SectionFiles()) {}

TraceWriter::TraceWriter(const Options& options, const SectionFiles& files) noexcept
    : RecordWriter(data_, Encoding(options.big_endian), options.limits),
      options_(options),
      data_(files.data, GrowingSection::Kept::until_written),
      add_data_section_(files.add_data, GrowingSection::Kept::all),
      add_data_(add_data_section_, encoding(), options.orig_add_data, options.limits.section_bytes),
      buffer_(files.data < 0 ? std::numeric_limits<std::size_t>::max() : files.buffer) {}

template <class Make>
Reference TraceWriter::make(const Make& make) noexcept {
  if (entity_error_ != Error::none) return 0;
  if (const std::optional<Reference> made = make()) return *made;
  error_ = entity_error_ = add_data_.error();
  payload().fail(entity_error_);
  return 0;
}

Reference TraceWriter::text(std::string_view text) noexcept {
  return make([&] { return add_data_.text(text, Sharing::shared); });
}
Reference TraceWriter::function(const FunctionInfo& info) noexcept {
  return make([&] { return add_data_.function(info, Sharing::shared); });
}
Reference TraceWriter::class_entry(const ClassInfo& info) noexcept {
  return make([&] { return add_data_.class_entry(info, Sharing::shared); });
}
Reference TraceWriter::new_text(std::string_view text) noexcept {
  return make([&] { return add_data_.text(text, Sharing::own); });
}
Reference TraceWriter::new_function(const FunctionInfo& info) noexcept {
  return make([&] { return add_data_.function(info, Sharing::own); });
}
Reference TraceWriter::new_class_entry(const ClassInfo& info) noexcept {
  return make([&] { return add_data_.class_entry(info, Sharing::own); });
}
Reference TraceWriter::raw_add_data(std::span<const unsigned char> bytes) noexcept {
  return make([&] { return add_data_.raw(bytes); });
}

void TraceWriter::begin(Checkpoint::Type type, const Common& common) noexcept {
  if (is_in_record()) return payload().fail(Error::record_open);
  open_record(Checkpoint::type_info(type), common);
  if (type >= Checkpoint::Type::INVALID) payload().fail(Error::unknown_type);
  payload().fail(entity_error_);
}

std::optional<Reference> TraceWriter::end() noexcept {
  Error error = is_in_record() ? complete_record() : Error::no_record;
  if (entity_error_ != Error::none && error == Error::none) error = entity_error_;
  entity_error_ = Error::none;
  if (!succeeded(error)) {
    payload().take_back();
    return std::nullopt;
  }
  return commit();
}

void TraceWriter::abandon() noexcept {
  payload().take_back();
  entity_error_ = Error::none;
}

std::optional<Reference> TraceWriter::copy(std::span<const unsigned char> checkpoint) noexcept {
  if (is_in_record()) {
    payload().fail(Error::record_open);
    return std::nullopt;
  }
  if (checkpoint.size() < Format::header_word_size ||
      checkpoint.size() - Format::header_word_size != encoding().payload_size(checkpoint.data())) {
    error_ = Error::no_checkpoint;
    return std::nullopt;
  }
  payload().open();
  const std::span<const unsigned char> body = checkpoint.subspan(Format::header_word_size);
  unsigned char* const to = payload().room(body.size());
  if (!succeeded(payload().error())) {
    payload().take_back();
    return std::nullopt;
  }
  std::memcpy(payload().header_word(), checkpoint.data(), Format::header_word_size);
  if (!body.empty()) std::memcpy(to, body.data(), body.size());
  return commit();
}

// A record that has to go into the file and cannot is taken back like any other that failed.
std::optional<Reference> TraceWriter::commit() noexcept {
  const std::uint64_t place = data_.size();
  const std::size_t before = data_.bytes().size();
  payload().commit();
  if (data_.pending() >= buffer_ && !flush()) {
    data_.bytes().resize(before);
    return std::nullopt;
  }
  return options_.orig_data + place;
}

// What records refer to goes before them.
bool TraceWriter::flush() noexcept {
  if (is_in_record()) return succeeded(Error::record_open);
  return add_data_section_.flush() && data_.flush() ? succeeded(Error::none) : lost();
}

bool TraceWriter::finish(Destination& destination) noexcept {
  if (is_in_record()) return succeeded(Error::record_open);
  const FileHeader header = encode_header(options_, data_.size(), add_data_section_.size());
  const bool written = destination.write(header) && data_.copy_to(destination) &&
                       add_data_section_.copy_to(destination);
  return written ? succeeded(Error::none) : lost();
}

std::uint64_t TraceWriter::file_size() const noexcept {
  return file_header_size + data_.size() + add_data_section_.size();
}

bool TraceWriter::succeeded(Error error) noexcept {
  error_ = error;
  return error == Error::none;
}

bool TraceWriter::lost() noexcept {
  system_error_ = errno;
  return succeeded(Error::lost);
}

}  // namespace CT::Write
