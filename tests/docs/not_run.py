"""The commands and blocks of the pages that no test runs, each with its reason. Everything else is run."""

# Commands by their first words. What a script of the tree is asked for must still stand in its usage.
COMMANDS = {
    "scripts/demo": "builds both systems' library and runs under Wine: minutes",
    "scripts/test": "runs all tests, this one among them",
    "scripts/setup": "installs packages",
    "scripts/fuzz": "builds with another compiler and runs for as long as it is told",
    "scripts/mutate": "builds and tests hundreds of changed libraries",
    "cmake --preset": "builds the whole tree, as the build did that this test runs in",
    "cd build/fuzz": "runs a program of another preset for a night",
    "i686-w64-mingw32-gcc": "its library is built by another preset, which scripts/test builds after this one's tests",
    "x86_64-w64-mingw32-gcc": "the same; scripts/check_kit links so",
    "i686-w64-mingw32-addr2line": "the same; the address is that of somebody's crash",
    "scripts/wine": "the same",
    "scripts/package": "builds the DLLs of both widths; scripts/check_kit makes and tries the kit",
    "cl": "Microsoft's compiler; scripts/check_kit links with what takes its place",
    "scripts/package-linux": "tests/packages runs it",
    "sudo apt-get install": "needs root; tests/packages installs them where it may",
    "cc host.c": "needs the packages; tests/packages runs it where they are installed",
}

# Blocks by page and kind.
BLOCKS = {
    ("ARCHITECTURE.md", "diagram"): "the layers as a picture; scripts/check_house holds them",
    ("docs/packages.md", "cmake"): "tests/consumers builds a project with these lines",
    ("docs/protocol.md", "hex"): "tests/docs/protocol_test.py and the unit test ProtocolPage read them",
    ("docs/protocol.md", "base64"): "the same",
}

# The output of commands that are not run, by page and text.
OUTPUTS = {
    ("docs/start.md", "charged 31.39\n"): "windows_start_test.py compares it, under Wine",
}
