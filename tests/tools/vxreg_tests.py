#!/usr/bin/env python3
"""Tests the program in the variable VXREG from outside, with a new store."""

import os
import pwd
import random
import resource
import shutil
import unittest

import tool

COMPONENT = os.environ["VXREG_COMPONENT"]
KEY = "VX_HKEY_USER\\Software\\X"


class Scratch(tool.Scratch):
    def vxreg(self, *arguments, text=b"", env=None, **options):
        environment = {**os.environ, "VXSYS4_REGISTRY": self.path("store"),
                       "VXSYS4_MACHINE_REGISTRY": self.path("machine"), **(env or {})}
        return tool.run("vxreg", *arguments, data=text, env=environment, cwd=self.folder, **options)

    def output(self, *arguments, **options):
        result = self.vxreg(*arguments, **options)
        self.assertSucceeds(result, result.stdout)
        return result.stdout.decode()

    def assertRefused(self, arguments, *parts, status=1, **options):
        self.assertFails(self.vxreg(*arguments, **options), *parts, status=status)


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
        self.assertRefused(["get", KEY, "n"], KEY, '"n"', "not found")
        self.assertEqual(self.output("delete", "VX_HKEY_USER\\Software"), "")
        self.assertEqual(self.output("list", "VX_HKEY_USER"), "")
        self.assertEqual(len(self.output("list").splitlines()), 5)

    def test_tells_what_is_wrong(self):
        for arguments in [[], ["shout"], ["get"], ["set", KEY, "n"], ["list", KEY, KEY], ["--list"]]:
            self.assertRefused(arguments, "--help", status=2)
        for text, kind in [("4294967296", "u32"), ("-1", "u64"), ("1x", "u32"), ("abc", "hex"), ("zz", "hex"), ("1", "u16")]:
            self.assertRefused(["set", KEY, "n", text, kind], status=2)
        self.assertRefused(["set", KEY, b"\xff", "1"], "not UTF-8", status=2)
        self.assertRefused(["get", "HKEY\\X", "n"], "HKEY\\X", "hive")
        self.assertRefused(["delete", "VX_HKEY_USER"], "cannot be deleted")
        self.assertRefused(["shout"], "unknown command shout", "register", "import", status=2)
        self.assertRefused(["set", KEY, "n"], "KEY NAME VALUE [TYPE]", status=2)
        self.assertRefused(["set", KEY, "n", "12x", "u32"], '"12x"', "0 to 4294967295", status=2)
        for option in ["--completion", "--compl"]:
            self.assertRefused([option + "=sh"], f'{option} does not take "sh", only bash, zsh, fish;', status=2)
        self.assertRefused(["get", KEY], "default value: not found")
        self.assertRefused(["set", "VX_HKEY_USER\\" + "x" * 256, "n", "1"], "longer than 255")
        self.output("set", KEY, "n", "1")
        os.chmod(self.path("store"), 0o777)
        self.assertRefused(["get", KEY, "n"], "nobody else may write there")

    def test_prints_help_and_version(self):
        self.assertHelps("vxreg", "Usage: vxreg", *self.output("list").split())
        self.assertNeedsRoom("vxreg", ["--help"], ["list"])


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
        self.assertRefused(["export", "VX_HKEY_USER\\B", "file"], "VX_HKEY_USER\\B", "not found")
        full = tool.limited(resource.RLIMIT_FSIZE, 1000)
        self.assertRefused(["export", "VX_HKEY_USER\\A", "file"], "file: the file is too large", preexec_fn=full)
        self.assertEqual(self.read("file").decode(), self.TEXT)
        self.assertRefused(["export", "VX_HKEY_USER\\A", "/dev/full"], "/dev/full: the disk is full")
        self.assertEqual(sorted(os.listdir(self.folder)), ["file", "store"])

    def test_are_set_as_a_whole_or_not_at_all(self):
        head = b'# a note\r\n[VX_HKEY_USER\\A]\r\n\r\n"n"=u32:1\r\n'
        for line in [b'"n=u32:1', b'"n"', b'"n"=u8:1', b'"n"="a"b', b'"n"=text:a', b'"n"="\\x"', b'"n"="\\u12"', '"n"="\\uİ041"'.encode(), "[VX_HKEY_USER/X%İ1]".encode(), b"n=1",
                     b"[VX_HKEY_USER\\A", b"[VX_USER\\A]", b"[VX_HKEY_USER\\%4]", b'"n"="\xff"']:
            self.assertRefused(["import"], "standard input", "line 5", text=head + line)
            self.assertEqual(self.output("list", "VX_HKEY_USER"), "", line)
        self.assertRefused(["import"], "line 1", text=b'"n"=u32:1')
        self.assertRefused(["import", "missing"], "missing")
        self.assertRefused(["import", "."], ".: is a directory")
        self.output("import", text=head)
        self.assertEqual(self.output("get", "VX_HKEY_USER\\A", "n"), "1\n")


