"""How the tests of the command-line host run it. A test file is run as FILE COMMAND... by scripts/with-sandbox."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
GUID = "8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A"
COMMAND = []
# A 1024-bit key that is not the server's.
OTHER_KEY = ("MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQDBWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpa"
             "WlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaDwIDAQAB")
# Where the library keeps receipts on other systems than Windows: this run's own.
_registry = tempfile.TemporaryDirectory()


def kest(*arguments, stdin=""):
    """Runs the host; answers its exit code, its data and its words."""
    # Files, not pipes: Wine's background processes hold what they inherit, and a reader would wait for them too.
    with tempfile.TemporaryFile() as data, tempfile.TemporaryFile() as words, tempfile.TemporaryFile() as given:
        given.write(stdin.encode())
        given.seek(0)
        done = subprocess.run([*COMMAND, *arguments], stdin=given, stdout=data, stderr=words, timeout=120,
                              env={**os.environ, "KESTAPI_REGISTRY": _registry.name})
        return done.returncode, _text_of(data), _text_of(words)


def _text_of(file):
    file.seek(0)
    return file.read().decode().replace("\r", "")


def kest_json(*arguments, **more):
    """The same with --json; the data are parsed."""
    code, out, words = kest(*arguments, "--json", **more)
    return code, json.loads(out), words


def server_options(**changed):
    """The options that name the server beside the test; None drops one."""
    options = {"server": os.environ["KEST_SERVER"], "port": os.environ["KEST_PORT"],
               "key": os.environ["KEST_KEY_FILE"], "guid": GUID}
    options.update({name.replace("_", "-"): value for name, value in changed.items()})
    return [word for name, value in options.items() if value is not None for word in ("--" + name, value)]


def is_windows():
    return COMMAND[-1].endswith(".exe")


def beside_the_program(name):
    return pathlib.Path(COMMAND[-1]).with_name(name)


class FileTest(unittest.TestCase):
    """A test with a folder for files of its own."""

    def file(self, name, data):
        if not hasattr(self, "folder"):
            self.folder = tempfile.TemporaryDirectory()
            self.addCleanup(self.folder.cleanup)
        path = pathlib.Path(self.folder.name, name)
        path.write_bytes(data if isinstance(data, bytes) else data.encode())
        return str(path)


def main():
    COMMAND.extend(sys.argv[1:])
    unittest.main(argv=sys.argv[:1])
