#!/usr/bin/env python3
"""Tests the way of lines from vxlog to vxlogd over connections that break and programs that are killed."""

import collections
import contextlib
import functools
import glob
import os
import random
import resource
import select
import socket
import subprocess
import threading
import unittest

import tool
import vxlogd_tests

vxlog = functools.partial(tool.run, "vxlog")
SEED = int(os.environ.get("ROAD_SEED", "1"))


class Cutter:
    """Passes bytes on to a server, and resets each of the first connections after some bytes."""

    def __init__(self, port, cuts):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port, self.target, self.cuts = self.listener.getsockname()[1], port, cuts
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            try:
                client = self.listener.accept()[0]
            except OSError:
                return
            server = socket.create_connection(("127.0.0.1", self.target))
            left = self.cuts.pop(0) if self.cuts else None
            threading.Thread(target=self.copy, args=(server, client, None), daemon=True).start()
            threading.Thread(target=self.copy, args=(client, server, left), daemon=True).start()

    @staticmethod
    def copy(source, target, left):
        try:
            while left is None or left > 0:
                piece = source.recv(min(left or 65536, 65536))
                if not piece:
                    target.shutdown(socket.SHUT_WR)
                    return
                target.sendall(piece)
                left = left and left - len(piece)
        except OSError:
            pass
        for end in source, target:
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


class Road(vxlogd_tests.Served):
    def vxlog(self, options="", *arguments, port=None, **more):
        process = subprocess.Popen(
            [os.environ["VXLOG"], "--to", f"vxlog://127.0.0.1:{port or self.port}?{options}", *arguments],
            stdin=subprocess.PIPE, stderr=subprocess.PIPE, **more)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def spooled(self):
        """The number of whole lines that were ever in the spool."""
        counts = [0]
        for name in glob.glob(self.path("spool/*.lines")):
            with contextlib.suppress(FileNotFoundError):  # its lines were acknowledged meanwhile
                counts.append(int(os.path.basename(name).split(".")[0]) - 1 + self.read(name).count(b"\n"))
        return max(counts)


