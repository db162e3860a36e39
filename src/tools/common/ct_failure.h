// SPDX-License-Identifier: MIT
//
// What a tool says when its run cannot go on, and the exit status that goes with it. Everything
// goes to standard error; what cannot be written there is lost without a word. Owns nothing.
#pragma once

#include <QString>

namespace CT::Tool {

inline constexpr char open_failed[] = "Failed to open";
inline constexpr char open_output_failed[] = "Failed to open output file";
inline constexpr char write_failed[] = "Failed to write output file";

// Reports as "Failed to open NAME : REASON"; returns the exit status.
int fail(const char* what, const QString& name, const QString& reason);

// The end of a run that only printed through stdio, as usage and version do: `status`, unless what
// was printed did not arrive.
int end_of_printing(int status);

}  // namespace CT::Tool
