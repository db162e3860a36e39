// SPDX-License-Identifier: MIT
//
// Does nothing, linked with everything that the tool is linked with: where this does not start, the
// tool cannot either.
int main() { return 0; }
