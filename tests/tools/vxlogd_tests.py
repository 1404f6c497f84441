#!/usr/bin/env python3
"""Tests the program in the variable VXLOGD through connections of clients, some of which break the rules."""

import collections
import concurrent.futures
import contextlib
import fcntl
import functools
import json
import os
import re
import resource
import shutil
import signal
import socket
import ssl
import struct
import subprocess
import termios
import threading
import time
import unittest
import xml.etree.ElementTree

import tool

vxlogd = functools.partial(tool.run, "vxlogd")
vxlog = functools.partial(tool.run, "vxlog")
SANITIZED = bool(os.environ.get("VXLOGD_SANITIZED"))  # it needs more memory than a normal build
PATIENCE = 60  # seconds for something that happens at once


class Client:
    def __init__(self, port, greeting=""):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=PATIENCE)
        if greeting:
            self.socket.sendall(f"VXLOG {greeting}\n".encode())

    def send(self, data):
        self.socket.sendall(data)
        return self

    def end(self):
        """Ends the output and returns all answers that are still sent."""
        self.socket.shutdown(socket.SHUT_WR)
        return self.rest()

    def rest(self):
        return self.socket.makefile("rb").read().decode()

    def hear(self, text):
        heard = b""
        while text.encode() not in heard:
            piece = self.socket.recv(1)
            if not piece:
                raise AssertionError(f"the end instead of {text!r}, after {heard!r}")
            heard += piece


class Served(tool.Scratch):
    def start(self, *options, listen="127.0.0.1", port=0, log=None, config=None, **process):
        self.errors = open(self.path("errors"), "a+", encoding="utf-8")
        self.addCleanup(self.errors.close)
        self.server = subprocess.Popen(
            [os.environ["VXLOGD"], *(["-c", config] if config else [f"--listen={listen}", f"--port={port}", f"--log={log or self.log}"]), *options],
            stdout=subprocess.PIPE, stderr=self.errors, text=True, cwd=self.folder, **process)
        self.addCleanup(self.server.stdout.close)
        self.addCleanup(self.server.wait)
        self.addCleanup(self.server.kill)
        addresses = self.server.stdout.readline()
        self.assertTrue(addresses.startswith("listening on "), addresses)
        self.port = int(addresses.rsplit(":", 1)[1])
        return addresses

    def stop(self, number=signal.SIGTERM):
        self.server.send_signal(number)
        return self.server.wait(PATIENCE)

    def client(self, greeting=""):
        client = Client(self.port, greeting)
        self.addCleanup(client.socket.close)
        return client

    def wait_for(self, condition):
        end = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), end, "it does not come")
            time.sleep(0.01)

    def said(self):
        self.errors.seek(0)
        return self.errors.read()


