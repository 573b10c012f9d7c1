"""What scripts/with-sandbox makes of a server, and of its own command line: with_sandbox_test.py SCRIPT."""
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = sys.argv[1]
# A server that is ready at once and ends as `end` says.
SERVER = """#!/usr/bin/env bash
if [ "$1" = init ]; then
  mkdir -p "$2" && echo '{}' >"$2/catalogue.json"
  exit
fi
trap 'exit 0' TERM
echo the log >&2
echo '{"event":"ready","port":1,"admin":2}'
%s
"""
UNTIL_TOLD = "while :; do read -t 1 </dev/zero || :; done"
# Ended by the command beside it, which is this server's only client.
KILLED = "echo $$ >\"$SERVER_PID\"; exec sleep 60"


class WithSandbox(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.pid = self.folder / "pid"

    def run_beside(self, end, *command):
        server = self.folder / "server"
        server.write_text(SERVER % end)
        server.chmod(0o755)
        return self.run_script(str(server), *command)

    def run_script(self, *arguments):
        done = subprocess.run([SCRIPT, *arguments], capture_output=True, text=True, timeout=60,
                              env={**os.environ, "SERVER_PID": str(self.pid)})
        return done.returncode, done.stdout, done.stderr

    def test_the_commands_own_code_is_answered(self):
        for code in (0, 7):
            self.assertEqual((code, "hello\n", ""), self.run_beside(UNTIL_TOLD, "sh", "-c", f"echo hello; exit {code}"))

    def test_a_server_that_died_beside_the_command_fails_with_its_log(self):
        # Waits until the server is gone for good: a zombie is.
        command = 'kill -KILL "$(cat "$SERVER_PID")"; until grep -qs "^State:.Z" "/proc/$(cat "$SERVER_PID")/status" || ' \
                  '! kill -0 "$(cat "$SERVER_PID")" 2>/dev/null; do :; done'
        code, _, words = self.run_beside(KILLED, "bash", "-c", command)
        self.assertEqual(1, code)
        self.assertIn("did not end well", words)
        self.assertIn("the log", words)

    def test_an_option_without_a_value_is_a_usage_error(self):
        for arguments in (("--bits",), ("--catalogue",), ("--bits", "1024", "--catalogue"), (), ("server",)):
            code, out, words = self.run_script(*arguments)
            self.assertEqual((2, ""), (code, out), arguments)
            self.assertIn("usage:", words)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
