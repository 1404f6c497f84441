"""Looks at the page of vxlogd with Chromium, as a person would. VXLOGD names the program. The tests and scripts/pictures
share the browser."""

import contextlib
import os
import re
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.wait import WebDriverWait

sys.path.append(os.path.join(os.path.dirname(__file__), "..", "tools"))
from vxlogd_tests import Client  # noqa: E402: it stands beside the other tests of the tools

PATIENCE = 60  # seconds for something that happens at once
HOSTILE = "<img src=x onerror=\"document.title='run'\"><script>document.title='run'</script> \u200b&amp;"


@contextlib.contextmanager
def browser(width, height):
    with tempfile.TemporaryDirectory() as profile:
        options = webdriver.ChromeOptions()
        for option in ("--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-background-networking",
                       "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--hide-scrollbars", f"--user-data-dir={profile}"):
            options.add_argument(option)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        try:
            resize(driver, width, height)
            yield driver
        finally:
            driver.quit()


def resize(driver, width, height):
    """Sets the size of the page itself; a window has a least width."""
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})


@contextlib.contextmanager
def server():
    """A server in a folder of its own: the address of its page and a function that sends lines of a level."""
    with tempfile.TemporaryDirectory() as folder:
        process = subprocess.Popen([os.path.abspath(os.environ["VXLOGD"]), "--listen=127.0.0.1", "--port=0", "--log=service.log",
                                    "--max-line=100000", "--http=127.0.0.1:0"], stdout=subprocess.PIPE, text=True, cwd=folder)
        try:
            port = int(process.stdout.readline().rsplit(":", 1)[1])
            address = re.search(r"http://\S+", process.stdout.readline())[0]

            def send(level, *lines):
                client = Client(port, f"level={level} ack=1")
                client.send("".join(line + "\n" for line in lines).encode()).hear(f"ack {len(lines)}\n")
                client.socket.close()

            yield address, send
        finally:
            process.terminate()
            process.wait(PATIENCE)
            process.stdout.close()


class Page(unittest.TestCase):
    def rows(self):
        return self.driver.execute_script("return [...document.querySelectorAll('#entries li')].map(each => each.innerText)")

    def wait_for(self, condition):
        WebDriverWait(self.driver, PATIENCE, 0.05).until(lambda _: condition())

    def fill(self, name, text):
        field = self.driver.find_element(By.ID, name)
        field.clear()
        field.send_keys(text or " \b")

    def test_shows_the_log(self):
        with server() as (address, send), browser(1000, 900) as self.driver:
            self.driver.get(address)
            send(3, "the disk is slow")
            self.wait_for(lambda: any("the disk is slow" in row and "✖ error 3" in row for row in self.rows()))
            send(6, HOSTILE, "x" * 50000, "مرحبا")
            send(0, "without a level")
            self.wait_for(lambda: len(self.rows()) == 5)
            rows = self.rows()
            self.assertIn(HOSTILE.replace("\u200b", "\\u{200B}"), rows[3])
            self.assertIn("41808 more characters", rows[2])
            self.assertEqual(self.driver.title, "vxlogd")
            self.assertEqual(self.driver.find_elements(By.CSS_SELECTOR, "#entries img, #entries script"), [])

            for name, text, count in [("level", "0..3", 2), ("text", "DISK", 0), ("where", "text~^the .isk", 1), ("where", "level>=6", 3),
                                      ("where", "peer!=x", 5), ("where", "nothing=1", 0)]:
                self.fill(name, text)
                self.wait_for(lambda count=count: len(self.rows()) == count)
                self.fill(name, "")
                self.wait_for(lambda: len(self.rows()) == 5)
            self.fill("where", "text~(")
            self.wait_for(lambda: "no regular expression" in self.driver.find_element(By.ID, "fault").text)
            self.fill("where", "")

            self.wait_for(lambda: self.driver.find_elements(By.CSS_SELECTOR, "#chart > rect"))
            self.assertRegex(self.driver.find_element(By.ID, "chart").get_attribute("aria-label"), "1 errors, 0 warnings and [1-4] other")
            self.wait_for(lambda: "written" in self.driver.find_element(By.ID, "health").text)
            self.driver.find_element(By.ID, "pause").click()
            send(6, "while it pauses")
            self.wait_for(lambda: "1 wait" in self.driver.find_element(By.ID, "shown").text)
            self.assertEqual(len(self.rows()), 5)
            self.driver.find_element(By.ID, "pause").click()
            self.wait_for(lambda: len(self.rows()) == 6)

            resize(self.driver, 360, 640)
            size = self.driver.execute_script("return [document.documentElement.scrollWidth, innerWidth]")
            self.assertEqual(size, [360, 360])
            unnamed = "return [...document.querySelectorAll('input, button')].filter(each => !each.labels?.length && !each.textContent).length"
            self.assertEqual(self.driver.execute_script(unnamed), 0)
            self.assertEqual(self.driver.get_log("browser"), [])


if __name__ == "__main__":
    unittest.main()
