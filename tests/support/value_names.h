// SPDX-License-Identifier: MIT
//
// ValueNames: ADD DATA with a few classes and resource names, awkward ones among them, for values
// that refer to them; and references that lead nowhere.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "trace_builder.h"

namespace CT::Test {

struct ValueNames {
  explicit ValueNames(ByteOrder order) : trace(order) {
    for (const char* name : {"A", "App\\B", "\xEF\xBB\xBF%1\xFF"}) {
      classes.push_back(trace.klass({.name = name, .file = "/c.php", .line = 1}));
      known[classes.back()] = name;
    }
    for (const char* name : {"stream", "\xEF\xBB\xBF%2", ""}) {
      resources.push_back(trace.text(name));
      known[resources.back()] = name;
    }
    classes.insert(classes.end(), {0, 1});
    resources.insert(resources.end(), {0, trace.add_data_end() + 1000});
  }

  TraceBuilder trace;
  std::vector<Ref> classes;
  std::vector<Ref> resources;
  std::map<Ref, std::string> known;
};

}  // namespace CT::Test