class Lines(Served):
    def test_become_entries_that_are_answered_for(self):
        self.start("--level=7")
        client = self.client("level=3 ack=1")
        self.assertEqual(client.send("one\r\n\nGrüße, 中文 😀\nwithout an end".encode()).end().splitlines()[-1], "ack 4")
        self.assertEqual(self.client().send(b"VXLOGGER says\nVXLOG level=1 ack=1\n").end(), "")
        entries = self.entries()
        self.assertEqual(
            [(entry["sequence"], entry["level"], entry["text"]) for entry in entries],
            [("1", "3", "one"), ("2", "3", ""), ("3", "3", "Grüße, 中文 😀"), ("4", "3", "without an end"),
             ("5", "7", "VXLOGGER says"), ("6", "7", "VXLOG level=1 ack=1")])
        self.assertEqual(entries[0]["peer"], "%s:%s" % client.socket.getsockname() if client.socket.fileno() >= 0 else "")
        self.assertRegex(entries[0]["timestamp"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}(Z|[-+]\d\d:\d\d)$")
        self.assertEqual((self.stop(), self.said()), (0, ""))

    def test_forge_nothing(self):
        self.start("--max-line=64")
        wire = (b"a\rb\x1b[31m\x00\x7f\tc\n" + "\x85\u2028\u202e.\n".encode() + b"\xff\xc0\x80\xed\xa0\x80\xf4\x90\x80\x80\xe0\x80\x8a\xe2\x82\n"
                + b"x" * 64 + b"\n" + b"y" * 65 + b"\n" + b"z" * 100000 + b"\nend\n")
        self.assertEqual(self.client("ack=1").send(wire).end().splitlines()[-1], "ack 7")
        self.assertEqual(self.texts(), ["a␍b␛[31m␀␡\tc", "\ufffd" * 3 + ".", "\ufffd" * 7 + "␊" + "\ufffd" * 2,
                                        "x" * 64, "y" * 64 + " [cut]", "z" * 64 + " [cut]", "end"])

    def test_come_from_the_last_connection_of_a_client(self):
        self.start("--idle-timeout=0")
        greeting = "ack=1 client=" + "0a" * 16
        clients = [self.client(greeting + " seq=1").send(b"1\n")]
        for count in range(2, 6):  # on each thread of the server
            clients[-1].hear(f"ack {count - 1}\n")
            clients.append(self.client(f"{greeting} seq={count}").send(b"%d\n" % count))
            self.assertNotIn("err", clients[-2].rest())  # up to the end of its connection
        clients[-1].hear("ack 5\n")
        self.assertEqual(self.texts(), ["1", "2", "3", "4", "5"])

    def test_are_refused_behind_a_wrong_greeting(self):
        self.start()
        for greeting in ["level=x", "ack", "else=1", "level=3 level="]:
            self.assertTrue(self.client(greeting).send(b"never\n" * 500000).rest().startswith("err "), greeting)
        self.assertEqual(self.texts(), [])

    def test_are_objects_of_json_in_files_of_limited_size(self):
        self.start("--format=json", "--rotate-size=1000")
        lines = [f"line {number} \"x\" \\ \t 😀" for number in range(50)]
        self.client("ack=1").send(("\n".join(lines) + "\n").encode()).hear("ack 50\n")
        contents = self.rotated()
        self.assertGreater(len(contents), 4)
        entries = [json.loads(line) for content in contents for line in content.splitlines()]
        self.assertEqual([(entry["text"], entry["sequence"]) for entry in entries], list(zip(lines, range(1, 51))))

    def test_are_kept_in_other_encodings(self):
        """The codecs of Python decide. Each entry is complete alone, and a byte order mark precedes only the first one."""
        _, environment = self.register(os.environ["VXLOGD_CODECS"])
        texts = ["ä 日本 7", "", "7 日本", "ü" * 5000 + "日" * 999, "\tж한😀", "plain"]
        for encoding, codec, mark in [
                ("US-ASCII", "ascii", b""), ("latin1", "latin-1", b""), ("CP1252", "cp1252", b""), ("CP866", "cp866", b""),
                ("ISO-8859-5", "iso8859-5", b""), ("KOI8-R", "koi8-r", b""), ("Shift_JIS", "shift_jis", b""),
                ("EUC-JP", "euc_jp", b""), ("GB18030", "gb18030", b""), ("CP936", "gbk", b""), ("CP949", "cp949", b""),
                ("EUC-KR", "euc_kr", b""), ("ISO-2022-JP", "iso2022_jp", b""), ("UTF-16LE", "utf-16-le", b""),
                ("UTF-16", "utf-16-be", b"\xfe\xff"), ("UTF-32", "utf-32-be", b"\0\0\xfe\xff"), ("utf8", "utf-8", b"")]:
            with self.subTest(encoding):
                self.log = self.path(encoding)
                self.start(f"--encoding={encoding}", "--max-line=20000", env=environment)
                clients = [self.client("ack=1").send(("\n".join(texts * 9) + "\n").encode()) for _ in range(3)]
                for client in clients:
                    client.hear(f"ack {len(texts) * 9}\n")
                content = self.read(self.log)
                self.assertEqual(self.stop(), 0)
                entries = re.findall(r".*?-{25}\n", content.removeprefix(mark).decode(codec), re.DOTALL)
                self.assertEqual(content, mark + b"".join(entry.encode(codec) for entry in entries))
                expected = [text.encode(codec, "replace").decode(codec) for text in texts * 27]
                self.assertEqual(collections.Counter(re.search(r"^text=(.*)$", entry, re.MULTILINE)[1] for entry in entries),
                                 collections.Counter(expected))
                self.assertEqual([int(re.search(r"^sequence=(\d+)$", entry, re.MULTILINE)[1]) for entry in entries],
                                 list(range(1, len(expected) + 1)))


class Documents(Served):
    def test_hold_any_text(self):
        self.start("--format=xml")
        self.client("ack=1").send("</text><entry> & ]]>\n\x1b\ufffe\n".encode()).hear("ack 2\n")
        self.stop()
        root = xml.etree.ElementTree.parse(self.log).getroot()
        self.assertEqual([each.text.strip() for each in root.iter("text")], ["</text><entry> & ]]>", "␛\ufffd"])
        self.start("--format=xml")
        self.client("ack=1").send(b"anew\n").hear("ack 1\n")
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "opened anew" in self.said())
        self.stop()
        sizes = [len(list(xml.etree.ElementTree.fromstring(content))) for content in self.rotated()]
        self.assertEqual(sorted(sizes), [0, 1, 2])


