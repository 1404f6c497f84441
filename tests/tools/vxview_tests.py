#!/usr/bin/env python3
"""Tests the program in the variable VXVIEW from outside. A model in Python says what random logs consist of."""

import csv
import functools
import gzip
import io
import json
import os
import random
import re
import resource
import select
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

import tool

HYPHENS = "-" * 25 + "\n"

WRONG_COMMAND_LINES = [
    (["--no-such"], "--no-such"), (["-e", "("], "("), (["-w", "peer"], "peer"), (["-w", "=x"], "=x"), (["-w", "a~["], "["),
    (["-l", "high"], "high"), (["-l", ".."], ".."), (["-l", "1..x"], "1..x"), (["-s", "noon"], "noon"),
    (["-s", "2026-13-01"], "2026-13-01"), (["-u", "25:00"], "25:00"), (["--last", "2 hours"], "2 hours"),
    (["-s", "1h", "--last", "2h"], "--last"), (["-t", ""], "--text"), (["-c", "-S"], "--summary"), (["-c", "-f"], "--follow"),
    (["-b", "name"], "--summary"), (["--any"], "--where"), (["-w", "level>="], "level>="), (["--format", "yaml"], "yaml"), (["-n", "-1"], "-1"), ([""], "LOG"),
]

vxview = functools.partial(tool.run, "vxview")


def plain(entry):
    return "".join(f"{name}={value}\n" for name, value in entry.items()) + HYPHENS


