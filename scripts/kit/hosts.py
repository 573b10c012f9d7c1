"""Builds the least host (tests/kit/host.c) against an import library with each linker, and runs it under Wine."""
import pathlib
import subprocess

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
SOURCE = TOP / "tests/kit/host.c"
LONGEST_RUN = 120  # seconds; a new Wine prefix takes some 20 of them

# folder of the kit -> processor of GCC's tools, target of clang, machine of lld-link and of llvm-dlltool, entry,
# ExitProcess
TOOLS = {
    "x86": ("i686", "i686-pc-windows-msvc", "x86", "i386", "_HostMain", "ExitProcess@4"),
    "x64": ("x86_64", "x86_64-pc-windows-msvc", "x64", "i386:x86-64", "HostMain", "ExitProcess"),
}
LINKERS = ("ld", "lld-link")


def run(*command):
    subprocess.run(list(map(str, command)), check=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def link_with_ld(folder, include, library, host):
    processor, _, _, _, entry, _ = TOOLS[folder]
    # By the name that ld completes itself, where there is one.
    named = ("-L", library.parent, "-lkestapi") if library.name == "libkestapi.dll.a" else (library,)
    run(f"{processor}-w64-mingw32-gcc", "-std=c99", "-Wall", "-Werror", "-O1", "-nostdlib", "-I", include, SOURCE,
        *named, "-lkernel32", f"-Wl,-e,{entry}", "-o", host)


def link_with_lld(folder, include, library, host):
    """As with a Microsoft compiler: its form of objects and of import libraries, also for the system."""
    _, target, machine, dlltoolMachine, _, exitProcess = TOOLS[folder]
    definition, kernel, compiled = map(host.with_suffix, (".def", ".kernel32.lib", ".obj"))
    definition.write_text(f"LIBRARY KERNEL32.dll\nEXPORTS\n  {exitProcess}\n")
    run("llvm-dlltool-14", "-k", "-m", dlltoolMachine, "-d", definition, "-l", kernel)
    run("clang-14", "-target", target, "-std=c99", "-Wall", "-Werror", "-O1", "-ffreestanding", "-I", include,
        "-c", SOURCE, "-o", compiled)
    run("lld-link-14", f"/machine:{machine}", "/entry:HostMain", "/subsystem:console", "/nodefaultlib",
        compiled, library, kernel, f"/out:{host}")


def link(linker, folder, kit, library):
    """The host's file, beside the DLL of the kit; raises CalledProcessError when it cannot be built."""
    host = kit / folder / f"host-{linker}-{library}.exe"
    steps = link_with_ld if linker == "ld" else link_with_lld
    steps(folder, kit / "include", kit / folder / library, host)
    return host


def exit_code(host):
    """what the host answers under Wine; a text when it does not end"""
    try:
        return subprocess.run([TOP / "scripts/wine", host], cwd=host.parent, timeout=LONGEST_RUN,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode
    except subprocess.TimeoutExpired:
        return f"none within {LONGEST_RUN} s"
