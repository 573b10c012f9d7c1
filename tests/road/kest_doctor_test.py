"""kest doctor against a live server, a good library and several that are none."""
import os
import re
import socket
import subprocess
import threading

from kest_host import COMMAND, OTHER_KEY, TOP, FileTest, beside_the_program, is_windows, kest, kest_json, main, server_options

ORDINALS = len(re.findall(r"^  KEST_ORDINAL_\w+ = \d+", (TOP / "include/kestapi.h").read_text(), re.M))
KEY = os.environ["KEST_KEY_FILE"]


def elf(is_64_bit):
    return b"\x7fELF" + bytes([2 if is_64_bit else 1]) + bytes(59)


def pe(is_64_bit):
    return b"MZ" + bytes(58) + (64).to_bytes(4, "little") + b"PE\0\0" + (0x8664 if is_64_bit else 0x014C).to_bytes(2, "little")


class Doctor(FileTest):
    def test_all_is_well_with_the_library_the_key_and_the_server(self):
        code, document, words = kest_json("doctor", *server_options())
        self.assertEqual((0, ""), (code, words))
        self.assertEqual([], document["faults"])
        self.assertEqual(("good", "reachable", "done"), (document["key"], document["server"], document["exchange"]))

    def test_the_library_is_named_and_described(self):
        code, document, _ = kest_json("doctor")
        library = document["library"]
        self.assertEqual((0, True), (code, library["loaded"]))
        path = beside_the_program("KESTAPI.DLL" if is_windows() else "libkestapi.so")
        self.assertEqual(path.name.lower(), re.split(r"[/\\]", library["path"])[-1].lower())
        self.assertEqual(path.stat().st_size, library["size"])
        self.assertEqual((32, 32) if is_windows() else (64, 64), (library["bits"], document["programBits"]))
        self.assertEqual({"found": ORDINALS, "of": ORDINALS, "missing": []}, library["functions"])

    def test_what_nobody_asked_for_is_not_checked(self):
        code, out, words = kest("doctor")
        self.assertEqual((0, ""), (code, words))
        self.assertEqual(3, out.count("not checked"))

    def test_every_line_of_the_text_is_a_name_and_a_value(self):
        lines = dict(re.split(r"  +", line, maxsplit=1) for line in kest("doctor", *server_options())[1].splitlines())
        self.assertEqual((f"{ORDINALS} of {ORDINALS}", "yes", "good", "reachable", "done"),
                         tuple(lines[name] for name in ("Functions", "Loaded", "Key", "Server", "Exchange")))

    def test_a_library_that_is_not_there_is_named(self):
        code, document, words = kest_json("doctor", "--library", "no-such-library.so")
        self.assertEqual((1, False, None), (code, document["library"]["loaded"], document["library"]["size"]))
        self.assertIn("no-such-library.so", words)

    def test_a_file_that_is_no_library_has_no_bits(self):
        code, document, _ = kest_json("doctor", "--library", self.file("text.so", "no library " * 20))
        self.assertEqual((1, False, None, 220),
                         (code, *(document["library"][name] for name in ("loaded", "bits", "size"))))

    def test_a_library_of_another_bitness_is_called_so(self):
        for make in (elf, pe):
            for is_64_bit in (False, True):
                path = self.file("other.so", make(is_64_bit))
                code, document, words = kest_json("doctor", "--library", path)
                bits = 64 if is_64_bit else 32
                self.assertEqual((1, bits), (code, document["library"]["bits"]))
                self.assertEqual(bits != document["programBits"], f"is of {bits} bits" in words)

    def test_every_missing_function_is_reported(self):
        other = "version.dll" if is_windows() else "libm.so.6"
        code, document, words = kest_json("doctor", "--library", other, "--key", KEY)
        functions = document["library"]["functions"]
        self.assertEqual((1, True, 0, ORDINALS), (code, document["library"]["loaded"], functions["found"],
                                                  len(functions["missing"])))
        self.assertIn({"ordinal": 103, "name": "KestGetField"}, functions["missing"])
        self.assertEqual("not checked", document["key"])
        self.assertIn("lacks", words)
        self.assertIn("Missing       103 KestGetField\n", kest("doctor", "--library", other)[1])

    def test_a_key_that_is_none_is_unusable(self):
        code, document, words = kest_json("doctor", *server_options(key=self.file("bad.key", "not a key")))
        self.assertEqual((1, "unusable", "reachable", "not checked"),
                         (code, document["key"], document["server"], document["exchange"]))
        self.assertIn("bad.key", words)

    def test_another_servers_key_is_told_from_a_server_that_is_not_there(self):
        code, document, words = kest_json("doctor", *server_options(key=self.file("other.key", OTHER_KEY)))
        self.assertEqual((1, "good", "reachable", "failed"),
                         (code, document["key"], document["server"], document["exchange"]))
        self.assertIn("not its own", words)

    def test_a_silent_server_is_waited_for_with_everything_else_told(self):
        with socket.create_server(("127.0.0.1", 0), backlog=8) as listener:
            # Closed when the line is there, or when it never comes, so that the program ends.
            close = threading.Timer(30, lambda: listener.shutdown(socket.SHUT_RDWR))
            close.start()
            command = [*COMMAND, "doctor", *server_options(server="127.0.0.1", port=str(listener.getsockname()[1]))]
            with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
                lines = []
                while not lines or not lines[-1].startswith("Server"):
                    lines.append(process.stdout.readline().decode())
                    self.assertTrue(lines[-1], lines)
                self.assertTrue(close.is_alive(), "the lines came only when the server was gone")
                close.cancel()
                listener.close()
                self.assertEqual(["Program", "Key", "Server"], [line.split()[0] for line in lines[-3:]])
                self.assertEqual(1, process.wait(timeout=60))

    def test_a_server_that_takes_no_connection_is_given_up(self):
        if is_windows():
            self.skipTest("a full queue of connections refuses at once under Windows")
        with socket.socket() as listener, socket.socket() as first, socket.socket() as second:
            listener.bind(("127.0.0.1", 0))
            listener.listen(0)
            for waiting in (first, second):
                waiting.setblocking(False)
                waiting.connect_ex(listener.getsockname())
            options = server_options(server="127.0.0.1", port=str(listener.getsockname()[1]))
            code, document, _ = kest_json("doctor", *options)
            self.assertEqual((3, "not reachable"), (code, document["server"]))

    def test_a_server_that_is_not_there_is_a_failed_exchange(self):
        code, document, words = kest_json("doctor", *server_options(port="1"))
        self.assertEqual((3, "good", "not reachable", "not checked"),
                         (code, document["key"], document["server"], document["exchange"]))
        self.assertIn("port 1", words)

    def test_a_server_without_a_key_is_only_reached(self):
        code, document, _ = kest_json("doctor", *server_options(key=None))
        self.assertEqual((0, "not checked", "reachable", "not checked"),
                         (code, document["key"], document["server"], document["exchange"]))

    def test_an_application_that_the_server_does_not_know_is_no_fault_of_the_key(self):
        code, document, _ = kest_json("doctor", *server_options(guid="unknown"))
        self.assertEqual((0, "done"), (code, document["exchange"]))

    def test_a_proxy_stands_for_the_server(self):
        proxy = f"{os.environ['KEST_SERVER']}:{os.environ['KEST_PORT']}"
        code, document, _ = kest_json("doctor", *server_options(server="shop.invalid", proxy=proxy))
        self.assertEqual((0, "not checked", "done"), (code, document["server"], document["exchange"]))

    def test_a_proxy_that_is_not_there_is_a_failed_exchange(self):
        code, document, words = kest_json("doctor", *server_options(proxy="127.0.0.1:1"))
        self.assertEqual((3, "failed"), (code, document["exchange"]))
        self.assertIn("proxy", words)


if __name__ == "__main__":
    main()
