"""The manual pages and the completions that are installed with the programs."""

import glob
import os
import re
import shutil
import subprocess
import unittest

import tool

FILES = os.environ["TOOL_FILES"]


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=True, **options).stdout


def told(name, option):
    return run(os.path.join(os.environ["TOOL_FOLDER"], name), option)


def options_of(name):
    text = told(name, "--help")
    return set(re.findall(r"^ {2,6}(?:-\w, )?(--[\w-]+)", text, re.MULTILINE))


class Completions(tool.Scratch):
    def test_offer_every_option(self):
        names = sorted(os.listdir(os.path.join(FILES, "bash")))
        self.assertLess({"vxconv", "vxlog", "vxlogd", "vxreg"}, set(names))
        home = {"HOME": self.folder, "PATH": os.environ["PATH"]}
        for name in names:
            options = options_of(name)
            self.assertEqual((told(name, "-h"), told(name, "-V")), (told(name, "--help"), told(name, "--version")))
            script = f'. "$1"; COMP_WORDS=({name} --); COMP_CWORD=1; _{name}; printf "%s\\n" "${{COMPREPLY[@]}}"'
            offered = run("bash", "-c", script, "bash", os.path.join(FILES, "bash", name))
            self.assertEqual({line.rstrip("=") for line in offered.split()}, options, name)
            if shutil.which("fish"):
                script = f'source $argv[1]; complete -C "{name} --"'
                offered = run("fish", "-c", script, os.path.join(FILES, "fish", name + ".fish"), env=home)
                self.assertLessEqual(options, {re.split(r"[\t=]", line)[0] for line in offered.splitlines()}, name)
            if shutil.which("zsh"):
                file = os.path.join(FILES, "zsh", "_" + name)
                run("zsh", "-n", file)
                run("zsh", "-fc", f'_arguments() {{ comparguments=$#; }}; . "$1"; ((comparguments > {len(options)}))', "zsh", file)

    def test_offer_the_commands_as_first_argument(self):
        bash = '. "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$(($# - 2)); _vxreg; printf "%s\\n" "${COMPREPLY[@]}"'
        fish = 'source $argv[1]; complete -C "$argv[2]"'
        for words, offered in [
            ("re", ["register", "resolve"]), ("-m re", ["register", "resolve"]), ("--machine -m re", ["register", "resolve"]),
            ("--locale de re", ["register", "resolve"]), ("-m --locale=de re", ["register", "resolve"]),
            ("--locale re", []), ("--locale=re", []), ("-m get re", []), ("-m - re", []), ("--locale de get re", []),
            ("--completion ba", ["bash"]), ("--machine --completion=ba", ["bash"]),
        ]:
            line = ["vxreg", *words.replace("=", " = ").split()]
            with self.subTest(words, shell="bash"):
                said = run("bash", "-c", bash, "bash", os.path.join(FILES, "bash", "vxreg"), *line, cwd=self.folder)
                self.assertEqual(said.split(), offered)
            if shutil.which("fish"):
                with self.subTest(words, shell="fish"):
                    said = run("fish", "-c", fish, os.path.join(FILES, "fish", "vxreg.fish"), "vxreg " + words, cwd=self.folder,
                               env={"HOME": self.folder, "PATH": os.environ["PATH"]})
                    self.assertEqual([row.split("\t")[0].split("=")[-1] for row in said.splitlines()], offered)


class Streams(tool.Scratch):
    def test_are_named_where_they_are_closed(self):
        names = [name for name in ["vxconv", "vxlog", "vxlogd", "vxreg", "vxview"] if os.path.exists(os.path.join(os.environ["TOOL_FOLDER"], name))]
        for name in names:
            inputs = {"vxlogd": [], "vxreg": [["import"], ["import", "-"]]}.get(name, [[], ["-"]])
            outputs = {"vxlogd": ["--check-config"], "vxreg": ["list"], "vxview": ["-c"]}.get(name, [])
            for stream, closed, commands in [("input", 0, inputs), ("output", 1, [outputs, ["--help"]])]:
                for arguments in commands:
                    result = subprocess.run([os.path.join(os.environ["TOOL_FOLDER"], name), *arguments], stdin=subprocess.DEVNULL if closed else None,
                                            capture_output=True, check=False, timeout=60, preexec_fn=lambda number=closed: os.close(number))
                    self.assertFails(result, f"standard {stream}: is closed", status=2 if name == "vxview" else 1)


@unittest.skipUnless(glob.glob(FILES + "/*.1"), "no manual pages were made")
class Pages(unittest.TestCase):
    def test_are_complete_and_well_formed(self):
        pages = [*glob.glob(FILES + "/*.[18]"), os.environ["TOOL_OVERVIEW"]]
        for page in pages:
            name = os.path.basename(page).split(".")[0]
            if shutil.which("mandoc"):
                run("mandoc", "-Tlint", "-W", "error", page)
            shown = subprocess.run(["man", "--warnings", "--no-justification", "-E", "UTF-8", "-l", page], capture_output=True, check=True,
                                   env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80", "MANPAGER": "cat"})
            self.assertEqual(shown.stderr, b"", page)
            text = re.sub(r".\x08|\x1b\[\d*m", "", shown.stdout.decode()).replace("‐", "-")
            self.assertRegex(text, rf"NAME\n +{name} . \w")
            self.assertIn("SEE ALSO", text)
            for option in [] if page.endswith(".7") else options_of(name):
                self.assertIn(option, text)


if __name__ == "__main__":
    unittest.main()
