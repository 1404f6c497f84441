#!/usr/bin/env python3
"""Tests the way of lines to the brokers of Kafka and back, over the cluster that the program in KAFKA_MOCK is."""

import json
import os
import shutil
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

    def test_tell_what_they_cannot_bring(self):
        self.tell(f"fail gone {UNKNOWN_TOPIC}")
        for to, parts, status in [
                (self.address(topic="gone"), ["topic gone", self.broker, "does not exist"], 1),
                ("kafka://127.0.0.1:1/logs", ["127.0.0.1:1", "no broker can be reached"], 1),
                ("kafka://127.0.0.1:1", ["kafka://HOST:PORT,HOST:PORT/TOPIC"], 2),
                ("kafka://a:1,b:x/logs", ["kafka://HOST:PORT,HOST:PORT/TOPIC"], 2),
                (self.address("?acks=0"), ["acks"], 2),
                (self.address("?user=ada"), ["password"], 2),
                (self.address("?user=ada&password=/no/such"), ["/no/such"], 1),
                (self.address("?level=x"), ["level"], 2)]:
            with self.subTest(to):
                self.assertFails(self.run_vxlog(to=to, data=b"x\n"), *parts, status=status)
        result = self.run_vxlog(data=b"one\n" + b"x" * 1_200_000 + b"\nthree\n")
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"1 lines are lost: topic logs at", result.stderr)
        self.assertEqual(self.topic_texts(), ["one", "three"])
        self.assertFails(tool.run("vxlog", "--to", self.address(), data=b"x\n",
                                  env={**os.environ, "VXSYS4_REGISTRY": self.path("none")}), "Velmaris.Kafka", "vxreg")


if __name__ == "__main__":
    unittest.main()
