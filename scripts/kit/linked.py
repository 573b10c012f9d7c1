"""Which of the compiler's libraries are in a DLL, and under which terms: read from the linker's map.

Nothing is assumed: a library that the map names and that no row below knows is an error, so that none gets into the kit
without its licence.
"""
import pathlib
import re
import subprocess

GCC_TERMS = "GPL-3.0-or-later WITH GCC-exception-3.1"
GCC_TEXTS = ("gcc-runtime.txt", "GPL-3.txt")
DOC = pathlib.Path("/usr/share/doc")

# name in the kit's licenses/ -> where the building machine has the text
LICENSE_TEXTS = {
    "mingw-w64.txt": DOC / "mingw-w64-i686-dev/copyright",
    "gcc-runtime.txt": DOC / "gcc-mingw-w64-base/copyright",
    "GPL-3.txt": pathlib.Path("/usr/share/common-licenses/GPL-3"),
}

# component, the Debian packages that it comes from, its files there, its terms, the texts of these
COMPONENTS = (
    ("libstdc++", r"g\+\+-mingw-w64-.*-win32", r"libstdc\+\+\.a", GCC_TERMS, GCC_TEXTS),
    ("libgcc", r"gcc-mingw-w64-.*-win32", r"libgcc(_eh)?\.a|crt(begin|end)\.o", GCC_TERMS, GCC_TEXTS),
    ("mingw-w64", r"mingw-w64-.*-dev", r"lib\w+\.a|dllcrt2\.o", "ZPL-2.1", ("mingw-w64.txt",)),
)


class Component:
    """name, version and owner (a Debian package), terms (an SPDX expression), texts (files of licenses/), files"""

    def __init__(self, name, owner, terms, texts):
        self.name, self.owner, self.terms, self.texts = name, owner, terms, texts
        self.version = package_version(owner)
        self.files = set()


def package_version(package):
    """the installed version of a Debian package"""
    return output("dpkg-query", "-W", "-f=${Version}", package)


def output(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.strip()


def linked_files(linkerMap):
    """the archives that gave the DLL something and the objects, all but the project's own"""
    archives = re.findall(r"^(/[^\s(]+\.a)\(", linkerMap, re.M)
    objects = re.findall(r"^LOAD (/\S+\.o)$", linkerMap, re.M)
    return sorted({pathlib.Path(name).resolve() for name in archives + objects})


def owners(paths):
    """path -> the Debian package that it came with"""
    answer = output("dpkg", "-S", *map(str, paths))
    return {pathlib.Path(path): owner for owner, path in re.findall(r"^([^:,]+)(?::\w+)?: (/.*)$", answer, re.M)}


def components(linkerMap):
    """the components in the DLL that the map belongs to, by name"""
    found = {}
    for path, owner in sorted(owners(linked_files(linkerMap)).items()):
        for name, packages, files, terms, texts in COMPONENTS:
            if re.fullmatch(packages, owner) and re.fullmatch(files, path.name):
                found.setdefault(name, Component(name, owner, terms, texts)).files.add(path.name)
                break
        else:
            raise ValueError(f"{path} of {owner} is in the DLL, and its licence is not known here")
    return [found[name] for name in sorted(found)]