class Senders(Served):
    def test_know_that_their_lines_are_there(self):
        addresses = self.start(listen="localhost, 127.0.0.1, ::1")
        uri = f"vxlog://127.0.0.1:{self.port}"
        other = f"vxlog://[::1]:{self.port}?ACK=1" if "[::1]" in addresses else uri.upper() + "?ACK=1"
        text = "".join(f"line {number} Ελληνικά\n" for number in range(20000))
        for address, options in [(uri + "?level=3&ack=1", ["-l", "9"]), (other, ["-l", "4"]), (uri, [])]:
            self.assertSucceeds(vxlog("--to", address, *options, data=text.encode()))
        entries = self.entries()
        self.assertEqual([entry["level"] for entry in entries], ["3"] * 20000 + ["4"] * 20000 + ["0"] * 20000)
        self.assertEqual("".join(entry["text"] + "\n" for entry in entries), text * 3)

    def test_share_the_file_with_those_who_write_it_themselves(self):
        for name in ["log", self.path("other")]:
            self.log = self.path(name)
            self.start("--max-line=100000", log=name)
            targets = [["--to", f"vxlog://127.0.0.1:{self.port}?ack=1"]] * 4 + [["-f", self.log]] * 3 + [["-f", name]]
            # Some are longer than every buffer on their way to the file.
            data = ["".join(f"{number} {line} {'ü' * (40000 if line % 300 == 0 else 0)}\n" for line in range(3000))
                    for number in range(len(targets))]
            with concurrent.futures.ThreadPoolExecutor(len(targets)) as pool:
                for sent in [pool.submit(vxlog, *target, data=text.encode(), cwd=self.folder) for target, text in zip(targets, data)]:
                    self.assertSucceeds(sent.result())
            self.assertEqual(collections.Counter(self.texts(name)), collections.Counter("".join(data).splitlines()))

    def test_begin_on_a_line_of_their_own(self):
        for options in [], ["--rotate-size=100000"]:
            self.log = self.path(f"log {options}")
            torn = b"torn by another program"
            self.write(self.log, torn)
            self.start(*options)
            client = self.client("ack=1").send(b"1\n")
            client.hear("ack 1\n")
            with open(self.log, "ab") as file:
                file.write(torn)
            client.send(b"2\n").hear("ack 2\n")
            with open(self.log, "ab") as file:
                file.write(torn)
            self.assertSucceeds(vxlog("-f", self.log, *options, data=b"3\n"))
            parts = self.read(self.log).split(torn + b"\n")
            self.assertEqual([[entry["text"] for entry in tool.entries_of(part.decode())] for part in parts], [[], ["1"], ["2"], ["3"]])

    def test_say_that_there_is_no_server(self):
        self.start()
        self.stop()
        self.assertFails(vxlog("--to", f"vxlog://127.0.0.1:{self.port}", data=b"x\n"))


class FullDisks(Served):
    def limit(self, size):
        hard = resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE, (size, hard))

    def test_keep_clients_waiting(self):
        kinds = [[], ["--sync=yes", "--workers=3", "--backlog=9000"], ["--rotate-size=1000000"]]
        for turn, options in enumerate(kinds, 1):
            with self.subTest(options=options):
                self.log = self.path("log" + "".join(options))
                self.start(*options)
                self.limit(50000)
                clients = [self.client("ack=1") for _ in range(3)]
                senders = [threading.Thread(target=client.send, args=("".join(
                    f"{name} {line}\n" for line in range(600)).encode(),)) for name, client in enumerate(clients)]
                for sender in senders:
                    sender.start()
                for client in [*clients, self.client("ack=1")]:
                    client.hear("wait the log cannot be written: ")
                self.assertLessEqual(os.path.getsize(self.log), 50000)
                self.limit(resource.RLIM_INFINITY)
                for client, sender in zip(clients, senders):
                    client.hear("ack 600\n")
                    sender.join()
                counts = collections.Counter(self.texts(os.path.basename(self.log)))
                self.assertEqual((len(counts), set(counts.values())), (1800, {1}))
                self.assertEqual(self.said().count("written"), 2 * turn)
                self.assertEqual(self.stop(), 0)

    def test_may_be_left_for_another_one(self):
        for style in ["plain", "xml"]:
            self.log = self.path(style)
            self.start("--format=" + style, "--max-line=20000")
            self.limit(10000)
            client = self.client("ack=1").send(b"first" + b"x" * 5000 + b"\n")
            client.hear("ack 1\n")
            client.send(b"second" + b"x" * 6000 + b"\n").hear("wait the log cannot be written: ")
            os.rename(self.log, self.log + ".old")
            self.server.send_signal(signal.SIGHUP)
            client.hear("ack 2\n")
            self.assertEqual(self.stop(), 0)
            for name, counts in [(style + ".old", [1, 0]), (style, [0, 1])]:
                self.assertEqual([self.read(name).count(each) for each in [b"first", b"second"]], counts)
                if style == "xml":
                    xml.etree.ElementTree.parse(self.path(name))

    def test_cost_lines_at_the_end(self):
        os.symlink("/dev/full", self.log)
        self.start()
        self.client("ack=1").send(b"1\n2\n3\n").hear("wait the log cannot be written: the disk is full")
        self.assertEqual(self.stop(), 1)
        self.assertIn("/log: 3 received lines are not in the log", self.said())


