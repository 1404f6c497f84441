#!/usr/bin/env python3
"""Tests the page of the program in the variable VXLOGD, and reading from the running server, as hostile clients would."""

import http.client
import json
import os
import re
import resource
import select
import socket
import subprocess
import unittest

import tool
from vxlogd_tests import PATIENCE, Served, vxlogd

TOKEN = "correct-horse-battery"
HOSTILE = "<img src=x onerror=alert(1)>&\"'\\ \u202e\u200b \x1b[31m 😀"


class Paged(Served):
    def open(self, *options, place="127.0.0.1:0", **process):
        self.start("--level=6", f"--http={place}", *options, **process)
        page = re.fullmatch(r"the page is at http://\S+:(\d+)/\n", self.server.stdout.readline())
        self.page = int(page[1])

    def connect(self):
        connection = http.client.HTTPConnection("127.0.0.1", self.page, timeout=PATIENCE)
        self.addCleanup(connection.close)
        return connection

    def ask(self, path, method="GET", **headers):
        connection = self.connect()
        connection.request(method, path, headers={name.replace("_", "-"): value for name, value in headers.items()})
        answer = connection.getresponse()
        return answer, answer.read().decode()

    def watch(self, **headers):
        connection = self.connect()
        connection.request("GET", "/tail", headers=headers)
        answer = connection.getresponse()
        self.assertEqual((answer.status, answer.getheader("Content-Type")), (200, "text/event-stream"))
        return answer

    def event(self, stream):
        """The fields of the next event."""
        fields = {}
        while True:
            line = stream.readline().decode().rstrip("\n")
            if line and not line.startswith(":"):
                fields.update([line.split(": ", 1)])
            elif not line and fields:
                return fields
            self.assertTrue(line or not stream.closed and stream.fp, "the stream has ended")

    def log_lines(self, *lines, level=3):
        client = self.client(f"level={level} ack=1")
        client.send("".join(line + "\n" for line in lines).encode())
        client.hear(f"ack {len(lines)}\n")


class Routes(Paged):
    def test_answer(self):
        self.open("--max-line=1048576")
        self.log_lines("one", HOSTILE, "x" * 1000000)
        for path, status, kind, part in [
                ("/", 200, "text/html; charset=utf-8", "<script src=\"/page.js\" defer>"),
                ("/page.js", 200, "text/javascript; charset=utf-8", "EventSource"),
                ("/page.css", 200, "text/css; charset=utf-8", "prefers-color-scheme"),
                ("/icon.svg", 200, "image/svg+xml; charset=utf-8", "<svg"), ("/health", 200, "text/plain; charset=utf-8", "ok\n"),
                ("/metrics", 200, "text/plain; version=0.0.4", "vxlogd_lines_written_total 3\n"),
                ("/api/status", 200, "application/json", '"levels":{"3":3}'), ("/../page.js", 404, "text/plain; charset=utf-8", "no such"),
                ("/%00", 404, "text/plain; charset=utf-8", "no such")]:
            answer, text = self.ask(path)
            self.assertEqual((answer.status, answer.getheader("Content-Type")), (status, kind), path)
            self.assertIn(part, text)
            self.assertRegex(answer.getheader("Content-Security-Policy"), r"^default-src 'none'; (?!.*(unsafe|\*))")
            self.assertEqual([answer.getheader(name) for name in ("X-Content-Type-Options", "Referrer-Policy", "Cache-Control")],
                             ["nosniff", "no-referrer", "no-store"])
        self.assertNotRegex(self.ask("/")[1], r"(?i)https?:|<script>|<style| style=| on\w+=")
        self.assertNotRegex(self.ask("/page.js")[1], r"innerHTML|outerHTML|insertAdjacent|document\.write|eval\(|Function\(")
        state = json.loads(self.ask("/api/status")[1])
        self.assertEqual((state["log"], state["figures"]["lines_written_total"]), (self.log, 3))
        named = [re.findall(r"^\w+", text, re.MULTILINE) for text in (vxlogd("--metrics", "--log=" + self.log).stdout.decode(), self.ask("/metrics")[1])]
        self.assertEqual(named[0], named[1])
        self.assertEqual(self.ask("/", "HEAD")[1], "")
        for method in "POST", "DELETE", "OPTIONS":
            self.assertEqual(self.ask("/", method)[0].status, 405)
        stream = self.watch()
        events = [self.event(stream) for _ in range(3)]
        for event in events:
            self.assertRegex(event["data"], r"^[ -~]+$")
            self.assertNotRegex(event["data"], "[<>&]")
        entries = [json.loads(event["data"]) for event in events]
        self.assertEqual(entries[1]["text"], HOSTILE.replace("\u202e", "\ufffd").replace("\x1b", "\u241b"))
        self.assertEqual((len(entries[2]["text"]), entries[2]["cut"]), (8192, 991808))
        self.log_lines("four", level=7)
        fourth = self.event(stream)
        self.assertEqual((fourth["id"], json.loads(fourth["data"])["level"]), ("4", 7))
        self.assertEqual(self.event(self.watch(**{"Last-Event-ID": "3"}))["id"], "4")
        self.assertEqual(self.event(self.watch(**{"Last-Event-ID": "99"}))["id"], "1")  # of a server before this one
        self.assertEqual((self.stop(), self.said()), (0, ""))  # while watchers are connected
        self.assertRaises(http.client.IncompleteRead, stream.read)  # cut, so that a browser connects again

    def test_tell_of_trouble(self):
        self.open()
        hard = resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE)[1]
        resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE, (0, hard))
        client = self.client("ack=1").send(b"line\n")
        client.hear("wait ")
        answer, text = self.ask("/health")
        self.assertEqual(answer.status, 503)
        self.assertRegex(text, r"^the log cannot be written: \S")
        resource.prlimit(self.server.pid, resource.RLIMIT_FSIZE, (hard, hard))
        client.hear("ack 1\n")
        self.assertEqual(self.ask("/health")[1], "ok\n")


