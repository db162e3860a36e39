// SPDX-License-Identifier: MIT
#include "ctreport/ct_functions_json.h"

#include <cstddef>

#include "codetrace/render/ct_text.h"
#include "ctexport/ct_frames.h"

namespace CT::Report {

void write_functions(const Trace& trace, const std::vector<ProfileRow>& rows, TextNumbers& files,
                     Writer& out) {
  JsonWriter json(out, JsonWriter::Form::compact);
  const auto column = [&](const char* name, auto put) {
    json.key(name);
    json.begin_array();
    std::size_t at = 0;
    for (const Checkpoint::Function& function : trace.functions()) {
      json.element();
      put(function, rows[at++]);
    }
    json.end_array();
  };
  using Function = Checkpoint::Function;
  json.begin_object();
  column("name", [&](const Function& function, const ProfileRow&) {
    out.put('"');
    Export::put_function_name(function, out, put_json_text);
    out.put('"');
  });
  column("file", [&](const Function& function, const ProfileRow&) {
    const Checkpoint::String file = function.filename();
    json.number(file.is_empty() ? std::int64_t{-1} : std::int64_t{files.of({}, file)});
  });
  column("line", [&](const Function& function, const ProfileRow&) {
    json.number(function.filename().is_empty() ? std::int64_t{0}
                                               : std::int64_t{function.line_no()});
  });
  column("builtin", [&](const Function& function, const ProfileRow&) {
    json.number(std::int64_t{function.is_user() ? 0 : 1});
  });
  column("calls", [&](const Function&, const ProfileRow& row) { json.number(row.calls); });
  column("total_ns", [&](const Function&, const ProfileRow& row) { json.number(row.total_ns); });
  column("own_ns", [&](const Function&, const ProfileRow& row) { json.number(row.own_ns); });
  column("own_memory",
         [&](const Function&, const ProfileRow& row) { json.number(row.own_memory); });
  json.end_object();
}

}  // namespace CT::Report
