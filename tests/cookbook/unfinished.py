#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""unfinished.py TRACE OUT: writes TRACE as it would be if PHP had been killed in its last call: what
comes behind that call is left out, so that it and all around it never end."""
import sys

HEADER_SIZE = 36
CALLS = (2, 3)  # FUNCTION_CALL, METHOD_CALL


def unfinished(trace):
    big_endian = trace[3] & 2
    data_size = int.from_bytes(trace[12:16], "big")
    end = position = 0
    while position < data_size:
        word = trace[HEADER_SIZE + position:HEADER_SIZE + position + 4]
        position += 4 + int.from_bytes(word[1:], "big" if big_endian else "little")
        if (word[0] >> 3 if big_endian else word[0] & 31) in CALLS:
            end = position
    return (trace[:12] + end.to_bytes(4, "big") + trace[16:HEADER_SIZE + end]
            + trace[HEADER_SIZE + data_size:])


if __name__ == "__main__":
    with open(sys.argv[1], "rb") as file:
        whole = file.read()
    with open(sys.argv[2], "wb") as file:
        file.write(unfinished(whole))
