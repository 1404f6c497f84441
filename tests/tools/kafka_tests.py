#!/usr/bin/env python3
"""Tests the way of lines to the brokers of Kafka and back, over the cluster that the program in KAFKA_MOCK is."""

import contextlib
import json
import os
import re
import shutil
import signal
import subprocess
import unittest

import tool
import vxlogd_tests

UNKNOWN_TOPIC = 3


class Cluster(vxlogd_tests.Served):
    def setUp(self):
        super().setUp()
        self.mock = subprocess.Popen([os.environ["KAFKA_MOCK"]], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.mock.stdout.close)
        self.addCleanup(self.mock.wait)
        self.addCleanup(self.mock.stdin.close)
        self.broker = self.mock.stdout.readline().strip()
        self.tell("create logs 1")
        _, self.environment = self.register(os.environ["KAFKA_COMPONENT"])

    def tell(self, command):
        self.mock.stdin.write(command + "\n")
        self.mock.stdin.flush()
        self.assertEqual(self.mock.stdout.readline(), "ok\n", command)

    def address(self, parameters="", topic="logs"):
        return f"kafka://{self.broker}/{topic}{parameters}"

    def run_vxlog(self, *arguments, to=None, data=b""):
        return tool.run("vxlog", "--to", to or self.address(), *arguments, data=data, env=self.environment)

    def start_vxlog(self, *arguments, to=None):
        process = subprocess.Popen([os.environ["VXLOG"], "--to", to or self.address(), *arguments],
                                   stdin=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def topic(self):
        """The entries that the brokers have."""
        result = subprocess.run(["kcat", "-C", "-q", "-e", "-o", "beginning", "-b", self.broker, "-t", "logs"],
                                capture_output=True, check=True, timeout=vxlogd_tests.PATIENCE)
        return [json.loads(line) for line in result.stdout.splitlines()]

    def topic_texts(self):
        return [entry["text"] for entry in self.topic()]


@unittest.skipUnless(shutil.which("kcat"), "kcat is missing")
class Senders(Cluster):
    def test_bring_what_another_program_reads(self):
        data = '<3>eins\n"Grüße", 中文\t😀\n\n'.encode()
        self.assertSucceeds(self.run_vxlog("--level-from=prefix", "--level=6", data=data))
        self.assertSucceeds(self.run_vxlog(to=self.address("?level=4&retry=5"), data=b"next run"))
        entries = self.topic()
        self.assertEqual([(entry["level"], entry["text"], entry["sequence"]) for entry in entries],
                         [(3, "eins", 1), (6, '"Grüße", 中文\t😀', 2), (6, "", 3), (4, "next run", 1)])
        self.assertEqual({entry["host"] for entry in entries}, {os.uname().nodename})
        self.assertRegex(entries[0]["process"], r"^vxlog-[0-9a-f]{32}$")
        self.assertEqual(len({entry["process"] for entry in entries}), 2)
        self.assertRegex(entries[0]["timestamp"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}(Z|[-+]\d\d:\d\d)$")

    def test_wait_for_brokers_that_are_away(self):
        process = self.start_vxlog()
        process.stdin.write(b"before\n")
        process.stdin.flush()
        self.wait_for(lambda: self.topic_texts() == ["before"])
        self.tell("down")
        process.stdin.write(b"while away\n")
        process.stdin.close()
        self.assertIn(b"trying again", process.stderr.readline())
        self.tell("up")
        self.tell("slow - 300")
        self.assertEqual(process.wait(vxlogd_tests.PATIENCE), 0)
        self.assertEqual(self.topic_texts(), ["before", "while away"])

    def test_keep_lines_for_the_next_run(self):
        self.tell("down")
        spool = ["--spool", self.path("spool")]
        for number in range(2):
            result = self.run_vxlog(*spool, data=b"line %d\n" % number)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"%d lines wait here" % (number + 1), result.stderr)
        self.tell("up")
        self.assertSucceeds(self.run_vxlog(*spool, "--level=5", data=b"line 2\n"))
        entries = self.topic()
        self.assertEqual([(entry["text"], entry["sequence"], entry["level"]) for entry in entries],
                         [("line 0", 1, 0), ("line 1", 2, 0), ("line 2", 3, 5)])
        self.assertEqual(len({entry["process"] for entry in entries}), 1)

    def test_go_on_after_a_kill(self):
        process = self.start_vxlog("--spool", self.path("spool"))
        process.stdin.write(b"".join(b"line %d\n" % number for number in range(1, 9001)))
        process.stdin.flush()
        self.wait_for(self.topic)
        process.kill()
        process.communicate()
        self.assertSucceeds(self.run_vxlog("--spool", self.path("spool"), data=b"next\n"))
        entries = self.topic()
        numbered = {entry["sequence"]: entry["text"] for entry in entries}
        last = max(numbered)
        self.assertEqual(numbered, {**{number: f"line {number}" for number in range(1, last)}, last: "next"})
        self.assertEqual({(entry["process"], numbered[entry["sequence"]] == entry["text"]) for entry in entries},
                         {(entries[0]["process"], True)})

    def test_tell_what_they_cannot_bring(self):
        self.tell(f"fail gone {UNKNOWN_TOPIC}")
        password = self.write("password", b"secret\n")
        for to, parts, status in [
                (self.address(topic="gone"), ["topic gone", self.broker, "does not exist"], 1),
                ("kafka://127.0.0.1:1/logs", ["127.0.0.1:1", "no broker can be reached"], 1),
                ("kafka://127.0.0.1:1", ["kafka://HOST:PORT,HOST:PORT/TOPIC"], 2),
                ("kafka://a:1,b:x/logs", ["kafka://HOST:PORT,HOST:PORT/TOPIC"], 2),
                (self.address("?acks=0"), ["acks"], 2),
                (self.address("?user=ada"), ["password"], 2),
                (self.address("?user=ada&password=/no/such"), ["/no/such"], 1),
                (self.address(f"?user=ada&password={password}"), ["refuse the user", self.broker], 1),
                (self.address().replace("kafka:", "kafkas:"), ["SSL", self.broker], 1),
                (self.address("?level=x"), ["level"], 2)]:
            with self.subTest(to):
                self.assertFails(self.run_vxlog(to=to, data=b"x\n"), *parts, status=status)
        result = self.run_vxlog(data=b"one\n" + b"x" * 1_200_000 + b"\nthree\n")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"1 lines are lost: topic logs at", result.stderr)
        self.assertEqual(self.topic_texts(), ["one", "three"])
        self.assertFails(tool.run("vxlog", "--to", self.address(), data=b"x\n",
                                  env={**os.environ, "VXSYS4_REGISTRY": self.path("none")}), "Velmaris.Kafka", "vxreg")


