"""Reads what the kit needs to know of Windows images (PE) and of import libraries.

Everything is read from bytes that the caller has in memory; what is no image or library raises ValueError, or
struct.error where it ends too early.
"""
import struct

I386 = 0x14C
AMD64 = 0x8664

EXPORTS, IMPORTS, RESOURCES = 0, 1, 2  # places in the table of directories
VERSION_RESOURCE = 16
FIXED_VERSION = struct.pack("<I", 0xFEEF04BD)  # begins VS_FIXEDFILEINFO


def text_at(data, at):
    return data[at:data.index(b"\0", at)].decode("ascii")


class Image:
    """A PE file. machine: I386 or AMD64; timestamp, subsystem (major, minor) as its headers say."""

    def __init__(self, data):
        self.data = data
        header = struct.unpack_from("<I", data, 60)[0]
        if data[:2] != b"MZ" or data[header:header + 4] != b"PE\0\0":
            raise ValueError("no PE image")
        (self.machine, count, self.timestamp, self.symbolTable, self.symbolCount,
         optionalSize) = struct.unpack_from("<HHIIIH", data, header + 4)
        optional = header + 24
        self.isWide = struct.unpack_from("<H", data, optional)[0] == 0x20B
        self.subsystem = struct.unpack_from("<HH", data, optional + 48)
        self.directories = optional + (112 if self.isWide else 96)
        self.sections = [self._section(optional + optionalSize + 40 * index) for index in range(count)]

    def _section(self, at):
        name, size, address, rawSize, raw = struct.unpack_from("<8sIIII", self.data, at)
        name = name.rstrip(b"\0").decode("ascii")
        if name.startswith("/"):  # a longer name stands in the string table
            name = text_at(self.data, self._strings() + int(name[1:]))
        return name, size, address, rawSize, raw

    def _strings(self):
        return self.symbolTable + 18 * self.symbolCount

    def _directory(self, index):
        """where directory `index` lies in the file and its address, or (None, 0)"""
        address = struct.unpack_from("<I", self.data, self.directories + 8 * index)[0]
        return (self._offset(address), address) if address else (None, 0)

    def _offset(self, address):
        for _, size, begin, rawSize, raw in self.sections:
            if begin <= address < begin + max(size, rawSize):
                return raw + address - begin
        raise ValueError(f"address {address:#x} lies in no section")

    def exports(self):
        """ordinal -> address relative to the image, and the number of names"""
        at, _ = self._directory(EXPORTS)
        base, count, names, table = struct.unpack_from("<IIII", self.data, at + 16)
        addresses = struct.unpack_from(f"<{count}I", self.data, self._offset(table))
        return {base + index: address for index, address in enumerate(addresses) if address}, names

    def imports(self):
        """library in upper case -> names in their order; an import by number n is "#n" """
        at, _ = self._directory(IMPORTS)
        found = {}
        while at is not None:
            lookup, _, _, name, thunks = struct.unpack_from("<IIIII", self.data, at)
            if not name:
                break
            found[text_at(self.data, self._offset(name)).upper()] = list(self._thunks(self._offset(lookup or thunks)))
            at += 20
        return found

    def _thunks(self, at):
        form, size, byNumber = ("<Q", 8, 1 << 63) if self.isWide else ("<I", 4, 1 << 31)
        while entry := struct.unpack_from(form, self.data, at)[0]:
            yield f"#{entry & 0xFFFF}" if entry & byNumber else text_at(self.data, self._offset(entry) + 2)
            at += size

    def file_version(self):
        """the four numbers of the version resource; None without one"""
        at = self._version_resource()
        if at is None:
            return None
        fixed = self.data.index(FIXED_VERSION, at)
        high, low = struct.unpack_from("<II", self.data, fixed + 8)
        return high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF

    def version_text(self, name):
        """a text of the version resource, such as "FileVersion"; None when it is not there"""
        at = self._version_resource()
        key = (name + "\0").encode("utf-16-le")
        found = -1 if at is None else self.data.find(key, at)
        if found < 0:
            return None
        words = struct.unpack_from("<H", self.data, found - 4)[0]
        begin = found + len(key)
        begin += (begin - at) % 4  # values begin at a multiple of four bytes
        return self.data[begin:begin + 2 * words].decode("utf-16-le").rstrip("\0")

    def _version_resource(self):
        """where its data lies; the tree has three levels: type, name, language"""
        root, _ = self._directory(RESOURCES)
        if root is None:
            return None
        at = self._resource(root, root, VERSION_RESOURCE)
        for _ in range(2):
            at = None if at is None else self._resource(root, at, None)
        return None if at is None else self._offset(struct.unpack_from("<I", self.data, at)[0])

    def _resource(self, root, at, wanted):
        """what the entry `wanted` of a directory, or its first one, points at"""
        named, numbered = struct.unpack_from("<HH", self.data, at + 12)
        for index in range(named + numbered):
            key, target = struct.unpack_from("<II", self.data, at + 16 + 8 * index)
            if wanted is None or key == wanted:
                return root + (target & 0x7FFFFFFF)
        return None

    def section(self, name):
        """the bytes of a section; None when there is none of that name"""
        for found, size, _, rawSize, raw in self.sections:
            if found == name:
                return self.data[raw:raw + min(size, rawSize)]
        return None

    def debug_link(self):
        """file name and CRC-32 of the symbols that belong to this image; None when it names none"""
        link = self.section(".gnu_debuglink")
        if link is None:
            return None
        name = text_at(link, 0)
        return name, struct.unpack_from("<I", link, (len(name) + 4) // 4 * 4)[0]

    def symbols(self):
        """name -> addresses relative to the image, of every symbol in a section"""
        found, index = {}, 0
        while index < self.symbolCount:
            at = self.symbolTable + 18 * index
            short, value, section, _, _, more = struct.unpack_from("<8sIhHBB", self.data, at)
            zeros, long = struct.unpack_from("<II", short)
            name = text_at(self.data, self._strings() + long) if zeros == 0 else short.rstrip(b"\0").decode("ascii")
            if section > 0:
                found.setdefault(name, []).append(self.sections[section - 1][2] + value)
            index += 1 + more
        return found


def archive_members(data):
    """the bytes of each member of a library, its indices left out"""
    if data[:8] != b"!<arch>\n":
        raise ValueError("no library")
    at = 8
    while at < len(data):
        name, size = data[at:at + 16].strip(), int(data[at + 48:at + 58])
        if name not in (b"/", b"//"):
            yield data[at + 60:at + 60 + size]
        at += 60 + size + size % 2


def library_imports(data):
    """(machine, symbol, DLL, ordinal) of each function in an import library; ordinal is None where it goes by name"""
    for member in archive_members(data):
        first, second, _, machine, _, _, ordinal, kind = struct.unpack_from("<HHHHIIHH", member)
        if (first, second) != (0, 0xFFFF):  # not of the short form: the library's own descriptors
            continue
        symbol = text_at(member, 20)
        yield machine, symbol, text_at(member, 20 + len(symbol) + 1), None if kind >> 2 & 7 else ordinal
