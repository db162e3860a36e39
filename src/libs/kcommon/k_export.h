// SPDX-License-Identifier: MIT
// Marks what the shared library offers to programs. Everything else in it is hidden.
#pragma once

#define CODETRACE_EXPORT __attribute__((visibility("default")))
