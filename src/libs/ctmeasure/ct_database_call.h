// SPDX-License-Identifier: MIT
//
// Which functions of PHP talk SQL, and which functions of programs only stand in between.
#pragma once

#include <cstdint>

#include "codetrace/model/ct_entity.h"

namespace CT {

// A built-in function or method of PDO, mysqli, pgsql or sqlite3. Its SQL text is the first text
// among its arguments; where a name stands there, the second.
struct DatabaseCall {
  enum class Action : std::uint8_t {
    run,      // of a text
    prepare,  // of a text, for later
    execute,  // of what was prepared
  };
  // By what a prepared statement is known.
  enum class Known : std::uint8_t {
    not_at_all,
    by_this,
    by_argument,  // the first one
    by_result,
    by_name,  // the first text among the arguments, on its connection
  };

  const char* class_name;  // in small letters; empty for a plain function
  const char* name;
  Action action;
  Known known;
};

// Null for a function that is none of them.
const DatabaseCall* database_call_of(const Checkpoint::Function& function);

// Whether it seems to belong to a library for databases rather than to what uses one: by the words
// of its class and namespace, or of its own name if it has no class. A guess.
bool is_database_layer(const Checkpoint::Function& function);

}  // namespace CT