class Encryption(Served):
    def setUp(self):
        super().setUp()
        os.environ["VXSYS4_REGISTRY"] = self.register(os.environ["VXLOGD_TLS"])[1]["VXSYS4_REGISTRY"]
        self.addCleanup(os.environ.pop, "VXSYS4_REGISTRY")
        for name, extension in [("ca", "basicConstraints=critical,CA:TRUE"), ("server", "subjectAltName=IP:127.0.0.1"),
                                ("client", "extendedKeyUsage=clientAuth")]:
            self.sign(name, extension, len(name))
        self.files = ["--tls-cert", "server.pem", "--tls-key", "server.key", "--tls-client-ca", "ca.pem"]
        self.known = ["--ca", self.path("ca.pem"), "--cert", self.path("client.pem"), "--key", self.path("client.key")]

    def sign(self, name, extension, serial):
        by = ["-CA", "ca.pem", "-CAkey", "ca.key"] if name != "ca" else ["-signkey", "ca.key"]
        self.write("extensions", extension.encode())
        for command in [["req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                         "-keyout", name + ".key", "-out", "request", "-subj", "/CN=" + name],
                        ["x509", "-req", "-in", "request", "-out", name + ".pem", "-extfile", "extensions",
                         "-days", "9", "-set_serial", str(serial), *by]]:
            subprocess.run(["openssl", *command], cwd=self.folder, check=True, capture_output=True)

    def test_carries_all_lines_of_clients_that_are_known(self):
        self.start(*self.files)
        self.client()  # a handshake that never ends holds nobody up
        uri = f"vxlogs://127.0.0.1:{self.port}"
        text = "".join(f"line {number} Ελληνικά\n" for number in range(2000))
        for options in ["?ack=1", "?ack=0"]:
            self.assertSucceeds(vxlog("--to", uri + options, *self.known, data=text.encode()))
        self.assertEqual(self.said(), "")
        self.assertEqual(self.client().send(b"plain\n").rest(), "")
        self.assertIn("the peer does not speak TLS", self.said())
        for options, reason in [(self.known[:2], "certificate required"), (self.known[2:], "unknown authority")]:
            result = vxlog("--to", uri + "?retry=0", *options, data=b"x\n")
            self.assertEqual(result.returncode, 1)
            self.assertIn(reason, result.stderr.decode())  # which may say first that it tries again
        plain = vxlog("--to", f"vxlog://127.0.0.1:{self.port}?retry=0", data=b"x\n")
        self.assertEqual(plain.returncode, 1)
        self.stop()
        self.assertEqual("".join(line + "\n" for line in self.texts()), text * 2)

    def test_tells_a_stranger_why_it_is_refused(self):
        self.start(*self.files, "--idle-timeout=0")
        context = ssl.create_default_context(cafile=self.path("ca.pem"))
        with context.wrap_socket(self.client().socket, server_hostname="127.0.0.1") as stranger:
            self.wait_for(lambda: "certificate" in self.said())
            for _ in range(20):
                stranger.sendall(b"what a busy client sends before it listens\n" * 1000)
            with self.assertRaisesRegex(ssl.SSLError, "(?i)certificate.required"):
                stranger.recv(1)

    def test_takes_renewed_certificates_for_new_connections(self):
        self.start(*self.files)
        context = ssl.create_default_context(cafile=self.path("ca.pem"))
        context.load_cert_chain(self.path("client.pem"), self.path("client.key"))

        def connect():
            connection = self.client()
            connection.socket = context.wrap_socket(connection.socket, server_hostname="127.0.0.1")
            self.addCleanup(connection.socket.close)
            return connection.send(b"VXLOG ack=1\n")

        def serial(connection):
            return int(connection.socket.getpeercert()["serialNumber"], 16)

        old = connect()
        self.sign("server", "subjectAltName=IP:127.0.0.1", 99)
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "opened anew" in self.said())
        self.assertEqual([serial(old), serial(connect())], [6, 99])
        self.write("server.pem", b"no certificate")
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "the settings stay" in self.said())
        self.assertIn("server.pem", self.said())
        self.assertEqual(serial(connect()), 99)
        old.send(b"on\n").hear("ack 1\n")

    def test_lets_no_flood_of_new_keys_delay_others(self):
        self.start(*self.files)
        flood = subprocess.Popen(
            ["openssl", "s_client", "-connect", f"127.0.0.1:{self.port}", "-cert", "client.pem", "-key", "client.key"],
            cwd=self.folder, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, bufsize=0)

        def pour():
            with contextlib.suppress(OSError):
                while True:
                    flood.stdin.write(b"K\n")  # a new key for each read of the client

        pouring = threading.Thread(target=pour)
        for action in [flood.stdin.close, flood.wait, pouring.join, flood.kill]:
            self.addCleanup(action)
        flood.stdin.write(b"before\n")
        self.wait_for(lambda: b"before" in self.read("log"))
        pouring.start()
        for number in range(5):  # on each thread of the server
            self.assertSucceeds(vxlog("--to", f"vxlogs://127.0.0.1:{self.port}", *self.known, data=b"%d\n" % number))
        self.assertIsNone(flood.poll())
        self.assertEqual(self.texts(), ["before", "0", "1", "2", "3", "4"])

    def test_says_which_file_is_wrong(self):
        for arguments, reason in [(["--tls-key", "server.key"], "need tls-cert"),
                                  (["--tls-cert", "absent.pem"], "absent.pem: no such file or directory"),
                                  (["--tls-cert", "server.pem", "--tls-key", "client.key"], "does not belong")]:
            self.assertFails(vxlogd("--port=0", *arguments, cwd=self.folder), reason, status=2 if "need" in reason else 1)
            self.assertFails(vxlogd("--check-config", *arguments, cwd=self.folder), reason, status=2)
        self.write("empty.pem", b"")
        self.assertFails(vxlogd("--check-config", *self.files, "--tls-client-ca=empty.pem", cwd=self.folder), "empty.pem", status=2)
        self.assertEqual(vxlogd("--check-config", *self.files, cwd=self.folder).returncode, 0)
        self.assertFails(vxlog("--to", "vxlog://localhost", "--ca", "ca.pem"), "--to vxlogs", status=2)


