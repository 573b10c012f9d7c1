#!/usr/bin/env python3
"""Computes every byte of the call that docs/protocol.md shows, from the few things that the page takes as given, and
writes them into the page when asked.

usage: tests/docs/protocol.py --write
"""
import base64
import re
import sys

from pages import TOP, blocks_of
from sealing import digest_of, rc5_encipher, reply_head, request_head, rsa, rsa_blocks, text_of

PAGE = TOP / "docs" / "protocol.md"

# What is given: the server's key, what the library drew, what was asked and answered.
GIVEN = {
    "modulus": "c5b0ac6e3255c279a3eaab1b5cd69479ec2de3345d9e6494f8dfe5f152fc1e9eb086c1f8ae46026572d74624"
               "5a0b96996b6531f51bbb216c2454ebe3730cea1257a31e228b1ff6171a30c5ed741a43ed90ed17e8decaa7aa"
               "90df4425b051058e1f10cf679ba6116fde3fe49db4543608ba53d315b2226919b8361a7051d55653",
    "private-exponent": "40c05f9a308e7a8691341a1b7a4b2692d0d32eea4607cd7626166020ad47bb57cb06389e95a684be69e12d2e"
                        "56f818b9e3bd5fa1a315a61adfc3990804f523ed8e60461c38f03c84a269215757ccffab97e52a577e3fd31e"
                        "e2b9e90a2495b9f41a4f92a8c572f1290d2d86cd45a9f2763092dd87a5a7f275ea1d2b64d0211081",
    "vector": "80af5b848710028d",
    "session-key": "55a8625c24096b2a1e31616cfb8900b63a54085c3dab4b39aaef265a89756da8f4f5d93ec31c0f84dff4f643"
                   "494d3732f502651e1cb535eb606bad28e3c13a6f2f8b52c9bf890b2e3a3d2b052eb6d1d3deddd36ac05f386c"
                   "9a744a536807077cd1e21ac057918437d5b08cbd9d04241104e731965aa30fd794839b4d4d23338f",
    "client-challenge": "045f28ca4dc3c2e6eba41c08e2ca6e3929cafa6e7640febd2b6fd7dfa6483c7288d40a9fe67d7513a87e5aa5"
                        "862bb652",
}
EXPONENT = 65537
HOST = b"shop.example"
SERVICE = b"GetProductList"
GUID = b"{6F1D2A54-93C7-4B0E-8E21-5A7C0D94B3F6}"
VERSION = b"1.0"
SERVER_CHALLENGE = b"any text that the server likes"
CONNECTION = b"1001"
ANSWER = [(b"KEST-Error", b"0"), (b"KEST-Product", b"SKU:1042^Name:Lantern Standard^Price:29.00"),
          (b"KEST-Product", b"SKU:7^Name:Brush collection^Price:4.95")]


def der(tag, content):
    length = len(content)
    return bytes([tag]) + (bytes([length]) if length < 0x80 else bytes([0x81, length])), content


def joined(*parts):
    return b"".join(parts)


def server_key(modulus):
    """The parts of the key in DER, each with what it is; together they are the key."""
    number_head, number = der(0x02, b"\0" + modulus)
    exponent_head, exponent = der(0x02, EXPONENT.to_bytes(3, "big"))
    pair_head, pair = der(0x30, joined(number_head, number, exponent_head, exponent))
    string_head, string = der(0x03, b"\0" + pair_head + pair)
    identifier = bytes.fromhex("06092a864886f70d010101")
    algorithm_head, algorithm = der(0x30, identifier + b"\x05\0")
    whole_head, _ = der(0x30, algorithm_head + algorithm + string_head + string)
    return [("SEQUENCE: the key's algorithm and the key", whole_head), ("SEQUENCE: the algorithm", algorithm_head),
            ("OBJECT IDENTIFIER 1.2.840.113549.1.1.1, rsaEncryption", identifier), ("NULL: no parameters", b"\x05\0"),
            ("BIT STRING, of which 0 bits are unused", string_head + b"\0"), ("SEQUENCE: two numbers", pair_head),
            ("INTEGER, positive", number_head + b"\0"), ("the modulus", modulus), ("INTEGER", exponent_head),
            ("the public exponent, 65537", exponent)]


