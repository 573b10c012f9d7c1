"""What the tests of the pages run against: a built tree, a scratch folder, a commerce server of their own."""
import contextlib
import json
import os
import pathlib
import subprocess
import tempfile
import time
import urllib.request

from pages import TOP

BUILD = pathlib.Path(os.environ.get("KEST_BUILD", TOP / "build" / "linux"))
KEST = BUILD / "kest"
SANDBOX = BUILD / "sandbox" / "kest-sandbox"
SECONDS = 60  # for anything that is run


class Server:
    """A sandbox with its sample catalogue on a free port."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        subprocess.run([SANDBOX, "init", self.folder], check=True, capture_output=True)
        self.log = open(self.folder / "server.log", "w+b")
        self.process = subprocess.Popen(
            [SANDBOX, "serve", self.folder, "--admin", "127.0.0.1:0"], stdout=subprocess.PIPE, stderr=self.log)
        self.ready = json.loads(self.process.stdout.readline())
        self.port = str(self.ready["port"])
        self.key_file = str(self.folder / "public.key")
        self.key = (self.folder / "public.key").read_text().strip()

    def end(self):
        self.process.terminate()
        self.process.wait(SECONDS)
        self.process.stdout.close()
        self.log.close()

    def admin(self, path, body=None):
        """Asks the admin port: a GET, or with a body a POST."""
        request = urllib.request.Request(
            f"http://127.0.0.1:{self.ready['admin']}{path}",
            None if body is None else json.dumps(body).encode(), {"Content-Type": "application/json"})
        with urllib.request.urlopen(request, timeout=SECONDS) as reply:
            return json.load(reply)

    def written(self):
        """What the server has written to its log."""
        return (self.folder / "server.log").read_text()

    def kest(self, *words):
        """Runs the command-line host against this server; answers its exit code and what it shows, parsed."""
        done = subprocess.run(
            [KEST, *words, "--server", "127.0.0.1", "--port", self.port, "--key", self.key_file, "--json"],
            capture_output=True, timeout=SECONDS, env={**os.environ, "KESTAPI_REGISTRY": str(self.folder / "registry")})
        return done.returncode, json.loads(done.stdout)


@contextlib.contextmanager
def server():
    with tempfile.TemporaryDirectory() as folder:
        one = Server(pathlib.Path(folder, "shop"))
        try:
            yield one
        finally:
            one.end()


def compile_c(source, program):
    """Compiles a C99 program against the header and the built library; answers what the compiler says, "" when good."""
    done = subprocess.run(
        ["cc", "-std=c99", "-pedantic", "-Wall", "-Wextra", "-Werror", f"-I{TOP / 'include'}", "-x", "c", "-", "-o",
         program, f"-L{BUILD}", "-lkestapi", f"-Wl,-rpath,{BUILD}"],
        input=source, text=True, capture_output=True, timeout=SECONDS)
    return done.stderr if done.returncode != 0 else ""


def wait_for(condition):
    """Waits until something is so; answers whether it came to be."""
    end = time.monotonic() + SECONDS
    while time.monotonic() < end:
        if condition():
            return True
        time.sleep(0.02)
    return False
