"""Are the bytes of the protocol's page those that its description gives, and does a server's half open them?"""
import base64
import hashlib
import re
import unittest

import protocol
from client import Call
from live import server
from pages import TOP
from sealing import digest_of, rc5_decipher, rc5_encipher, rsa


def page_bytes(name):
    """The bytes of one of the page's blocks, as anybody reads them off."""
    text = protocol.named_blocks()[name]
    if not re.search(r"^#", text, re.M):
        return "".join(text.split()).encode()
    return bytes.fromhex("".join(line for line in text.splitlines() if not line.startswith("#")))


class Page(unittest.TestCase):
    def test_every_block_is_computed_and_every_computed_one_is_there(self):
        self.assertEqual({name: protocol.shown(block) for name, block in protocol.example().items()},
                         protocol.named_blocks())

    def test_its_words_name_what_is_given(self):
        text = protocol.PAGE.read_text()
        for word in (protocol.HOST, protocol.GUID, protocol.VERSION):
            self.assertIn(f"`{word.decode()}`", text.replace("shop.example:8080", ""))

    def test_whoever_has_the_private_exponent_opens_the_handshake(self):
        modulus = int.from_bytes(bytes.fromhex(protocol.GIVEN["modulus"]), "big")
        exponent = int.from_bytes(page_bytes("private-exponent"), "big")
        cipher = base64.b64decode(page_bytes("handshake-body"), validate=True)
        blocks = [rsa(cipher[at:at + 128], exponent, modulus) for at in range(0, len(cipher), 128)]
        self.assertTrue(all(block[0] == 0 for block in blocks))
        message = b"".join(block[1:] for block in blocks)
        self.assertEqual(page_bytes("handshake-message"), message[:message.index(0) + 1])
        self.assertEqual(b"", message[message.index(0):].strip(b"\0"))

    def test_whoever_has_the_session_key_opens_the_other_messages(self):
        for name in ("handshake-reply", "request", "reply"):
            cipher = base64.b64decode(page_bytes(f"{name}-body"), validate=True)
            self.assertEqual(page_bytes(f"{name}-cipher"), cipher)
            message = rc5_decipher(page_bytes("session-key"), page_bytes("vector"), cipher)
            self.assertEqual(page_bytes(f"{name}-message"), message, name)

    def test_each_message_begins_with_its_digest_and_ends_with_its_only_zero_byte(self):
        for name in ("handshake", "handshake-reply", "request", "reply"):
            message = page_bytes(f"{name}-message")
            self.assertEqual(digest_of(message[28:-1]), message[:28], name)
            self.assertEqual(len(message) - 1, message.index(0), name)
            self.assertTrue(message.endswith(b"\r\n\r\n\0"), name)

    def test_each_head_announces_its_body(self):
        for name in ("handshake", "handshake-reply", "request", "reply"):
            announced = re.search(rb"\r\nContent-Length: (\d+)\r\n", page_bytes(f"{name}-head")).group(1)
            self.assertEqual(int(announced), len(page_bytes(f"{name}-body")), name)

    def test_the_replies_repeat_the_challenges(self):
        challenge = base64.b64encode(page_bytes("client-challenge"))
        for name in ("handshake", "handshake-reply", "request", "reply"):
            self.assertIn(b"KEST-Auth-Client-RAC: " + challenge + b"\r\n", page_bytes(f"{name}-message"), name)
        for name in ("handshake-reply", "request", "reply"):
            self.assertIn(b"KEST-Auth-Server-RAC: " + protocol.SERVER_CHALLENGE + b"\r\n",
                          page_bytes(f"{name}-message"), name)


class Client(unittest.TestCase):
    """A client that is written from the page is served."""

    @classmethod
    def setUpClass(cls):
        context = server()
        cls.server = context.__enter__()
        cls.addClassCleanup(context.__exit__, None, None, None)

    def call(self):
        one = Call(self.server.ready["port"], self.server.key)
        one.handshake()
        return one

    def ask(self, one, **more):
        return one.request([(b"GUID", protocol.GUID), (b"VERSIONID", b"1.0"), (b"KEST-Service", b"GetProductList")], **more)

    def test_it_gets_the_products(self):
        status, fields = self.ask(self.call())
        self.assertEqual((200, b"0"), (status, dict(fields)[b"KEST-Error"]))
        self.assertEqual(4, sum(name == b"KEST-Product" for name, _ in fields))

    def test_a_digest_without_the_zero_byte_is_refused(self):
        def without_zero(text):
            return base64.b64encode(hashlib.sha1(text).digest())
        self.assertEqual((403, "the digest leaves out the zero byte that ends the message"),
                         self.ask(self.call(), digest=without_zero))

    def test_a_connection_serves_one_request(self):
        one = self.call()
        self.ask(one)
        self.assertEqual(409, self.ask(one)[0])


class Rc5(unittest.TestCase):
    def test_it_makes_what_the_published_vectors_say(self):
        text = (TOP / "tests/vectors/rc5_cbc_pad.txt").read_text()
        records = [dict(re.findall(r"^(\w+) = ?(\S*)$", record, re.M)) for record in re.split(r"\n\s*\n", text)]
        records = [record for record in records if "Cipher" in record]
        self.assertGreaterEqual(len(records), 2)
        for record in records:
            self.check_record(record)

    def check_record(self, record):
        key, vector, plain, cipher = (bytes.fromhex(record[name]) for name in ("Key", "IV", "Plain", "Cipher"))
        self.assertEqual(cipher, rc5_encipher(key, vector, plain, int(record["Rounds"])), record)
        self.assertEqual(plain, rc5_decipher(key, vector, cipher, int(record["Rounds"])), record)


if __name__ == "__main__":
    unittest.main()