class Forwarder(Cluster):
    def serve(self, *options, **process):
        return self.start("--format=json", f"--forward={self.address()}", *options, env=self.environment, **process)

    def send(self, *lines):
        client = self.client("ack=1")
        self.assertEqual(client.send("".join(line + "\n" for line in lines).encode()).end().splitlines()[-1],
                         f"ack {len(lines)}")

    def figure(self, label):
        text = vxlogd_tests.vxlogd("--status", f"--log={self.log}").stdout.decode()
        return re.search(rf"^{label} +(.*)$", text, re.MULTILINE)[1]

    def wait_for_lines(self, count):
        self.wait_for(lambda: (self.figure("lines forwarded"), self.figure("bytes not forwarded yet")) == (str(count), "0"))


@unittest.skipUnless(shutil.which("kcat"), "kcat is missing")
class Forwarding(Forwarder):
    def test_brings_what_is_in_the_log(self):
        self.write("log", b'{"text":"before","level":1}\n{}\nnot an "entry"\n{"text":"torn\n')
        self.serve("--level=5")
        self.send("eins", "zwei \U0001F600")
        self.wait_for_lines(6)
        self.assertEqual((self.stop(), self.said()), (0, ""))
        entries = self.topic()
        self.assertEqual([(entry.get("text"), entry.get("level"), entry["sequence"]) for entry in entries],
                         [("before", 1, 1), (None, None, 2), ('not an "entry"', None, 3), ('{"text":"torn', None, 4),
                          ("eins", 5, 5), ("zwei \U0001F600", 5, 6)])
        self.assertEqual({(entry["host"], entry["process"][:7]) for entry in entries}, {(os.uname().nodename, "vxlogd-")})
        self.assertEqual({"host", "process", "sequence", "level", "text", "peer", "timestamp"}, set(entries[-1]))

    def test_keeps_lines_of_a_client_together(self):
        self.serve()
        self.write("log", b'{"text":"\\"peer\\":\\"no:1\\"","peer":"10.0.0.1:5"}\n{"peer":"[::1]:80"}\n{"peer":"x"}\n')
        self.wait_for_lines(3)
        keys = subprocess.run(["kcat", "-C", "-q", "-e", "-o", "beginning", "-f", "%k\n", "-b", self.broker, "-t", "logs"],
                              capture_output=True, check=True, text=True, timeout=vxlogd_tests.PATIENCE).stdout
        self.assertEqual(keys.splitlines(), ["10.0.0.1", "[::1]", "x"])
        self.stop()

    def test_catches_up_across_rotations(self):
        self.serve("--rotate-size=300")
        self.send(*[f"a {number}" for number in range(20)])
        self.wait_for_lines(20)  # the mock would take lines twice whose answer is lost
        self.tell("down")
        self.send(*[f"b {number}" for number in range(20)])
        self.wait_for(lambda: "forwarding waits" in self.said())
        self.assertNotEqual(self.figure("bytes not forwarded yet"), "0")
        self.assertIn(self.broker, self.figure("forwarding waits"))
        metrics = vxlogd_tests.vxlogd("--metrics", f"--log={self.log}").stdout.decode()
        self.assertRegex(metrics, r"(?m)^vxlogd_forward_working 0$")
        self.assertRegex(metrics, r"(?m)^vxlogd_forwarded_lines_total \d+$")
        self.assertEqual(self.stop(), 0)
        self.serve("--rotate-size=300")
        self.send("c")
        self.tell("up")
        self.wait_for(lambda: self.figure("bytes not forwarded yet") == "0")
        self.assertEqual(self.stop(), 0)
        entries = self.topic()
        wanted = [f"{part} {number}" for part in "ab" for number in range(20)] + ["c"]
        self.assertEqual([entry["text"] for entry in entries], wanted)
        self.assertEqual([entry["sequence"] for entry in entries], list(range(1, 42)))
        self.assertEqual(len({entry["process"] for entry in entries}), 1)

    def test_follows_a_log_that_is_moved_away(self):
        self.serve()
        self.send("one")
        os.rename(self.log, self.path("moved"))
        self.write("log", b"")  # as a program does that rotates logs
        self.send("two")
        self.server.send_signal(signal.SIGHUP)
        self.wait_for(lambda: "opened anew" in self.said())
        self.send("three")
        self.wait_for_lines(3)
        self.assertEqual(self.topic_texts(), ["one", "two", "three"])
        self.stop()

    def test_reads_a_log_that_gets_shorter(self):
        self.serve()
        waiting = lambda: self.figure("bytes not forwarded yet")  # noqa: E731

        def change(size, data):
            os.truncate(self.log, size)
            with open(self.log, "ab") as file:
                file.write(data)

        change(0, b"one\ntwo\n")
        self.wait_for_lines(2)
        change(4, b"")  # a failed write is removed, and tried again
        change(4, b"two\nthree\ntor")
        self.wait_for(lambda: waiting() == "3")
        change(14, b"four\n")  # the next writer removes what is torn
        self.wait_for_lines(4)
        self.assertEqual(self.said(), "")
        change(0, b"five\n")  # a program that rotates logs has copied it
        self.wait_for_lines(5)
        self.assertEqual(self.topic_texts(), ["one", "two", "three", "four", "five"])
        self.assertIn("the log was cut", self.said())
        self.stop()

    def test_tells_which_files_were_removed_too_early(self):
        self.serve("--rotate-size=300", "--keep=1")
        self.send("first")
        self.wait_for_lines(1)
        self.tell("down")
        self.send(*[f"lost {number}" for number in range(20)])
        self.assertEqual(self.stop(), 0)
        self.tell("up")
        self.serve("--rotate-size=300", "--keep=1")
        self.wait_for(lambda: self.figure("bytes not forwarded yet") == "0")
        self.assertGreater(int(self.figure("older logs not forwarded")), 1)
        self.assertIn("removed before they were forwarded", self.said())
        self.assertEqual(self.topic_texts()[-1], "lost 19")
        self.stop()

    def test_repeats_only_what_numbers_show(self):
        self.serve("--rotate-size=10000")
        for turn in range(6):
            self.tell(["up", "up", "down"][turn % 3])
            self.send(*[f"{turn} {number}" for number in range(500)])
            self.server.kill()
            self.server.wait()
            self.serve("--rotate-size=10000")
        self.tell("up")
        self.wait_for(lambda: self.figure("bytes not forwarded yet") == "0")
        self.stop()
        entries = self.topic()
        numbered = {(entry["process"], entry["sequence"]): entry["text"] for entry in entries}
        self.assertEqual([text for _, text in sorted(numbered.items())],
                         [f"{turn} {number}" for turn in range(6) for number in range(500)])
        self.assertTrue(all(numbered[entry["process"], entry["sequence"]] == entry["text"] for entry in entries))

    def test_needs_what_it_can_use(self):
        for options, part, status in [
                (["--forward=kafka://x"], "kafka://HOST:PORT,HOST:PORT/TOPIC", 2),
                ([f"--forward={self.address()}"], "forward needs format json", 2),
                (["--forward-ack=brokers"], "forward-ack=brokers needs forward", 2),
                (["--format=json", f"--forward={self.address('?user=a&password=/no/such')}"], "/no/such", 1)]:
            self.assertFails(vxlogd_tests.vxlogd("--port=0", f"--log={self.log}", *options, env=self.environment), part,
                             status=status)
        self.write(".log.forward", b"vxlogd-forward-1 x 1 2 3 4 5 6 7\n")
        self.assertFails(vxlogd_tests.vxlogd("--port=0", f"--log={self.log}", "--format=json",
                                             f"--forward={self.address()}", env=self.environment), "is no position")


