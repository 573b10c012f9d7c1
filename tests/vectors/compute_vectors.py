#!/usr/bin/env python3
"""Computes entropy_seeds.txt and rsa_public.txt with Python's own hashlib and pow().

usage: tests/vectors/compute_vectors.py   (rewrites both files; they come out the same each time)
"""
import hashlib
import pathlib
import random

HERE = pathlib.Path(__file__).resolve().parent
BLOCK_LENGTH = 38400  # bytes of the screen's lines


def little(value, count):
    return (value % 256**count).to_bytes(count, "little")


def state_record(with_cursor):
    """The state record of the tests' recorded system."""
    record = little(0x01020304, 4) + little(0xAAAA1112, 2) + little(0xBBBB2122, 2)
    for value in (8, 512, 0x31323334, 0x41424344):
        record += little(value, 4)
    if with_cursor:
        record += little(-2, 2) + little(0x12345, 2)
    for value in (0x51525354, 0x61626364, 77, 0x71727374, 0x81828384, 0x91929394, 0xA1A2A3A4, 0xB1B2B3B4, 0xC1C2C3C4):
        record += little(value, 4)
    return record


def words(block):
    return [int.from_bytes(block[i : i + 4], "little") for i in range(0, len(block), 4)]


def seed(count, with_screen, record):
    """The first `count` bytes of the folded block under the record, word by word."""
    screen = bytes((i * 31 + i // 256 * 7 + 5) % 256 for i in range(BLOCK_LENGTH))
    block = words(screen if with_screen else bytes(BLOCK_LENGTH))
    width = 8 * count % 65536
    if with_screen and width != 0 and count < 2400:
        at = width
        while at + width < BLOCK_LENGTH:
            for j in range((width + 3) // 4):
                block[j] ^= block[at // 4 + j]
            at += width
    record_words = words(record)
    for j in range(min(width, BLOCK_LENGTH) // 4):
        block[j] ^= record_words[j % len(record_words)]
    return b"".join(little(word, 4) for word in block)[: min(count, BLOCK_LENGTH)]


def stream(seed_bytes, count):
    state = bytearray(hashlib.md5(seed_bytes).digest())
    out = b""
    while len(out) < count:
        out += hashlib.md5(bytes(state)).digest()
        for i in reversed(range(16)):
            before = state[i]
            state[i] = (before + 1) % 256
            if before != 0:
                break
    return out[:count]


def entropy_seeds():
    text = """# Source: computed by compute_vectors.py from the rules of seeding, for the recorded system of the tests without a
# random generator of its own: byte i of the screen is (31 i + 7 (i div 256) + 5) mod 256, Record is its state record
"""
    counts = [0, 1, 2, 3, 7, 16, 47, 48, 100, 128, 256, 1199, 1200, 2399, 2400, 2401, 4800, 8191, 8192, 8193, 8200, 8204]
    counts += [9000, 38399, 38400, 38401, 65535]
    for with_screen in (True, False):
        for count in counts if with_screen else (1, 16, 48, 128, 256, 2400, 8192):
            record = state_record(with_cursor=with_screen)
            text += f"\nScreen = {int(with_screen)}\nCount = {count}\nRecord = {record.hex()}\n"
            text += f"Stream = {stream(seed(count, with_screen, record), 48).hex()}\n"
    return text


def power(modulus, exponent, block):
    length = max(1, (modulus.bit_length() + 7) // 8)
    exponent_hex = exponent.to_bytes((exponent.bit_length() + 7) // 8 or 1, "big").hex()
    cipher = pow(block, exponent, modulus)
    return (
        f"\nModulus = {modulus.to_bytes(length, 'big').hex()}\nExponent = {exponent_hex}\n"
        f"Block = {block.to_bytes(length, 'big').hex()}\nCipher = {cipher.to_bytes(length, 'big').hex()}\n"
    )


def rsa_public():
    text = "# Source: computed by compute_vectors.py, Python's pow(); the cipher block is block^exponent mod modulus\n"
    draw = random.Random(20260101)

    def odd(bits):
        return draw.getrandbits(bits) | 1 | 1 << (bits - 1)

    for bits in (9, 33, 64, 512, 513, 768, 1024, 1031, 1536, 2047, 2048):
        for exponent in (3, 17, 65537) if bits in (512, 1024, 1031, 2048) else (65537,):
            modulus, length = odd(bits), (bits + 7) // 8
            text += power(modulus, exponent, draw.getrandbits(8 * (length - 1)))
            text += power(modulus, exponent, 256**length - 1 - draw.getrandbits(3))
            if exponent == 65537:
                text += power(modulus, exponent, 0) + power(modulus, exponent, 1)
    modulus = odd(257)
    for exponent in (0, 1, 2, draw.getrandbits(300) | 1 << 299, draw.getrandbits(89) << 1 | 1 << 89):
        text += power(modulus, exponent, draw.getrandbits(256))
    # Moduli of all ones and just above a power of two bring the rare carries.
    for modulus in (2**1024 - 1, 2**1024 - 105, 2**1023 + 1, 2**512 - 1, 2**64 - 59, 3, 1, 255):
        length = (modulus.bit_length() + 7) // 8
        for block in (256**length - 1, 256**length - 2, modulus - 1):
            text += power(modulus, 65537, block)
    return text


if __name__ == "__main__":
    (HERE / "entropy_seeds.txt").write_text(entropy_seeds())
    (HERE / "rsa_public.txt").write_text(rsa_public())
