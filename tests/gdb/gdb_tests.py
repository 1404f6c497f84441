#!/usr/bin/env python3
"""Runs gdb on a small program and compares what its printers show. SHOWN is the program, LIBRARIES are those that it needs,
PRINTERS is the file of the printers, and TYPES the one of the types for a library without debug information.
"""

import os
from pathlib import Path
import shutil
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77
EXPECTED = {
    "empty": '""',
    "text": '"Grüße 😀 \\"quoted\\""',
    "half": '"half \ufffd"',
    "longText": '"' + "x" * 200 + '"...',
    "wrapped": '"outside"',
    "str1": '"one text"',
    "part": '"text"',
    "fixed": '"fixed"',
    "none": "null",
    "some": 'reference to = {object = "shared"}',
    "asObject": "reference to = {object = -5}",
    "*array.m_object": 'vx::collections::vorb::ArrayList of size 4 = {"word 1", "word 2", "word 3", null}',
    "*linked.m_object": 'vx::collections::vorb::LinkedList of size 3 = {"word 1", "word 2", "word 3"}',
    "*map.m_object": 'vx::collections::vorb::HashMap of size 3 = {["word 1"] = 1, ["word 2"] = 2, ["word 3"] = 3}',
    "*set.m_object": 'vx::collections::vorb::HashSet of size 3 = {"word 1", "word 2", "word 3"}',
    "byText": 'vx::collections::StringHashMap of size 3 = {["word 1"] = "word 1", ["word 2"] = "word 2", '
              '["word 3"] = "word 3"}',
    "byNumber": 'vx::collections::IntegerHashMap of size 3 = {[0] = "word 2", [1] = "word 3", [-1] = "word 1"}',
    "counts": 'vx::Str1HashMap<int> of size 3 = {["word 1"] = 1, ["word 2"] = 2, ["word 3"] = 3}',
    "typed": "vx::collections::List<vx::String> over = {object = vx::collections::vorb::ArrayList of size 4 = "
             '{"word 1", "word 2", "word 3", null}}',
    "zero": "0",
    "big": "-123456789012345678901234567890123456789",
    "huge": f"-1{'0' * 99}... of 5002 digits",
    "tiny": "7, scale 2000000000",
    "price": "-0.05",
    "byte": "200",
    "real": "2.5",
    "guid": "{85B221C7-0ED6-4AFA-A7B7-2EFCBE5B9CD7}",
    "failure": 'vx::ResultException 0x80070002 "open it"',
    "accounts": 'vx::sync::Mutex "accounts", held',
    "gate": "vx::sync::Gate",
    "units": 'vx::sync::Semaphore "units"',
    "plain": 'vx::RangeErrorException "too far"',
}


def run_gdb(*commands):
    arguments = [word for command in commands for word in ("-ex", command)]
    return subprocess.run(["gdb", "-nx", "-batch", "-iex", "set debuginfod enabled off", *arguments],
                          capture_output=True, text=True, encoding="utf-8", timeout=300)


def shown(libraries="."):
    commands = [f"set environment LD_LIBRARY_PATH {libraries}", f"source {os.environ['PRINTERS']}", f"file {os.environ['SHOWN']}", "set print pretty off",
                "set width 0", "set print repeats unlimited", "set host-charset UTF-8", "break stop", "run", "up"]
    for expression in EXPECTED:
        commands += [f"echo \\n@{expression}@\\n", f"output {expression}"]
    return run_gdb(*commands, "echo \\n@locals@\\n", "info locals", "echo \\n@end@\\n")


class Printers(unittest.TestCase):
    maxDiff = None

    def test_what_print_and_info_locals_show(self):
        self.compare(shown(), EXPECTED)

    def test_that_a_library_without_debug_information_shows_the_same(self):
        expected = EXPECTED | {"accounts": EXPECTED["accounts"].replace(
            "held", "holder unknown without the debug information of libvxsys4")}
        with tempfile.TemporaryDirectory(prefix="a b") as folder:
            types = Path(folder) / "vxlib4" / "gdb-types.o"
            for library in os.environ["LIBRARIES"].split(";"):
                subprocess.run(["strip", "-o", Path(folder) / Path(library).name, library], check=True)
            self.assertIn(f"{types} does not exist", shown(folder).stderr)
            types.parent.mkdir()
            shutil.copy(os.environ["TYPES"], types)
            self.compare(shown(folder), expected)

    def compare(self, run, expected):
        parts = run.stdout.split("\n@")
        found = dict(part.split("@\n", 1) for part in parts[1:] if "@\n" in part)
        self.assertIn("locals", found, run.stdout + run.stderr)
        for expression, text in expected.items():
            with self.subTest(expression):
                self.assertEqual(ordered(found[expression]), ordered(text), run.stderr)
        for name, text in expected.items():
            if name.isidentifier():
                with self.subTest("info locals: " + name):
                    lines = [line for line in found["locals"].splitlines() if line.startswith(name + " = ")]
                    self.assertEqual([ordered(line) for line in lines], [ordered(f"{name} = {text}")])


def ordered(text):
    """The order within a map is that of its hashes, which is not looked at here."""
    return sorted(text.replace("{", ", ").replace("}", ", ").split(", "))


if __name__ == "__main__":
    if run_gdb("file /bin/true", "run").stdout.find("exited normally") < 0:
        print("gdb cannot run a program here")
        sys.exit(SKIPPED)
    unittest.main()