class Settings(Served):
    def test_are_told(self):
        self.assertHelps("vxlogd", "--idle-timeout")
        bundles, environment = self.register(os.environ["VXLOG_BUNDLES"])
        texts = shutil.copytree(os.path.join(os.path.dirname(os.environ["VXLOG_BUNDLES"]), "texts"),
                                os.path.join(os.path.dirname(bundles), "texts"))
        told = {locale: vxlogd("--help", *(["--locale", locale] if locale else []), env=environment).stdout.decode()
                for locale in ["", "en_US", "de", "fr"]}
        self.assertEqual(told["en_US"], told[""])
        self.assertEqual(len(set(told.values())), 3)
        with open(os.path.join(texts, "tools.en_US.txt"), encoding="utf-8") as file:
            keys = len(re.findall(r"^(?:vxlogd|tools)\.help\.", file.read(), re.MULTILINE))
        self.assertEqual(keys, len(re.findall("^ .{4} --", told[""], re.MULTILINE)) + 1)

        none = self.write("none.ini", b"")
        wrong = self.write("wrong.ini", b"a = 1\n[other]\n[vxlogd]\nb = 1\nc\nport = x\nsync = x\nmode = x\nhttp = x\nencoding = x\nlog =\n")
        for arguments in [
                ["-c", none], ["-c", wrong], ["--format=xml", "--encoding=latin1", "--rotate-size=9", "--forward=kafka://a:1/b"],
                ["--forward-ack=brokers", "--tls-key=x", "--http-token=x"], ["--http=192.0.2.1:1"], ["--forward=x"]]:
            said = [vxlogd("--check-config", "--locale", locale, *arguments, env=environment).stderr.decode().splitlines()
                    for locale in ["en", "en_US", "de", "fr"]]
            self.assertEqual(said[0], said[1])
            self.assertGreater(len(said[0]), 0)
            for lines in zip(*said[1:], strict=True):
                self.assertEqual(len(set(lines)), 3, lines)
        for arguments in [["word"], ["--status", self.log], ["--status", "--status-socket=none"]]:
            self.assertEqual(len({vxlogd("--locale", locale, *arguments, env=environment).stderr for locale in ["en", "de", "fr"]}), 3)

    def test_must_be_right(self):
        for arguments in [["--port=65536"], ["--port=x"], ["--workers=0"], ["--nothing"], ["--log"], ["word"],
                          ["--format=xml", "--encoding=CP1252"], ["--encoding=none"], ["-c", self.path("none")]]:
            result = vxlogd(*arguments)
            self.assertFails(result, status=2)
            self.assertEqual(result.stdout, b"")
        for text, place in [("[vxlogd]\n\nportt = 1\n", ":3: unknown setting portt"),
                            ("# size\n[vxlogd]\r\nmax-line = 1\n", ':3: max-line: "1" is no number'),
                            ("[vxlogd]\nlevel 3\n", ":2: neither a set nor a setting: level 3"),
                            ("[vxlogd]\n level = 3\n", ":2: neither"), ("\n[vxlogd\n", ":2: neither"),
                            ("level = 3\n[vxlogd]\n", ":1: level stands before"),
                            ("[vxlogd]\nport = 1\n[VXLOGD]\nPort = x", ":4: port is already set in line 2"),
                            ("[vxlogd]\n\n[other]\nx=1\n", ":3: unknown set [other]"),
                            ("[vxlgod]\nport = 1\n", ":1: unknown set [vxlgod]; the settings are in [vxlogd]"),
                            ("# nothing\n", ": has no set [vxlogd]")]:
            self.assertFails(vxlogd("-c", self.write("wrong.ini", text.encode())), "wrong.ini" + place, status=2)
        self.assertFails(vxlogd("-c", "/"), "/: is a directory", status=2)
        self.assertFails(vxlogd("word"), 'unexpected argument "word"', status=2)
        strange = self.write("\udcff.ini", b"[vxlogd]\n")
        self.assertFails(vxlogd("-c", strange), "not UTF-8", status=2)
        for arguments, part in [(["--log=" + self.path("none/log")], "none/log: no such file"),
                                (["--log=/"], "/: is a directory"), (["--listen=no.such.host.invalid"], "no.such.host")]:
            self.assertFails(vxlogd("--port=0", "--log=" + self.log, *arguments), part)

    def test_are_checked_before_they_take_effect(self):
        wrong = self.write("wrong.ini", b"level = 1\n[vxlogd]\nportt = 1\nworkers\nlevel = x\nformat = xml\nkeep = 3\nmode = 448\n[other]\n")
        result = vxlogd("--check-config", "-c", wrong, "--rotate-size=9", "--port=x")
        self.assertEqual((result.returncode, result.stdout), (2, b""))
        lines = result.stderr.decode().replace(wrong, "").splitlines()
        self.assertEqual([line.removeprefix("vxlogd: ") for line in lines],
                         [":1: level stands before the first set", ":3: unknown setting portt",
                          ":4: neither a set nor a setting: workers", ':5: level: "x" is no number from -1000000 to 1000000',
                          ':8: mode: "448" is no mode in octal digits, such as 640, in which the owner may write',
                          ":9: unknown set [other]; the settings are in [vxlogd]",
                          '--port: "x" is no number from 0 to 65535', "an XML log is one document, which cannot be rotated"])
        told = vxlogd("--check-config", "--level=-3", "--rotate-every=day", "--format=json", "--mode=640", "--log=" + self.log)
        self.assertEqual(told.returncode, 0)
        for part in ["[vxlogd]\nlisten = localhost\n", "\nlevel = -3\n", "\nrotate-every = day\n", "\nformat = json\n", "\nmode = 640\n"]:
            self.assertIn(part, told.stdout.decode())
        self.assertSucceeds(vxlogd("--check-config", "-c", self.write("told.ini", told.stdout)), told.stdout)
        missing = self.path("none/log")
        config = self.write("place.ini", f"[vxlogd]\nlevel = 1\nlog = {missing}\nlevel = 1\n".encode())
        for arguments, lines in [
                (["-c", config], [f"{config}:4: level is already set in line 2", f"{config}:3: log: there is no folder {self.path('none')}"]),
                (["--log=" + missing, "--http=127.0.0.1:0", "--http-token=" + missing],
                 [f"--log: there is no folder {self.path('none')}", f"{missing}: no such file or directory"]),
                (["--log=/"], ["--log: is a directory"])]:
            result = vxlogd("--check-config", *arguments)
            self.assertEqual((result.returncode, result.stderr.decode()), (2, "".join(f"vxlogd: {line}\n" for line in lines)))
        for format, name in [("xml", "utf8"), ("json", "csUTF8"), ("xml", "Utf-8")]:
            self.assertEqual(vxlogd("--check-config", f"--format={format}", f"--encoding={name}").returncode, 0, name)

    def test_come_from_the_command_line_before_the_file(self):
        config = self.write("vxlogd.ini", b"# of the server\n[VXLOGD]\nlevel = 5\nMax-Line = 16\nmode = 646\n")
        self.start("-c", config, "--level=6")
        self.assertEqual(os.stat(self.log).st_mode & 0o777, 0o646)
        self.client("ack=1").send(b"x" * 20 + b"\n").hear("ack 1\n")
        self.assertEqual([(entry["level"], entry["text"]) for entry in self.entries()], [("6", "x" * 16 + " [cut]")])