class WithComponent(Scratch):
    def setUp(self):
        super().setUp()
        with open(COMPONENT, "rb") as file:
            self.content = file.read()
        self.put(self.content)

    def put(self, content):
        self.write("greeter.so", content, 0o755)


class Components(WithComponent):
    def test_are_registered_resolved_and_taken_out(self):
        self.assertRefused(["resolve", "Example.Greeter"], "Example.Greeter", "registered")
        self.assertEqual(self.output("register", "greeter.so"), "")
        lines = self.output("resolve", "example.greeter").splitlines()
        self.assertEqual(lines[0], "class    {7B1F2A60-9D5E-4C37-8E21-4490D35A6F02}")
        self.assertEqual(lines[1], "library  " + self.path("greeter.so"))
        self.assertEqual(len(lines), 3)
        self.assertEqual(self.output("unregister", "greeter.so"), "")
        self.assertEqual(self.output("list", "VX_HKEY_CLASSES"), "[VX_HKEY_CLASSES_32\\CLSID]\n")
        self.assertRefused(["unregister", "greeter.so"], "is not registered in the registry " + self.path("store"))
        home = {"VXSYS4_REGISTRY": "", "XDG_DATA_HOME": self.path("home")}
        self.assertRefused(["unregister", "greeter.so"], "for the user " + pwd.getpwuid(os.geteuid()).pw_name, env=home)
        self.assertRefused(["-m", "unregister", "greeter.so"], "is not registered for all users")

    def test_are_taken_out_when_the_library_is_gone(self):
        self.output("set", "VX_HKEY_CLASSES\\Other\\CLSID", "", "{other}")
        before = self.output("export", "VX_HKEY_CLASSES")
        self.output("register", "greeter.so")
        os.remove(self.path("greeter.so"))
        self.output("unregister", "greeter.so")
        self.assertEqual(self.output("export", "VX_HKEY_CLASSES").replace("[VX_HKEY_CLASSES_32\\CLSID]\n", ""), before)
        self.assertRefused(["unregister", "greeter.so"], "no such file")

    def test_are_refused_with_the_reason(self):
        self.output("register", "greeter.so")
        for change, part in [
            (lambda: os.chmod(self.path("greeter.so"), 0o777), "trusted"),
            (lambda: os.remove(self.path("greeter.so")), "no such file"),
            (lambda: self.put(b"text"), "not a library for this machine"), (lambda: self.put(self.content[:5000]), "not a library for this machine"),
            (lambda: self.put(self.content[:18] + b"\x28" + self.content[19:]), "not a library for this machine"),
        ]:
            change()
            self.assertRefused(["resolve", "Example.Greeter"], self.path("greeter.so"), part)
            self.assertRefused(["register", "greeter.so"], self.path("greeter.so"), part)

    def test_are_refused_when_they_cannot_work(self):
        self.put(self.content.replace(b"\0VXGetClassObject\0", b"\0VXGetOtherObject\0"))
        self.assertRefused(["register", "greeter.so"], "greeter.so: does not export VXGetClassObject")
        shutil.copy(os.environ["VXREG_FAULTY"], self.path("faulty.so"))
        self.assertRefused(["register", "faulty.so"], "faulty.so: no object of class {00000077-")
        self.assertEqual(self.output("list", "VX_HKEY_CLASSES"), "")
        self.assertEqual(self.output("--force", "register", "faulty.so"), "")
        self.assertRefused(["--force", "list"], "--force has no effect without register", status=2)

    def test_take_no_class_of_another_library(self):
        shutil.copy(self.path("greeter.so"), self.path("copy.so"))
        os.symlink("greeter.so", self.path("link.so"))
        for arguments in [["-m", "register", "copy.so"], ["register", "greeter.so"], ["register", "greeter.so"], ["register", "link.so"]]:
            self.output(*arguments)
        self.assertRefused(["register", "copy.so"], "is registered for " + self.path("greeter.so"))
        self.assertRefused(["unregister", "copy.so"], "is not registered")
        self.output("--force", "register", "copy.so")
        self.assertIn(self.path("copy.so"), self.output("resolve", "Example.Greeter"))
        os.remove(self.path("copy.so"))
        self.output("register", "greeter.so")
        self.output("unregister", "greeter.so")
        shutil.copy(self.path("greeter.so"), self.path("copy.so"))
        self.output("set", "VX_HKEY_CLASSES\\Example.Greeter\\CLSID", "", "{other}")
        for other in "copy.so", "link.so":
            self.output("set", "VX_HKEY_CLASSES\\CLSID\\{other}\\InprocServer32", "", self.path(other))
            if other == "copy.so":
                self.assertRefused(["register", "greeter.so"], "the name Example.Greeter is registered for class {other}")
        self.output("register", "greeter.so")  # an older version of the same library had the name


