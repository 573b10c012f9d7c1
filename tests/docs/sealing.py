"""The protocol's seal once more, written from its description: it shares nothing with the library or the sandbox."""
import base64
import hashlib

BLOCK = 8  # bytes of an RC5 block with 32-bit words
MASK = 0xFFFFFFFF


def _left(value, count):
    count &= 31
    return (value << count | value >> (32 - count)) & MASK if count else value


def _right(value, count):
    return _left(value, -count)


def rc5_table(key, rounds):
    """The expanded key: RFC 2040 section 4, with words of 32 bits."""
    words = [int.from_bytes(key[i:i + 4], "little") for i in range(0, len(key), 4)]
    table = [(0xB7E15163 + i * 0x9E3779B9) & MASK for i in range(2 * rounds + 2)]
    a = b = 0
    for step in range(3 * max(len(table), len(words))):
        i, j = step % len(table), step % len(words)
        a = table[i] = _left((table[i] + a + b) & MASK, 3)
        b = words[j] = _left((words[j] + a + b) & MASK, a + b)
    return table


def _encipher_block(table, block):
    a = (int.from_bytes(block[:4], "little") + table[0]) & MASK
    b = (int.from_bytes(block[4:], "little") + table[1]) & MASK
    for i in range(2, len(table), 2):
        a = (_left(a ^ b, b) + table[i]) & MASK
        b = (_left(b ^ a, a) + table[i + 1]) & MASK
    return a.to_bytes(4, "little") + b.to_bytes(4, "little")


def _decipher_block(table, block):
    a, b = int.from_bytes(block[:4], "little"), int.from_bytes(block[4:], "little")
    for i in range(len(table) - 2, 0, -2):
        b = _right((b - table[i + 1]) & MASK, a) ^ a
        a = _right((a - table[i]) & MASK, b) ^ b
    return ((a - table[0]) & MASK).to_bytes(4, "little") + ((b - table[1]) & MASK).to_bytes(4, "little")


def _xor(one, other):
    return bytes(x ^ y for x, y in zip(one, other))


def rc5_encipher(key, vector, plain, rounds=20):
    table, count = rc5_table(key, rounds), BLOCK - len(plain) % BLOCK
    padded, cipher = plain + bytes([count]) * count, b""
    for at in range(0, len(padded), BLOCK):
        vector = _encipher_block(table, _xor(padded[at:at + BLOCK], vector))
        cipher += vector
    return cipher


def rc5_decipher(key, vector, cipher, rounds=20):
    table, plain = rc5_table(key, rounds), b""
    for at in range(0, len(cipher), BLOCK):
        block = cipher[at:at + BLOCK]
        plain += _xor(_decipher_block(table, block), vector)
        vector = block
    count = plain[-1]
    assert 1 <= count <= BLOCK and plain.endswith(bytes([count]) * count)
    return plain[:-count]


def rsa_blocks(message, k):
    """The message and its zero byte in blocks of k bytes."""
    message += b"\0"
    pieces = [message[at:at + k - 1] for at in range(0, len(message), k - 1)]
    return [(b"\0" + piece).ljust(k, b"\0") for piece in pieces]


def rsa(block, exponent, modulus):
    k = (modulus.bit_length() + 7) // 8
    return pow(int.from_bytes(block, "big"), exponent, modulus).to_bytes(k, "big")


def text_of(fields):
    """The block of header lines, with the empty line that ends it."""
    return b"".join(name + b": " + value + b"\r\n" for name, value in fields) + b"\r\n"


def digest_of(text):
    return base64.b64encode(hashlib.sha1(text + b"\0").digest())


def request_head(service, host, body, connection=b""):
    """The lines of a request's head, the empty one included."""
    lines = [b"GET /" + service + b" HTTP/1.0", b"Accept: */*", b"Host: " + host,
             b"Content-Length: %d" % len(body), b"Proxy-Connection: Keep-Alive"]
    lines += [b"KEST-Auth-CID: " + connection] if connection else []
    return [line + b"\r\n" for line in lines] + [b"\r\n"]


def reply_head(body):
    return [b"HTTP/1.0 200 OK\r\n", b"Content-Length: %d\r\n" % len(body), b"\r\n"]
