// SPDX-License-Identifier: MIT
#include "ctcheck/ct_check_codes.h"

namespace CT::Check {

namespace {

constexpr std::string_view refused = "the reader refuses the file";
constexpr std::string_view left_out = "it is left out";
constexpr std::string_view left_out_silently = "it is left out without a word";
constexpr std::string_view nothing = "nothing is left out";

}  // namespace

// clang-format off
constexpr std::array<CodeInfo, code_count> codes = {{
    {Code::header, "CT-HEADER", Level::fatal, "The file is shorter than a header.", refused},
    {Code::magic, "CT-MAGIC", Level::fatal, "The file does not begin with `CT`.", refused},
    {Code::version, "CT-VERSION", Level::fatal, "The format's version is another than 1.", refused},
    {Code::size, "CT-SIZE", Level::fatal, "The file is longer or shorter than its header says.", refused},
    {Code::archive, "CT-ARCHIVE", Level::lost, "The archive that the trace came in is damaged or ends too early.", "what comes behind the damage is not there"},
    {Code::flags, "CT-FLAGS", Level::odd, "The header has flags that mean nothing.", nothing},
    {Code::origin, "CT-ORIGIN", Level::odd, "By the header, both sections lay at the same addresses, or beyond the last one.", nothing},
    {Code::word_end, "CT-WORD-END", Level::lost, "DATA ends within a header word.", "the bytes from here to the end of DATA are not read"},
    {Code::payload_end, "CT-PAYLOAD-END", Level::lost, "DATA ends within a payload.", "the bytes from here to the end of DATA are not read"},
    {Code::type, "CT-TYPE", Level::lost, "A checkpoint is of a type that does not exist.", "it is skipped"},
    {Code::crash, "CT-CRASH", Level::lost, "A checkpoint is of the type CRASH, of which nobody knows the fields.", "it is skipped"},
    {Code::no_payload, "CT-NO-PAYLOAD", Level::lost, "A checkpoint that needs a payload has none.", left_out_silently},
    {Code::zeros, "CT-ZEROS", Level::lost, "Sixteen zeros or more stand where checkpoints should be.", "they count as checkpoints without payload"},
    {Code::field_end, "CT-FIELD-END", Level::lost, "A payload ends within a field.", "this field and those behind it are not there"},
    {Code::text_length, "CT-TEXT-LENGTH", Level::lost, "A text is said to be longer than what is left of the payload.", "the text is not there, nor what stands behind it"},
    {Code::value_end, "CT-VALUE-END", Level::lost, "A payload ends within a value.", "the value is undef, and those behind it are not there"},
    {Code::count, "CT-COUNT", Level::lost, "An array or a list of arguments is said to have more values than what is left of the payload can hold.", "only values that lie whole in the payload are there"},
    {Code::text_nul, "CT-TEXT-NUL", Level::odd, "A text has no NUL at its end.", "it ends with its payload or its section"},
    {Code::text_short, "CT-TEXT-SHORT", Level::lost, "A text in a payload has a NUL before its end.", "it ends there"},
    {Code::count_below, "CT-COUNT-BELOW", Level::odd, "The count of an array is negative.", "the array is empty"},
    {Code::value_type, "CT-VALUE-TYPE", Level::lost, "A value is of a type that does not exist.", "it is undef, and what follows is read from the next byte on, most likely out of step"},
    {Code::cut_size, "CT-CUT-SIZE", Level::odd, "A text is marked as cut, and its original size is not larger than what is there.", "it counts as whole"},
    {Code::bytes_left, "CT-BYTES-LEFT", Level::odd, "A payload has bytes behind its last field.", "they are ignored"},
    {Code::header_operation, "CT-HEADER-OP", Level::odd, "A SAPI_HEADER is of an operation that does not exist.", "it is shown without a header line"},
    {Code::ref_range, "CT-REF-RANGE", Level::lost, "A reference leads outside of ADD DATA.", "what it means is not there"},
    {Code::ref_none, "CT-REF-NONE", Level::lost, "A call names no function.", "the call is left out without a word, and its end finds no begin"},
    {Code::ref_middle, "CT-REF-MIDDLE", Level::odd, "A reference to a text leads into the middle of something else.", "what stands there is shown"},
    {Code::descriptor_end, "CT-DESC-END", Level::lost, "ADD DATA ends within a descriptor.", "the function or class is not there"},
    {Code::descriptor_type, "CT-DESC-TYPE", Level::odd, "A descriptor is neither of a script's function or class nor of a built-in one.", "it counts as built in"},
    {Code::overlap, "CT-OVERLAP", Level::odd, "A descriptor overlaps another one or a text.", "each is read as it stands"},
    {Code::utf8, "CT-UTF8", Level::odd, "A text is not UTF-8.", "each byte that is part of no character is shown as U+FFFD"},
    {Code::unused, "CT-UNUSED", Level::odd, "Nothing refers to bytes of ADD DATA.", "they are never shown"},
    {Code::no_startup, "CT-NO-STARTUP", Level::lost, "There is no STARTUP.", "every checkpoint is left out"},
    {Code::before_startup, "CT-BEFORE-STARTUP", Level::lost, "A checkpoint stands before STARTUP.", left_out},
    {Code::startup_twice, "CT-STARTUP-TWICE", Level::lost, "There is another STARTUP.", left_out},
    {Code::after_shutdown, "CT-AFTER-SHUTDOWN", Level::lost, "A checkpoint stands behind SHUTDOWN.", left_out},
    {Code::no_shutdown, "CT-NO-SHUTDOWN", Level::lost, "There is no SHUTDOWN.", "the request has no end"},
    {Code::no_end, "CT-NO-END", Level::lost, "What began has no end.", "how it ended and how long it took is not known"},
    {Code::no_begin, "CT-NO-BEGIN", Level::lost, "What ends has no begin.", left_out},
    {Code::end_kind, "CT-END-KIND", Level::lost, "An end is of another kind than the begin that it refers to.", "what began ends there, but the result is not shown"},
    {Code::end_twice, "CT-END-TWICE", Level::lost, "What has ended ends once more.", "every later checkpoint is left out"},
    {Code::end_late, "CT-END-LATE", Level::lost, "Something ends after what was around it.", "every later checkpoint is left out"},
    {Code::time_back, "CT-TIME-BACK", Level::odd, "The clock went back.", "times around it are not what they seem"},
    {Code::time_range, "CT-TIME-RANGE", Level::odd, "A time stamp has a second or more in its nanoseconds.", "it is taken as it stands"},
    {Code::memory, "CT-MEMORY", Level::odd, "Less than no memory is in use: it ran backwards through zero.", "it is shown as a huge figure"},
}};
// clang-format on

static_assert([] {
  for (std::size_t row = 0; row != codes.size(); ++row) {
    if (codes[row].code != static_cast<Code>(row)) return false;
  }
  return true;
}());

const CodeInfo& code_info(Code code) { return codes[static_cast<std::size_t>(code)]; }

std::string_view level_name(Level level) {
  constexpr std::array<std::string_view, level_count> names = {"fatal", "lost", "odd"};
  return names[static_cast<std::size_t>(level)];
}

}  // namespace CT::Check
