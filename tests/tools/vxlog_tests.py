#!/usr/bin/env python3
"""Tests the program in the variable VXLOG from outside. Documents are read by Python's XML parser."""

import functools
import json
import os
import re
import resource
import select
import shutil
import signal
import socket
import subprocess
import time
import unittest
import xml.etree.ElementTree as ElementTree

import tool

WRONG_COMMAND_LINES = [
    (["--no-such"], "--no-such"), (["-l", "high"], "high"), (["-l"], "-l"), (["--async", "0"], "--async"),
    (["--format", "yaml"], "yaml"), (["--rotate-size", "1"], "--file"), (["-f", "x", "--keep", "0"], "--keep"),
    (["-f", "x", "--format", "xml", "--rotate-every", "day"], "--format xml"), (["--time", "iso"], "iso"), (["--fields", "text,colour"], "colour"), (["--fields", ""], "--fields"),
    (["--escape"], "--escape"), (["a", "b"], "b"), (["-f", ""], "empty"), (["--to", "http://localhost"], "http://localhost"),
    (["--f", "x"], "--file, --format, --fields"), (["--help=x"], "--help"),
    (["--to", "vxlog:localhost"], "vxlog:localhost"), (["--to", ""], "--to"), (["--to", "vxlog://localhost:0"], ":0"),
    (["--to", "vxlog://localhost?level=high"], "high"), (["--to", "vxlog://localhost", "-n", "x"], "--to"),
    (["--to", "vxlog://[::1]:0"], ":0"), (["--to", "vxlog://127.0.0.1%00.evil:9"], "%00"),
    (["-e", "no-such"], "vxconv --list"), (["--mode", "640"], "--file"), (["-f", "x", "--mode", "448"], "448"),
    (["-f", "x", "--keep", "3"], "--rotate-size"), (["--min-level", "3"], "--level-from"), (["--level-from", "json:"], "json:"),
    (["--level-from", "prefix", "--min-level", "4", "--max-level", "3"], "--max-level"), (["--time", "utc"], "--fields timestamp"),
    (["-n", "x", "--fields", "text"], "--fields name"), (["--spool", "x"], "--to"), (["--spool-size", "99999"], "--spool"),
    (["--to", "vxlog://h", "--spool", ""], "empty"), (["--to", "vxlog://h?ack=0", "--spool", "x"], "ack=0"),
    (["--to", "vxlog://h", "--format", "json"], "--to"), (["--to", "vxlog://h?retry=-1"], "-1"),
    (["--to", "vxlog://h?levl=3"], '"vxlog://h?levl=3" has an unknown parameter levl; there are level,'),
    (["--to", "vxlog://h?ACK=7"], '"vxlog://h?ACK=7": ack is a whole number from 0 to 1, not "7"'),
    (["--to", "kafka://h/t?compression=zip"], 'compression is one of none, gzip, lz4, snappy, zstd, not "zip"'),
    (["--to", "vxlog://h#ack=0"], "vxlog://h#ack=0"), (["--to", "kafka://h/t?ca=x"], "ca has no effect without kafkas"),
    (["--to", "vxlog://:7514"], ":7514"), (["--to", "vxlog://a b"], "a b"), (["--to", "vxlog://h:65536"], "65536"),
]


vxlog = functools.partial(tool.run, "vxlog")


def start(*arguments):
    return subprocess.Popen([os.environ["VXLOG"], *arguments], stdin=subprocess.PIPE, stderr=subprocess.PIPE)


