#!/usr/bin/env python3
"""Compares UriReference with urllib.parse over random references. URI_LINES is the program that prints what UriReference finds.

Where the two differ, RFC 3986 holds, and the comparison leaves it out:
- urllib does not tell a component that is empty from one that is missing: it drops "?" and "#" at the end of a part, and a
  reference of "?" keeps the query of the base;
- an empty reference keeps the fragment of the base there;
- it resolves only what has neither scheme nor authority: others keep their dot segments, and "http:g" is read as "g" if the
  base has the scheme http (5.2.2 allows that only for backward compatibility);
- it removes empty segments ("a//b") when it merges paths.
"""

import os
import random
import re
import subprocess
import unittest
import urllib.parse

SEGMENTS = ["a", "b", "c.d", ".", "..", ".", "..", "...", "%41", "x=1", "g;p", "~", "a:b", "@", "%2e"] * 4 + [""]
HOSTS = ["h", "H.example", "127.0.0.1", "[::1]", "u@h", "u:p@h:80", "h:", "[fe80::1]:1", "a%20b"]


class References(unittest.TestCase):
    def setUp(self):
        seed = random.randrange(1 << 32)
        self.random = random.Random(seed)
        print("seed", seed)

    def path(self, begins):
        segments = self.random.choices(SEGMENTS, k=self.random.randrange(6))
        text = "/".join(segments)
        if begins:
            return "/" + text if segments else ""
        return "./" + text if ":" in text.split("/")[0] or text.startswith("/") else text

    def reference(self, is_base):
        scheme = "http:" if is_base else self.random.choice([""] * 9 + ["ftp:", "mailto:", "x-y.z:"])
        has_host = is_base or self.random.random() < 0.2
        text = scheme + ("//" + self.random.choice(HOSTS) if has_host else "")
        begins = has_host or self.random.random() < 0.3
        path = self.path(begins)
        text += re.sub("^//+", "/", path) if begins and not has_host else path
        text += self.random.choice(["", "", "?q=1", "?a/../b?c"] * 4 + ["?"])
        return text + self.random.choice(["", "", "#f/./g", "#?a"] * 4 + ["#"])

    def is_resolved_alike(self, base, reference):
        of_base, of_reference = map(urllib.parse.urlsplit, (base, reference))
        has_empty_part = re.search(r"[?#]$|\?#", base) or re.search(r"[?#]$|\?#", reference)
        return not (reference == "" or of_reference.scheme or of_reference.netloc or has_empty_part
                    or "//" in of_base.path or "//" in of_reference.path)

    def test_are_found_and_resolved_as_elsewhere(self):
        lines = [(self.reference(True), self.reference(False)) for _ in range(40_000)]
        run = subprocess.run([os.environ["URI_LINES"]], input="\n".join(map("\t".join, lines)), capture_output=True,
                             check=True, text=True)
        resolved = 0
        for (base, reference), line in zip(lines, run.stdout.split("\n"), strict=False):
            with self.subTest(base=base, reference=reference):
                scheme, authority, host, port, path, query, fragment, target = line.split("\t")
                part = urllib.parse.urlsplit(reference)
                self.assertEqual((scheme, authority, path, query, fragment), tuple(part))
                self.assertEqual(host.strip("[]").lower(), part.hostname or "")
                self.assertEqual(int(port) if port else None, part.port)
                if self.is_resolved_alike(base, reference):
                    resolved += 1
                    self.assertEqual(target, urllib.parse.urljoin(base, reference))
        print(len(lines), "references,", resolved, "resolved")
        self.assertGreater(resolved, len(lines) // 4)


if __name__ == "__main__":
    unittest.main()
