"""Functions that the tests of the tools share. The variable with the name of a tool in capitals has the path of its program."""

import os
import pathlib
import re
import resource
import shutil
import subprocess
import tempfile
import unittest

os.environ["VXSYS4_MACHINE_REGISTRY"] = ""  # not the components that are installed on this machine


def run(tool, *arguments, data=b"", stdout=subprocess.PIPE, **options):
    return subprocess.run([os.environ[tool.upper()], *arguments], input=data, stdout=stdout, stderr=subprocess.PIPE,
                          check=False, timeout=300, **options)


def limited(limit, value):
    return lambda: resource.setrlimit(limit, (value, value))


def entries_of(text):
    """Each entry of a basic log as a dictionary. An incomplete entry is an error."""
    blocks = text.split("-" * 25 + "\n")
    assert blocks.pop() == "" and all(block.endswith("\n") for block in blocks), "a torn entry"
    return [dict(line.split("=", 1) for line in block[:-1].split("\n")) for block in blocks]


class Scratch(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = os.path.realpath(folder.name)
        self.log = self.path("log")

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, data, mode=0o644):
        with open(self.path(name), "wb") as file:
            file.write(data)
        os.chmod(self.path(name), mode)
        return self.path(name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def files(self):
        return {name: self.read(name) for name in os.listdir(self.folder)}

    def rotated(self):
        """The contents of the files of a log that begins new ones, the oldest first."""
        older = sorted(name for name in os.listdir(self.folder) if name.startswith("log."))
        return [self.read(name).decode() for name in [*older, "log"]]

    def entries(self, name="log", encoding="utf-8"):
        return entries_of(self.read(name).decode(encoding))

    def texts(self, name="log", encoding="utf-8"):
        return [entry["text"] for entry in self.entries(name, encoding)]

    def register(self, library):
        """Registers a copy of a library in a new store. Returns the copy, and an environment that names the store."""
        copy = shutil.copy(library, self.folder)
        os.chmod(copy, 0o755)
        environment = {**os.environ, "VXSYS4_REGISTRY": self.path("store")}
        self.assertSucceeds(run("vxreg", "register", copy, env=environment))
        return copy, environment

    def assertSucceeds(self, result, output=b""):
        self.assertEqual((result.returncode, result.stderr, result.stdout), (0, b"", output), result.args)

    def assertFails(self, result, *parts, status=1):
        """Expects one line on standard error that contains all `parts`."""
        text = result.stderr.decode(errors="replace")
        self.assertEqual(result.returncode, status, (result.args, text))
        self.assertRegex(text, rf"\A{os.path.basename(result.args[0])}: [^\n]+\n\Z", result.args)
        for part in parts:
            self.assertIn(part, text, result.args)

    def assertNeedsRoom(self, tool, *commands, reason="the disk is full", status=1):
        for arguments in commands:
            with open("/dev/full", "wb") as full:
                result = run(tool, *arguments, data=b"text\n", stdout=full)
                self.assertFails(result, "standard output: " + reason, status=status)

    def assertHelps(self, tool, *options):
        text = run(tool, "--help").stdout.decode()
        for option in options:
            self.assertIn(option, text)
        header = (pathlib.Path(__file__).parents[2] / "vx/Version.h").read_text()
        version = ".".join(re.findall(r"^#define VXLIB4_VERSION_(?:MAJOR|MINOR|PATCH) (\d+)$", header, re.MULTILINE))
        self.assertEqual(run(tool, "--version").stdout.decode(), f"{tool} {version}\n")
