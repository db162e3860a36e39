# SPDX-License-Identifier: MIT
"""Every document that the tool prints keeps to the schema."""
import itertools
import os
import pathlib
import tempfile
import unittest

import documents
from jsonschema import Draft202012Validator


def reason(error):
    """Of alternatives the one with the fewest faults is what was meant."""
    while error.context:
        branches = itertools.groupby(error.context, key=lambda each: each.schema_path[0])
        error = min((list(faults) for _, faults in branches), key=len)[0]
    return f"{error.json_path}: {error.message[:400]}"


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        Draft202012Validator.check_schema(documents.SCHEMA)
        cls.validator = Draft202012Validator(documents.SCHEMA)
        cls.outline = documents.Outline()

    def validate_all(self, named_documents, least):
        count = 0
        for name, document in named_documents:
            count += 1
            for error in self.validator.iter_errors(self.outline.of(document)):
                self.fail(f"{name}: {reason(error)}")
        self.assertGreaterEqual(count, least)

    def test_examples(self):
        self.validate_all(documents.traces("examples", "*.ct"), 2)

    def test_golden_cases(self):
        self.validate_all(documents.golden_cases(), 30)

    def test_damaged_traces(self):
        self.validate_all(documents.traces("fuzz/corpus/file"), 100)

    def test_nanoseconds_out_of_range(self):
        trace = bytearray((documents.ROOT / "examples/notes.ct").read_bytes())
        with tempfile.TemporaryDirectory() as folder:
            for word in (999_999_999, 0x7fffffff, 0x80000000, 0xfffff830):
                trace[48:52] = word.to_bytes(4, "little")  # of STARTUP, the first checkpoint
                (pathlib.Path(folder) / f"{word:x}.ct").write_bytes(trace)
            self.validate_all(documents.traces(folder, "*.ct"), 4)

    def test_real_traces(self):
        folder = "../shared/traces"
        if not (documents.ROOT / folder).is_dir() and "CODETRACE_REQUIRE_TRACES" not in os.environ:
            print(f"\nSKIPPED: the real traces, for {folder} is missing", flush=True)
            self.skipTest("there are no traces beside the checkout")
        self.validate_all(documents.traces(folder, "*.ct"), 1)


if __name__ == "__main__":
    unittest.main()