class Entries(tool.Scratch):
    def test_makes_an_entry_of_each_line(self):
        for arguments, data, expected in [
            ([], b"one\ntwo\r\n\nlast", [{"level": "0", "text": text} for text in ["one", "two", "", "last"]]),
            (["-l", "-7", "-n", "Zoë"], b"x\n", [{"level": "-7", "text": "x", "name": "Zoë"}]),
            (["--fields", "text,sequence"], b"a\nb\n", [{"sequence": "0", "text": "a"}, {"sequence": "1", "text": "b"}]),
            (["--fields", "text", "-e", "UTF-16LE"], "Ω😀\n".encode("utf-16-le"), [{"text": "Ω😀"}]),
            (["--fields", "text"], b"a\xffb\n<&>\0=\n", [{"text": "a\ufffdb"}, {"text": "<&>\0="}]),
            (["--fields", "text"], b"good\nx\xed\xa0\x80\nbetter\n\xe2\x82",
             [{"text": text} for text in ["good", "x" + "\ufffd" * 3, "better", "\ufffd" * 2]]),
            (["--fields", "text", "-e", "UTF-16LE"], "a\ud83d\n\ude00b\n".encode("utf-16-le", "surrogatepass")
             + ("x" * 40000 + "\ud83d").encode("utf-16-le", "surrogatepass") + "\n".encode("utf-16-le")
             + ("y" * (65536 - 40006) + "😀" * 20000 + "\n").encode("utf-16-le") + b"z",
             [{"text": text} for text in ["a\ufffd", "\ufffdb", "x" * 40000 + "\ufffd", "y" * 25530 + "😀" * 20000, "\ufffd"]]),
            (["--fields", "text", "-e", "UTF-32BE"], "ab\ud800c".encode("utf-32-be", "surrogatepass"), [{"text": "ab\ufffdc"}]),
            (["--async", "1", "--fields", "text"], b"a\nb\nc\n", [{"text": text} for text in "abc"]),
            (["--level-from", "prefix", "-l", "9", "--max-level", "8"], b"<3>a\n<8>b\n<3\nc\n<7>\n",
             [{"level": "3", "text": "a"}, {"level": "7", "text": ""}]),
            (["--level-from", "json:lv", "-l", "9"], b'{"x":{"lv":1},"lv":"Error"}\n{"s":"\\"}","lv" : 4 }\n{"lv":{}}\n["lv",2]\n',
             [{"level": level, "text": text} for level, text in [("3", '{"x":{"lv":1},"lv":"Error"}'),
              ("4", '{"s":"\\"}","lv" : 4 }'), ("9", '{"lv":{}}'), ("9", '["lv",2]')]]),
            ([], b"", []),
        ]:
            result = vxlog(*arguments, data=data)
            self.assertSucceeds(result, result.stdout)
            self.assertEqual(tool.entries_of(result.stdout.decode()), expected)

    def test_names_thread_and_time(self):
        result = vxlog("--fields", "thread,timestamp", data=b"x\n", env={"LC_ALL": "C"})
        entry = tool.entries_of(result.stdout.decode())[0]
        self.assertGreater(int(entry["thread"]), 0)
        for arguments, form, ahead, end in [
            ([], "%Y-%m-%dT", 5.5, r"\.\d{3}\+05:30"), (["--time", "utc"], "%Y-%m-%dT", 0, r"\.\d{3}Z"),
            (["--time", "locale"], "%m/%d/%y ", 5.5, ""),
        ]:
            before = time.time()
            run = vxlog("--fields", "timestamp", *arguments, data=b"x\n", env={"LC_ALL": "C", "TZ": "EAST-5:30"})
            days = {time.strftime(form, time.gmtime(moment + ahead * 3600)) for moment in (before, time.time())}
            self.assertRegex(tool.entries_of(run.stdout.decode())[0]["timestamp"], rf"^({'|'.join(days)})[\d:]+{end}$")

    def test_writes_json_and_begins_new_files(self):
        lines = [f"line {number} \"x\"\t\u2028 😀" for number in range(200)]
        result = vxlog("-f", self.log, "--format", "json", "-n", "me", "--rotate-size", "2000", "--keep", "3",
                       data="\n".join(lines).encode())
        self.assertSucceeds(result)
        contents = self.rotated()
        self.assertEqual((len(contents), max(len(content.encode()) for content in contents) <= 2000), (4, True))
        entries = [json.loads(line) for content in contents for line in content.splitlines()]
        self.assertEqual(entries, [{"level": 0, "name": "me", "text": text} for text in lines[-len(entries):]])
        self.assertGreater(len(entries), 60)

    def test_gives_each_new_file_its_mode(self):
        self.assertSucceeds(vxlog("-f", self.log, "--mode", "646", "--rotate-size", "50", data=b"line\n" * 5,
                                  preexec_fn=lambda: os.umask(0o077)))
        modes = {os.stat(self.path(name)).st_mode & 0o777 for name in os.listdir(self.folder)}
        self.assertEqual((modes, len(os.listdir(self.folder)) > 3), ({0o646}, True))

    def test_appends_and_reads_files(self):
        self.write("in", b"one\ntwo\n")
        for _ in range(2):
            self.assertSucceeds(vxlog("-f", self.log, self.path("in")))
        self.assertEqual(self.texts(), ["one", "two"] * 2)

    def test_has_the_entry_in_the_file_before_the_next_line_comes(self):
        process = start("--file", self.log)
        for count in range(1, 4):
            process.stdin.write(b"x" * 200_000 + b"\n")
            process.stdin.flush()
            while not os.path.exists(self.log) or self.read("log").count(b"-" * 25 + b"\n") < count:
                time.sleep(0.001)
        process.communicate()
        self.assertEqual((process.returncode, len(self.entries())), (0, 3))

    def test_reads_no_further_than_its_queue_has_room(self):
        line = b"x" * 4000 + b"\n"
        data = line * 10000
        process = subprocess.Popen([os.environ["VXLOG"], "--async=1"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.addCleanup(lambda: (process.kill(), process.wait(), process.stdin.close(), process.stdout.close()))
        os.set_blocking(process.stdin.fileno(), False)
        sent = 0
        while sent < len(data) and select.select([], [process.stdin], [], 3)[1]:
            sent += os.write(process.stdin.fileno(), data[sent:sent + 65536])
        self.assertLess(sent, len(data), "the log is not read, and the memory would not be enough for all that comes")
        os.set_blocking(process.stdin.fileno(), True)
        output = process.communicate(data[sent:])[0]
        self.assertEqual((process.returncode, output.count(b"text=" + line)), (0, 10000))


class Documents(tool.Scratch):
    def test_is_read_by_a_parser(self):
        lines = [f"line {number} – Ελληνικά 😀" for number in range(5_000)]
        data = "\n".join(lines).encode()
        for arguments in ([], ["--async", "1"]):
            self.assertSucceeds(vxlog("--format", "xml", "-f", self.log, "-n", "x", *arguments, data=data))
            entries = ElementTree.parse(self.log).getroot().findall("entry")
            self.assertEqual([entry.findtext("text")[1:-1] for entry in entries], lines)
            os.remove(self.log)

    def test_escapes_when_asked(self):
        text = "<b>&amp;]]>\x01"
        self.assertIn(f"<text> {text} </text>\n".encode(), vxlog("--format", "xml", data=text.encode()).stdout)
        document = vxlog("--format", "xml", "--escape", data=text.encode()).stdout
        self.assertEqual(ElementTree.fromstring(document).findtext("entry/text"), f" {text[:-1]}\ufffd ")

    def test_is_not_continued(self):
        self.assertSucceeds(vxlog("--format", "xml", "-f", self.log))
        self.assertEqual(ElementTree.parse(self.log).getroot().tag, "log")
        self.assertFails(vxlog("--format", "xml", "-f", self.log, data=b"x\n"), self.log, "cannot be continued")


class Faults(tool.Scratch):
    def test_tells_what_is_wrong_with_the_command_line(self):
        for arguments, part in WRONG_COMMAND_LINES:
            self.assertFails(vxlog(*arguments), part, "--help", status=2)

    def test_tells_what_failed(self):
        limit = tool.limited(resource.RLIMIT_FSIZE, 4096)
        for arguments, options, parts in [
            (["/no/such/input"], {}, ["/no/such/input", "no such file"]), (["/"], {}, ["/:", "directory"]),
            (["-f", "/"], {}, ["/: is a directory"]),
            (["-f", "/no/such/folder/log"], {}, ["/no/such/folder/log", "no such file"]),
            (["-f", self.log.encode() + b"\xff"], {}, ["not UTF-8"]),
            (["-f", self.log], {"preexec_fn": limit}, [self.log, "too large"]),
            (["-f", self.log, "--async", "1"], {"preexec_fn": limit}, [self.log, "too large"]),
        ]:
            self.assertFails(vxlog(*arguments, data=b"0123456789\n" * 1000, **options), *parts)
            if self.log in arguments:
                self.assertLess(os.path.getsize(self.log), 4096)
                self.assertGreater(len(self.entries()), 50)
                os.remove(self.log)
        self.assertNeedsRoom("vxlog", [], ["--format", "xml"], ["--async", "2"], ["--help"])

    def test_prints_help_and_version(self):
        self.assertHelps("vxlog", *"--file --format --escape --level --name --fields --async --encoding --locale".split())

    def test_completes_in_a_shell(self):
        complete = """
            eval "$($VXLOG --completion=bash)"
            COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vxlog; printf '%s\\n' "${COMPREPLY[@]}" """
        self.write("a file", b"")
        for words, expected in [(["--es"], ["--escape"]), (["--fo"], ["--format="]), (["--format", "="], ["plain", "json", "xml", "basic"]),
                                (["--format", "=", "x"], ["xml"]), (["--file", "a"], ["a file"]), (["a"], ["a file"]),
                                (["--level", "a"], [""])]:
            run = subprocess.run(["bash", "-c", complete, "vxlog", "vxlog", *words], cwd=self.folder, check=True,
                                 capture_output=True, text=True)
            self.assertEqual((run.stdout.split("\n")[:-1], run.stderr), (expected, ""))


class Languages(tool.Scratch):
    """The messages in each language that is registered."""

    def setUp(self):
        super().setUp()
        self.library, self.environment = self.register(os.environ["VXLOG_BUNDLES"])
        self.environment["LC_ALL"] = "C"
        self.messages = self.path("texts")
        shutil.copytree(os.path.join(os.path.dirname(os.environ["VXLOG_BUNDLES"]), "texts"), self.messages)

    def told(self, *arguments, **variables):
        """The whole message of a failure, which depends only on the language."""
        result = vxlog(*arguments, data=b"x\n", env={**self.environment, **variables})
        said = result.stdout if "--help" in arguments else result.stderr
        return result.returncode, said.decode(errors="surrogateescape")

    def assertLacks(self, locale, why, english, **variables):
        """Expects the message in English, after one line on the language."""
        status, said = self.told("--escape", "--locale", locale, **variables)
        first, rest = said.split("\n", 1)
        self.assertEqual((status, rest), english)
        self.assertTrue(first.startswith(f"vxlog: --locale {locale}: ") and first.endswith(why), first)

    def test_says_everything_in_each(self):
        self.write("log", b"x")
        failures = [["-f", "a\\b"], ["--format", "xml", "-f", self.log], ["--help"]]
        for arguments in [arguments for arguments, _ in WRONG_COMMAND_LINES] + failures:
            english = self.told(*arguments)
            self.assertEqual(self.told("--locale", "en_US", *arguments), english)
            others = {self.told("--locale=" + locale, *arguments) for locale in ("de_AT.UTF-8@euro", "fr")}
            self.assertEqual({status for status, _ in others}, {english[0]})
            self.assertEqual(len(others | {english}), 3)
        for option in ["--locale", "de"], ["--loc=fr", "--locale=de"]:
            self.assertIn("unbekannte Option --no-such; mehr sagt vxlog --help", self.told("--no-such", *option)[1])
        # A file name may contain any bytes.
        self.assertIn("\udcff", self.told(b"\xff", "--locale=de")[1])

    def test_puts_the_same_into_each(self):
        def places(locale):
            with open(os.path.join(self.messages, f"tools.{locale}.txt"), encoding="utf-8") as file:
                texts = dict(line.split(" = ", 1) for line in file if " = " in line)
            return {key: sorted(re.findall(r"\{\d\}", text)) for key, text in texts.items()}

        self.assertEqual(places("de"), places("en_US"))
        self.assertEqual(places("fr"), places("en_US"))

    def test_says_it_in_another_where_there_is_none_or_it_is_broken(self):
        english = self.told("--escape")
        german = self.told("--escape", "--locale=de")
        self.assertNotEqual(german, english)
        for locale in ("", "C", "POSIX.UTF-8", "en_GB"):
            self.assertEqual(self.told("--escape", "--locale", locale, VXSYS4_REGISTRY=self.path("none")), english, locale)
        self.assertEqual(self.told("--escape", LC_ALL="de_DE.UTF-8", LANGUAGE="de", VXSYS4_REGISTRY=self.path("none")), english)
        for locale in ("xx", "..\\de", "/" * 9999):
            self.assertLacks(locale, "no messages can be read in this language", english)
        self.assertLacks("de", f'is not registered; "vxreg register {os.environ["VXLOG_BUNDLES"]}" adds it', english,
                         VXSYS4_REGISTRY=self.path("none"))

        for content in (b"vxlog.escape-is-xml =\n", b"\xff = \xff\n"):
            self.write("texts/tools.de.txt", content)
            self.assertEqual(self.told("--escape", "--locale=de"), english, content)
        self.write("texts/tools.de.txt", b"no text\n")
        self.assertLacks("de", '"vxreg resolve Velmaris.Tools.StringBundle.de" tells more', english)
        os.truncate(self.library, 1000)
        self.assertLacks("fr", '"vxreg resolve Velmaris.Tools.StringBundle.fr" tells more', english)
        result = vxlog("--locale=fr", data=b"x\n", env=self.environment)
        self.assertSucceeds(result, result.stdout)
        self.assertEqual(tool.entries_of(result.stdout.decode()), [{"level": "0", "text": "x"}])


class Signals(tool.Scratch):
    def test_writes_what_it_has_read_when_it_is_asked_to_end(self):
        for arguments, by in [([], signal.SIGTERM), (["--async", "1"], signal.SIGTERM), ([], signal.SIGINT)]:
            process = start("-f", self.log, *arguments)
            data = b"".join(b"line %d\n" % number for number in range(3000)) + b"open end"
            process.stdin.write(data)
            process.stdin.flush()
            while not os.path.exists(self.log) or os.path.getsize(self.log) == 0:
                time.sleep(0.001)
            process.send_signal(by)
            self.assertEqual((process.wait(), process.stderr.read()), (0, b""))
            process.stdin.close()
            process.stderr.close()
            # The rest in the pipe was never read. The last line may be incomplete.
            texts = self.texts()
            wanted = data.decode().split("\n")
            self.assertEqual(texts[:-1], wanted[: len(texts) - 1])
            self.assertTrue(wanted[len(texts) - 1].startswith(texts[-1]))
            os.remove(self.log)

    def test_ends_at_once_while_it_connects(self):
        with socket.create_server(("127.0.0.1", 0), backlog=0) as listener, socket.create_connection(listener.getsockname()):
            port = listener.getsockname()[1]
            process = start("--to", f"vxlog://127.0.0.1:{port}")
            syn_sent = re.compile(rf"0100007F:{port:04X} 02 ")
            while process.poll() is None and not syn_sent.search(self.read("/proc/net/tcp").decode()):
                time.sleep(0.001)
            process.send_signal(signal.SIGTERM)
            self.assertEqual((process.wait(60), process.communicate()[1]), (-signal.SIGTERM, b""))


if __name__ == "__main__":
    unittest.main()
