"""The commands of examples/README.md: a section's blocks of sh, the last of which runs its program."""
import pathlib
import re

TOP = pathlib.Path(__file__).resolve().parents[2]
PREPARATION = "Before the first"
INPUT = "echo 4111111111111111 | "
ARGUMENTS = " 1042"


def sections():
    """Title -> list of blocks, for the sections that have any."""
    parts = re.split(r"^## (.+)$", (TOP / "examples/README.md").read_text(), flags=re.M)
    found = {title: re.findall(r"^```sh\n(.*?)^```$", text, re.M | re.S) for title, text in zip(parts[1::2], parts[2::2])}
    return {title: blocks for title, blocks in found.items() if blocks}


# What stands for the other lines: that this build is there, that scripts/with-sandbox runs the test, and guid().
_DONE = re.compile(r"scripts/setup|cmake --preset linux|scripts/with-sandbox build/linux/sandbox/kest-sandbox bash|export KEST_GUID='.+'")


def preparation():
    """The commands before every section's that a test can repeat."""
    (block,) = sections()[PREPARATION]
    return "".join(line for line in block.splitlines(keepends=True) if not _DONE.fullmatch(line.strip()))


def program(title):
    """The commands that build a section's program, and the words that run it without its input and its argument."""
    *builds, run = sections()[title]
    line = run.strip()
    if "\n" in line or not line.startswith(INPUT) or not line.endswith(ARGUMENTS):
        raise ValueError(f"the last block of {title} is not one line '{INPUT}PROGRAM{ARGUMENTS}'")
    return "".join(builds), line[len(INPUT):-len(ARGUMENTS)]


def guid():
    """The GUID that the reader is told to set."""
    (value,) = re.findall(r"^export KEST_GUID='(.+)'$", sections()[PREPARATION][0], re.M)
    return value