def message_parts(text_fields):
    """A message with its zero byte, each part with what it is."""
    text = text_of(text_fields)
    parts = [("digest: base64 of SHA-1 over the text and a zero byte", digest_of(text))]
    for name, value in text_fields:
        parts.append((f"{name.decode()}:", name + b": "))
        if value:
            parts.append(("its value: " + (value.decode() if len(value) <= 50 else f"{len(value)} characters"), value))
        parts.append(("end of the line", b"\r\n"))
    return parts + [("end of the text", b"\r\n"), ("the zero byte that ends the message", b"\0")]


def bytes_of(parts):
    return b"".join(data for _, data in parts)


def head_parts(lines):
    return [(line.decode().strip() or "the empty line that ends the head", line) for line in lines]


def example():
    """The page's blocks by name: a list of (what it is, bytes), or bytes for a text."""
    given = {name: bytes.fromhex(value) for name, value in GIVEN.items()}
    modulus, vector, key = given["modulus"], given["vector"], given["session-key"]
    challenge = base64.b64encode(given["client-challenge"])
    exported = base64.b64encode(vector + key)
    der_parts = server_key(modulus)
    found = {"server-key": der_parts, "key-text": base64.b64encode(bytes_of(der_parts)),
             "private-exponent": [("the private exponent", given["private-exponent"])]}
    for name, what in (("vector", "8 bytes: the initialisation vector"), ("session-key", "128 bytes: the key for RC5"),
                       ("client-challenge", "48 bytes: the client's challenge")):
        found[name] = [(what, given[name])]

    def seal(server_challenge, fields):
        return fields + [(b"KEST-Auth-Client-RAC", challenge), (b"KEST-Auth-Server-RAC", server_challenge),
                         (b"KEST-Protocol-Version", b"1.1")]

    def add(name, parts, cipher, head):
        body = base64.b64encode(cipher)
        found.update({f"{name}-message": parts, f"{name}-cipher": [(f"{len(cipher)} bytes", cipher)],
                      f"{name}-body": body, f"{name}-head": head_parts(head(body))})

    parts = message_parts(seal(b"", [(b"KEST-Auth-Client-Key", exported)]))
    number = int.from_bytes(modulus, "big")
    blocks = rsa_blocks(bytes_of(parts)[:-1], len(modulus))
    found["handshake-blocks"] = [(f"block {i + 1} of {len(blocks)}", block) for i, block in enumerate(blocks)]
    add("handshake", parts, b"".join(rsa(block, EXPONENT, number) for block in blocks),
        lambda body: request_head(SERVICE, HOST, body))

    def add_enciphered(name, fields, head):
        message = message_parts(fields)
        add(name, message, rc5_encipher(key, vector, bytes_of(message)), head)

    challenges = [(b"KEST-Auth-Client-RAC", challenge), (b"KEST-Auth-Server-RAC", SERVER_CHALLENGE)]
    add_enciphered("handshake-reply", challenges + [(b"KEST-Auth-CID", CONNECTION)], reply_head)
    request = [(b"GUID", GUID), (b"VERSIONID", VERSION), (b"KEST-Service", SERVICE)]
    add_enciphered("request", seal(SERVER_CHALLENGE, request),
                   lambda body: request_head(SERVICE, HOST, body, CONNECTION))
    add_enciphered("reply", challenges + ANSWER, reply_head)
    return found


def shown(block):
    """How the page shows a block: hexadecimal digits, 32 bytes a line; a text in lines of 100 characters."""
    if isinstance(block, bytes):
        text = block.decode()
        return "".join(text[at:at + 100] + "\n" for at in range(0, len(text), 100))
    lines = []
    for what, data in block:
        lines.append(f"# {what}\n")
        lines += [data[at:at + 32].hex(" ", -2) + "\n" for at in range(0, len(data), 32)]
    return "".join(lines)


def named_blocks():
    """The page's blocks that have a name, as texts."""
    text = PAGE.read_text()
    found = re.findall(r"^```(?:hex|base64) (\S+)\n(.*?)^```$", text, re.M | re.S)
    assert len(found) == len(dict(found)), "two blocks have one name"
    assert len(found) == sum(block.kind in ("hex", "base64") for block in blocks_of(PAGE)), "a block has no name"
    return dict(found)


def write():
    text, blocks = PAGE.read_text(), example()
    for name in named_blocks():
        pattern = re.compile(rf"(^```(?:hex|base64) {name}\n).*?(^```$)", re.M | re.S)
        text = pattern.sub(lambda match, name=name: match.group(1) + shown(blocks[name]) + match.group(2), text)
    PAGE.write_text(text)


if __name__ == "__main__":
    if sys.argv[1:] != ["--write"]:
        sys.exit(__doc__.strip().splitlines()[-1])
    write()