class Connections(Road):
    def test_bring_a_line_at_once(self):
        self.start()
        process = self.vxlog()
        for count in range(1, 4):
            process.stdin.write(b"line\n")
            process.stdin.flush()
            self.wait_for(lambda: len(self.texts()) == count)
        process.communicate()
        self.assertEqual(process.returncode, 0)

    def test_that_break_bring_each_line_once(self):
        self.start()
        chance = random.Random(SEED)
        cutter = Cutter(self.port, [chance.randrange(1, 40000) for _ in range(5)])
        self.addCleanup(cutter.listener.close)
        lines = [f"{number} " + "x" * chance.randrange(60) for number in range(6000)]
        process = self.vxlog("ack=1", port=cutter.port)
        errors = process.communicate("".join(line + "\n" for line in lines).encode())[1]
        self.assertEqual((process.returncode, self.texts()), (0, lines), (SEED, errors))
        self.assertEqual(cutter.cuts, [])
        self.assertIn(b"trying again", errors)

    def test_to_a_killed_server_bring_each_line_at_least_once(self):
        self.start()
        process = self.vxlog("ack=1")
        lines = [f"line {number}" for number in range(9000)]
        for third in range(3):
            process.stdin.write("".join(line + "\n" for line in lines[third * 3000:(third + 1) * 3000]).encode())
            process.stdin.flush()
            self.wait_for(lambda: os.path.exists(self.log) and f"line {third * 3000 + 99}\n".encode() in self.read("log"))
            self.server.kill()
            self.server.wait()
            self.start(port=self.port)
        self.assertIn(b"trying again", process.communicate()[1])
        self.assertEqual(process.returncode, 0)
        self.assertEqual(list(dict.fromkeys(self.texts())), lines)

    def test_stay_while_nothing_is_said(self):
        self.start("--idle-timeout=4")
        process = self.vxlog("beat=1")
        process.stdin.write(b"first\n")
        process.stdin.flush()
        self.wait_for(lambda: len(self.texts()) == 1)
        self.assertEqual(self.client().rest(), "")  # a client that says nothing is dropped, as this one would be
        process.communicate(b"last\n")
        entries = self.entries()
        self.assertEqual([entry["text"] for entry in entries], ["first", "last"])
        self.assertEqual(entries[0]["peer"], entries[1]["peer"])

    def test_are_given_up(self):
        self.start()
        for options, parts in [("retry=0", ["acknowledged", " lines"]), ("ack=0", ["connection was lost"])]:
            process = self.vxlog(options)
            process.stdin.write(b"1\n")
            process.stdin.flush()
            self.wait_for(lambda: os.path.getsize(self.log))
            os.truncate(self.log, 0)
            self.server.kill()
            self.server.wait()
            if options == "ack=0":
                self.start(port=self.port)
            errors = process.communicate(b"2\n3\n")[1].decode()
            self.assertEqual(process.returncode, 1, errors)
            for part in parts:
                self.assertIn(part, errors)
            if options == "retry=0":
                self.start(port=self.port)

    def test_to_a_hostile_server_do_not_let_it_control_the_terminal(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            process = self.vxlog("retry=0", port=listener.getsockname()[1])
            with listener.accept()[0] as connection:
                connection.sendall(b"wait \x1b[31m\xc2\x9b1m\x7f \xc3\xa4\n")
                errors = process.communicate(b"line\n")[1].decode()
        self.assertIn(r": \x1b[31m\u009b1m\x7f ä; trying again", errors)
        self.assertRegex(errors, r"\A[^\x00-\x09\x0b-\x1f\x7f-\x9f]+\Z")

    def test_to_an_older_server_are_greeted_as_it_expects(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            process = self.vxlog("level=4", port=listener.getsockname()[1])
            process.stdin.write(b"a\nb\nc\n")
            process.stdin.close()
            heard = []
            for answer in [b"err the greeting has options level=NUMBER and ack=0|1\n", b"ack 1\n", b"ack 2\n"]:
                with listener.accept()[0] as connection, connection.makefile("rb") as lines:
                    heard.append(lines.readline())
                    while answer.startswith(b"ack") and lines.readline() != b"c\n":
                        pass
                    connection.sendall(answer)
            self.assertEqual(process.wait(vxlogd_tests.PATIENCE), 0)
        self.assertRegex(heard.pop(0), rb"^VXLOG level=4 ack=1 beat=1 client=[0-9a-f]{32} seq=1\n$")
        self.assertEqual(heard, [b"VXLOG level=4 ack=1\n"] * 2)


class Spools(Road):
    def test_lose_and_repeat_nothing_when_vxlog_is_killed(self):
        self.start()
        self.stop()
        chance = random.Random(SEED)
        seen = []
        for turn in range(8):
            if turn == 4:
                self.start(port=self.port)
            process = self.vxlog("", f"--level={turn}", "--spool", self.path("spool"), "--spool-size=100000")
            before = self.spooled()
            process.stdin.write("".join(f"{turn} {line}\n" for line in range(900)).encode())
            process.stdin.flush()
            wanted = before + chance.randrange(1, 300)
            self.wait_for(lambda: self.spooled() >= wanted)
            seen.append(self.spooled() - before)
            process.kill()
            process.communicate()
        self.assertEqual(vxlog("--to", f"vxlog://127.0.0.1:{self.port}", "--spool", self.path("spool")).returncode, 0, SEED)
        entries = self.entries()
        self.assertEqual({entry["level"] == entry["text"].split()[0] for entry in entries}, {True})
        counts = collections.Counter(entry["level"] for entry in entries)
        self.assertEqual([entry["text"] for entry in entries],
                         [f"{turn} {line}" for turn in range(8) for line in range(counts[str(turn)])], SEED)
        for turn in range(8):
            self.assertGreaterEqual(counts[str(turn)], seen[turn], SEED)

    def test_tell_what_they_cannot_keep(self):
        self.start()
        self.stop()
        to = ["--to", f"vxlog://127.0.0.1:{self.port}", "--spool", self.path("spool"), "--spool-size=65536"]
        result = vxlog(*to, data=(b"y" * 30 + b"\n") * 2001)
        kept = self.spooled()
        self.assertEqual(result.returncode, 1)
        self.assertIn(f"{2001 - kept} lines are lost".encode(), result.stderr)
        with open(min(glob.glob(self.path("spool/*.lines"))), "r+b") as file:
            file.seek(20)
            file.write(b"!")
        self.start(port=self.port)
        self.assertFails(vxlog(*to), "1 lines are lost")
        self.assertEqual(self.texts()[:2], ["[a damaged line of the spool was left out]", "y" * 30])
        self.assertEqual(len(self.texts()), kept)
        self.assertSucceeds(vxlog(*to, data=b"next\n"))
        self.assertEqual(self.texts()[-1], "next")

    def test_number_each_line_once_when_too_many_files_are_open(self):
        if os.environ["VXLOGD_SANITIZED"]:
            self.skipTest("the sanitizer needs descriptors, and takes a sound object for a damaged one without them")
        self.start()
        lines = [f"{number:0100}" for number in range(300)]
        with socket.create_server(("127.0.0.1", 0)) as deaf:
            process = self.vxlog("", "--spool", self.path("spool"), "--spool-size=65536", port=deaf.getsockname()[1])
            for part, free in enumerate((99, 1, 0)):  # descriptors for the next file and its folder
                used = {int(name) for name in os.listdir(f"/proc/{process.pid}/fd")}
                limit = [number for number in range(256) if number not in used][free]
                resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (limit, 256))
                process.stdin.write("".join(line + "\n" for line in lines[100 * part:100 * part + 100]).encode())
                process.stdin.flush()
                self.wait_for(lambda: self.spooled() == 100 * part + 100)
                if part == 0:  # all that it needs is open
                    client = deaf.accept()[0]
                    self.wait_for(lambda: lines[99].encode() in client.recv(65536))
            process.kill()
            process.communicate()
            client.close()
        self.assertSucceeds(vxlog("--to", f"vxlog://127.0.0.1:{self.port}", "--spool", self.path("spool"), data=b"next\n"))
        self.assertEqual(self.texts(), [*lines, "next"])

    def test_are_read_again_when_too_many_files_were_open(self):
        if os.environ["VXLOGD_SANITIZED"]:
            self.skipTest("the sanitizer needs descriptors")
        lines = b"".join(b"%01000d\n" % number for number in range(3000))
        spool = ["--spool", self.path("spool"), "--spool-size=4000000"]  # in several files
        vxlog("--to", "vxlog://127.0.0.1:1?retry=0", *spool, data=lines)
        with socket.socket() as listener:
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)  # the rest waits in the spool
            listener.bind(("127.0.0.1", 0))
            listener.listen()
            process = self.vxlog("", *spool, port=listener.getsockname()[1])
            with listener.accept()[0] as connection, connection.makefile("rb") as heard:
                greeting = heard.readline()
                used = {int(name) for name in os.listdir(f"/proc/{process.pid}/fd")}
                limit = min(number for number in range(256) if number not in used)
                resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (limit, 256))
                received = heard.readline()
                while b"too many open files; trying again" not in (
                        process.stderr.readline() if select.select([process.stderr], [], [], 0)[0] else b""):
                    received += heard.readline() if select.select([connection], [], [], 0.1)[0] else b""
                resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (256, 256))
                while received.count(b"\n") < 3000:
                    received += heard.readline()
                connection.sendall(b"ack 3000\n")
                self.assertEqual(process.communicate(b""), (None, b""))
        self.assertEqual((process.returncode, received.replace(b"<0>", b"")), (0, lines), greeting)

    def test_have_one_process(self):
        self.start()
        first = self.vxlog("", "--spool", self.path("spool"))
        first.stdin.write(b"first\n")
        first.stdin.flush()
        self.wait_for(self.spooled)
        to = ["--to", f"vxlog://127.0.0.1:{self.port}", "--spool", self.path("spool")]
        self.assertFails(vxlog(*to, data=b"second\n"), "another process")
        first.kill()
        first.communicate()
        self.assertSucceeds(vxlog(*to, data=b"third\n"))
        self.assertEqual(self.texts(), ["first", "third"])


if __name__ == "__main__":
    unittest.main()