def xml(entry):
    escaped = {name: str(value).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;") for name, value in entry.items()}
    return "  <entry>\n" + "".join(f"    <{n}> {v} </{n}>\n" for n, v in escaped.items()) + "  </entry>\n"


def escaped_json(entry):
    """With escapes where none are needed, as other writers may have them."""
    return json.dumps(entry).replace("w", "\\u0077").replace("/", "\\/") + "\n"


FORMS = {"plain": plain, "xml": xml, "json": lambda entry: json.dumps(entry, ensure_ascii=False) + "\n", "escaped": escaped_json}


def stamp(number):
    return f"2026-11-{1 + number // 1440 % 28:02}T{number // 60 % 24:02}:{number % 60:02}:07.250Z"


def entry(number, rng):
    words = ["slow", "wave/s", "<b>", "naïve", "a=b", "\"quoted\"", "\\w", "😀", "x" * rng.choice([1, 50, 3000])]
    return {"sequence": number, "level": rng.randrange(-1, 4), "text": " ".join(rng.sample(words, 3)),
            "name": rng.choice(["svc", "db"]), "timestamp": stamp(number)}


def as_text(entries):
    return [{name: str(value) for name, value in each.items()} for each in entries]


class Forms(tool.Scratch):
    def shown(self, *arguments, **options):
        result = vxview("--format", "json", *arguments, **options)
        self.assertEqual(result.stderr, b"")
        return as_text(json.loads(line) for line in result.stdout.decode().split("\n")[:-1])

    def test_reads_each_form_and_a_log_that_mixes_them(self):
        seed = random.randrange(2 ** 32)
        rng = random.Random(seed)
        for form in [*FORMS, "mixed"]:
            with self.subTest(form=form, seed=seed):
                entries = [entry(number, rng) for number in range(1500)]
                pieces, expected = [], []
                for each in entries:
                    write = FORMS[form if form != "mixed" else rng.choice(list(FORMS))]
                    text = write(each)
                    chance = rng.random()
                    if chance < 0.01:
                        pieces.append("a line of another program\n")
                        expected.append({"foreign": "a line of another program"})
                    elif chance < 0.02 and form != "mixed": # a writer was killed within an entry
                        torn = text[:rng.randrange(14, len(text) - 1)]
                        torn = torn if torn.endswith("\n") else torn + "\n"
                        pieces.append(torn)
                        expected.append({"torn": torn[:-1]})
                    pieces.append(text)
                    expected.append(each)
                head, foot = ('<?xml version="1.0" encoding="UTF-8"?>\n<log>\n', "</log>\n") if form == "xml" else ("", "")
                log = self.write("log", (head + "".join(pieces) + foot).encode())
                self.assertEqual(self.shown(log), as_text(expected))
                # What is searched for by a text, which skips, and by an expression, which does not, is the same.
                for text in ["slow", "wave/s", "naïve", "😀", "x" * 2500, "another program", "nowhere", "\"", "<b>", "sequence", "a=b"]:
                    found = [each for each in expected if any(text in str(value) for value in each.values())]
                    self.assertEqual(self.shown("-t", text, log), as_text(found), text)
                    self.assertEqual(self.shown("-e", re.escape(text), log), as_text(found), text)
                names = [each for each in entries if each["name"] == "db"]
                self.assertEqual(self.shown("-w", "name=db", log), as_text(names))
                self.assertEqual(vxview("-c", "-w", "name=db", log).stdout, b"%d\n" % len(names))

    def test_reads_an_entry_with_many_fields_in_time(self):
        many = {**{f"key{number}": "x" for number in range(100000)}, "last": "y\nkey7=z"}
        log = self.write("log", plain(many).encode())
        self.assertEqual(self.shown(log, preexec_fn=tool.limited(resource.RLIMIT_CPU, 5)), [many])

    def test_writes_each_form(self):
        entries = [{"level": 3, "text": "a, \"b\" <c>\r & \x01", "name": "n"}, {"text": "Ω\u202e", "peer id": "x"}]
        data = "".join(FORMS["json"](each) for each in entries).encode() + b"foreign, line\n"
        show = lambda form, *more: vxview("--format", form, *more, data=data).stdout.decode()
        self.assertEqual(show("plain"), plain(entries[0]) + plain(entries[1]) + "foreign, line\n")
        rows = list(csv.reader(io.StringIO(show("csv", "--fields", "level,text"), newline="")))
        self.assertEqual(rows, [["kind", "level", "text"], ["entry", "3", entries[0]["text"]], ["entry", "", "Ω\u202e"],
                                ["foreign", "foreign, line", ""]])
        document = ElementTree.fromstring(show("xml").encode())
        self.assertEqual([[(field.tag, field.text[1:-1]) for field in each] for each in document.iter("entry")],
                         [[("level", "3"), ("text", "a, \"b\" <c>\r & \ufffd"), ("name", "n")], [("text", "Ω\u202e"), ("peer_id", "x")]])
        self.assertEqual(show("line"), "[3] n: a, \"b\" <c>\\r & \\x01\nΩ\\u202e peer id=x\nforeign> foreign, line\n")
        self.assertEqual(show("line", "--colour", "always", "-l", "3", "--fields", "text"), "a, \"b\" <c>\\r & \\x01\n")
        self.assertIn("\033[32mn\033[0m", show("line", "--colour", "always"))

    def test_sends_no_control_character_to_a_terminal(self):
        evil = "a\x1b[31mb\x9b31mc\u202ed\x7fe\nf"
        logs = [self.write("plain", plain({"level": 1, "text": evil}).encode()),
                self.write("json", json.dumps({"level": 1, "text": evil, "more": [evil]}, ensure_ascii=False).encode())]
        for form in ["line", "plain", "json", "csv", "xml"]:
            master, slave = os.openpty()
            with os.fdopen(master, "rb", buffering=0) as terminal:
                result = vxview("--no-pager", "--colour=never", "--format", form, *logs, stdout=slave)
                os.close(slave)
                shown = terminal.read(65536).decode()
            self.assertEqual((result.returncode, shown.count("[31mb")), (0, 3 if form in ("json", "xml", "line", "plain") else 2), shown)
            self.assertRegex(shown, r"\A[^\x00-\x09\x0b\x0c\x0e-\x1f\x7f-\x9f\u202e]+\Z", form)

    def test_filters(self):
        lines = [
            {"level": 1, "text": "one", "peer": "10.0.0.1", "took": 9, "timestamp": "2026-11-19T10:00:00+01:00"},
            {"level": 2, "text": "two\nlines", "peer": "10.0.0.2", "took": 10.5, "timestamp": "2026-11-19T09:30:00Z"},
            {"text": "Three", "timestamp": "2026-11-19 11:00"},
            {"level": "x", "text": "four", "timestamp": "11/19/26 12:00:00"},
        ]
        data = "".join(json.dumps(each) + "\n" for each in lines).encode() + b"foreign one\n"
        for arguments, expected in [
            (["-l", "1"], ["one"]), (["-l", "1.."], ["one", "two\nlines"]), (["-l", "..0"], ["Three"]), (["-l", "0..1"], ["one", "Three"]),
            (["-s", "2026-11-19T09:30:00Z"], ["two\nlines", "Three", "four"]), (["-u", "2026-11-19 11:00"], ["one", "two\nlines"]),
            (["-s", "2026-11-19", "-u", "2026-11-20"], ["one", "two\nlines", "Three", "four"]), (["--last", "1s"], []),
            (["-w", "took>=10"], ["two\nlines"]), (["-w", "took<10"], ["one"]), (["-w", "peer!=10.0.0.1"], ["two\nlines", "Three", "four"]),
            (["-w", "text~o.l"], ["two\nlines"]), (["-w", "text!~o", "-w", "level!=x"], ["Three"]),
            (["-w", "took=9", "-w", "text=four", "--any"], ["one", "four"]), (["-w", "took=9.0"], ["one"]),
            (["-i", "-t", "THREE"], ["Three"]), (["-i", "-w", "text=three"], ["Three"]), (["-t", "one"], ["one", None]),
            (["-e", "^f"], ["four", None]), (["-t", "one", "-l", "1"], ["one"]), (["-n", "2"], ["four", None]), (["-n", "0"], []),
        ]:
            with self.subTest(arguments=arguments):
                result = vxview("--format", "json", *arguments, data=data, env={"TZ": "UTC", "LC_ALL": "C"})
                self.assertEqual([json.loads(line).get("text") for line in result.stdout.splitlines()], expected)
                self.assertEqual((result.returncode, result.stderr), (0 if expected or "-n" in arguments else 1, b""))


class Logs(tool.Scratch):
    def test_merges_by_time_and_reads_older_and_compressed_files(self):
        seed = random.randrange(2 ** 32)
        rng = random.Random(seed)
        parts = [[], [], []]
        for number in range(3000):
            rng.choice(parts).append({"text": str(number), "timestamp": stamp(number)})
        data = ["".join(plain(each) for each in part).encode() for part in parts]
        cut = data[0].index(HYPHENS.encode(), len(data[0]) // 2) + len(HYPHENS)
        self.write("a.log.000009.gz", gzip.compress(data[0][:cut]))
        a, b = self.write("a.log", data[0][cut:]), self.write("b.log", data[1])
        c = self.write("c", gzip.compress(data[2]))
        show = lambda *arguments: vxview("--fields", "text", "--format", "csv", *arguments).stdout.decode().split("\r\n")[1:-1]
        every = [f"entry,{number}" for number in range(3000)]
        self.assertEqual(show("--older", a, b, c), every, seed)
        self.assertEqual(sorted(show("--older", "--in-order", c, a, b)), sorted(every), seed)
        self.assertEqual(show("--older", "--in-order", a, b), [f"entry,{each['text']}" for each in parts[0] + parts[1]])
        self.assertEqual(show("-n", "3", "--older", a, b, c), every[-3:])
        self.assertEqual(show("-n", "3", b), [f"entry,{each['text']}" for each in parts[1][-3:]])

    def test_tells_what_cannot_be_read_and_shows_the_rest(self):
        good = self.write("good", plain({"text": "x"}).encode())
        broken = self.write("broken.gz", gzip.compress(b"text=y\n" * 1000)[:-9])
        for log, part in [(self.path("missing"), "no such file"), (self.folder, "is a folder"), (broken, "gzip cannot decompress")]:
            with self.subTest(log=log):
                result = vxview("--fields", "text", "--in-order", log, good)
                self.assertTrue(result.stdout.decode().endswith(f"{good}: x\n"))
                self.assertIn(f"vxview: {log}: {part}", result.stderr.decode())
                self.assertEqual(result.returncode, 2)
        self.assertEqual((vxview("-t", "y", good).returncode, vxview("-t", "x", good).returncode), (1, 0))
        large = self.write("large.gz", gzip.compress(plain({"text": "z"}).encode() * 100000))
        with subprocess.Popen([os.environ["VXVIEW"], large], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.readline()
            process.stdout.close()  # gzip has more to write, and has to end silently
            self.assertEqual((process.stderr.read(), process.wait()), (b"", 0))
        self.assertNeedsRoom("vxview", [good], ["-c", good], ["-S", good], status=2)

    def test_counts_groups(self):
        levels = [1] * 30 + [2] * 10 + [10] * 5 + [-1]
        data = "".join(plain({"level": level, "text": "t", "timestamp": stamp(number)}) for number, level in enumerate(levels)).encode()
        data += b"foreign\nlevel=1\ntext=to\n"
        show = lambda *arguments: vxview("-S", *arguments, data=data, env={"TZ": "UTC", "LC_ALL": "C.UTF-8", "COLUMNS": "80"}).stdout.decode()
        rows = lambda text: [line.split()[:2] for line in text.split("\n\n")[1].splitlines()[1:]]
        self.assertTrue(show().startswith("46 entries from 2026-11-01T00:00:07 to 2026-11-01T00:45:07\n1 torn\n1 foreign lines\n"))
        self.assertEqual(rows(show()), [["-1", "1"], ["1", "30"], ["2", "10"], ["10", "5"]])
        self.assertEqual(rows(show("-b", "minute"))[:2], [["2026-11-01T00:00", "1"], ["2026-11-01T00:01", "1"]])
        self.assertEqual(rows(show("-b", "hour")), [["2026-11-01T00", "46"]])
        self.assertEqual(rows(show("-b", "peer")), [["(none)", "46"]])
        self.assertEqual(vxview("-c", data=data).stdout, b"48\n")

    def test_refuses_what_it_does_not_understand(self):
        for arguments, part in WRONG_COMMAND_LINES:
            with self.subTest(arguments=arguments):
                self.assertFails(vxview(*arguments), part, "--help", status=2)
        self.assertHelps("vxview", "--follow", "--where", "--summary", "--older")


class Following(tool.Scratch):
    def follow(self, *arguments):
        process = subprocess.Popen([os.environ["VXVIEW"], "--follow", "--fields", "text", *arguments],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(lambda: (process.kill(), process.wait(), process.stdout.close(), process.stderr.close()))
        return process

    def lines(self, process, count):
        """The next lines; what is missing after two minutes fails the test."""
        text = b""
        while text.count(b"\n") < count:
            self.assertTrue(select.select([process.stdout], [], [], 120)[0], f"only {text.count(10)} lines of {count}: {text[-200:]}")
            text += os.read(process.stdout.fileno(), 1 << 16)
        return text.decode().splitlines()

    def test_follows_a_log_through_rotations(self):
        process = self.follow("-n", "100000", self.log)
        self.assertEqual(process.stderr.readline().decode(), f"vxview: {self.log}: there is no such file yet; waits for it\n")
        command = ["-f", self.log, "--rotate-size", "4000", "--keep", "1000"]
        expected = []
        for block in range(5):
            texts = [f"{block} {number}" for number in range(400)]
            self.assertSucceeds(tool.run("vxlog", *command, data="\n".join(texts).encode()))
            self.assertEqual(self.lines(process, len(texts)), texts)
            expected += texts
        self.assertGreater(len(os.listdir(self.folder)), 5)
        self.assertEqual(vxview("--older", "--fields", "text", self.log).stdout.decode().splitlines(), expected)

    def test_begins_with_the_last_entries_and_survives_truncation(self):
        self.write("log", "".join(plain({"text": number}) for number in range(100_000)).encode())
        process = self.follow("-n", "2", self.log)
        self.assertEqual(self.lines(process, 2), ["99998", "99999"])
        with open(self.log, "ab") as log:
            log.write(plain({"text": "whole"}).encode() + b"text=par")
            log.flush()
            self.assertEqual(self.lines(process, 1), ["whole"])
            log.write(b"tial\n" + HYPHENS.encode())
            log.flush()
            self.assertEqual(self.lines(process, 1), ["partial"])
        self.write("log", plain({"text": "anew"}).encode())
        self.assertEqual(self.lines(process, 1), ["anew"])

    def test_tells_once_that_a_log_cannot_be_read_and_reads_it_later(self):
        self.write("log", plain({"text": "first"}).encode())
        process = self.follow(self.log)
        self.assertEqual(self.lines(process, 1), ["first"])
        os.rename(self.log, self.path("old"))
        os.mkdir(self.log)
        self.assertEqual(process.stderr.readline().decode(), f"vxview: {self.log}: is a folder\n")
        self.assertFalse(select.select([process.stderr], [], [], 0.5)[0])
        os.rmdir(self.log)
        self.write("log", plain({"text": "second"}).encode())
        self.assertEqual(self.lines(process, 1), ["second"])


if __name__ == "__main__":
    unittest.main()
