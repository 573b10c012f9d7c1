"""A headless Chromium that a test drives, through chromedriver (W3C WebDriver, JSON over HTTP)."""
import base64
import http.client
import json
import re
import subprocess
import tempfile
import time

FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run", "--disable-dev-shm-usage",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--force-color-profile=srgb"]
PATIENCE = 60  # seconds that anything may take before it counts as never coming

ENTER, TAB, SPACE = "\ue007", "\ue004", " "


class Browser:
    """One browser with one page and a profile of its own; close() ends it and removes the profile."""

    def __init__(self):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                       text=True)
        self.session = None
        try:
            self.port = self._port()
            options = {"args": [*FLAGS, f"--user-data-dir={self.profile.name}"]}
            # A promise that the page never keeps must not hold the test.
            wanted = {"goog:chromeOptions": options, "timeouts": {"script": 1000 * PATIENCE}}
            made = self._send("POST", "/session", {"capabilities": {"alwaysMatch": wanted}})
            self.session = made["sessionId"]
        except BaseException:
            self.close()
            raise

    def _port(self):
        for line in self.driver.stdout:
            started = re.search(r"started successfully on port (\d+)", line)
            if started:
                return int(started.group(1))
        raise RuntimeError("chromedriver did not start")

    def _send(self, method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=2 * PATIENCE)
        try:
            text = None if body is None else json.dumps(body)
            connection.request(method, path, text, {"Content-Type": "application/json"})
            value = json.loads(connection.getresponse().read())["value"]
        finally:
            connection.close()
        if isinstance(value, dict) and "error" in value:
            raise RuntimeError(f"{value['error']}: {value['message']}")
        return value

    def _do(self, command, body):
        return self._send("POST", f"/session/{self.session}/{command}", body)

    def open(self, url):
        self._do("url", {"url": url})

    def run(self, script, *arguments):
        """Runs the body of a function in the page; a promise is waited for. Returns what it returns."""
        return self._do("execute/sync", {"script": script, "args": list(arguments)})

    def developer(self, command, **parameters):
        """Gives a command of the browser's own protocol, such as that for the size of a phone."""
        return self._do("goog/cdp/execute", {"cmd": command, "params": parameters})

    def resize(self, width, height, mobile=False):
        self.developer("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1,
                       mobile=mobile)

    def prefer(self, scheme):
        """Sets the prefers-color-scheme of the reader, light or dark, who also wants nothing to move."""
        self.developer("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme},
                                                               {"name": "prefers-reduced-motion", "value": "reduce"}])

    def press(self, *keys):
        """Presses keys one after the other, as on a keyboard: whatever has the focus gets them."""
        strokes = []
        for key in keys:
            strokes += [{"type": "keyDown", "value": key}, {"type": "keyUp", "value": key}]
        self._do("actions", {"actions": [{"type": "key", "id": "keyboard", "actions": strokes}]})

    def wait_for(self, script, *arguments):
        """Runs the script again and again until it returns something true, and returns that."""
        until = time.monotonic() + PATIENCE
        while time.monotonic() < until:
            result = self.run(script, *arguments)
            if result:
                return result
        raise AssertionError(f"never came true: {script}")

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self._send("GET", f"/session/{self.session}/screenshot")))

    def close(self):
        if self.session:
            self._send("DELETE", f"/session/{self.session}")
        self.driver.terminate()
        self.driver.wait(PATIENCE)
        self.driver.stdout.close()
        self.profile.cleanup()
