"""Builds the program for Windows of docs/start.md with the page's own command and runs it under Wine, beside the DLL that
ships. Run by scripts/with-sandbox as FILE EMULATOR DLL."""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from pages import TOP, split

PAGE = TOP / "docs" / "start.md"
EMULATOR, DLL = [], ""


def windows_part():
    """The page's program for Windows, the line that compiles it, and what it prints."""
    blocks, _ = split(PAGE)
    place = next(i for i, block in enumerate(blocks) if "#include <windows.h>" in block.text)
    program, commands, output = blocks[place:place + 3]
    (compile_line,) = [line for line in commands.text.splitlines() if line.startswith("i686-w64-mingw32-gcc ")]
    return program.text, compile_line, output.text


class WindowsStart(unittest.TestCase):
    def test_the_program_sells_as_the_page_says(self):
        program, compile_line, output = windows_part()
        with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryFile() as printed:
            there = pathlib.Path(folder, "build", "win32")
            there.mkdir(parents=True)
            shutil.copy(DLL, there)
            pathlib.Path(folder, "include").symlink_to(TOP / "include")
            pathlib.Path(folder, "windows.c").write_text(program)
            subprocess.run(compile_line.split(), cwd=folder, check=True, timeout=60)
            key = pathlib.Path(os.environ["KEST_KEY_FILE"]).read_text().strip()
            # A file, not a pipe: Wine's background processes hold what they inherit.
            words = [*EMULATOR, there / "windows.exe", os.environ["KEST_SERVER"], os.environ["KEST_PORT"], key]
            done = subprocess.run(words, stdout=printed, timeout=120)
            printed.seek(0)
            self.assertEqual((0, output), (done.returncode, printed.read().decode().replace("\r", "")))


if __name__ == "__main__":
    *EMULATOR, DLL = sys.argv[1:]
    unittest.main(argv=sys.argv[:1])
