// SPDX-License-Identifier: MIT
//
// A program that knows nothing but ctwrite: it is compiled without Qt's headers and without
// exceptions, and linked with ctwrite alone.
//
// write_without_qt OUT          writes a small trace
// write_without_qt --no-memory  writes until memory ends, and goes on behind that
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <string_view>

#include "ctwrite/ct_trace_writer.h"

namespace {

using CT::Checkpoint::Type;
using namespace CT::Write;

void write_request(TraceWriter& writer) {
  const Reference url = writer.text("/hi");
  const Reference file = writer.text("/h.php");
  writer.begin(Type::STARTUP, {.timestamp = Timestamp{1700000000, 250000000}, .memory = 4096});
  writer.reference(url);
  writer.reference(url);
  writer.reference(0);
  writer.reference(writer.text("GET"));
  writer.end();

  const FunctionInfo greet = {
      .type = CT::Format::user_defined, .name = writer.text("greet"), .file = file, .line = 3};
  writer.begin(Type::FUNCTION_CALL, {.location = Location{file, 9}});
  writer.reference(writer.function(greet));
  writer.string("hi", 10);
  writer.begin_array();
  writer.integer(0);
  writer.integer(7);
  writer.end_array();
  writer.object(writer.class_entry({.name = writer.text("A")}), 1);
  const std::optional<Reference> call = writer.end();

  writer.begin(Type::FUNCTION_RETURN);
  writer.reference(call.value_or(0));
  writer.boolean(true);
  writer.end();
  writer.begin(Type::SHUTDOWN);
  writer.end();
}

int write_file(const char* name) {
  TraceWriter writer({.request_id = 7, .php_api_version = 20220829});
  write_request(writer);
  constexpr mode_t mode = 0600;
  const int out = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  DescriptorDestination destination(out);
  if (!writer.finish(destination) || ::close(out) != 0) {
    const std::string_view why = describe(writer.error());
    std::fprintf(stderr, "%s: %.*s\n", name, static_cast<int>(why.size()), why.data());
    return 2;
  }
  return 0;
}

// Whether both sections tell when memory ends, and lose nothing of what they had.
bool outlives_memory() {
  constexpr rlim_t most = 64U << 20;
  const rlimit limit = {most, most};
  if (::setrlimit(RLIMIT_AS, &limit) != 0) return false;
  static char body[1U << 20];
  TraceWriter writer{Options()};
  std::uint64_t records = 0;
  while (true) {
    writer.begin(Type::SAPI_WRITE_START);
    writer.cut_text({body, sizeof body});
    if (!writer.end()) break;
    ++records;
  }
  constexpr std::uint64_t record_size = 4 + 4 + sizeof body;
  if (writer.error() != Error::no_memory || records < 8) return false;
  for (char& c : body) c = 'x';
  while (writer.new_text({body, sizeof body}) != 0) {
  }
  if (writer.error() != Error::no_memory || writer.add_data_size() % (sizeof body + 1) != 0) {
    return false;
  }
  writer.abandon();
  return writer.data_size() == records * record_size && writer.text("there is room for this") != 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  if (std::string_view(argv[1]) != "--no-memory") return write_file(argv[1]);
  return outlives_memory() ? 0 : 1;
}
