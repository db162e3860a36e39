# SPDX-License-Identifier: MIT
"""Runs the command of each question in docs/cookbook.md and compares what it prints; then these and
those of README.md on other traces. With CODETRACE_UPDATE_COOKBOOK set it writes the answers anew; review
them."""
import os
import pathlib
import re
import subprocess
import tempfile
import unittest

import unfinished

ROOT = pathlib.Path(os.environ["CODETRACE_ROOT"])
PAGE = ROOT / "docs/cookbook.md"
README = ROOT / "README.md"
BLOCK = re.compile(r"^```console\n\$ (.*)\n((?s:.*?))^```$", re.MULTILINE)


def answer(command, limit=None):
    tool = pathlib.Path(os.environ["CODETRACE_BINARY"])
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "PATH": f"{tool.parent}:{os.environ['PATH']}"}
    run = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=ROOT, env=environment,
                         stdin=subprocess.DEVNULL, capture_output=True, check=False,
                         timeout=limit)
    return run.returncode, run.stderr.decode(), run.stdout.decode()


class Cookbook(unittest.TestCase):
    maxDiff = None

    def test_each_question_has_one_command(self):
        page, _, with_jq = PAGE.read_text().partition("\n# With jq\n")
        self.assertEqual(len(BLOCK.findall(with_jq)), 2)
        questions = page.split("\n## ")[1:]
        self.assertEqual(len(questions), 12)
        for question in questions:
            self.assertEqual(len(BLOCK.findall(question)), 1, question)
            self.assertEqual(question.count("```"), 2, question)
            self.assertNotIn("|", BLOCK.findall(question)[0][0])

    def test_answers(self):
        for command, expected in BLOCK.findall(PAGE.read_text()):
            with self.subTest(command):
                self.assertNotEqual(expected, "")
                nothing_found = 1 if command.endswith("--count") and expected == "0\n" else 0
                self.assertEqual(answer(command), (nothing_found, "", expected))

    def run_all_on(self, trace):
        """On a trace for which no answers are written."""
        pages = PAGE.read_text() + README.read_text()
        for command, _ in BLOCK.findall(pages):
            command = re.sub(r"examples/\w+\.ct", str(trace), command)
            command = re.sub(r"^\./run", "codetrace", command)
            command = re.sub(r"^\./cttool", "cttool", command)
            with self.subTest(command):
                # As by far the slowest takes seconds, this is for work that is quadratic.
                status, said, printed = answer(command, limit=60)
                self.assertEqual(said, "")
                self.assertNotIn("Binary file", printed)
                found_nothing = re.match("cttool|.*\\| grep", command) and status == 1
                left_early = "| grep" in command and "-m 1" in command and printed != ""
                self.assertTrue(status == 0 or found_nothing or left_early, status)

    def test_calls_that_never_ended(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in "notes", "words":
                trace = pathlib.Path(folder) / f"{name}.ct"
                whole = (ROOT / f"examples/{name}.ct").read_bytes()
                trace.write_bytes(unfinished.unfinished(whole))
                self.assertTrue(answer(f"codetrace {trace}")[2].startswith("? REQUEST STARTUP"))
                self.run_all_on(trace)

    def test_large_trace(self):
        trace = ROOT / "../shared/traces/webapp.ct"
        if not trace.exists() and "CODETRACE_REQUIRE_TRACES" not in os.environ:
            print("\nSKIPPED: how long a large trace takes, for ../shared/traces is missing", flush=True)
            self.skipTest("there are no traces beside the checkout")
        self.run_all_on(trace)


def update():
    PAGE.write_text(BLOCK.sub(lambda block: f"```console\n$ {block[1]}\n{answer(block[1])[2]}```",
                              PAGE.read_text()))


if __name__ == "__main__":
    if "CODETRACE_UPDATE_COOKBOOK" in os.environ:
        update()
    unittest.main()
