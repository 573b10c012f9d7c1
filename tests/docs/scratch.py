"""A page's commands: a folder for them to run in, the shell that runs them, and what each block printed."""
import os
import pathlib
import re
import signal
import socket
import subprocess

from live import BUILD, SANDBOX, SECONDS
from not_run import COMMANDS
from pages import TOP


def reason_not_to_run(command):
    for words, reason in COMMANDS.items():
        if command == words or command.startswith(words + " "):
            return reason
    return None


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


class Scratch:
    """A folder in which a page's commands run, with the tree's own folders in it."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        for name in ("scripts", "include", "tests", "docs", "examples", "sandbox"):
            if (TOP / name).exists():
                (self.folder / name).symlink_to(TOP / name)
        (self.folder / "build").mkdir()
        (self.folder / "build" / "linux").symlink_to(BUILD)
        self.ports = {"8080": str(free_port()), "8081": str(free_port())}
        self.environment = {**os.environ, "KESTAPI_REGISTRY": str(self.folder / "registry"),
                            "PATH": f"{SANDBOX.parent}:{BUILD}:{os.environ['PATH']}"}

    def with_ports(self, text):
        return re.sub(r"\b808[01]\b", lambda match: self.ports[match.group()], text)

    def without_ports(self, text):
        for named, taken in self.ports.items():
            text = text.replace(taken, named)
        return text

    def script(self, block):
        """The lines that run a block of commands, without those that are not run."""
        lines = []
        for line in self.with_ports(block.text).replace("\\\n", " ").splitlines():
            command = re.sub(r"\s+# .*", "", line).strip()
            if not command or command.startswith("#") or reason_not_to_run(command):
                continue
            if re.search(r"kest-sandbox serve\b", command) and not command.endswith("&"):
                command += " &"
            lines.append(command)
            if command.endswith("&"):
                port = re.search(r"--listen \S+:(\d+)", command)
                lines.append(f"wait_for_port {port.group(1) if port else ''}")
        return lines


# A server is ready when somebody listens; one that names no port is not asked by later commands.
PRELUDE = r"""
set -euo pipefail
wait_for_port() {
  [ $# -eq 1 ] || return 0
  for _ in $(seq 500); do (exec 3<>/dev/tcp/127.0.0.1/"$1") 2>/dev/null && return; sleep 0.02; done
  return 1
}
"""


def run_commands(scratch, blocks):
    """Runs a page's blocks of commands; answers what each printed, or None and the words of the one that failed."""
    text = PRELUDE
    for number, block in enumerate(blocks):
        *first, last = scratch.script(block) or [":"]
        lines = [f"exec >first{number} 2>err{number}", *first, f"exec >out{number}", last, f": >done{number}\n"]
        text += "\n".join(lines)
    shell = subprocess.Popen(["bash", "-c", text], cwd=scratch.folder, env=scratch.environment,
                             stdin=subprocess.DEVNULL, start_new_session=True)
    try:
        shell.wait(SECONDS)
    finally:
        # What runs beside the commands belongs to the shell's own group.
        try:
            os.killpg(shell.pid, signal.SIGTERM)
        except ProcessLookupError:
            pass
        shell.wait(SECONDS)
    printed = []
    for number, block in enumerate(blocks):
        if not (scratch.folder / f"done{number}").exists():
            words = "".join(one.read_text() for one in scratch.folder.glob(f"*{number}") if one.is_file())
            return None, f"{block}: {words}"
        printed.append(scratch.without_ports((scratch.folder / f"out{number}").read_text()))
    return printed, ""