@unittest.skipUnless(shutil.which("kcat"), "kcat is missing")
class Acknowledgements(Forwarder):
    """By the brokers."""
    GREETING = "ack=1 client=" + "0a" * 16 + " seq="

    def serve(self, *options, **process):
        return super().serve("--forward-ack=brokers", *options, **process)

    def wait_for_unacknowledged(self, count):
        self.wait_for(lambda: self.figure("lines that clients wait for") == str(count))

    def log_texts(self):
        while True:
            names = sorted(name for name in os.listdir(self.folder) if name.startswith("log."))
            with contextlib.suppress(FileNotFoundError):  # a file was rotated meanwhile
                return [json.loads(line)["text"] for name in [*names, "log"] for line in self.read(name).splitlines()]

    def test_come_when_the_brokers_have_a_line(self):
        self.serve("--max-line=1048576")
        large = "x" * 1_040_000
        for greeting in "ack=1", self.GREETING + "1":
            client = self.client(greeting)
            client.send(f"a\n{large}\nb\n".encode()).hear("ack 3\n")  # the large one is only in the log
            self.assertEqual(self.topic_texts()[-2:], ["a", "b"])
        self.assertEqual(self.log_texts(), ["a", large, "b"] * 2)
        self.assertEqual(self.figure("lines that brokers refused"), "2")
        self.assertIn("a line stays only in the log: topic logs", self.said())
        self.tell("down")
        client.send(b"c\n" * 3000).hear("wait the brokers do not have the lines yet: ")
        self.wait_for(lambda: self.log_texts().count("c") == 1024)  # the window
        self.wait_for_unacknowledged(1024)
        self.client("ack=0").send(b"d\n").end()  # waits for nothing
        self.tell("up")
        client.hear("ack 3003\n")
        self.assertEqual(self.topic_texts()[4:].count("c"), 3000)
        self.assertEqual(self.stop(), 0)
        self.assertEqual(self.topic_texts().count("d"), 1)

    def test_survive_a_kill_of_the_server(self):
        self.serve()
        self.client(self.GREETING + "1").send(b"1\n").hear("ack 1\n")
        self.tell("down")
        for count in range(2, 5):
            self.client(self.GREETING + "2").send("".join(f"{line}\n" for line in range(2, count + 1)).encode())
            self.wait_for_unacknowledged(count - 1)
            self.server.kill()
            self.server.wait()
            self.serve()
        self.tell("up")
        self.client(self.GREETING + "2").send(b"2\n3\n4\n5\n").hear("ack 5\n")
        self.wait_for(lambda: f"{'0a' * 16} 5" in self.read(".log.forward").decode())
        self.server.kill()
        self.server.wait()
        self.serve()
        self.client(self.GREETING + "2").send(b"2\n3\n4\n5\n6\n").hear("ack 6\n")
        self.assertEqual(self.log_texts(), list("123456"))
        self.assertEqual(sorted(set(self.topic_texts())), list("123456"))

    def test_reach_every_sender_through_kills(self):
        self.serve("--rotate-size=6000")
        process = subprocess.Popen([os.environ["VXLOG"], "--to", f"vxlog://127.0.0.1:{self.port}"], stdin=subprocess.PIPE)
        self.addCleanup(process.kill)
        for turn in range(6):  # all lines fit into the window, so that each turn needs no brokers
            self.tell(["up", "down"][turn % 2])
            process.stdin.write("".join(f"{turn} {number}\n" for number in range(150)).encode())
            process.stdin.flush()
            self.wait_for(lambda: f"{turn} 120" in self.log_texts())
            self.server.kill()
            self.server.wait()
            self.serve("--rotate-size=6000", port=self.port)
        self.tell("up")
        process.communicate()
        self.assertEqual(process.returncode, 0)
        wanted = [f"{turn} {number}" for turn in range(6) for number in range(150)]
        self.assertEqual(self.log_texts(), wanted)
        self.assertEqual(list(dict.fromkeys(self.topic_texts())), wanted)

    def test_end_with_a_file_that_is_removed_too_early(self):
        self.tell(f"fail logs {UNKNOWN_TOPIC}")
        self.serve("--rotate-size=300", "--keep=1")
        client = self.client(self.GREETING + "1").send(b"1\n")
        client.hear("wait the brokers do not have the lines yet: topic logs at")
        for count in 2, 3:
            client.send(b"%d\n" % count)
            self.wait_for_unacknowledged(count)
        for number in range(9):
            self.client().send(b"other %d\n" % number).end()
        self.wait_for(lambda: self.log_texts()[-1] == "other 8")
        self.tell("fail logs 0")
        self.assertEqual(client.rest().splitlines()[-1], "ack 2")  # and the end, so that it sends the rest again
        self.client(self.GREETING + "3").send(b"3\n").hear("ack 3\n")
        self.assertEqual([text for text in self.topic_texts() if len(text) == 1], ["1", "2", "3"])

    def test_need_no_brokers_after_a_change(self):
        config = self.write("vxlogd.ini", b"[vxlogd]\nforward-ack = brokers\n")
        super().serve(f"--config={config}")
        self.tell("down")
        client = self.client("ack=1").send(b"1\n")
        self.wait_for_unacknowledged(1)
        self.write("vxlogd.ini", b"[vxlogd]\nforward-ack = log\n")
        self.server.send_signal(signal.SIGHUP)
        client.hear("ack 1\n")
        client.send(b"2\n").hear("ack 2\n")
        self.assertEqual(self.stop(), 0)