class Access(Paged):
    def test_is_for_known_names(self):
        self.open("--http-host=log.example,Second.example")
        for host, status in [("evil.example", 421), ("evil.example:80", 421), ("localhost.evil.example", 421), ("", 421),
                             ("LOCALHOST", 200), (f"127.0.0.1:{self.page}", 200), ("log.example:1", 200), ("second.example", 200)]:
            self.assertEqual(self.ask("/api/status", Host=host)[0].status, status, host)
        for site, path, status in [("cross-site", "/tail", 403), ("same-site", "/api/status", 403), ("same-origin", "/api/status", 200),
                                   ("none", "/metrics", 200), ("cross-site", "/", 200)]:
            self.assertEqual(self.ask(path, Sec_Fetch_Site=site)[0].status, status, (site, path))
        for request in b"GET /metrics HTTP/1.1\r\n\r\n", b"GET /metrics HTTP/1.1\r\nHost: localhost\r\nHost: evil.example\r\n\r\n":
            with socket.create_connection(("127.0.0.1", self.page), PATIENCE) as raw:
                raw.sendall(request)
                self.assertNotIn(b" 200 ", raw.makefile("rb").readline())

    def test_needs_the_token(self):
        self.open("--http-token=" + self.write("token", TOKEN.encode() + b"\n", 0o600))
        for path in "/", "/metrics", "/health", "/tail", "/api/status", "/page.js", "/x", "/?token=" + TOKEN[:-1]:
            answer, text = self.ask(path, Authorization="Bearer " + TOKEN + "x", Cookie=f"vxlogd_{self.page}=; x=" + TOKEN)
            self.assertEqual((answer.status, answer.getheader("WWW-Authenticate")), (401, "Bearer"), path)
            self.assertNotIn(TOKEN, text)
        self.assertEqual(self.ask("/metrics", Authorization="Bearer " + TOKEN)[0].status, 200)
        answer, _ = self.ask("/?token=" + TOKEN)
        cookie, *marks = answer.getheader("Set-Cookie").split("; ")
        self.assertEqual((answer.status, answer.getheader("Location"), set(marks)), (303, "/", {"Path=/", "HttpOnly", "SameSite=Strict"}))
        self.assertEqual(self.ask("/", Cookie="a=b; " + cookie)[0].status, 200)

    def test_is_refused_where_it_is_not_safe(self):
        good = self.write("good", TOKEN.encode(), 0o600)
        for options, parts in [
                (["--http=0.0.0.0:0"], ["other machines", "http-token"]), (["--http=[::]:0"], ["http-token"]),
                (["--http=8080"], ["no host and port"]), (["--http=::1:80"], ["no host and port"]), (["--http=localhost:65536"], ["65536"]),
                (["--http-host=x"], ["need http"])]:
            self.assertFails(vxlogd("--port=0", "--log=" + self.log, *options), *parts, status=2)
        for token, part in [(self.write("open", TOKEN.encode(), 0o640), "others may read"), (self.write("short", b"abc", 0o600), "16"),
                            (self.write("odd", b"a" * 20 + b"; x", 0o600), "letters"), (self.folder, "no file"), (self.path("none"), "no such file")]:
            self.assertFails(vxlogd("--port=0", "--log=" + self.log, "--http=0.0.0.0:0", "--http-token=" + token), token, part)
        self.open("--http-token=" + good, place="0.0.0.0:0")
        self.assertFails(vxlogd("--port=0", "--log=" + self.path("other"), f"--http=127.0.0.1:{self.page}"), str(self.page), "cannot listen")
        config = self.write("conf.ini", b"[vxlogd]\nhttp=[::1]:7580\nhttp-host=a,b\n")
        self.assertIn(b"http = [::1]:7580\nhttp-token = \nhttp-host = a,b\n", vxlogd("--check-config", "-c", config).stdout)