class Machine(WithComponent):
    def test_offers_components_to_all_users(self):
        os.umask(0o077)
        self.output("--machine", "register", "greeter.so")
        self.assertEqual({os.stat(self.path(os.path.join("machine", name))).st_mode & 0o777
                          for name in [".", "classes-32", "classes-32/k-clsid", "classes-32/k-clsid/key", "changes"]},
                         {0o755, 0o644})
        self.assertIn("an object was created", self.output("resolve", "Example.Greeter"))
        self.assertFalse(os.path.exists(self.path("store")))
        self.output("-m", "set", KEY, "n", "1")
        for arguments in ["unregister", "greeter.so"], ["delete", KEY], ["delete", KEY, "n"]:
            self.assertRefused(arguments, "only in the registry of all users", "--machine")
        self.output("-m", "delete", KEY)
        self.output("-m", "unregister", "greeter.so")
        self.assertRefused(["resolve", "Example.Greeter"], "registered")
        self.assertRefused(["-m", "list"], "all users", env={"VXSYS4_MACHINE_REGISTRY": ""})

    def test_says_which_folder_cannot_be_made(self):
        self.write("file", b"")
        os.mkdir(self.path("locked"), 0o555)
        os.chmod(self.folder, 0o755)
        other = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        for home, folder, why in [("file", "file/.local", "a part of the path is not a directory"), ("none/x", "none", "permission denied"),
                                  ("locked", "locked/.local", "permission denied")]:
            for arguments in [["set", KEY, "n", "1"], ["import"], ["register", "greeter.so"]]:
                os.chmod(self.folder, 0o555)
                try:
                    result = self.vxreg(*arguments, text=f"[{KEY}]\n".encode(), **other,
                                        env={"VXSYS4_REGISTRY": "", "XDG_DATA_HOME": "", "HOME": self.path(home)})
                except PermissionError:
                    self.skipTest("another user does not reach the program")
                finally:
                    os.chmod(self.folder, 0o755)
                self.assertFails(result, f"the folder {self.path(folder)} cannot be made: {why}")
        self.assertEqual(sorted(os.listdir(self.folder)), ["file", "greeter.so", "locked"])

    def test_is_changed_by_its_owner_only(self):
        os.mkdir(self.path("machine"), 0o555)
        os.chmod(self.folder, 0o755)
        other = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        for arguments in ["set", KEY, "n", "1"], ["delete", KEY], ["register", "greeter.so"]:
            try:
                result = tool.run("vxreg", "-m", *arguments, env={"VXSYS4_MACHINE_REGISTRY": self.path("machine")}, **other)
            except PermissionError:
                self.skipTest("another user does not reach the program")
            self.assertFails(result, "only the owner may change " + self.path("machine"))

    def test_speaks_three_languages(self):
        self.output("register", os.environ["VXREG_BUNDLES"])
        self.write("bad.txt", b"[VX_HKEY_USER\\X]\nn=1\n")
        for arguments in [["--help"], ["verify", "greeter.so"], ["resolve", "None"], ["shout"], ["get", "X"],
                          ["set", KEY, "n", "1x", "u32"], ["get", KEY, "none"], ["import", "bad.txt"],
                          ["-m", "unregister", "greeter.so"], ["unregister", "greeter.so"], ["delete", "VX_HKEY_USER"]]:
            said = [self.vxreg(*locale, *arguments) for locale in [[], ["--locale=en_US"], ["--locale=de"], ["--locale=fr"]]]
            told = [result.stdout + result.stderr for result in said]
            self.assertEqual(told[0], told[1])
            self.assertEqual(len(set(told)), 3, told)


