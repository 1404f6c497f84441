#!/usr/bin/env python3
"""Runs the vxreg that the variable VXREG names, in a store of its own, as a person would."""

import os
import shutil
import subprocess
import tempfile
import unittest

PROGRAM = os.environ["VXREG"]
COMPONENT = os.environ["VXREG_COMPONENT"]
KEY = "VX_HKEY_USER\\Software\\X"


class Scratch(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = os.path.realpath(folder.name)
        self.environment = {**os.environ, "VXSYS4_REGISTRY": self.path("store")}

    def path(self, name):
        return os.path.join(self.folder, name)

    def vxreg(self, *arguments, text=b""):
        return subprocess.run(
            [PROGRAM, *arguments], input=text, capture_output=True, check=False, env=self.environment, cwd=self.folder)

    def output(self, *arguments, **options):
        result = self.vxreg(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr), (0, b""), arguments)
        return result.stdout.decode()

    def assertFails(self, arguments, *parts, status=1, **options):
        """One line on standard error that has all `parts` in it."""
        result = self.vxreg(*arguments, **options)
        line = result.stderr.decode()
        self.assertEqual(result.returncode, status, arguments)
        self.assertTrue(line.startswith("vxreg: ") and line.count("\n") == 1, line)
        for part in parts:
            self.assertIn(part, line)


class Values(Scratch):
    def test_sets_and_prints_each_type(self):
        for name, kind, text, line in [
            ("", "text", "a default", '""="a default"'),
            ("bytes", "hex", "00fF7f", '"bytes"=hex:00ff7f'),
            ("empty", "hex", "", '"empty"=hex:'),
            ("Größe", "u64", "18446744073709551615", '"Größe"=u64:18446744073709551615'),
            ("n", "u32", "4294967295", '"n"=u32:4294967295'),
            ("t", "text", 'a "b"\\\t😀\x01', '"t"="a \\"b\\"\\\\\\t😀\\u0001"'),
        ]:
            self.assertEqual(self.output("set", KEY, name, text, kind), "")
            self.assertEqual(self.output("get", KEY.replace("\\", "/"), name), text.lower() + "\n")
            self.assertIn(line + "\n", self.output("list", KEY))
        self.assertEqual(self.output("list", "vx_hkey_user/Software"), f"[{KEY}]\n")
        self.assertEqual(self.output("delete", KEY, "n"), "")
        self.assertFails(["get", KEY, "n"], KEY, '"n"', "not found")
        self.assertEqual(self.output("delete", "VX_HKEY_USER\\Software"), "")
        self.assertEqual(self.output("list", "VX_HKEY_USER"), "")
        self.assertEqual(len(self.output("list").splitlines()), 5)

    def test_tells_what_is_wrong(self):
        for arguments in [[], ["shout"], ["get"], ["set", KEY, "n"], ["list", KEY, KEY], ["--list"]]:
            self.assertFails(arguments, "--help", status=2)
        for text, kind in [("4294967296", "u32"), ("-1", "u64"), ("1x", "u32"), ("abc", "hex"), ("zz", "hex"), ("1", "u16")]:
            self.assertFails(["set", KEY, "n", text, kind], status=2)
        self.assertFails(["set", KEY, b"\xff", "1"], "not UTF-8", status=2)
        self.assertFails(["get", "HKEY\\X", "n"], "HKEY\\X", "hive")
        self.assertFails(["delete", "VX_HKEY_USER"], "denied")
        self.assertFails(["set", "VX_HKEY_USER\\" + "x" * 256, "n", "1"], "too long")
        self.output("set", KEY, "n", "1")
        os.chmod(self.path("store"), 0o777)
        self.assertFails(["get", KEY, "n"], "nobody else may write there")

    def test_prints_help_and_version(self):
        self.assertIn("Usage: vxreg", self.output("--help"))
        self.assertRegex(self.output("--version"), r"^vxreg \d+\.\d+\.\d+\n$")
        with open("/dev/full", "wb") as full:
            self.assertEqual(subprocess.run([PROGRAM, "--help"], stdout=full, stderr=subprocess.PIPE).returncode, 1)