class Signals(Served):
    def test_open_the_log_anew(self):
        config = self.write("vxlogd.ini", b"[vxlogd]\nlevel = 1\n")
        self.start("--config", config)
        client = self.client("ack=1").send(b"before\n")
        client.hear("ack 1\n")
        os.rename(self.log, self.path("log.1"))
        self.write("vxlogd.ini", b"[vxlogd]\nlevel = 2\n")
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "opened anew" in self.said())
        client.send(b"after\n").hear("ack 2\n")
        self.client("ack=1").send(b"new\n").hear("ack 1\n")
        self.write("vxlogd.ini", b"[vxlogd]\nlevel = x\n")
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "the settings stay" in self.said())
        client.send(b"and on\n").hear("ack 3\n")
        self.assertEqual(self.texts("log.1"), ["before"])
        self.assertEqual([(entry["level"], entry["text"]) for entry in self.entries()],
                         [("1", "after"), ("2", "new"), ("1", "and on")])

    def test_move_what_can_be_moved_and_name_the_rest(self):
        text = "[vxlogd]\nlog = {}\nlisten = 127.0.0.1\nport = 0\nworkers = {}\nhttp-host = {}\nhttp = 127.0.0.1:0\nlevel = {}\n"
        names = [self.path(name) for name in ("first", "second")]
        config = self.write("vxlogd.ini", text.format(names[0], 1, "a", 1).encode())
        self.start(config=config)

        def reload(lines, *values):
            self.write("vxlogd.ini", text.format(*values).encode())
            told = "".join(f"vxlogd: {line}\n" for line in ["the log is opened anew", *lines])
            before = self.said()
            self.server.send_signal(signal.SIGHUP)
            self.wait_for(lambda: self.said() == before + told)

        reload([], names[0], 1, "a", 2)
        reload(["the change of workers needs a restart", "the change of http-host needs a restart"], names[1], 2, "b", 2)
        self.wait_for(lambda: not os.path.exists(self.path(".first.status")))
        os.mkdir(self.path(".third.status"))
        reload([f"the socket for --status does not move: {self.path('.third.status')}: it exists already"], self.path("third"), 1, "a", 2)
        self.assertIn(b"connections", vxlogd("--status", self.path(".second.status")).stdout)

    def test_let_it_finish_what_it_has(self):
        for number in [signal.SIGTERM, signal.SIGINT]:
            self.log = self.path(f"log{number}")
            self.start()
            clients = [self.client("ack=1") for _ in range(20)]
            for client in clients:
                client.send(b"first\n").hear("ack 1\n")
            for client in clients:  # so few that a busy machine can write them before the server's time to stop is over
                client.send(b"line\n" * 40 + b"part")
            self.assertEqual(self.stop(number), 0)
            counts = collections.Counter(self.texts(f"log{number}"))
            self.assertEqual(counts, {"first": 20, "line": 800, "part": 20})
            for client in clients:
                self.assertEqual(client.rest().splitlines()[-1], "ack 42")

    def test_end_it_while_it_looks_names_up(self):
        def ends_before_it_listens():
            server = subprocess.Popen([os.environ["VXLOGD"], "--listen=" + ",".join(["localhost"] * 13000), "--port=0",
                                       "--log=" + self.log], stdout=subprocess.PIPE)

            def is_ready():
                with open(f"/proc/{server.pid}/status", encoding="ascii") as file:
                    masks = dict(line.split(":\t") for line in file if line.startswith("Sig"))
                return (int(masks["SigCgt"], 16) | int(masks["SigBlk"], 16)) >> (signal.SIGTERM - 1) & 1

            self.wait_for(is_ready)
            server.send_signal(signal.SIGTERM)
            addresses = server.communicate(timeout=PATIENCE)[0]
            self.assertEqual(server.returncode, 0)
            return addresses == b""

        # On a busy machine all may have been looked up before the signal arrives.
        self.assertTrue(any(ends_before_it_listens() for _ in range(5)))

    def test_lose_no_line_that_was_answered_for(self):
        self.start("--workers=2")
        answered = collections.Counter()

        def send(name, client):
            answers = client.socket.makefile()
            with contextlib.suppress(OSError):
                for start in range(1, 3001, 100):
                    client.send("".join(f"{name} {line}\n" for line in range(start, start + 100)).encode())
                    answer = answers.readline()
                    answered[name] = int(answer.split()[1]) if answer.endswith("\n") else answered[name]
            client.socket.close()

        clients = [Client(self.port, "ack=1") for _ in range(8)]  # before any sends: the kill may come at once
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            senders = [pool.submit(send, name, client) for name, client in enumerate(clients)]
            self.wait_for(lambda: sum(answered.values()) > 2000)
            self.server.kill()
        self.assertEqual([sender.exception() for sender in senders], [None] * 8)
        self.server.wait()
        self.start(port=self.port)  # although old connections are still closing; removes an incomplete entry
        self.client("ack=1").send(b"mended\n").hear("ack 1\n")
        counts = collections.Counter(self.texts())
        expected = [f"{name} {line}" for name, heard in answered.items() for line in range(1, heard + 1)]
        self.assertEqual([line for line in expected if counts[line] != 1], [])


