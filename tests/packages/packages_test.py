"""The Debian packages, installed, used and removed: packages_test.py VERSION.

Installing needs root. It happens in a mount namespace of this test's own, whose /usr, /etc and /var are layers above the
machine's: nothing of it is seen outside, and nothing is left. Where that is not allowed these tests are skipped."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
NAMES = ("libkestapi0", "libkestapi-dev", "kestapi-tools", "kest-sandbox")
LAYERED = ("usr", "etc", "var")
GUID = "{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}"
VERSION, *OUTSIDE = sys.argv[1:]
# Whether the machine is this test's own, or why not; later also the folder of the packages and that of the layers.
STATE = {"private": False, "reason": "this needs root and a mount namespace of its own"}


def try_run(*command, **more):
    environment = {**os.environ, "DEBIAN_FRONTEND": "noninteractive", **more}
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=300, env=environment,
                          stdin=subprocess.DEVNULL)
    return done.returncode, done.stdout, done.stderr


def run(*command, **more):
    code, out, words = try_run(*command, **more)
    if code != 0:
        raise AssertionError(f"{command} ended with {code}:\n{out}{words}")
    return out


def namespace():
    return os.readlink("/proc/self/ns/mnt")


def setUpModule():
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    STATE["folder"] = pathlib.Path(folder.name, "packages")
    run(TOP / "scripts/package-linux", STATE["folder"])
    # Nothing is mounted unless this is certainly another namespace than the machine's.
    if len(OUTSIDE) != 1 or not OUTSIDE[0].startswith("mnt:[") or OUTSIDE[0] == namespace():
        return
    layers = pathlib.Path(folder.name, "layers")
    layers.mkdir()
    try:
        run("mount", "-t", "tmpfs", "tmpfs", layers)
        # What lies above it keeps it alive.
        unittest.addModuleCleanup(run, "umount", "--lazy", layers)
        if str(layers) in pathlib.Path(f"/proc/{os.getppid()}/mountinfo").read_text():
            STATE["reason"] = "what this namespace mounts is seen outside"
            return
        for name in LAYERED:
            upper, work = layers / name, layers / (name + ".work")
            upper.mkdir()
            work.mkdir()
            run("mount", "-t", "overlay", "overlay", "-o", f"lowerdir=/{name},upperdir={upper},workdir={work}", f"/{name}")
        # Otherwise the index of all man pages is made anew behind every change.
        pathlib.Path("/var/lib/man-db/auto-update").unlink(missing_ok=True)
        STATE.update(private=True, layers=layers)
    except AssertionError as error:
        STATE["reason"] = str(error)


def package(name):
    (path,) = STATE["folder"].glob(f"{name}_*.deb")
    return path


def control(name, field):
    return run("dpkg-deb", "-f", package(name), field).strip()


def contents(name):
    """Path -> permissions and owner of all but folders."""
    rows = [line.split() for line in run("dpkg-deb", "-c", package(name)).splitlines()]
    return {row[5][1:]: (row[0], row[1]) for row in rows if not row[0].startswith("d")}


class Packages(unittest.TestCase):
    def test_there_are_four_of_this_version(self):
        self.assertEqual(sorted(NAMES), sorted(path.name.split("_")[0] for path in STATE["folder"].iterdir()))
        for name in NAMES:
            self.assertEqual((name, VERSION), (control(name, "Package"), control(name, "Version")))

    def test_each_holds_its_own_files(self):
        own = {"libkestapi0": ["libkestapi.so.0", f"libkestapi.so.{VERSION}"],
               "libkestapi-dev": ["kestapi-config-release.cmake", "kestapi-config-version.cmake", "kestapi-config.cmake",
                                  "kestapi.h", "kestapi.pc", "libkestapi.so"],
               "kestapi-tools": ["kest"], "kest-sandbox": ["kest-sandbox"]}
        for name, files in own.items():
            paths = [path for path in contents(name) if not path.startswith((f"/usr/share/doc/{name}/", "/usr/share/man/"))]
            self.assertEqual(files, sorted(path.split("/")[-1] for path in paths), name)

    def test_each_has_its_copyright_and_changes(self):
        for name in NAMES:
            for file in ("copyright", "changelog.gz"):
                self.assertIn(f"/usr/share/doc/{name}/{file}", contents(name))

    def test_what_is_compiled_in_brings_its_license(self):
        for name in ("kestapi-tools", "kest-sandbox"):
            for headers in ("libcli11-dev", "nlohmann-json3-dev"):
                self.assertIn(f"/usr/share/doc/{name}/copyright.{headers}", contents(name))

    def test_every_function_and_every_program_has_its_man_page(self):
        header = (TOP / "include/kestapi.h").read_text()
        pages = {"libkestapi-dev": [f"man3/{name}.3" for name in re.findall(r"KEST_CALL (Kest\w+)\(", header)],
                 "kestapi-tools": ["man1/kest.1"], "kest-sandbox": ["man1/kest-sandbox.1"]}
        for name, expected in pages.items():
            found = [path for path in contents(name) if path.startswith("/usr/share/man/")]
            self.assertEqual(sorted(f"/usr/share/man/{page}.gz" for page in expected), sorted(found))

    def test_the_programs_man_pages_tell_of_every_command_and_option(self):
        for program, page in (("kest", "tools/kest/kest.1"), ("sandbox/kest-sandbox", "sandbox/kest-sandbox.1")):
            text = run("groff", "-man", "-Tascii", "-ww", "-P-cbou", TOP / page)
            self.assertEqual("", try_run("groff", "-man", "-Tascii", "-ww", TOP / page)[2])
            program = TOP / "build/linux" / program
            commands = re.findall(r"^  (\w+)  ", run(program, "--help").split("Subcommands:")[1], re.M)
            self.assertLess(1, len(commands))
            for command in commands:
                self.assertRegex(text, rf"\b{program.name} {command}\b")
                for option in re.findall(r"^  (?:-\w,)?(--[\w-]+)", run(program, command, "--help"), re.M):
                    self.assertRegex(text, rf"(?<![\w-]){option}(?![\w-])", page)

    def test_files_are_roots_and_nobody_elses_to_write(self):
        for name in NAMES:
            for path, (permissions, owner) in contents(name).items():
                self.assertEqual("root/root", owner, path)
                self.assertIn(permissions, ("-rw-r--r--", "-rwxr-xr-x", "lrwxrwxrwx"), path)

    def test_dependencies_are_those_of_the_programs(self):
        exact = f"libkestapi0 (= {VERSION})"
        for name in ("libkestapi-dev", "kestapi-tools"):
            self.assertIn(exact, control(name, "Depends").split(", "))
        depends = {name: {one.split()[0] for one in control(name, "Depends").split(", ")} for name in NAMES}
        self.assertEqual({"libkestapi0"}, depends["libkestapi-dev"])
        self.assertEqual({"libc6", "libgcc-s1", "libstdc++6"}, depends["libkestapi0"])
        self.assertEqual({"libc6", "libgcc-s1", "libstdc++6", "libkestapi0"}, depends["kestapi-tools"])
        self.assertLessEqual({"libcrypto++8", "libsqlite3-0", "libc6"}, depends["kest-sandbox"])
        self.assertNotIn("libkestapi0", depends["kest-sandbox"])

    def test_no_file_names_the_folders_of_its_making(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in NAMES:
                run("dpkg-deb", "-x", package(name), folder)
            for path in pathlib.Path(folder).rglob("*"):
                if path.is_file():
                    self.assertNotIn(str(TOP).encode(), path.read_bytes(), path)


class Private(unittest.TestCase):
    """A test of the installed packages."""

    def setUp(self):
        if not STATE["private"]:
            self.skipTest(STATE["reason"])
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def begin_with(self, *wanted):
        """Leaves these packages installed and none of the others, whatever a test before this one left."""
        rows = run("dpkg-query", "--show", "--showformat", "${Package} ${db:Status-Status}\n").splitlines()
        states = dict(row.split() for row in rows)
        stale = [name for name in NAMES if states.get(name, "not-installed") != "not-installed"
                 and (name not in wanted or states[name] != "installed")]
        if stale:
            run("dpkg", "--purge", *stale)
        missing = [name for name in wanted if name in stale or states.get(name) != "installed"]
        if missing:
            run("dpkg", "--install", *map(package, missing))


class Dependencies(Private):
    def test_nothing_that_needs_the_library_is_installed_without_it(self):
        self.begin_with()
        for name in ("libkestapi-dev", "kestapi-tools"):
            code, _, words = try_run("dpkg", "--install", package(name))
            self.assertNotEqual(0, code)
            self.assertIn("libkestapi0", words)

    def test_the_library_stays_while_something_needs_it(self):
        self.begin_with("libkestapi0", "kestapi-tools")
        self.assertNotEqual(0, try_run("dpkg", "--remove", "libkestapi0")[0])

    def test_the_host_needs_the_library_alone_and_finds_it(self):
        self.begin_with("libkestapi0", "kestapi-tools")
        code, out, words = try_run("kest", "doctor", "--json")
        self.assertEqual((0, ""), (code, words))
        self.assertRegex(json.loads(out)["library"]["path"], r"^(/usr)?/lib/.*libkestapi\.so\.0$")

    def test_the_sandbox_runs_without_the_library(self):
        self.begin_with("kest-sandbox")
        run("kest-sandbox", "init", self.folder / "shop")
        self.assertTrue((self.folder / "shop/public.key").exists())


class Use(Private):
    def setUp(self):
        super().setUp()
        self.begin_with(*NAMES)

    def test_a_program_compiled_with_pkg_configs_flags_sells(self):
        flags = run("pkg-config", "--cflags", "--libs", "kestapi").split()
        host = self.folder / "host"
        run("cc", "-std=c99", TOP / "examples/c/sell.c", "-o", host, *flags)
        self.assert_sells(f"echo 4111111111111111 | KEST_GUID='{GUID}' {host} 1042")

    def test_the_command_of_the_page_compiles_a_host(self):
        (command,) = re.findall(r"^cc host\.c .*$", (TOP / "docs/packages.md").read_text(), re.M)
        (self.folder / "host.c").write_text((TOP / "tests/consumers/project/host.c").read_text())
        run("bash", "-euc", f"cd {self.folder}; {command}")
        self.assertEqual("Colour: green\nSize: 12\n", run(self.folder / "host"))

    def test_a_program_that_cmake_built_is_bound_to_the_systems_library(self):
        run("cmake", "-G", "Ninja", "-S", TOP / "tests/consumers/project", "-B", self.folder)
        run("cmake", "--build", self.folder)
        self.assertEqual("Colour: green\nSize: 12\n", run(self.folder / "host_c"))
        self.assertRegex(run("ldd", self.folder / "host_c"), r"libkestapi\.so\.0 => (/usr)?/lib/")

    def test_the_installed_host_sells_at_the_installed_server(self):
        self.assert_sells('kest buy 1042 --card 4111111111111111 --server "$KEST_SERVER" --port "$KEST_PORT" --key "$KEST_KEY_FILE"')

    def assert_sells(self, command):
        """Runs the command beside the installed server and looks at the server's books."""
        state = 'python3 -c "import os, urllib.request; print(urllib.request.urlopen(os.environ[\'KEST_ADMIN\'] + \'/state\').read().decode())"'
        out = run(TOP / "scripts/with-sandbox", "/usr/bin/kest-sandbox", "bash", "-euc", f"{command}; {state}")
        *shown, state = out.strip().splitlines()
        self.assertRegex("\n".join(shown), r"Transaction +\d+")
        self.assertIn("31.39", "\n".join(shown))
        self.assertEqual(1, json.loads(state)["sales"])


