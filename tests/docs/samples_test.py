"""Runs what the pages show: every command in a scratch folder, every program against a live server, every piece of JSON
where it belongs, and compares what comes out with what the page says comes out. A block of no known kind fails.

  sh      commands, run in the order of the page by one shell; `kest-sandbox serve` runs beside the others to the end
  c       a program (compiled as C99 and run; `example HOST PORT KEY` when it takes arguments), or declarations
  text    what the program or the last command before it prints; "…" stands for whatever differs from run to run
  json    what the last command before it prints, a catalogue, faults, or the server's ready line
  usage   how a command of kest is called: its options must be those of `kest COMMAND --help`
  log     lines of the server's log: it writes such lines, whose numbers may be others

A block behind a line that ends with a file's name, as in "`first.c`:", is also written to that file. The ports 8080 and
8081 are replaced by free ones.
"""
import json
import os
import re
import shlex
import subprocess
import tempfile
import unittest

from client import Call
from live import KEST, SANDBOX, SECONDS, compile_c, server, wait_for
from not_run import BLOCKS, COMMANDS, OUTPUTS
from pages import TOP, blocks_of, indented_code, name_of, pages, split
from scratch import Scratch, reason_not_to_run, run_commands
from sealing import digest_of

KINDS = {"sh", "c", "text", "json", "usage", "log"}
ANY = "…"


def is_program(block):
    return block.kind == "c" and "int main(" in block.text


def is_for_windows(block):
    return "#include <windows.h>" in block.text


def matches(shown, printed):
    """Whether what a page shows is what was printed."""
    pattern = ".*?".join(re.escape(part) for part in shown.split(ANY))
    return re.fullmatch(pattern, printed, re.S) is not None


def json_matches(shown, given):
    if shown == ANY:
        return True
    if isinstance(shown, str) and ANY in shown:
        return isinstance(given, str) and matches(shown, given)
    if isinstance(shown, dict):
        return isinstance(given, dict) and shown.keys() == given.keys() and all(
            json_matches(shown[key], given[key]) for key in shown)
    if isinstance(shown, list):
        return isinstance(given, list) and len(shown) == len(given) and all(map(json_matches, shown, given))
    return type(shown) is type(given) and shown == given


def file_of(block, prose):
    """The file that the line before a block names, or None."""
    before = [line for number, line in prose if number < block.line and line.strip()]
    match = re.search(r"`([\w./-]+)`:$", before[-1]) if before else None
    return match.group(1) if match else None


