"""Builds and runs the test programs for scripts/mutate.

A bench is one build of a copy of the tree. A mutant touches neither: the compiler is shown the changed file in the
place of the original, compiles what includes it into a folder of the worker's own, and the programs are linked there.
"""
import collections
import ctypes
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import tempfile
import threading
import time

OTHERS = 20  # seconds that another layer's tests must be cheaper to go first
SLOW = 0.25  # seconds from which on a test is run after all quick ones
MEMORY = 4 << 30
COULD_NOT_START = (125, 126, 127)  # what apart.sh and the shell say; no test program does
REFUSED = 1  # what the compiler answers to code that it does not take; being killed is another number
KILL_WITH_PARENT = 1  # PR_SET_PDEATHSIG
HERE = pathlib.Path(__file__).resolve().parent

Step = collections.namedtuple("Step", "program filter")
NOTICED, SURVIVED, BROKEN = "noticed", "survived", "does not compile"


class Failed(Exception):
    """The tree as it is cannot be built, or its tests fail."""


def throwaway_base():
    """Where tests put their files: in memory where there is such a place, for they flush a lot."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


class Bench:
    def __init__(self, name, tree, folder, flags, jobs):
        self.name, self.tree, self.folder, self.jobs = name, tree, folder, jobs
        self.sanitized = any("SANITIZE" in flag for flag in flags)
        self.namespaces = self.find_namespaces()
        self.stopped = threading.Event()
        self.build(flags)
        self.read_build()
        self.measure()

    # --- the build as it is

    def build(self, flags):
        folder, log = self.folder, self.folder.with_suffix(".log")
        folder.mkdir(parents=True, exist_ok=True)
        with open(log, "w", encoding="utf-8") as output:
            def run(*command):
                if subprocess.run(command, stdout=output, stderr=subprocess.STDOUT).returncode != 0:
                    raise Failed(f"{command[0]} failed: {log}")
            run("cmake", "-S", self.tree, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=", "-DKEST_SANDBOX=OFF",
                "-DCMAKE_C_COMPILER=clang-14", "-DCMAKE_CXX_COMPILER=clang++-14", "-DCMAKE_CXX_FLAGS=-O0 -w",
                "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld", *flags)
            run("ninja", "-C", folder, "-j", str(self.jobs), *self.targets())
        self.read_tests()
        if not self.programs:
            raise Failed(f"{folder} has no test programs")

    def targets(self):
        """The test programs that need nothing but themselves."""
        told = subprocess.run(["ninja", "-C", self.folder, "-t", "targets", "all"], check=True, capture_output=True,
                              text=True).stdout
        found = re.findall(r"^(tests/\S+): CXX_EXECUTABLE_LINKER", told, re.M)
        return [path for path in found if not path.startswith(("tests/kest/", "tests/road/", "tests/secrets/"))]

    def read_tests(self):
        """What ctest runs as it is: no server, no interpreter. It knows only of programs that have been built."""
        told = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.folder, check=True, capture_output=True).stdout
        known, self.programs, self.environments = self.targets(), {}, {}
        for test in json.loads(told)["tests"]:
            command = test.get("command", [])
            if len(command) != 1 or os.path.relpath(command[0], self.folder) not in known:
                continue
            self.programs[test["name"]] = os.path.relpath(command[0], self.folder)
            self.environments[test["name"]] = next(
                (entry["value"] for entry in test["properties"] if entry["name"] == "ENVIRONMENT"), [])

    def read_build(self):
        """Who compiles what, and what each object and each program is made of."""
        self.commands = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            words = shlex.split(entry["command"])
            at = words.index("-o")
            start = next(i for i, word in enumerate(words) if word.endswith(("clang++-14", "clang-14")))
            self.commands[words[at + 1]] = words[start:at] + words[at + 2:]
        self.dependents = collections.defaultdict(set)
        told = subprocess.run(["ninja", "-C", self.folder, "-t", "deps"], check=True, capture_output=True, text=True)
        for block in told.stdout.split("\n\n"):
            target, *files = block.splitlines() or [""]
            for file in files:
                path = os.path.normpath(self.folder / file.strip())
                if path.startswith(f"{self.tree}/"):
                    self.dependents[os.path.relpath(path, self.tree)].add(target.split(":")[0])
        unknown = [target for target, words in self.commands.items() if target.startswith("src/") and target not in
                   self.dependents[os.path.relpath(words[-1], self.tree)]]
        if len(unknown) > 1:  # the library's entry is in no test program
            raise Failed(f"{self.folder}: what depends on what is not known: {unknown[0]}")
        self.links, self.parts = {}, {}
        for program, path in list(self.programs.items()):
            told = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", path], check=True, capture_output=True,
                                  text=True).stdout.splitlines()[-1]
            self.links[program] = [word for word in shlex.split(told) if word not in (":", "&&")]
            objects = {word for word in self.links[program] if word.endswith(".o")}
            for archive in (word for word in self.links[program] if re.match(r"src/.*\.a$", word)):
                folder = f"{os.path.dirname(archive)}/CMakeFiles/{os.path.basename(archive)[3:-2]}.dir/"
                objects |= {target for target in self.commands if target.startswith(folder)}
            self.parts[program] = objects
            if not any(part.startswith("src/") for part in objects):
                del self.programs[program]  # it uses nothing of src/

    def measure(self):
        """Runs everything once: it must pass, and says how long each test takes."""
        self.seconds, self.slow = {}, {}
        for program, path in self.programs.items():
            with tempfile.TemporaryDirectory(dir=throwaway_base()) as place:
                told = pathlib.Path(place) / "told.json"
                begin = time.monotonic()
                code, test = self.execute(program, self.folder / path, told.parent, f"--gtest_output=json:{told}",
                                          600, 600)
                if code != 0:
                    raise Failed(f"{program} ended with {code} ({self.name}): {test}")
                self.seconds[program] = time.monotonic() - begin
                self.slow[program] = [f"{suite['name']}.{test['name']}"
                                      for suite in json.loads(told.read_text())["testsuites"]
                                      for test in suite["testsuite"] if float(test["time"].rstrip("s")) > SLOW]

    # --- one mutant

    def steps(self, file):
        """Quick tests before slow ones; what is cheap to build and to run before what is not, and the layer's own before
        others unless a header makes it costly."""
        layer = file.split("/")[1]
        changed = self.dependents[file]
        affected = [program for program, parts in self.parts.items() if program in self.programs and parts & changed]
        affected.sort(key=lambda program: (len(self.parts[program] & changed) + self.seconds[program] +
                                           (0 if program == f"{layer}_tests" else OTHERS)))
        quick = [Step(program, "-" + ":".join(self.slow[program])) for program in affected]
        slow = [Step(program, ":".join(self.slow[program])) for program in affected if self.slow[program]]
        return quick + slow

    def try_mutant(self, file, text, place):
        """Answers what became of it and what noticed it. `place` is a folder of the worker's own."""
        shutil.rmtree(place, ignore_errors=True)
        (place / "objects").mkdir(parents=True)
        overlay = self.overlay(file, text, place)
        made = {}
        for step in self.steps(file):
            if self.stopped.is_set():
                raise KeyboardInterrupt
            changed = self.parts[step.program] & self.dependents[file]
            for part in sorted(changed, key=lambda part: not part.startswith("src/")):
                if part not in made:
                    made[part] = place / "objects" / f"{len(made)}.o"
                    code = self.compile(part, overlay, made[part])
                    if code == REFUSED:
                        return BROKEN, ""
                    if code != 0:
                        raise Failed(f"the compiler ended with {code} on {part}")
            program = place / step.program
            if not program.exists() and self.link(step.program, made, program) != 0:
                return SURVIVED, ""  # never seen; whatever it was, no test has noticed the change
            limit = self.seconds[step.program] * 3 + 2
            with tempfile.TemporaryDirectory(dir=throwaway_base()) as scratch:
                code, test = self.execute(step.program, program, pathlib.Path(scratch), f"--gtest_filter={step.filter}",
                                          limit, limit * 3 + 20)
            if code != 0:
                if not test and code != "time":
                    self.must_pass(step, limit)
                return NOTICED, f"{step.program}: {test or code}"
        return SURVIVED, ""

    def must_pass(self, step, limit):
        """A program that ended without naming a test: the unchanged one must not, or the machine is what failed."""
        with tempfile.TemporaryDirectory(dir=throwaway_base()) as scratch:
            code, test = self.execute(step.program, self.folder / self.programs[step.program], pathlib.Path(scratch),
                                      f"--gtest_filter={step.filter}", limit, limit * 3 + 20)
        if code != 0:
            raise Failed(f"{step.program} fails without a change ({self.name}): {test or code}")

    def overlay(self, file, text, place):
        """The compiler's view of the tree with one file changed."""
        changed = place / ("changed" + pathlib.Path(file).suffix)
        changed.write_bytes(text)
        view = place / "overlay.json"
        original = self.tree / file
        view.write_text(json.dumps({"version": 0, "use-external-names": False, "roots": [
            {"type": "directory", "name": str(original.parent),
             "contents": [{"type": "file", "name": original.name, "external-contents": str(changed)}]}]}))
        return view

    def compile(self, part, overlay, target, *flags):
        command = [*self.commands[part], *flags, "-ivfsoverlay", overlay, "-o", target]
        return self.quietly(command)

    def link(self, program, made, target):
        """The changed objects stand before the archives, whose members of the same names are then not taken."""
        words = [str(made.get(word, word)) for word in self.links[program]]
        at = words.index("-o")
        own = [str(path) for part, path in made.items() if part.startswith("src/") and part in self.parts[program]]
        return self.quietly(words[:at] + own + ["-o", str(target)] + words[at + 2:])

    def quietly(self, command):
        return subprocess.run(command, cwd=self.folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              start_new_session=True).returncode

    def is_same_code(self, file, text, place):
        """Whether the optimising compiler makes the same code of it everywhere in src/: then nothing can tell."""
        overlay = self.overlay(file, text, place)
        for part in sorted(part for part in self.dependents[file] if part.startswith("src/")):
            original, changed = place / "original.o", place / "changed.o"
            for target, view in ((original, ()), (changed, ("-ivfsoverlay", overlay))):
                if self.quietly([*self.commands[part], "-O2", *view, "-o", target]) != 0:
                    return False
            if original.read_bytes() != changed.read_bytes():
                return False
        return bool(self.dependents[file])

    # --- one program

    @staticmethod
    def find_namespaces():
        """Root may give a program processes and a home folder of its own; others go without."""
        probe = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "true"]
        try:
            return (os.geteuid() == 0 and throwaway_base() is not None and
                    subprocess.run(probe, capture_output=True).returncode == 0)
        except OSError:
            return False

    def execute(self, program, path, place, argument, cpu_seconds, wall_seconds):
        """Runs it in folders that are thrown away; answers its code (or what ended it) and the test that failed."""
        for name in ("home", "tmp"):
            (place / name).mkdir(exist_ok=True)
        os.chmod(place, 0o755)
        os.chmod(place / "tmp", 0o1777)
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(("XDG_", "KEST", "GTEST_"))}
        environment.update(HOME=str(place / "home"), TMPDIR=str(place / "tmp"), GTEST_FAIL_FAST="1",
                           UBSAN_OPTIONS="print_stacktrace=0", ASAN_OPTIONS="hard_rss_limit_mb=4096:handle_abort=0")
        environment.update(entry.split("=", 1) for entry in self.environments[program])
        command = [str(path), argument, "--gtest_brief=1"]
        if self.namespaces:
            command = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", HERE / "apart.sh",
                       self.tree.parent, place, pathlib.Path.home(), *command]
        with open(place / "output", "w+b") as output:
            begin = time.monotonic()
            process = subprocess.Popen(command, cwd=place / "tmp", env=environment, stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
                                       preexec_fn=lambda: self.limit(cpu_seconds))
            try:
                code = process.wait(timeout=wall_seconds)
            except subprocess.TimeoutExpired:
                code = "time"
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                process.wait()
            if self.namespaces and code in COULD_NOT_START:
                raise Failed(f"{path} could not be started: {code}")
            output.seek(0)
            failed = re.search(rb"^\[  FAILED  \] (\S+?)(?:,| \()", output.read(1 << 20), re.M)
            # The limit on its processor time ends it by a signal, of which a namespace leaves no more than a number.
            if code != 0 and not failed and time.monotonic() - begin >= cpu_seconds:
                code = "time"
        return code, failed.group(1).decode() if failed else ""

    def limit(self, cpu_seconds):
        ctypes.CDLL(None).prctl(KILL_WITH_PARENT, signal.SIGKILL)
        resource.setrlimit(resource.RLIMIT_CPU, (int(cpu_seconds) + 1,) * 2)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if not self.sanitized:  # sanitizers reserve terabytes that they never touch
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
