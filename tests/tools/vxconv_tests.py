#!/usr/bin/env python3
"""Tests the program in the variable VXCONV from outside. Expected results come from iconv and the codecs of Python."""

import contextlib
import filecmp
import functools
import itertools
import os
import pty
import random
import re
import resource
import shutil
import signal
import stat
import struct
import subprocess
import unittest

import tool

PROGRAM = os.environ["VXCONV"]
SANITIZED = bool(os.environ.get("VXCONV_SANITIZED"))  # it needs more memory than a normal build
BLOCK = 64 * 1024  # the size of vxconv's pieces

UTF = ["UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"]
WIDE_TEXT = "Ελληνικά, 中文, русский, עברית, ‰ and 😀𝄞\ufeff\U0010ffff\n"

vxconv = functools.partial(tool.run, "vxconv")


def iconv(text, target):
    return subprocess.run(["iconv", "-f", "UTF-8", "-t", target], input=text, capture_output=True, check=True).stdout


class Conversions(tool.Scratch):
    def test_agrees_with_iconv_between_all_encodings_of_unicode(self):
        # Each time one more byte before the text, so that every character crosses the border of a block.
        for shift in range(4):
            text = ("x" * shift + WIDE_TEXT * (2 * BLOCK // len(WIDE_TEXT))).encode()
            forms = {name: iconv(text, name) for name in UTF}
            for source, target in itertools.product(UTF, UTF):
                self.assertSucceeds(vxconv("-f", source, "-t", target, "--strict", data=forms[source]), forms[target])

    def test_carries_any_text_in_amp7(self):
        text = "Tom & Jerry: «中» 😀\n" * BLOCK  # some forms cross the border of a block
        form = text.replace("&", "&AMP;").encode("ascii", "xmlcharrefreplace")
        form = re.sub(rb"&#(\d+);", lambda number: b"&_%X;" % int(number[1]), form)
        self.assertSucceeds(vxconv("-t", "AMP-7", "--strict", data=text.encode()), form)
        self.assertSucceeds(vxconv("-f", "a7", "--strict", data=form), text.encode())
        self.assertFails(vxconv("-f", "AMP-7", "--strict", data=b"12345&_20AC"), "byte 5: ")

    def test_replaces_what_has_no_mapping(self):
        self.assertSucceeds(vxconv("-t", "CP1252", data="a€中😀b".encode()), "a€??b".encode("cp1252"))
        self.assertSucceeds(vxconv("-f", "ASCII", data=b"a\x80b"), "a\ufffdb".encode())

    def test_ends_lines_with_a_line_feed(self):
        border = b"x" * (BLOCK - 1)
        for data, expected in [
            (b"", b""), (b"a", b"a\n"), (b"a\r\nb\rc\n\r\r\n\nd", b"a\nb\nc\n\n\n\nd\n"),
            (border + b"\r\nb", border + b"\nb\n"), (border + b"\rb", border + b"\nb\n"), (border + b"\n\nb", border + b"\n\nb\n"),
        ]:
            self.assertSucceeds(vxconv("--lines", data=data), expected)

    def test_writes_before_the_input_ends(self):
        text = "中" * 2 * BLOCK
        data = text.encode()
        with subprocess.Popen([PROGRAM, "-t", "UTF-16BE"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0) as process:
            process.stdin.write(data[: 3 * BLOCK + 1])  # ends inside a character
            first = process.stdout.read(1)
            rest, _ = process.communicate(data[3 * BLOCK + 1 :])
        self.assertEqual((process.returncode, first + rest == text.encode("utf-16-be")), (0, True))


class Components(tool.Scratch):
    """Encodings of a component library."""

    def setUp(self):
        super().setUp()
        _, self.environment = self.register(os.environ["VXCONV_CODECS"])

    def convert(self, *arguments, data=b""):
        return vxconv(*arguments, data=data, env=self.environment)

    def test_says_where_there_is_no_character(self):
        for arguments, data, part in [
            (["-t", "CP932"], "日本\nab中😀".encode(), "line 2, character 4: U+1F600 has no form in CP932"),
            (["-f", "CP932"], b"\x93\xfa\x85\xfca", "byte 2: no character in CP932"),
            (["-f", "CP932"], b"ab\x93", "byte 2: "),
        ]:
            self.assertFails(self.convert(*arguments, "--strict", "-", data=data), part)
        self.assertSucceeds(self.convert("-t", "CP932", data="日😀本".encode()), "日?本".encode("cp932"))
        self.assertSucceeds(self.convert("-f", "CP932", data=b"a\x85\xfcb"), "a\ufffdb".encode())

    def test_needs_the_registration(self):
        for option in "-f", "-t":
            self.assertFails(vxconv(option, "sjis2"), "sjis2", "vxconv --list")
            for name in ["CP932", "latin2"]:
                result = vxconv(option, name)
                self.assertFails(result, name)
                library = re.search(rb'"vxreg register (.+)" adds it', result.stderr)[1]
                self.assertTrue(os.path.samefile(library, os.environ["VXCONV_CODECS"]))


class Faults(tool.Scratch):
    def test_names_the_place_of_what_cannot_be_converted(self):
        far = "é" * BLOCK + "\n"
        for arguments, data, place in [
            (["-t", "CP1252", "--strict"], "a\nb€中".encode(), "line 2, character 3: U+4E2D"),
            (["-t", "ASCII", "--strict"], "😀".encode(), "line 1, character 1: U+1F600"),
            (["-t", "ISO8859_1", "--strict"], (far * 3 + "é😀").encode(), "line 4, character 2: U+1F600"),
            (["-t", "ISO8859_1", "--strict"], ("é" * (BLOCK - 1) + "😀").encode(), f"line 1, character {BLOCK}: U+1F600"),
            (["-t", "ASCII", "--lines", "--strict"], b"a\r\nb\rc\xc3\xa9", "line 3, character 2: U+00E9"),
            (["-f", "CP1252", "--strict"], b"x" * 3 * BLOCK + b"\x81", f"byte {3 * BLOCK}: "),
            (["-f", "ASCII", "--strict"], b"abc\xff", "byte 3: "), (["-f", "UTF-16LE"], b"a\0\0", "byte 2: "),
            (["-f", "UTF-32LE", "--strict"], b"a\0\0\0\0\0\x11\0", "byte 4: "),
            (["-f", "UTF-32LE"], b"a\0\0\0\0\xd8\0\0", "byte 4: "), (["-f", "UTF-32BE"], b"\0\0\0a\0\0", "byte 4: "),
            (["-f", "UTF-16LE", "-t", "UTF-16BE"], b"a\0\0\xdcb\0", "line 1, character 2: half"),
            (["-f", "UTF-16LE", "-t", "UTF-32BE"], b"a\0\n\0\x3d\xd8b\0", "line 2, character 1: half"),
            (["-f", "UTF-16LE", "-t", "UTF-16BE"], b"a\0" * BLOCK + b"\x3d\xd8", f"line 1, character {BLOCK + 1}: half"),
        ]:
            self.assertFails(vxconv(*arguments, data=data), "standard input: " + place)

    def test_refuses_exactly_what_is_no_utf8(self):
        seed = random.randrange(1 << 32)
        chance = random.Random(seed)
        characters = [character.encode() for character in "a\0é\u07ff\u0800中\uffff\U00010000😀\U0010ffff"]
        wrong = [b"\xc0\x80", b"\xe0\x9f\xbf", b"\xed\xa0\x80", b"\xf0\x8f\xbf\xbf", b"\xf4\x90\x80\x80", b"\xf5\x80\x80\x80", b"\x80"]
        # Each fault, a random byte, half a character and nothing, after no text, a short one and a long one
        for number in range(30):
            fault = [*wrong, chance.randbytes(1), chance.choice(characters[2:])[:-1], b""][number % 10]
            text = b"".join(chance.choices(characters, k=[0, 9, BLOCK][number // 10]))
            data = text + fault + "é.".encode()[: chance.randrange(4)]
            with self.subTest(seed=seed, number=number):
                result = vxconv(data=data)
                try:
                    data.decode()
                    self.assertSucceeds(result, data)
                except UnicodeDecodeError as failure:
                    self.assertFails(result, f"standard input: byte {failure.start}: ")

    def test_says_what_is_wrong_with_the_command_line(self):
        for arguments in (["-f"], ["--wrong"], ["-x"], ["a", "b"], ["-o", ""], ["--lines=1"], ["--in-place"], ["--in-place", "-"],
                          ["--in-place", "--to-folder=d", "a"], ["--to-folder=d", "-o", "b", "a"], ["--to-folder=", "a"],
                          ["--fallback=CP437"], ["--in-place", "a", ""]):
            self.assertFails(vxconv(*arguments), "--help", status=2)
        self.assertFails(vxconv("--in-place"), "--in-place needs a file or a folder", status=2)
        self.assertEqual(vxconv("--in-place", "--help").returncode, 0)

    def test_says_what_is_wrong_with_a_name(self):
        data = self.write("data", b"text")
        for arguments, text in [
            (["-f", "no-such", data], 'unknown encoding "no-such"'), (["-t", "UTF-16", data], 'unknown encoding "UTF-16"'),
            (["-f", "", data], 'unknown encoding ""'), ([self.path("missing")], "missing: no such file or directory"),
            ([self.folder], "is a folder; --to-folder or --in-place"), ([data, "-o", self.folder], "is a directory"),
            ([data, "-o", self.path("missing/out")], "missing/out: no such file or directory"),
            ([data, "-o", self.path("n" * 300)], "the name is too long"),
        ]:
            self.assertFails(vxconv(*arguments), text)
        self.assertEqual(os.listdir(self.folder), ["data"])

    def test_says_that_access_is_denied(self):
        other = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        os.chmod(self.folder, 0o755)
        secret = self.write("secret", b"text", 0o600 if other else 0o200)
        try:
            result = vxconv(secret, **other)
        except PermissionError:
            self.skipTest("another user does not reach the program")
        self.assertFails(result, "secret: permission denied")
        self.assertFails(vxconv("-o", self.write("fixed", b"old", 0o444), **other), "fixed: permission denied")
        self.assertEqual(self.read("fixed"), b"old")

    def test_says_that_a_standard_stream_fails(self):
        self.assertNeedsRoom("vxconv", [], ["--help"], ["--list"])
        self.assertFails(vxconv("-o", "/dev/full", data=b"text"), "/dev/full: the disk is full")
        self.assertFails(vxconv(preexec_fn=lambda: os.close(0)), "standard input: is closed")
        reading, writing = os.pipe()
        os.close(reading)
        result = vxconv(data=b"text", stdout=writing)
        os.close(writing)
        self.assertFails(result, "standard output: broken pipe")

    def test_does_not_read_what_it_writes(self):
        data = self.write("data", b"text")
        with open(data, "ab") as output:
            result = vxconv(data, stdout=output)
        self.assertFails(result, "is the input")


class OutputFiles(tool.Scratch):
    def test_replaces_its_own_input(self):
        self.write("text", "née\n".encode())
        self.assertSucceeds(vxconv("-t", "CP1252", self.path("text"), "-o", self.path("text")))
        self.assertEqual(self.files(), {"text": b"n\xe9e\n"})

    def test_keeps_mode_and_link_and_gives_new_files_the_usual_mode(self):
        self.write("kept", b"old", 0o751)
        os.symlink("kept", self.path("link"))
        os.symlink("new", self.path("dangling"))
        for name in ("link", "dangling"):
            self.assertSucceeds(vxconv("-o", self.path(name), data=b"text", preexec_fn=lambda: os.umask(0o027)))
            self.assertTrue(os.path.islink(self.path(name)))
        modes = {name: stat.S_IMODE(os.stat(self.path(name)).st_mode) for name in ("kept", "new")}
        self.assertEqual(modes, {"kept": 0o751, "new": 0o640})
        self.assertEqual(self.files(), dict.fromkeys(["dangling", "kept", "link", "new"], b"text"))

    def test_gives_nobody_rights_that_the_old_file_did_not_give(self):
        none = 2 ** 32 - 1  # a list for the owner, a user, the group, the most for these two, and all others
        access = struct.pack("<I" + "HHI" * 5, 2, 1, 6, none, 2, 4, 65533, 4, 0, none, 16, 4, none, 32, 0, none)
        out = self.write("out", b"old", 0o600)
        with contextlib.suppress(OSError):  # where the file system has no lists
            os.setxattr(out, "system.posix_acl_access", access)
            self.assertSucceeds(vxconv("-o", out, data=b"text"))
            self.assertEqual(os.getxattr(out, "system.posix_acl_access"), access)
        if os.geteuid() != 0:
            self.skipTest("needs files of another user")
        os.chmod(self.folder, 0o777)
        for groups, before, after in [([65533], 0o660, 0o660), ([], 0o666, 0o606)]:
            os.remove(out)
            os.chown(self.write("out", b"old"), 0, 65533)
            os.chmod(out, before)
            try:
                result = vxconv("-o", out, data=b"text", user=65534, group=65534, extra_groups=groups)
            except PermissionError:
                self.skipTest("another user does not reach the program")
            self.assertSucceeds(result)
            self.assertEqual((stat.S_IMODE(os.stat(out).st_mode), os.stat(out).st_gid), (after, 65533 if groups else 65534))

    def test_leaves_the_old_file_when_it_fails(self):
        self.write("out", b"old")
        for arguments, prepare, text in [
            (["--strict", "-t", "ASCII"], None, "U+00E9"), ([], tool.limited(resource.RLIMIT_FSIZE, BLOCK), "out: the file is too large"),
        ]:
            data = b"x" * 4 * BLOCK + b"\xc3\xa9"
            self.assertFails(vxconv(*arguments, "-o", self.path("out"), data=data, preexec_fn=prepare), text)
            self.assertEqual(self.files(), {"out": b"old"})

    def test_leaves_the_old_file_when_it_is_killed(self):
        for before in ({}, {"out": b"old"}):
            for name, content in before.items():
                self.write(name, content)
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
                with subprocess.Popen([PROGRAM, "-o", self.path("out")], stdin=subprocess.PIPE, bufsize=0) as process:
                    process.stdin.write(b"x" * 8 * BLOCK)  # more than fits in the pipe, so vxconv is reading
                    process.send_signal(number)
                    self.assertEqual((process.wait(), self.files()), (-number, before))

    def test_goes_on_where_a_signal_is_ignored(self):
        with subprocess.Popen([PROGRAM, "-o", self.path("out")], stdin=subprocess.PIPE, bufsize=0,
                              preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN)) as process:
            process.stdin.write(b"x" * 8 * BLOCK)
            process.send_signal(signal.SIGHUP)
            process.stdin.close()
            self.assertEqual(process.wait(), 0)
        self.assertEqual(len(self.read("out")), 8 * BLOCK)


class Batches(tool.Scratch):
    """Several files in one call."""

    def setUp(self):
        super().setUp()
        for folder in ("in/deep/er", "in/empty"):
            os.makedirs(self.path(folder))
        for name, data in {"in/a": "née", "in/bad": "中", "in/deep/b": "ü", "in/deep/er/c": "", "one": "é", "in/deep/one": "ö"}.items():
            self.write(name, data.encode())
        os.symlink("..", self.path("in/deep/circle"))
        os.symlink("../one", self.path("in/link"))
        os.symlink("missing", self.path("in/nothing"))
        os.mkfifo(self.path("in/pipe"))

    def tree(self, folder):
        names = [os.path.join(at, name) for at, _, files in os.walk(self.path(folder)) for name in files]
        names = [name for name in names if os.path.isfile(name)]
        return {os.path.relpath(name, self.path(folder)): self.read(name) for name in names}

    def test_convert_a_folder_with_its_names(self):
        expected = {"a": b"n\xe9e", "deep/b": b"\xfc", "deep/er/c": b"", "link": b"\xe9", "deep/one": b"\xf6", "one": b"\xe9"}
        before = self.tree("in")
        for _ in range(2):  # the second time all targets are there, in a folder that is itself below the input
            result = vxconv("--strict", "-t", "CP1252", "--to-folder", self.path("in/out/new"), self.path("in"), self.path("one"),
                            self.path("missing"))
            self.assertEqual((result.returncode, result.stdout), (1, b""))
            lines = result.stderr.decode().splitlines()
            self.assertEqual(len(lines), 4, lines)
            self.assertIn("in/nothing: a link to a file that does not exist", lines[0])
            self.assertIn("in/bad: line 1, character 1: U+4E2D has no form", lines[1])
            self.assertIn("missing: no such file", lines[2])
            self.assertEqual(lines[3], "vxconv: 3 of 9 files: not converted")
            self.assertEqual(self.tree("in/out/new"), expected)
        self.assertEqual({name: data for name, data in self.tree("in").items() if "out" not in name}, before)

    def test_convert_in_place(self):
        result = vxconv("--strict", "-t", "CP1252", "--in-place", self.path("one"), self.path("in/deep"), self.path("in/bad"))
        self.assertEqual((result.returncode, result.stderr.count(b"\n")), (1, 2), result.stderr)
        self.assertEqual((self.tree("in/deep"), self.read("one")), ({"b": b"\xfc", "er/c": b"", "one": b"\xf6"}, b"\xe9"))
        self.assertEqual(self.read("in/bad"), "中".encode())

    def test_convert_in_place_each_file_once(self):
        names = [self.path(name) for name in ["one", "one", "in/link", "in/deep", "in/deep/er/../b"]]
        self.assertSucceeds(vxconv("-f", "CP1252", "--in-place", *names))
        self.assertEqual((self.read("one"), self.read("in/deep/b")), (b"\xc3\x83\xc2\xa9", b"\xc3\x83\xc2\xbc"))

    def test_convert_in_place_no_link_in_a_folder(self):
        os.symlink("b", self.path("in/deep/a link to b"))
        os.symlink("missing", self.path("in/deep/nothing"))
        os.symlink(self.path("one"), self.path("in/deep/out"))
        result = vxconv("-v", "-f", "CP1252", "--in-place", self.path("in/deep"))
        told = [line for line in result.stderr.decode().splitlines() if "left out: a symbolic link" in line]
        self.assertEqual((result.returncode, len(told)), (0, 4), result.stderr)
        self.assertEqual((self.read("one"), self.read("in/deep/b")), (b"\xc3\xa9", b"\xc3\x83\xc2\xbc"))

    def test_convert_nothing_if_that_could_destroy_a_file(self):
        before = self.tree(".")
        for folder, inputs, part in [
            ("out", ["one", "in/deep/one"], "deep/one: its output " + self.path("out/one") + " would also be that of " + self.path("one")),
            ("in", ["in"], "in: is an input and also the folder"), ("in/deep", ["in/deep/er/c", "in/deep/b"], "deep/b: its output"),
            ("in/deep/er", ["in/link", "in/deep/er/c"], "would replace an input"),
            ("in/../in/deep", ["one", "in/deep/one"], "would also be"),
        ]:
            result = vxconv("-f", "CP1252", "--to-folder", self.path(folder), *map(self.path, inputs))
            lines = result.stderr.decode().splitlines()
            self.assertEqual((result.returncode, len(lines), self.tree(".")), (1, 2, before), lines)
            self.assertIn(part, lines[0])
            self.assertEqual(lines[1], "vxconv: {0} of {0} files: not converted".format(len(inputs)))

    def test_tell_what_they_leave_out(self):
        result = vxconv("-v", "--to-folder", self.path("in/deep/er"), self.path("in"))
        told = [line for line in result.stderr.decode().splitlines() if "left out" in line]
        self.assertEqual([re.search("in/(.*): left out", line)[1] for line in told], ["deep/circle", "deep/er", "pipe"])

    def test_name_what_cannot_be_written(self):
        self.assertIn(b"one/x: a part of the path is not a directory", vxconv("--to-folder", self.path("one/x"), self.path("in/a")).stderr)
        for encoding in (["-t", "none"], ["-f", "auto", "--fallback=none"]):
            self.assertFails(vxconv(*encoding, "--in-place", self.path("one")), 'unknown encoding "none"')


class Detection(tool.Scratch):
    def test_takes_the_mark_then_utf8_then_the_fallback(self):
        text = "é中😀" * BLOCK
        for data, encoding, expected in [
            *((f"\ufeff{text}\ufeff".encode(name), name, f"{text}\ufeff".encode()) for name in UTF), (text.encode(), "UTF-8", text.encode()),
            (b"", "UTF-8", b""), (b"\xff\xfe", "UTF-16LE", b""), (text.encode() + b"\xe9", "CP1252", None), (b"\xe9t", "CP1252", "ét".encode()),
        ]:
            for arguments, name, given in ([self.write("in", data)], self.path("in"), b""), ([], "standard input", data):
                result = vxconv("-vfauto", *arguments, data=given)
                self.assertEqual((result.returncode, result.stderr.decode()), (0, f"vxconv: {name}: read as {encoding}\n"))
                self.assertTrue(expected is None or result.stdout == expected, encoding)
        self.assertSucceeds(vxconv("-f", "auto", "--fallback", "cp437", data=b"\xe1"), "ß".encode())
        picture = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR"
        self.assertFails(vxconv("-fauto", self.write("picture", picture)), "picture", "byte 8 is zero")
        self.assertEqual(vxconv("-fauto", "--in-place", self.path("picture")).returncode, 1)
        self.assertEqual(self.read("picture"), picture)
        self.assertSucceeds(vxconv("-fauto", "--fallback=UTF-16LE", data=b"\xe9\0"), "é".encode())
        self.assertFails(vxconv("-fauto", "--strict", data=b"\xfe\xff\0a\0"), "byte 4: the input ends inside")
        self.assertFails(vxconv("-fauto", "--strict", data=b"\xe9\x81"), "byte 1: no character in CP1252")


class Languages(tool.Scratch):
    def test_say_the_same(self):
        _, environment = self.register(os.environ["VXCONV_BUNDLES"])
        shutil.copytree(os.path.join(os.path.dirname(os.environ["VXCONV_BUNDLES"]), "texts"), self.path("texts"))
        self.write("twice", b"")
        for arguments, data in [
            (["--help"], b""), (["a", "b"], b""), (["--in-place"], b""), (["-o", ""], b""), (["--fallback=x"], b""),
            (["--in-place", "--to-folder=x", "a"], b""), (["-f", "none"], b""), (["-vfauto", "--strict"], b"\x81"), (["-fauto"], b"\x81\0"),
            ([], b"\x80"), ([], b"\xc3"),
            (["-t", "ASCII", "--strict"], "é".encode()), (["-f", "UTF-16LE", "-t", "UTF-16BE"], b"\0\xdc"),
            (["--to-folder", self.path("out"), self.path("twice"), self.path("texts/../twice/")], b""),
            (["--to-folder", self.folder, self.path("twice")], b""), (["-v", "--to-folder", self.path("texts"), self.folder], b""),
            (["--in-place", "-"], b""), ([self.folder], b""),
        ]:
            english, same, german, french = (
                (lambda result: (result.returncode, result.stdout, result.stderr))(vxconv(*arguments, *locale, data=data, env=environment))
                for locale in ([], ["--locale=en_US"], ["--locale=de"], ["--locale=fr"]))
            self.assertEqual(same, english)
            self.assertEqual((len({english, german, french}), german[0], french[0]), (3, english[0], english[0]), arguments)


class LargeFiles(tool.Scratch):
    def test_takes_little_memory_for_a_large_file_and_shows_progress_on_a_terminal_only(self):
        mebibytes = 25 if SANITIZED else 110
        lines = WIDE_TEXT.encode() * (1024 * 1024 // len(WIDE_TEXT.encode()))
        with open(self.path("large"), "wb") as large:
            for _ in range(mebibytes):
                large.write(lines)
        shown_size = os.path.getsize(self.path("large")) // (1024 * 1024)
        prepare = None if SANITIZED else tool.limited(resource.RLIMIT_DATA, 4 * 1024 * 1024)
        for arguments in ([], ["--lines"], ["-t", "UTF-16LE"]):
            terminal, stderr = pty.openpty()
            shown = ""
            with subprocess.Popen([PROGRAM, *arguments, self.path("large"), "-o", self.path("out")], stderr=stderr,
                                  preexec_fn=prepare) as process:
                os.close(stderr)
                with contextlib.suppress(OSError):  # a terminal ends with this error
                    while True:
                        shown += os.read(terminal, 1 << 16).decode()
                status = process.wait()
            os.close(terminal)
            self.assertEqual(status, 0, shown)
            self.assertRegex(shown, rf"\A(\r *\d+ % of {shown_size} MiB)+\r\x1b\[K\Z")
            if arguments != ["-t", "UTF-16LE"]:
                self.assertTrue(filecmp.cmp(self.path("out"), self.path("large"), shallow=False))
        self.assertSucceeds(vxconv("-f", "UTF-16LE", self.path("out"), "-o", self.path("out")))
        self.assertTrue(filecmp.cmp(self.path("out"), self.path("large"), shallow=False))


class EncodingList(tool.Scratch):
    def test_prints_encodings_that_it_converts(self):
        result = vxconv("--list")
        rows = [line.split() for line in result.stdout.decode().splitlines()]
        listed = {name: names for name, *names in rows}
        self.assertEqual((listed["CP1252"], listed["UTF-32BE"]), (["1252", "WINDOWS-1252", "CSWINDOWS1252"], ["CSUTF32BE"]))
        for name, word in ((row[0], word) for row in rows for word in row):
            self.assertSucceeds(vxconv("-f", word, data="abc".encode(name) if name in UTF else b"abc"), b"abc")


if __name__ == "__main__":
    unittest.main()