class Status(Served):
    def figures(self):
        result = vxlogd("--status", "--log=" + self.log)
        self.assertEqual((result.returncode, result.stderr), (0, b""))
        return {line[:28].strip(): line[28:] for line in result.stdout.decode().splitlines()}

    def test_is_told_to_the_user_alone(self):
        self.start("--max-connections=2", preexec_fn=lambda: os.umask(0))
        clients = [self.client("ack=1").send(b"1\n2\n3\n") for _ in range(2)]
        for client in clients:
            client.hear("ack 3\n")
        self.assertEqual(self.client().rest(), "")
        figures = self.figures()
        for label, value in [("log", self.log), ("connections", "2"), ("connections since the start", "3"),
                             ("lines lost", "0"), ("connections turned away", "1"), ("lines written", "6"), ("lines in the queue", "0"),
                             ("bytes in the log", str(os.path.getsize(self.log))), ("the log can be written", "1")]:
            self.assertEqual(figures[label], value, label)
        self.assertGreater(int(figures["bytes free for the log"]), 0)
        metrics = vxlogd("--metrics", self.path(".log.status")).stdout.decode()
        self.assertIn("# TYPE vxlogd_lines_written_total counter\nvxlogd_lines_written_total 6\n", metrics)
        for line in metrics.splitlines():
            self.assertRegex(line, r'^(# (HELP|TYPE) vxlogd_\w+ [\w ]+|vxlogd_\w+(\{path="[^"]+"\})? [0-9]+(\.[0-9])?)$')
        self.assertEqual(os.stat(self.path(".log.status")).st_mode & 0o777, 0o600)
        with socket.socket(socket.AF_UNIX) as silent:
            silent.connect(self.path(".log.status"))
            self.assertEqual(self.figures()["connections"], "2")
        self.assertEqual(self.stop(), 0)
        self.assertFails(vxlogd("--status", "--log=" + self.log), ".log.status: no vxlogd listens here; --log FILE or a PATH")

    def test_is_told_while_a_write_does_not_return(self):
        os.mkfifo(self.log)
        reader = os.open(self.log, os.O_RDONLY | os.O_NONBLOCK)
        drain = threading.Thread(target=lambda: [None for _ in iter(lambda: os.read(reader, 65536), b"")])
        try:
            self.start("--status-socket=" + self.path("status"))
            client = self.client("ack=1").send((b"x" * 500 + b"\n") * 200)  # more than the pipe holds
            self.wait_for(lambda: struct.unpack("i", fcntl.ioctl(reader, termios.FIONREAD, bytes(4)))[0] > 60000)
            status = subprocess.run([os.environ["VXLOGD"], "--status", self.path("status")], stdout=subprocess.PIPE,
                                    timeout=PATIENCE, check=True)
            self.assertIn(self.log.encode(), status.stdout)
        finally:
            os.set_blocking(reader, True)
            drain.start()
        client.hear("ack 200\n")
        self.assertEqual(self.stop(), 0)
        drain.join()
        os.close(reader)

    def test_shows_why_clients_wait(self):
        self.start("--backlog=50000")
        hard = resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE, (20000, hard))
        client = self.client("ack=1")
        client.socket.setblocking(False)
        with self.assertRaises(BlockingIOError):  # far more than the backlog waits in the buffers of the system
            while True:
                client.socket.send(b"line\n" * 10000)
        client.socket.settimeout(PATIENCE)
        client.hear("wait ")
        figures = self.figures()
        self.assertEqual(figures["the log cannot be written"], "the file is too large")
        self.assertEqual(figures["the log can be written"], "0")
        self.assertGreater(int(figures["lines in the queue"]), 10)
        self.assertLess(int(figures["bytes in the queue"]), 60000)

    def test_is_asked_of_one_server_at_a_path(self):
        path = self.path("state")
        self.start("--status-socket=" + path)
        first, self.server = self.server, None
        other = self.path("other")
        arguments = ["--listen=127.0.0.1", "--log=" + other, "--status-socket=" + path]
        self.assertFails(vxlogd(f"--port={self.port}", *arguments), f"port {self.port}: ")
        self.assertFails(vxlogd("--port=0", *arguments), path + ": another server uses it")
        self.assertFalse(os.path.exists(other))  # a server that cannot listen leaves the log alone
        with contextlib.closing(self.client("ack=1").send(b"x\n").socket):
            first.kill()
            first.wait()
            self.start("--status-socket=" + path, port=self.port)
        self.assertIn(b"connections", vxlogd("--status", path).stdout)
        path = self.write("file", b"")
        self.assertFails(vxlogd("--port=0", "--log=" + other, "--status-socket=" + path), path + ": ")
        self.assertEqual(self.read("file"), b"")

    def test_is_told_to_the_service_manager(self):
        for name in [self.path("manager"), "\0vxlogd test " + self.folder]:
            with self.subTest(name=name), socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
                manager.bind(name)
                manager.settimeout(PATIENCE)
                self.start(env={**os.environ, "NOTIFY_SOCKET": name.replace("\0", "@")})
                self.assertEqual(manager.recv(100), b"READY=1")
                before = time.monotonic_ns() // 1000
                self.server.send_signal(signal.SIGHUP)
                state, moment = manager.recv(100).decode().split("\n")
                self.assertEqual(state, "RELOADING=1")
                self.assertRegex(moment, r"^MONOTONIC_USEC=\d+$")
                self.assertLessEqual(before, int(moment.split("=")[1]))
                self.assertLessEqual(int(moment.split("=")[1]), time.monotonic_ns() // 1000)
                self.assertEqual(manager.recv(100), b"READY=1")
                self.assertEqual(self.stop(), 0)
                self.assertEqual(manager.recv(100), b"STOPPING=1")


class Rudeness(Served):
    def memory(self):
        with open(f"/proc/{self.server.pid}/status", encoding="ascii") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))

    def test_is_cut_short(self):
        self.start("--idle-timeout=1")
        silent = self.client()
        half = self.client().send(b"half a line")
        self.assertEqual(silent.rest() + half.rest(), "")
        self.wait_for(lambda: self.texts() == ["half a line"])

    def test_keeps_no_place(self):
        self.start("--max-connections=1", "--idle-timeout=0")

        def is_let_in():
            with contextlib.suppress(AssertionError, OSError), contextlib.closing(self.client("ack=1").socket) as calm:
                calm.sendall(b"calm\n")
                return calm.recv(1) == b"a"

        client = self.client("ack=1").send(b"the only place\n")
        client.hear("ack 1\n")
        for _ in range(3):
            self.assertFalse(is_let_in())
        self.assertEqual(self.said(), "vxlogd: connections are turned away, because max-connections is 1\n")
        client.socket.close()
        for _ in range(20):
            with contextlib.suppress(OSError):
                self.client("ack=1").send(b"\n" * 30000).socket.close()  # with a reset, because an answer was not read
        self.wait_for(is_let_in)

    def test_hurts_nobody_else(self):
        self.start()
        self.client("ack=1").send(b"hello\n").hear("ack 1\n")
        before = self.memory()
        flood = os.urandom(65536)

        def pour():
            client = Client(self.port, "ack=1")  # never reads an answer
            client.socket.settimeout(0.5)
            with contextlib.suppress(OSError):
                for _ in range(40):
                    client.send(flood + b"\n" * 5000)
            client.socket.close()  # with a reset

        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            for _ in range(8):
                pool.submit(pour)
            for _ in range(28):
                self.client("ack=1").send(b"calm\n").hear("ack 1\n")
        if not SANITIZED:
            self.assertLess(self.memory() - before, 64 * 1024)
        self.assertEqual(self.texts().count("calm"), 28)

    def test_takes_the_place_of_nobody(self):
        self.start()
        clients = [self.client("ack=1") for _ in range(200)]
        lines = [f"{number} {turn}" for turn in range(5) for number in range(200)]
        for number, line in enumerate(lines):
            clients[number % 200].send(line.encode() + b"\n")
        for client in clients:
            client.hear("ack 5\n")
        self.assertEqual(sorted(self.texts()), sorted(lines))


if __name__ == "__main__":
    unittest.main()