class Removal(Private):
    # What the system itself writes down of any package.
    SYSTEMS_OWN = re.compile(r"var/(lib/dpkg/|log/|cache/(ldconfig|man|debconf)/)|etc/ld\.so\.cache$")

    def files(self):
        """What the upper layers hold; a file that was deleted there is none."""
        found = set()
        for name in LAYERED:
            for path in (STATE["layers"] / name).rglob("*"):
                if path.is_file() or path.is_symlink():
                    found.add(path.relative_to(STATE["layers"]).as_posix())
        return found

    def test_nothing_is_left(self):
        self.begin_with()
        before = self.files()
        self.begin_with(*NAMES)
        self.assertLess(4, len(self.files() - before))
        run("dpkg", "--purge", *NAMES)
        self.assertEqual(set(), {path for path in self.files() - before if not self.SYSTEMS_OWN.match(path)})
        for name in NAMES:
            self.assertNotEqual(0, try_run("dpkg", "--status", name)[0])


if __name__ == "__main__":
    # In a chroot nothing can be said of "/"; whether mounts stay inside is looked at before it counts.
    for propagation in ("private", "unchanged"):
        unshare = ["unshare", "--mount", "--propagation", propagation]
        if not OUTSIDE and os.geteuid() == 0 and subprocess.run([*unshare, "true"], capture_output=True, check=False).returncode == 0:
            os.execvp("unshare", [*unshare, sys.executable, __file__, VERSION, namespace()])
    unittest.main(argv=sys.argv[:1])
