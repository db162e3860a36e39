// SPDX-License-Identifier: MIT
// Marks what the shared library offers to programs. Everything else in it is hidden; so is, in a
// class that is offered, what the second mark says.
#pragma once

#define CODETRACE_EXPORT __attribute__((visibility("default")))
#define CODETRACE_HIDDEN __attribute__((visibility("hidden")))
