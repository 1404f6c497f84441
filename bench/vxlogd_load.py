#!/usr/bin/env python3
"""Holds many connections to a vxlogd, lets some of them send as fast as they can and some others send one line a second,
kills the server with signal 9 and looks for every acknowledged line in the log. Prints how long the slow clients waited until
their line was acknowledged.

    bench/vxlogd_load.py build/release/tools/vxlogd [SECONDS [CONNECTIONS [SENDERS]]]
"""

import contextlib
import multiprocessing
import os
import random
import resource
import socket
import subprocess
import sys
import tempfile
import threading
import time

BATCH = 200  # lines in one send
QUIET = 10  # clients that send a line a second


class Sender(threading.Thread):
    def __init__(self, name, connection, end):
        super().__init__()
        self.name, self.connection, self.end = name, connection, end
        self.acknowledged = 0

    def run(self):
        hearing = threading.Thread(target=self.hear)
        hearing.start()
        line = 0
        try:
            while time.monotonic() < self.end.when:
                self.connection.sendall("".join(
                    f"{self.name} {line + number} of a text to be kept\n" for number in range(BATCH)).encode())
                line += BATCH
        except OSError:
            pass
        hearing.join()

    def hear(self):
        rest = b""
        try:
            while piece := self.connection.recv(65536):
                *lines, rest = (rest + piece).split(b"\n")
                if lines:
                    self.acknowledged = int(lines[-1].split()[1])
        except OSError:
            pass


def ask(connection, when, waits):
    """Sends a line a second until `when`, and adds the times until they are acknowledged to `waits`."""
    time.sleep(random.random())
    line = 0
    with contextlib.suppress(OSError):
        while (begin := time.monotonic()) < when:
            line += 1
            connection.sendall(b"quiet\n")
            answer = b"more"
            while answer and not answer.endswith(b"ack %d\n" % line):
                answer = connection.recv(100)
            if answer:
                waits.append(time.monotonic() - begin)
            time.sleep(max(0, begin + 1 - time.monotonic()))


def ask_all(connections, when, result):
    """For a process that does nothing else, so that the times are not those of the senders."""
    waits = []
    threads = [threading.Thread(target=ask, args=(connection, when, waits)) for connection in connections]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    result.put(waits)


class End:
    when = 0.0


def memory(process):
    with open(f"/proc/{process}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))


def main(program, seconds=60, connections=1000, senders=50):
    resource.setrlimit(resource.RLIMIT_NOFILE, (resource.getrlimit(resource.RLIMIT_NOFILE)[1],) * 2)
    with tempfile.TemporaryDirectory() as folder:
        log = os.path.join(folder, "log")
        with subprocess.Popen([program, "--listen=127.0.0.1", "--port=0", f"--log={log}", "--idle-timeout=0"],
                              stdout=subprocess.PIPE, text=True) as server:
            port = int(server.stdout.readline().rsplit(":", 1)[1])
            held = []
            for _ in range(connections):
                held.append(socket.create_connection(("127.0.0.1", port)))
                held[-1].sendall(b"VXLOG ack=1\n")
            at_rest = memory(server.pid)
            end = End()
            end.when = time.monotonic() + seconds
            threads = [Sender(f"sender{number}", held[number], end) for number in range(senders)]
            result = multiprocessing.SimpleQueue()
            quiet = multiprocessing.Process(target=ask_all, args=(held[-QUIET:], end.when, result))
            quiet.start()
            for thread in threads:
                thread.start()
            most = 0
            while time.monotonic() < end.when:
                time.sleep(0.2)
                most = max(most, memory(server.pid))
            waits = sorted(wait * 1000 for wait in result.get())
            quiet.join()
            server.kill()
            for thread in threads:
                thread.join()

        seen = {thread.name: set() for thread in threads}
        entries = doubles = 0
        with open(log, encoding="utf-8", errors="replace") as file:
            for line in file:
                words = line.split()
                if line.startswith("text=sender") and len(words) > 1:
                    entries += 1
                    numbers = seen[words[0][5:]]
                    doubles += words[1] in numbers
                    numbers.add(words[1])
    lost = sum(str(line) not in seen[thread.name] for thread in threads for line in range(thread.acknowledged))
    acknowledged = sum(thread.acknowledged for thread in threads)
    print(f"{connections} connections, {senders} senders, {seconds} s: {entries} entries ({entries / seconds:.0f} a second), "
          f"{acknowledged} acknowledged, {lost} of them lost, {doubles} doubles; quiet clients waited "
          f"{waits[len(waits) // 2]:.1f} ms (median), {waits[len(waits) * 99 // 100]:.1f} ms (99 %), {waits[-1]:.1f} ms (longest); "
          f"memory {at_rest // 1024} MiB at rest, {most // 1024} MiB at most")
    return 1 if lost or doubles or not acknowledged else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], *map(int, sys.argv[2:])))
