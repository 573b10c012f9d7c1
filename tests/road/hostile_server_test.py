"""The shipped library in a process with little memory, against servers that never stop or claim more than they send.

usage: hostile_server_test.py KEST_PROGRAM. Each call must end as a failed exchange, not as a dead process.
"""
import resource
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import unittest

import kest_host

ADDRESS_SPACE = 256 << 20  # bytes
FAILED_EXCHANGE = 3        # the host's exit code
PIECE = 1 << 16            # bytes


class Server(threading.Thread):
    """Says `first`, and then `again` for as long as somebody listens; counts what went out.

    One that does not listen resets the connection as soon as it has spoken.
    """

    def __init__(self, first, again, listens):
        super().__init__(daemon=True)
        self.first, self.again, self.listens, self.sent = first, again, listens, 0
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.start()

    def run(self):
        client, _ = self.listener.accept()
        self.listener.close()
        with client:
            if self.listens:
                # A socket that is closed over unread bytes resets the connection.
                client.recv(PIECE)
            else:
                client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            piece = self.again * (PIECE // max(1, len(self.again)))
            try:
                client.sendall(self.first)
                while piece:
                    self.sent += client.send(piece)
            except OSError:
                pass


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))


class HostileServer(unittest.TestCase):
    def call(self, first, again=b"", listens=True):
        """One product list; answers how many bytes the server got rid of behind `first`."""
        server = Server(first, again, listens)
        with tempfile.NamedTemporaryFile("w", suffix=".txt") as key:
            key.write(kest_host.OTHER_KEY)
            key.flush()
            done = subprocess.run([*kest_host.COMMAND, "products", "--server", "127.0.0.1", "--port", str(server.port),
                                   "--key", key.name, "--guid", kest_host.GUID], preexec_fn=limit_memory,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=100)
        server.join(60)
        self.assertFalse(server.is_alive())
        self.assertEqual((FAILED_EXCHANGE, ""), (done.returncode, done.stdout), done.stderr)
        self.assertIn("102", done.stderr)
        return server.sent

    def test_head_lines_without_end(self):
        self.assertGreater(self.call(b"HTTP/1.0 200 OK\r\n", b"Name: value\r\n"), 1 << 20)

    def test_one_head_line_without_end(self):
        self.assertGreater(self.call(b"HTTP/1.0 200 OK\r\n", b"x"), 16 << 20)

    def test_one_status_line_without_end(self):
        self.assertGreater(self.call(b"", b"x"), 16 << 20)

    def test_a_body_of_two_gigabytes(self):
        sent = self.call(b"HTTP/1.0 200 OK\r\nContent-Length: 2147483647\r\n\r\n", b"A")
        self.assertGreater(sent, 16 << 20)

    def test_two_gigabytes_that_do_not_come(self):
        for claim in (b"2147483647", b"4294967295", b"99999999999"):
            with self.subTest(claim):
                self.call(b"HTTP/1.0 200 OK\r\nContent-Length: " + claim + b"\r\n\r\nfew bytes")

    def test_a_body_without_length_and_without_end(self):
        self.assertLess(self.call(b"HTTP/1.0 200 OK\r\n\r\n", b"A"), 64 << 20)

    def test_a_connection_that_is_reset_while_the_request_is_sent(self):
        for reply in (b"", b"HTTP/1.0 200 OK\r\nContent-Length: 4\r\n\r\nAAAA"):
            for _ in range(5):
                self.call(reply, listens=False)


if __name__ == "__main__":
    kest_host.main()
