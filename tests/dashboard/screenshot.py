"""Takes the picture of the dashboard that README shows, after a few sales and failures.

usage: scripts/with-sandbox SANDBOX python3 tests/dashboard/screenshot.py KEST FILE [--width N] [--height N] [--dark]
"""
import argparse
import http.client
import json
import os
import subprocess
import urllib.parse

from browser import Browser

GUID = "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}"


def kest(program, *arguments):
    subprocess.run([program, *arguments, "--server", os.environ["KEST_SERVER"], "--port", os.environ["KEST_PORT"],
                    "--key", os.environ["KEST_KEY_FILE"]], check=False, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, timeout=60)


def tell(path, body):
    admin = http.client.HTTPConnection(urllib.parse.urlsplit(os.environ["KEST_ADMIN"]).netloc, timeout=60)
    admin.request("POST", path, json.dumps(body), {"Content-Type": "application/json"})
    assert admin.getresponse().status == 200
    admin.close()


def sell(program):
    kest(program, "products", "--guid", GUID)
    kest(program, "buy", "1042:2", "7", "--card", "4111111111111111")
    kest(program, "buy", "1043", "--card", "4000000000000002")
    kest(program, "buy", "8:3", "--card", "378282246310005")
    tell("/faults", {"faults": [{"kind": "bad-padding"}]})
    kest(program, "products", "--guid", GUID)
    kest(program, "buy", "1043", "--card", "4000000000000069")
    tell("/faults", {"faults": [{"kind": "delay", "milliseconds": 1500, "times": "always"},
                                {"kind": "wrong-digest", "times": 3}]})


def main():
    words = argparse.ArgumentParser()
    words.add_argument("kest")
    words.add_argument("file")
    words.add_argument("--width", type=int, default=1280)
    words.add_argument("--height", type=int, default=860)
    words.add_argument("--dark", action="store_true")
    words.add_argument("--open", action="store_true", help="with the first request opened")
    given = words.parse_args()
    sell(given.kest)
    browser = Browser()
    try:
        browser.resize(given.width, given.height, mobile=given.width < 600)
        browser.prefer("dark" if given.dark else "light")
        browser.open(os.environ["KEST_ADMIN"] + "/")
        browser.wait_for("return document.querySelectorAll('#requests > li').length === 12")
        browser.wait_for("return document.querySelectorAll('#sales > tr').length === 2")
        if given.open:
            browser.run("document.querySelectorAll('#requests details')[6].open = true")
        browser.screenshot(given.file)
    finally:
        browser.close()


if __name__ == "__main__":
    main()
