"""A client written from docs/protocol.md alone, against a live server: it knows the page and nothing of the programs."""
import base64
import os
import socket

from sealing import digest_of, rc5_decipher, rc5_encipher, request_head, rsa, rsa_blocks, text_of


def modulus_of(key_text):
    """The modulus and the exponent of a key whose lengths have their shortest form, as the page shows one."""
    key = base64.b64decode(key_text, validate=True)
    # Behind the identifier of rsaEncryption and its NULL: BIT STRING, SEQUENCE, INTEGER, INTEGER.
    at = key.index(bytes.fromhex("06092a864886f70d0101010500")) + 13
    at = _inside(key, at, 0x03)[0] + 1
    at = _inside(key, at, 0x30)[0]
    start, end = _inside(key, at, 0x02)
    first, last = _inside(key, end, 0x02)
    return int.from_bytes(key[start:end], "big"), int.from_bytes(key[first:last], "big")


def _inside(data, at, tag):
    """Where the content of a DER element begins and ends."""
    assert data[at] == tag
    length, at = data[at + 1], at + 2
    if length >= 0x80:
        count = length - 0x80
        length, at = int.from_bytes(data[at:at + count], "big"), at + count
    return at, at + length


class Call:
    """One call: a handshake, then requests, each answered by status and fields, or by status and words."""

    def __init__(self, port, key_text, service=b"GetProductList"):
        self.address, self.service = ("127.0.0.1", port), service
        self.modulus, self.exponent = modulus_of(key_text)
        self.vector, self.key = os.urandom(8), os.urandom(128)
        self.challenge = base64.b64encode(os.urandom(48))
        self.server_challenge, self.connection = b"", b""

    def seal(self, fields, digest=digest_of):
        text = text_of(fields + [
            (b"KEST-Auth-Client-RAC", self.challenge), (b"KEST-Auth-Server-RAC", self.server_challenge),
            (b"KEST-Protocol-Version", b"1.1")])
        return digest(text) + text

    def handshake(self):
        k = (self.modulus.bit_length() + 7) // 8
        message = self.seal([(b"KEST-Auth-Client-Key", base64.b64encode(self.vector + self.key))])
        cipher = b"".join(rsa(block, self.exponent, self.modulus) for block in rsa_blocks(message, k))
        status, fields = self.send(cipher)
        assert status == 200, fields
        self.server_challenge = dict(fields)[b"KEST-Auth-Server-RAC"]
        self.connection = dict(fields)[b"KEST-Auth-CID"]

    def request(self, fields, digest=digest_of):
        return self.send(rc5_encipher(self.key, self.vector, self.seal(fields, digest) + b"\0"))

    def send(self, cipher):
        body = base64.b64encode(cipher)
        with socket.create_connection(self.address, 30) as connection:
            connection.sendall(b"".join(request_head(self.service, b"shop.example", body, self.connection)) + body)
            reply = b"".join(iter(lambda: connection.recv(65536), b""))
        head, _, content = reply.partition(b"\r\n\r\n")
        status = int(head.split()[1])
        if status != 200:
            return status, content.decode().strip()
        message = rc5_decipher(self.key, self.vector, base64.b64decode(content, validate=True))
        assert message.endswith(b"\0") and digest_of(message[28:-1]) == message[:28]
        fields = [tuple(line.split(b": ", 1)) for line in message[28:-1].split(b"\r\n") if line]
        assert dict(fields)[b"KEST-Auth-Client-RAC"] == self.challenge
        assert self.server_challenge in (b"", dict(fields)[b"KEST-Auth-Server-RAC"])
        return status, fields
