#!/usr/bin/env python3
"""Compares the documents with the programs: each block of C++ must be a part of a program, and the next block of text must be
the output of that program. GUIDE_PROGRAMS is the folder with the built programs."""

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
    """Removes differences of layout: indentation, and blanks within a line."""
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

    def test_each_line_beside_the_standard_library_is_compiled(self):
        source = squeezed((ROOT / "examples/from_the_standard_library.cpp").read_text(encoding="utf-8")).replace("\n", " ")
        page = (ROOT / "docs/from-the-standard-library.md").read_text(encoding="utf-8")
        rows = re.findall(r"^\| .* \| `+([^`]+)`.*\|$", page, re.MULTILINE)
        self.assertGreater(len(rows), 40)
        for code in rows:
            self.assertIn(code, source)

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

    def test_tables_of_costs_are_those_of_the_script(self):
        tables = subprocess.run([ROOT / "scripts/simulate-road"], capture_output=True, check=True, text=True, timeout=60)
        self.assertIn(tables.stdout, (ROOT / "docs/beyond-one-machine.md").read_text(encoding="utf-8"))

    def test_code_with_a_quote_is_in_double_backquotes(self):
        """Doxygen ends code at a quote otherwise, and takes the rest of the page for it."""
        for document in [*ROOT.glob("*.md"), *(ROOT / "docs").rglob("*.md")]:
            text = BLOCK.sub("", document.read_text(encoding="utf-8"))
            for line in re.sub("^    .*$", "", text, flags=re.MULTILINE).splitlines():
                self.assertNotRegex(re.sub("``.*?``", "", line), "^[^`]*(`[^`]*`[^`]*)*`[^`]*'", document.name)

    def test_recipes_print_what_they_say(self):
        recipes = sorted((ROOT / "examples/recipes").glob("*.cpp"))
        self.assertGreater(len(recipes), 10)
        for source in recipes:
            told = source.read_text(encoding="utf-8").partition("\n// Prints:\n")[2]
            with self.subTest(source.name), tempfile.TemporaryDirectory() as folder:
                run = subprocess.run([PROGRAMS / f"recipe_{source.stem}", f"{folder}/file"], capture_output=True,
                                     check=True, text=True, timeout=60)
                self.assertEqual(run.stdout, re.sub("^// ?", "", told, flags=re.MULTILINE))


if __name__ == "__main__":
    unittest.main()