class Floods(Paged):
    def test_do_not_hold_up_the_log(self):
        self.open()
        idle = [socket.create_connection(("127.0.0.1", self.page), PATIENCE) for _ in range(200)]
        for each in idle:
            self.addCleanup(each.close)
        for each in idle[:60]:
            each.sendall(b"GET / HTTP/1.1\r\nHost: local")
        self.log_lines("a line")
        answers = [each.makefile("rb").readline() for each in idle]
        self.assertEqual({b"", b"HTTP/1.1 503 Service Unavailable\r\n"}, set(answers))  # all are dropped, most at once
        self.assertEqual(self.ask("/health")[1], "ok\n")
        watchers = [self.watch() for _ in range(16)]
        self.assertEqual(self.ask("/tail")[0].status, 503)
        self.log_lines(*(f"{number} " + "x" * 4000 for number in range(5000)))  # the watchers do not read
        seen, missed = 0, 0
        while seen + missed < 5001:
            event = self.event(watchers[0])
            missed += int(event["data"]) if event.get("event") == "missed" else 0
            seen += "id" in event
        self.assertEqual((seen + missed, missed > 0), (5001, True))
        for head in b"X: " + b"x" * 3000, b"\r\n".join(b"X: y" for _ in range(3000)):
            with socket.create_connection(("127.0.0.1", self.page), PATIENCE) as raw:
                try:
                    raw.sendall(b"GET / HTTP/1.1\r\nHost: localhost\r\n" + head + b"\r\n\r\n")
                    answer = raw.makefile("rb").readline()
                except ConnectionError:
                    answer = b""
                self.assertNotIn(b" 200 ", answer)
        self.assertEqual(self.ask("/", Range="bytes=" + ",".join(["0-"] * 500))[0].status, 200)
        self.assertEqual((self.stop(), self.said()), (0, ""))


class Sockets(Paged):
    def view(self, *arguments):
        return tool.run("vxview", "--fields=text", *arguments, self.path(".log.status")).stdout.decode().splitlines()

    def test_show_a_running_server(self):
        self.start("--level=5")
        follower = subprocess.Popen([os.environ["VXVIEW"], "-f", "-l", "..3", "--fields=text", self.path(".log.status")], stdout=subprocess.PIPE)
        self.addCleanup(lambda: (follower.kill(), follower.wait(), follower.stdout.close()))
        sent = 0
        while not select.select([follower.stdout], [], [], 0.1)[0]:  # until it watches
            sent += 1
            self.log_lines(f"line {sent}")
        first = follower.stdout.readline().decode()
        self.assertRegex(first, r"^line \d+$")
        self.log_lines("hidden", level=4)
        self.log_lines(HOSTILE)
        lines = iter(lambda: follower.stdout.readline().decode()[:-1], "")
        self.assertIn(HOSTILE.split()[0], next(each for each in lines if "img" in each))
        seen = self.view()
        self.assertEqual((seen[0] + "\n", seen[-2], len(seen)), (first, "hidden", sent - int(first[5:]) + 3))
        self.assertEqual(self.view("--tail=1", "--text=hid"), ["hidden"])
        self.assertEqual(self.stop(), 0)
        self.assertEqual((list(lines), follower.wait(PATIENCE)), ([], 0))

    def test_do_not_wait_for_one_that_does_not_read(self):
        self.start()
        with socket.socket(socket.AF_UNIX) as silent:
            silent.settimeout(PATIENCE)
            silent.connect(self.path(".log.status"))
            silent.sendall(b"tail follow\n")
            answer = silent.makefile("rb")
            self.assertEqual(answer.readline(), b"0\n")
            self.log_lines(*(f"{number} " + "x" * 4000 for number in range(5000)))
            entries = []
            while sum(each.get("missed", 1) for each in entries) < 5000:
                entries.append(json.loads(answer.readline()))
            self.assertEqual([each["text"].split()[0] for each in entries if "text" in each][-1], "4999")
            self.assertEqual(sum("missed" in each for each in entries) > 0, True)
            self.assertEqual(self.stop(), 0)


if __name__ == "__main__":
    unittest.main()
