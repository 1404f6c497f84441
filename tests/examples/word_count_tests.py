#!/usr/bin/env python3
"""Compares the output of the program in WORD_COUNT with a count by Unicode's categories and with Python's numbers."""

import collections
import decimal
import fractions
import itertools
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unicodedata
import unittest

TEXTS = pathlib.Path(__file__).resolve().parents[2] / "examples/data"


def words_of(text):
    spaced = "".join(ch if ch in "'’" or unicodedata.category(ch)[0] in "LMN" and ch not in "½¼¾²" else " " for ch in text)
    return [word for word in (part.strip("'’").lower() for part in spaced.split()) if word]


def percent(part, whole):
    exact = decimal.Decimal(part * 100) / whole
    return str(exact.quantize(decimal.Decimal("1e-10"), decimal.ROUND_HALF_UP))


def report(text, rows):
    counts = collections.Counter(words_of(text))
    total = sum(counts.values())
    lines = [f"{total} words, {len(counts)} different ones"]
    by_count = sorted(counts.items(), key=lambda item: (-item[1], item[0].encode("utf-16-be")))
    lines += [f"{count:7}{percent(count, total):>16} %  {word}" for word, count in by_count[:rows]]
    pairs = sum(math.perm(count, 2) for count in counts.values())
    if total > 1:
        chance = fractions.Fraction(pairs, math.perm(total, 2))
        lines.append(f"Two words drawn at random are the same in {chance.numerator} of {chance.denominator} cases "
                     f"({percent(pairs, math.perm(total, 2))} %).")
    orders = str(math.factorial(total) // math.prod(map(math.factorial, counts.values())))
    lines.append(f"They can stand in this many orders ({len(orders)} digits):")
    lines += ["  " + "".join(part) for part in itertools.zip_longest(*[iter(orders)] * 100, fillvalue="")]
    return "\n".join(lines) + "\n"


class WordCount(unittest.TestCase):
    def assertReports(self, text, rows):
        with tempfile.NamedTemporaryFile("w", encoding="utf-8", suffix=".txt") as file:
            file.write(text)
            file.flush()
            run = subprocess.run([os.environ["WORD_COUNT"], file.name, str(rows)], capture_output=True, check=True, timeout=60)
        self.assertEqual(run.stdout.decode(), report(text, rows))

    def test_counts_what_an_independent_count_counts(self):
        ferry = (TEXTS / "ferry.txt").read_text(encoding="utf-8")
        many = (TEXTS / "languages.txt").read_text(encoding="utf-8")
        letters = re.sub(r"^(Pictures|Music|Boxes) .*$", "", many, flags=re.MULTILINE)  # these have no letters left
        for text, rows in [("", 10), ("’tis 'tis '' one\n", 10), ("don’t don’t\n", 1), (ferry, 20), (letters, 1000),
                           ((ferry + many[:600]) * 7, 1000)]:
            with self.subTest(text=text[:20], rows=rows):
                self.assertReports(text, rows)

    def test_names_a_file_that_is_not_there(self):
        run = subprocess.run([os.environ["WORD_COUNT"], "/no/such/file"], capture_output=True, check=False, timeout=60)
        self.assertEqual((run.returncode, run.stdout), (1, b""))
        self.assertIn(b"/no/such/file", run.stderr)


if __name__ == "__main__":
    decimal.getcontext().prec = 60
    sys.set_int_max_str_digits(0)
    unittest.main()
