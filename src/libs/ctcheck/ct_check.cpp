// SPDX-License-Identifier: MIT
#include "ctcheck/ct_check.h"

#include <utility>

#include "codetrace/model/ct_view.h"
#include "ctcheck/ct_add_data_pass.h"
#include "ctcheck/ct_pairing.h"

namespace CT::Check {

namespace {

// From one checkpoint to the next through DATA, as far as it is there.
class DataWalk {
 public:
  DataWalk(const FileLayout& layout, DefectList& defects, Result& result)
      : layout_(layout),
        defects_(defects),
        result_(result),
        use_(layout, defects),
        records_(layout, use_, defects),
        pairing_(layout, defects, result.reader) {}

  void run();

 private:
  std::optional<Frame> frame_at(std::uint32_t offset);
  void visit(const Frame& frame);
  void end_zeros();
  void skip(const Frame& frame);
  void stop(Code code, std::uint64_t offset, std::uint8_t type, std::uint64_t wanted);

  const FileLayout& layout_;
  DefectList& defects_;
  Result& result_;
  AddDataUse use_;
  RecordCheck records_;
  Pairing pairing_;
  bool is_whole_ = true;
  // Header words of nothing but zeros that follow each other, up to here.
  std::uint32_t zeros_ = 0;
  std::uint32_t zeros_at_ = 0;
};

void DataWalk::run() {
  std::uint64_t offset = 0;
  while (offset < layout_.data.size()) {
    const std::optional<Frame> frame = frame_at(static_cast<std::uint32_t>(offset));
    if (!frame) break;
    pairing_.see(frame->offset);
    ++result_.checkpoints;
    visit(*frame);
    offset += Format::header_word_size + std::uint64_t{frame->size};
  }
  end_zeros();
  is_whole_ = is_whole_ && !layout_.is_data_cut() && !layout_.is_add_data_cut();
  pairing_.finish();
  AddDataPass(layout_, use_, defects_).run(is_whole_);
}

// Nothing where DATA ends within the checkpoint.
std::optional<Frame> DataWalk::frame_at(std::uint32_t offset) {
  const std::uint64_t left = layout_.data.size() - offset;
  if (left < Format::header_word_size) {
    stop(Code::word_end, offset, 0, Format::header_word_size);
    return std::nullopt;
  }
  const std::uint32_t word = normalise_header(layout_.data.data() + offset, layout_.big_endian());
  const Frame frame = {
      offset, static_cast<std::uint8_t>(word & Format::type_mask),
      static_cast<std::uint8_t>(word >> Format::presence_shift & Format::presence_mask),
      word >> Format::size_shift};
  if (frame.size <= left - Format::header_word_size) return frame;
  stop(Code::payload_end, offset, frame.code, frame.size);
  return std::nullopt;
}

// Where the file ends before DATA does, that is what is wrong, and not this checkpoint.
void DataWalk::stop(Code code, std::uint64_t offset, std::uint8_t type, std::uint64_t wanted) {
  is_whole_ = false;
  if (layout_.is_data_cut()) return;
  result_.reader.is_broken = true;
  Spot spot = {Part::data, offset};
  if (code == Code::payload_end) {
    spot.type = Checkpoint::type_of_code(type);
    spot.record = offset;
  }
  defects_.add(code, spot, [&] {
    const std::uint64_t left = layout_.data.size() - offset;
    const bool is_word = code == Code::word_end;
    Words words{is_word ? "a header word has " : "the payload has "};
    words.what.append(counted(wanted, "byte")).append(", and DATA has ");
    words.what.append(counted(is_word ? left : left - Format::header_word_size, "byte"));
    words.what.append(" more");
    words.cost = counted(left, "byte");
    words.cost.append(left == 1 ? " at the end of DATA is" : " at the end of DATA are");
    words.cost.append(" not read");
    return words;
  });
}

// Zeros are what a hole in a file is filled with, so a run of them is one defect.
void DataWalk::end_zeros() {
  constexpr std::uint32_t fewest = 4;
  const std::uint32_t count = std::exchange(zeros_, 0);
  const Spot first = {Part::data, zeros_at_};
  if (count >= fewest) {
    defects_.add(Code::zeros, first, [&] {
      Words words{counted(std::uint64_t{count} * Format::header_word_size, "zero")};
      words.what.append(" stand where checkpoints should be");
      words.cost = "they count as " + counted(count, "checkpoint") + " without payload";
      return words;
    });
    return;
  }
  for (std::uint32_t i = 0; i != count; ++i) {
    records_.check({zeros_at_ + i * Format::header_word_size, 0, 0, 0});
  }
}

void DataWalk::visit(const Frame& frame) {
  if (frame.code == 0 && frame.presence == 0 && frame.size == 0) {
    if (zeros_++ == 0) zeros_at_ = frame.offset;
    ++result_.reader.records;
    return;
  }
  end_zeros();
  if (type_info(Checkpoint::type_of_code(frame.code)).role == Checkpoint::Role::none) {
    return skip(frame);
  }
  const Verdict verdict = records_.check(frame);
  ++result_.reader.records;
  if (verdict.is_damaged) ++result_.reader.damaged;
  if (verdict.is_valid) pairing_.add(frame.offset, verdict);
}

void DataWalk::skip(const Frame& frame) {
  ++result_.reader.skipped;
  const Checkpoint::Type type = Checkpoint::type_of_code(frame.code);
  const bool is_crash = type == Checkpoint::Type::CRASH;
  const Spot spot = {Part::data, frame.offset, type, frame.offset};
  defects_.add(is_crash ? Code::crash : Code::type, spot, [&] {
    Words words{"the checkpoint is of type " + std::to_string(frame.code)};
    words.cost = "it is skipped, with " + counted(frame.size, "byte");
    return words;
  });
}

}  // namespace

std::uint64_t Result::count(Level level) const {
  std::uint64_t sum = 0;
  for (const CodeInfo& info : codes) {
    if (info.level == level) sum += count(info.code);
  }
  return sum;
}

Result check(std::span<const unsigned char> bytes, const Options& options) {
  Result result;
  result.bytes = bytes.size();
  DefectList defects(result, options.limit);
  if (!options.archive_damage.empty()) {
    defects.add(Code::archive, {}, [&] { return Words{"the archive: " + options.archive_damage}; });
  }
  const std::optional<FileLayout> layout = find_layout(bytes, defects);
  if (!layout) {
    defects.finish(0, 0);
    return result;
  }
  DataWalk(*layout, defects, result).run();
  report_size(*layout, result.checkpoints, defects);
  defects.finish(FileHeader::disk_size, layout->add_data_at());
  return result;
}

}  // namespace CT::Check
