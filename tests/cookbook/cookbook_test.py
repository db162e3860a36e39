# SPDX-License-Identifier: MIT
"""Runs the command of each question in docs/cookbook.md and compares what it prints. With
CODETRACE_UPDATE_COOKBOOK set it writes the answers anew; review them."""
import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(os.environ["CODETRACE_ROOT"])
PAGE = ROOT / "docs/cookbook.md"
BLOCK = re.compile(r"^```console\n\$ (.*)\n((?s:.*?))^```$", re.MULTILINE)


def answer(command):
    tool = pathlib.Path(os.environ["CODETRACE_BINARY"])
    environment = {**os.environ, "LC_ALL": "C.UTF-8", "PATH": f"{tool.parent}:{os.environ['PATH']}"}
    run = subprocess.run(["bash", "-o", "pipefail", "-c", command], cwd=ROOT, env=environment,
                         stdin=subprocess.DEVNULL, capture_output=True, check=False)
    return run.returncode, run.stderr.decode(), run.stdout.decode()


class Cookbook(unittest.TestCase):
    maxDiff = None

    def test_each_question_has_one_command(self):
        questions = PAGE.read_text().split("\n## ")[1:]
        self.assertEqual(len(questions), 12)
        for question in questions:
            self.assertEqual(len(BLOCK.findall(question)), 1, question)
            self.assertEqual(question.count("```"), 2, question)

    def test_answers(self):
        for command, expected in BLOCK.findall(PAGE.read_text()):
            with self.subTest(command):
                self.assertNotEqual(expected, "")
                self.assertEqual(answer(command), (0, "", expected))


def update():
    PAGE.write_text(BLOCK.sub(lambda block: f"```console\n$ {block[1]}\n{answer(block[1])[2]}```",
                              PAGE.read_text()))


if __name__ == "__main__":
    if "CODETRACE_UPDATE_COOKBOOK" in os.environ:
        update()
    unittest.main()