class Branches(Scratch):
    TEXT = """[VX_HKEY_USER\\A]
""="x"
"long"="%s"
"odd \\"name\\""="\\u0000\\ud800end"
[VX_HKEY_USER\\A\\50%%25 ]%%01]
"n"=u32:7
[VX_HKEY_USER\\A\\Empty]
""" % ("y" * 3000)

    def test_come_back_as_they_went(self):
        self.output("import", text=self.TEXT.encode())
        self.assertEqual(self.output("export", "VX_HKEY_USER\\A"), self.TEXT)
        self.output("export", "VX_HKEY_USER\\A", "file")
        self.output("delete", "VX_HKEY_USER\\A")
        self.output("import", "file")
        self.assertEqual(self.output("export", "VX_HKEY_USER\\A"), self.TEXT)
        self.assertFails(["export", "VX_HKEY_USER\\B", "file"], "VX_HKEY_USER\\B", "not found")
        with open(self.path("file"), "rb") as file:
            self.assertEqual(file.read().decode(), self.TEXT)

    def test_are_set_as_a_whole_or_not_at_all(self):
        head = b'# a note\r\n[VX_HKEY_USER\\A]\r\n\r\n"n"=u32:1\r\n'
        for line in [b'"n=u32:1', b'"n"', b'"n"=u8:1', b'"n"="a"b', b'"n"=text:a', b'"n"="\\x"', b'"n"="\\u12"', b"n=1",
                     b"[VX_HKEY_USER\\A", b"[VX_USER\\A]", b"[VX_HKEY_USER\\%4]", b'"n"="\xff"']:
            self.assertFails(["import"], "standard input", "line 5", text=head + line)
            self.assertEqual(self.output("list", "VX_HKEY_USER"), "", line)
        self.assertFails(["import"], "line 1", text=b'"n"=u32:1')
        self.assertFails(["import", "missing"], "missing")
        self.output("import", text=head)
        self.assertEqual(self.output("get", "VX_HKEY_USER\\A", "n"), "1\n")


class Components(Scratch):
    def setUp(self):
        super().setUp()
        shutil.copy(COMPONENT, self.path("greeter.so"))
        os.chmod(self.path("greeter.so"), 0o755)

    def test_are_registered_resolved_and_taken_out(self):
        self.assertFails(["resolve", "Example.Greeter"], "Example.Greeter", "registered")
        self.assertEqual(self.output("register", "greeter.so"), "")
        lines = self.output("resolve", "example.greeter").splitlines()
        self.assertEqual(lines[0], "class    {7B1F2A60-9D5E-4C37-8E21-4490D35A6F02}")
        self.assertEqual(lines[1], "library  " + self.path("greeter.so"))
        self.assertEqual(len(lines), 3)
        self.assertEqual(self.output("unregister", "greeter.so"), "")
        self.assertEqual(self.output("list", "VX_HKEY_CLASSES"), "[VX_HKEY_CLASSES_32\\CLSID]\n")
        self.assertFails(["unregister", "greeter.so"], "not found")

    def test_are_refused_with_the_reason(self):
        self.output("register", "greeter.so")
        with open(self.path("greeter.so"), "rb") as file:
            content = file.read()
        for change, part in [
            (lambda: os.chmod(self.path("greeter.so"), 0o777), "trusted"),
            (lambda: os.remove(self.path("greeter.so")), "no such file"),
            (lambda: self.put(b"text"), "whole library"),
            (lambda: self.put(content[:5000]), "whole library"),
            (lambda: self.put(content[:18] + b"\x28" + content[19:]), "whole library"),
        ]:
            change()
            self.assertFails(["resolve", "Example.Greeter"], self.path("greeter.so"), part)
            self.assertFails(["register", "greeter.so"], self.path("greeter.so"), part)

    def put(self, content):
        with open(self.path("greeter.so"), "wb") as file:
            file.write(content)
        os.chmod(self.path("greeter.so"), 0o755)


if __name__ == "__main__":
    unittest.main()
