#!/usr/bin/env python3
"""Holds the documents to the programs: each block of C++ is a piece of a program that is built, and what stands in the next
block of text is what that program prints. GUIDE_PROGRAMS is the folder of the programs that were built."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = pathlib.Path(os.environ["GUIDE_PROGRAMS"])
SOURCES = sorted((ROOT / "examples").rglob("*.cpp")) + [ROOT / "tests/install/first_program.cpp"]
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def squeezed(code):
    """Indentation depends on where a piece stands; layout within a line is the formatter's."""
    return "\n".join(line.strip() for line in code.splitlines() if line.strip())


def blocks(document):
    return BLOCK.findall(document.read_text(encoding="utf-8"))


def program_of(block):
    return [source for source in SOURCES if squeezed(block) in squeezed(source.read_text(encoding="utf-8"))]


class Documents(unittest.TestCase):
    def test_each_block_is_a_piece_of_a_program(self):
        seen = 0
        for document in [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]:
            for language, text in blocks(document):
                if language == "cpp":
                    seen += 1
                    self.assertTrue(program_of(text), f"{document.name}: no program has\n{text}")
        self.assertGreater(seen, 5)

    def test_programs_print_what_the_guide_says(self):
        guide = blocks(ROOT / "docs/guide.md")
        told = set()
        for (language, code), (next_language, output) in zip(guide, guide[1:]):
            if (language, next_language) != ("cpp", "output"):
                continue
            (source,) = program_of(code)
            with self.subTest(source.name), tempfile.TemporaryDirectory() as folder:
                run = subprocess.run([PROGRAMS / source.stem, f"{folder}/file"], capture_output=True, check=True,
                                     text=True, timeout=60)
                self.assertEqual(run.stdout, output)
            told.add(source.stem)
        self.assertEqual(told, {source.stem for source in (ROOT / "examples/guide").glob("*.cpp")})


if __name__ == "__main__":
    unittest.main()