@unittest.skipUnless("VXVIEW" in os.environ, "vxview is missing")
class Views(Cluster):
    def view(self, *arguments):
        return tool.run("vxview", *arguments, env=self.environment)

    def test_show_a_topic(self):
        self.tell("create many 3")
        for number in range(3):
            self.assertSucceeds(self.run_vxlog(f"--level={number}", to=self.address(topic="many"), data=b"a b\n" * 700))
        self.assertSucceeds(self.view("--count", self.address(topic="many")), b"2100\n")
        self.assertSucceeds(self.view("--count", "--level=2", self.address(topic="many")), b"700\n")
        self.assertSucceeds(self.view("--tail=1", "--format=plain", "--fields=level,text", self.address(topic="many")),
                            b"level=2\ntext=a b\n" + b"-" * 25 + b"\n")
        self.assertEqual(self.view("--count", self.address()).returncode, 1)
        self.assertFails(self.view("kafka://127.0.0.1:1/logs"), "127.0.0.1:1", status=2)
        self.assertFails(self.view("kafka://logs"), "kafka://HOST:PORT,HOST:PORT/TOPIC", status=2)

    def test_follow_a_topic(self):
        self.assertSucceeds(self.run_vxlog(data=b"one\n"))
        with subprocess.Popen([os.environ["VXVIEW"], "--follow", "--format=json", "--fields=text", self.address()],
                              stdout=subprocess.PIPE, env=self.environment) as process:
            self.addCleanup(process.kill)
            self.assertEqual(process.stdout.readline(), b'{"text":"one"}\n')
            self.tell("down")
            self.tell("up")
            self.assertSucceeds(self.run_vxlog(data=b"two\n"))
            self.assertEqual(process.stdout.readline(), b'{"text":"two"}\n')
            process.kill()


if __name__ == "__main__":
    unittest.main()
