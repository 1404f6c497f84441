#!/usr/bin/env python3
"""Times vxview over large logs beside grep, jq and a plain read of the same file, and compares what they found.

    bench/log_view.py build/release/tools/vxview [MEBIBYTES [ROUNDS]]

Each time is the shortest of ROUNDS (5), which take turns. Below the times stands the most memory that vxview used.
"""

import json
import os
import random
import resource
import shutil
import subprocess
import sys
import tempfile
import time

WORDS = "alpha beta gamma delta timeout refused connection closed user session index cache".split()
HYPHENS = "-" * 25 + "\n"


def generate(path, form, size):
    rng = random.Random(7)
    number = written = 0
    with open(path, "w", encoding="utf-8") as log:
        while written < size:
            entry = {"sequence": number, "level": rng.choice([0, 0, 0, 0, 1, 1, 2, 3]),
                     "text": " ".join(rng.choices(WORDS, k=8)) + f" {rng.randrange(10 ** 9)}", "name": rng.choice(["web", "svc", "db"]),
                     "timestamp": f"2026-11-{1 + number // 10 ** 6 % 28:02}T{number // 40000 % 24:02}:{number // 700 % 60:02}:00.{number % 1000:03}Z"}
            if number % 100_000 == 77:
                entry["text"] += " needle-in-hay"
            text = json.dumps(entry) + "\n" if form == "json" else "".join(f"{k}={v}\n" for k, v in entry.items()) + HYPHENS
            log.write(text)
            written += len(text)
            number += 1


def seconds(command, output):
    with open(output, "wb") as file:
        start = time.perf_counter()
        status = subprocess.run(command, stdout=file, check=False).returncode
        elapsed = time.perf_counter() - start
    if status != 0:
        sys.exit(f"{' '.join(command)} ended with {status}")
    return elapsed


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    vxview, size = sys.argv[1], int(sys.argv[2] if len(sys.argv) > 2 else 1024) * 2 ** 20
    rounds = int(sys.argv[3] if len(sys.argv) > 3 else 5)
    with tempfile.TemporaryDirectory() as folder:
        logs = {form: os.path.join(folder, form) for form in ("json", "plain")}
        for form, path in logs.items():
            generate(path, form, size)
        rows = []
        for form, log in logs.items():
            same = ["--format", form]
            for name, text in [("rare text", "needle-in-hay"), ("frequent text", "timeout")]:
                rows.append((f"{form}: {name}", [vxview, *same, "-t", text, log], [["grep", "-F", text, log], ["cat", log]]))
            peers = [["jq", "-c", "select(.level==3)", log]] if form == "json" and shutil.which("jq") else []
            rows.append((f"{form}: a field", [vxview, *same, "-l", "3", log], [*peers, ["cat", log]]))
            rows.append((f"{form}: a summary", [vxview, "-S", log], [["cat", log]]))
        print(f"{size >> 20} MiB in each form; milliseconds, and how often the peer's time fits into ours")
        for name, command, peers in rows:
            outputs = [os.path.join(folder, str(index)) for index in range(1 + len(peers))]
            times = [min(each) for each in zip(*([seconds(*pair) for pair in zip([command, *peers], outputs)] for _ in range(rounds)))]
            others = "  ".join(f"{peer[0]} {other * 1000:.0f} ({times[0] / other:.2f})" for peer, other in zip(peers, times[1:]))
            print(f"{name:22} vxview {times[0] * 1000:6.0f}  {others}")
            if peers[0][0] != "cat" and (name.startswith("json") or "field" in name):
                with open(outputs[0], "rb") as ours, open(outputs[1], "rb") as theirs:
                    if sum(1 for _ in ours) != sum(1 for _ in theirs):
                        sys.exit(f"{name}: {peers[0][0]} has found something else")
        subprocess.run([vxview, "-S", logs["json"]], stdout=subprocess.DEVNULL, check=True)
        print(f"most memory: {resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss >> 10} MiB of all programs that ran")


if __name__ == "__main__":
    main()