class Verification(WithComponent):
    def test_finds_what_is_wrong(self):
        library = self.path("faulty.so")
        shutil.copy(os.environ["VXREG_FAULTY"], library)
        none = "no object of class {00000077-0000-0000-0000-000000000000} (Faulty)"
        for fault, parts in [
            ("", [none]), ("killed", ["by signal 9 (Killed) while an object of class {00000077-"]), ("ended", ["with status 7"]),
            ("silent", ["does not return within 5 seconds while an object"]), ("thread", [none, "leaves a thread"]), ("in use", [none, "says that it is in use"]),
            ("unregistrable", ["VXRegisterServer failed: the disk is full", "registers no class"]),
            ("no path", ["without a library"]), ("same name", [none, "the name Faulty belongs to"]),
            ("same class", [none, "Twin and Faulty both have"]), ("kept key", [none, "does not remove Faulty"]),
        ]:
            result = self.vxreg("verify", "faulty.so", env={"FAULT": fault})
            lines = result.stdout.decode().splitlines()
            self.assertEqual((result.returncode, len(lines)), (1, len(parts)), (fault, lines))
            for part in parts:
                self.assertTrue(any(line.startswith(library + ": ") and part in line for line in lines), (fault, lines))

    def test_finds_what_the_file_shows(self):
        with open(os.environ["VXREG_FAULTY"].replace("vxreg_faulty", "vxreg_faulty_unique"), "rb") as file:
            unique = file.read()
        other = self.content[:18] + b"\x28" + self.content[19:]
        for content, part in [(b"text", "not a shared"), (b"", "truncated"), (self.content[:5000], "truncated"),
                              (other, "another machine"), (unique, "only_one")]:
            self.put(content)
            self.assertIn(part, self.vxreg("verify", "greeter.so").stdout.decode())
        self.assertRefused(["verify", "missing.so"], "1 of 1")
        random_bytes = random.Random(4)
        for _ in range(20):  # damaged tables
            broken = bytearray(self.content)
            for _ in range(8):
                broken[random_bytes.choice([random_bytes.randrange(16, 64), -random_bytes.randrange(1, 2000)])] ^= 0x41
            self.put(bytes(broken))
            self.assertIn(self.vxreg("verify", "greeter.so").returncode, [0, 1])

    def test_finds_the_classes_of_others(self):
        self.assertIn("greeter.so: no problem", self.output("verify", "greeter.so"))
        self.output("register", "greeter.so")
        self.assertIn("greeter.so: no problem", self.output("verify", "greeter.so"))
        shutil.copy(self.path("greeter.so"), self.path("copy.so"))
        for name, value in [("Example.Greeter.1\\CLSID", "{other}"), ("CLSID\\{other}\\InprocServer32", self.path("copy.so"))]:
            self.output("set", "VX_HKEY_CLASSES\\" + name, "", value)
        result = self.vxreg("verify", "copy.so", "greeter.so")
        self.assertIn("is registered for " + self.path("greeter.so"), result.stdout.decode())
        self.assertIn("Example.Greeter.1 is registered for class {other}", result.stdout.decode())
        self.assertFails(result, "2 of 2")


if __name__ == "__main__":
    unittest.main()
