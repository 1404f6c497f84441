"""Makes the pictures of the documentation in the folder that is named. VXLOGD, VXVIEW and VXLOG name the programs."""

import html
import os
import subprocess
import sys

from selenium.webdriver.support.wait import WebDriverWait

from page_browser import PATIENCE, browser, server

LINES = [(6, "order 4711: paid"), (6, "order 4711: shipped to Łódź"), (4, "the queue of orders has 900 entries"), (7, "cache: 120 hits, 4 misses"),
         (3, "order 4712: the payment was refused"), (6, "anmeldung: Grüße aus Köln"), (5, "the certificate ends in 30 days"), (6, "заказ 4713: оплачен")]


def page(folder):
    with server() as (address, send), browser(1000, 860) as driver:
        for turn in range(12):
            for level, text in LINES[turn % 3:]:
                send(level, text)
        driver.get(address)
        ready = "return document.querySelectorAll('#entries li').length > 0 && document.querySelector('#chart > rect') !== null"
        WebDriverWait(driver, PATIENCE, 0.05).until(lambda _: driver.execute_script(ready))
        driver.save_screenshot(os.path.join(folder, "page.png"))


def summary(folder):
    log = os.path.join(folder, "example.log")
    for level, text in LINES * 3 + LINES[:5]:
        subprocess.run([os.environ["VXLOG"], "-f", log, "-l", str(level), "--fields", "timestamp,level,text"], input=text.encode(), check=True)
    text = subprocess.run([os.environ["VXVIEW"], "--summary", log], capture_output=True, check=True, text=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8"}).stdout
    os.remove(log)
    lines = ["$ vxview --summary service.log", *text.splitlines()]
    width, height = max(map(len, lines)) * 9 + 24, len(lines) * 20 + 20
    with open(os.path.join(folder, "summary.svg"), "w", encoding="utf-8") as picture:
        picture.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" font-family="monospace" font-size="15">\n'
                      f'<rect width="{width}" height="{height}" rx="6" fill="#14181c"/>\n<g fill="#e6e9ec">\n')
        for number, line in enumerate(lines):
            picture.write(f'<text x="12" y="{number * 20 + 24}" xml:space="preserve">{html.escape(line)}</text>\n')
        picture.write("</g>\n</svg>\n")


page(sys.argv[1])
summary(sys.argv[1])
