"""Projects of other people against the installed library: consumers_test.py BUILD-FOLDER VERSION."""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
PROJECT = TOP / "tests/consumers/project"
OUTPUT = "Colour: green\nSize: 12\n"
WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Werror")
COMPILERS = (("cc", "-std=c99", "host.c"), ("c++", "-std=c++17", "host.cpp"))
BUILD, VERSION = sys.argv[1:]


def run(*command, **more):
    """Answers what the command prints; one that fails ends the test with its words."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, timeout=120, **more)
    if done.returncode != 0:
        raise AssertionError(f"{command} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def without_paths():
    """The environment without what would lead a build to some other copy of the library."""
    names = ("LD_LIBRARY_PATH", "LIBRARY_PATH", "CPATH", "PKG_CONFIG_PATH", "CMAKE_PREFIX_PATH", "CFLAGS", "CXXFLAGS")
    return {name: value for name, value in os.environ.items() if name not in names}


class Consumers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.temporary.cleanup)
        folder = pathlib.Path(cls.temporary.name)
        for component in ("library", "development"):
            run("cmake", "--install", BUILD, "--prefix", folder / "first", "--component", component)
        # What is installed may be moved.
        (folder / "elsewhere").mkdir()
        cls.prefix = folder / "elsewhere/kest"
        shutil.move(folder / "first", cls.prefix)
        (library,) = cls.prefix.glob("lib/**/libkestapi.so")
        cls.libraries = library.parent

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def configure(self, **definitions):
        return run("cmake", "-G", "Ninja", "-S", PROJECT, "-B", self.folder, f"-DCMAKE_PREFIX_PATH={self.prefix}",
                   *(f"-D{name}={value}" for name, value in definitions.items()), env=without_paths())

    def assert_works(self, program, **environment):
        needed = re.findall(r"\(NEEDED\).*\[(.*?)\]", run("readelf", "-d", program))
        self.assertIn("libkestapi.so.0", needed)
        self.assertEqual(OUTPUT, run(program, env={**without_paths(), **environment}))

    def test_cmake_finds_the_library_and_its_programs_run(self):
        self.configure(WANTED_VERSION=VERSION)
        run("cmake", "--build", self.folder)
        for program in ("host_c", "host_cpp"):
            self.assert_works(self.folder / program)

    def test_the_lines_of_the_page_do(self):
        (lines,) = re.findall(r"^```cmake\n(.*?)^```$", (TOP / "docs/packages.md").read_text(), re.M | re.S)
        (self.folder / "host.c").write_text((PROJECT / "host.c").read_text())
        (self.folder / "CMakeLists.txt").write_text("cmake_minimum_required(VERSION 3.25)\nproject(host LANGUAGES C)\n"
                                                    "add_executable(host host.c)\n" + lines)
        run("cmake", "-G", "Ninja", "-S", self.folder, "-B", self.folder / "build",
            f"-DCMAKE_PREFIX_PATH={self.prefix}", env=without_paths())
        run("cmake", "--build", self.folder / "build")
        self.assert_works(self.folder / "build/host")

    def test_cmake_refuses_the_library_to_who_wants_another_version(self):
        major, minor, *_ = map(int, VERSION.split("."))
        for version in (f"{major}.{minor + 1}", f"{major + 1}.0"):
            with self.assertRaisesRegex(AssertionError, "compatible with requested version"):
                self.configure(WANTED_VERSION=version)

    def test_pkg_config_tells_the_flags(self):
        environment = {**without_paths(), "PKG_CONFIG_PATH": str(self.libraries / "pkgconfig")}
        self.assertEqual(VERSION, run("pkg-config", "--modversion", "kestapi", env=environment).strip())
        flags = run("pkg-config", "--cflags", "--libs", "kestapi", env=environment).split()
        for compiler, standard, source in COMPILERS:
            run(compiler, standard, *WARNINGS, PROJECT / source, "-o", self.folder / "host", *flags, env=without_paths())
            self.assert_works(self.folder / "host", LD_LIBRARY_PATH=str(self.libraries))

    def test_plain_flags_do(self):
        for compiler, standard, source in COMPILERS:
            run(compiler, standard, *WARNINGS, PROJECT / source, "-o", self.folder / "host", f"-I{self.prefix}/include",
                f"-L{self.libraries}", "-lkestapi", env=without_paths())
            self.assert_works(self.folder / "host", LD_LIBRARY_PATH=str(self.libraries))

    def test_the_installed_files_are_these(self):
        lib = self.libraries.relative_to(self.prefix).as_posix()
        self.assertEqual(
            sorted(["include/kestapi.h", f"{lib}/libkestapi.so", f"{lib}/libkestapi.so.0",
                    f"{lib}/libkestapi.so.{VERSION}", f"{lib}/pkgconfig/kestapi.pc",
                    f"{lib}/cmake/kestapi/kestapi-config.cmake", f"{lib}/cmake/kestapi/kestapi-config-release.cmake",
                    f"{lib}/cmake/kestapi/kestapi-config-version.cmake"]),
            sorted(path.relative_to(self.prefix).as_posix() for path in self.prefix.rglob("*")
                   if not path.is_dir() and "share" not in path.parts))

    def test_no_installed_file_names_the_folders_of_its_making(self):
        for path in self.prefix.rglob("*"):
            if path.is_file():
                for folder in (str(TOP), BUILD, self.temporary.name):
                    self.assertNotIn(folder.encode(), path.read_bytes(), path.name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