class Samples(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        context = server()
        cls.server = context.__enter__()
        cls.addClassCleanup(context.__exit__, None, None, None)

    def run_program(self, block, scratch):
        program = scratch.folder / f"program{block.line}"
        self.assertEqual("", compile_c(block.text, program), block)
        words = ["127.0.0.1", self.server.port, self.server.key] if "argv" in block.text else []
        environment = {**scratch.environment, "KESTAPI_REGISTRY": str(scratch.folder / f"registry{block.line}")}
        done = subprocess.run([program, *words], cwd=scratch.folder, capture_output=True, text=True, timeout=SECONDS,
                              env=environment)
        self.assertEqual((0, ""), (done.returncode, done.stderr), block)
        return done.stdout

    def check_syntax(self, block, compiler, text):
        done = subprocess.run([compiler, "-std=c99", "-pedantic", "-Wall", "-Wextra", "-Werror", "-fsyntax-only",
                               f"-I{TOP / 'include'}", "-x", "c", "-"], input=text, text=True, capture_output=True,
                              timeout=SECONDS)
        self.assertEqual("", done.stderr, block)

    def check_json(self, block, printed, scratch):
        shown = json.loads(block.text)
        if "event" in shown:
            given = {name: value for name, value in self.server.ready.items() if name != "admin"}
            self.assertEqual(shown.keys(), given.keys(), block)
            self.assertEqual(given["address"], f"{given['host']}:{given['port']}")
            self.assertEqual(shown["address"], f"{shown['host']}:{shown['port']}", block)
        elif "applications" in shown:
            self.check_catalogue(block, scratch)
        elif list(shown) == ["faults"] and isinstance(shown["faults"], list):
            self.assertEqual({"faults": len(shown["faults"])}, self.server.admin("/faults", shown), block)
            self.server.admin("/reset", {})
        else:
            self.assertIsNotNone(printed, f"{block}: nothing before it prints")
            self.assertTrue(json_matches(shown, json.loads(printed)), f"{block}: it is {printed}")

    def check_catalogue(self, block, scratch):
        shop = scratch.folder / f"shop{block.line}"
        subprocess.run([SANDBOX, "init", shop], check=True, capture_output=True)
        (shop / "catalogue.json").write_text(block.text)
        process = subprocess.Popen([SANDBOX, "serve", shop], stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        try:
            self.assertTrue(process.stdout.readline(), f"{block}: the server does not take this catalogue")
        finally:
            process.terminate()
            process.communicate(timeout=SECONDS)

    def check_usage(self, block):
        line = " ".join(block.text.split())
        command = re.match(r"kest (\w+)", line).group(1)
        help_text = subprocess.run([KEST, command, "--help"], capture_output=True, text=True, timeout=SECONDS).stdout
        for option in re.findall(r"--[\w-]+", line):
            self.assertRegex(help_text, rf"(?m)^\s+(-\w,)?{option}\b", block)
        # An option that must be there is shown without brackets.
        for option in re.findall(r"(?m)^\s+(--[\w-]+) .*REQUIRED", help_text):
            self.assertIn(option, re.sub(r"\[[^\]]*\]", "", line), block)

    def check_log(self, block):
        """Lets the server write: a product list, and one whose digest is another text's."""
        guid = re.search(r"\{[-0-9A-F]{36}\}", block.text).group()
        for digest in (digest_of, lambda text: digest_of(text + b"\r\n")):
            call = Call(self.server.ready["port"], self.server.key)
            call.handshake()
            call.request([(b"GUID", guid.encode()), (b"VERSIONID", b"1.0"), (b"KEST-Service", b"GetProductList")], digest)
        for line in block.text.splitlines():
            pattern = re.sub(r"\d+", r"\\d+", re.escape(line).replace(re.escape(guid), "GUID")).replace("GUID", re.escape(guid))
            self.assertTrue(wait_for(lambda: re.search(f"(?m)^{pattern}$", self.server.written())), f"{block}: {line}")

    def check(self, path):
        blocks, prose = split(path)
        with tempfile.TemporaryDirectory() as folder:
            scratch = Scratch(folder)
            for block in blocks:
                if file_of(block, prose):
                    place = scratch.folder / file_of(block, prose)
                    place.parent.mkdir(parents=True, exist_ok=True)
                    place.write_text(block.text)
            commands = [block for block in blocks if block.kind == "sh"]
            outputs, words = run_commands(scratch, commands) if commands else ([], "")
            self.assertIsNotNone(outputs, words)
            printed = None
            for block in blocks:
                if (block.page, block.kind) in BLOCKS:
                    continue
                self.assertIn(block.kind, KINDS, block)
                if block.kind == "sh":
                    printed = outputs[commands.index(block)] if scratch.script(block) else None
                elif is_program(block) and is_for_windows(block):
                    self.check_syntax(block, "i686-w64-mingw32-gcc", block.text)
                elif is_program(block):
                    printed = self.run_program(block, scratch)
                elif block.kind == "c":
                    self.check_syntax(block, "cc", "#include <kestapi.h>\n" + block.text)
                elif block.kind == "json":
                    self.check_json(block, printed, scratch)
                elif block.kind == "usage":
                    self.check_usage(block)
                elif block.kind == "log":
                    self.check_log(block)
                elif printed is None:
                    self.assertIn((block.page, block.text), OUTPUTS, f"{block}: nothing before it prints")
                else:
                    self.assertTrue(matches(block.text, printed), f"{block}: it is\n{printed}")


def add_tests():
    for path in pages():
        if blocks_of(path):
            name = re.sub(r"\W", "_", name_of(path).removesuffix(".md"))
            setattr(Samples, f"test_{name}", lambda self, path=path: self.check(path))


class Lists(unittest.TestCase):
    def test_no_page_has_a_block_without_a_kind(self):
        for path in pages():
            self.assertEqual([], indented_code(path), name_of(path))

    def test_what_is_not_run_stands_somewhere_and_its_script_knows_its_options(self):
        used = set()
        for path in pages():
            for block in blocks_of(path):
                for line in block.text.splitlines() if block.kind == "sh" else []:
                    command = re.sub(r"\s+# .*", "", line).strip()
                    used.update(words for words in COMMANDS if command == words or command.startswith(words + " "))
                    if command.startswith("scripts/") and reason_not_to_run(command):
                        self.check_script(command, block)
        self.assertEqual(set(COMMANDS), used, "a reason for what no page shows")

    def check_script(self, command, block):
        words = shlex.split(command)
        script = TOP / words[0]
        self.assertTrue(os.access(script, os.X_OK), block)
        for option in (word for word in words[1:] if word.startswith("--")):
            self.assertIn(option, script.read_text(), block)

    def test_every_block_that_is_not_run_is_there(self):
        there = {(block.page, block.kind) for path in pages() for block in blocks_of(path)}
        self.assertEqual(set(), set(BLOCKS) - there)


class Matching(unittest.TestCase):
    """The comparison itself, which must not let everything pass."""

    def test_what_differs_does_not_match(self):
        self.assertTrue(matches("a … c\n", "a b c\n"))
        self.assertFalse(matches("a … c\n", "a b d\n"))
        self.assertFalse(matches("a\n", "a\nb\n"))
        self.assertTrue(json_matches({"a": [1, "…"]}, {"a": [1, "x"]}))
        self.assertFalse(json_matches({"a": [1]}, {"a": [1, 2]}))
        self.assertFalse(json_matches({"a": 1}, {"a": "1"}))
        self.assertFalse(json_matches({"a": 1}, {"a": 1, "b": 2}))


add_tests()

if __name__ == "__main__":
    unittest.main()
