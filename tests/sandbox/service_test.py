"""Can systemd use the sandbox's unit, and does what it starts serve? service_test.py UNIT KEST_SANDBOX

systemd itself does not run here: the unit is checked by systemd-analyze, and its commands are run as it would run them.
"""
import configparser
import json
import os
import pathlib
import shlex
import signal
import subprocess
import sys
import tempfile
import unittest

UNIT = pathlib.Path()
PROGRAM = ""
INSTALLED = "/usr/local/bin/kest-sandbox"


def verify(text):
    """What systemd-analyze says of a unit of that text: its exit code and its words."""
    with tempfile.TemporaryDirectory() as folder:
        unit = pathlib.Path(folder) / "kest-sandbox.service"
        unit.write_text(text.replace(INSTALLED, PROGRAM))
        done = subprocess.run(["systemd-analyze", "verify", "--man=no", "--recursive-errors=no", unit], check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=60)
        return done.returncode, done.stdout


class Service(unittest.TestCase):
    def setUp(self):
        self.text = UNIT.read_text()
        settings = configparser.ConfigParser(interpolation=None, strict=False)
        settings.optionxform = str
        settings.read_string(self.text)
        self.settings = settings["Service"]

    def test_unit_is_one_that_systemd_takes(self):
        self.assertEqual(verify(self.text), (0, ""))

    def test_check_notices_a_setting_that_systemd_does_not_know(self):
        code, words = verify(self.text.replace("PrivateTmp=", "PrivateTemp="))
        self.assertIn("PrivateTemp", words)
        self.assertEqual(self.text.count("PrivateTmp="), 1)

    def test_check_notices_a_program_that_is_not_there(self):
        self.assertNotEqual(verify(self.text.replace(INSTALLED, "/nonexistent/kest-sandbox"))[0], 0)

    def test_its_commands_make_a_folder_once_and_serve_it(self):
        with tempfile.TemporaryDirectory() as folder:
            state = os.path.join(folder, "state")
            os.mkdir(state)
            environment = {**os.environ, "STATE_DIRECTORY": state}
            before = shlex.split(self.settings["ExecStartPre"].replace(INSTALLED, PROGRAM))
            subprocess.run(before, check=True, env=environment, stdout=subprocess.DEVNULL, timeout=60)
            key = pathlib.Path(state, "private.key").read_text()
            subprocess.run(before, check=True, env=environment, stdout=subprocess.DEVNULL, timeout=60)
            self.assertEqual(pathlib.Path(state, "private.key").read_text(), key)
            # Its ports may be taken on this machine.
            command = self.settings["ExecStart"].replace(INSTALLED, PROGRAM).replace("${STATE_DIRECTORY}", state)
            words = [word.replace(":8080", ":0").replace(":8081", ":0") for word in shlex.split(command)]
            with subprocess.Popen(words, env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as server:
                ready = json.loads(server.stdout.readline())
                server.send_signal(signal.SIGTERM)
                self.assertEqual(server.wait(60), 0)
        self.assertEqual(ready["event"], "ready")
        self.assertIn("admin", ready)


if __name__ == "__main__":
    UNIT, PROGRAM = pathlib.Path(sys.argv[1]), sys.argv[2]
    unittest.main(argv=sys.argv[:1])
