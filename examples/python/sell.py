"""Sells one product from the command line: a whole host in Python.

usage: sell.py SKU <CARD    the card number is the first line of the input, so that it stands in no list of processes
The library is the system's, or the file that KESTAPI_LIBRARY names. KEST_SERVER, KEST_PORT, KEST_KEY_FILE (a file with
the server's public key) and KEST_GUID are in the environment.
exit: 0 sold; 1 nothing was sold: this machine's fault, or no server answered; 2 usage; 3 nobody knows whether the card
was charged; 4 the server refused, nothing was sold.
"""
import contextlib
import os
import signal
import sys

import kestapi

SOLD, NOT_SOLD, USAGE, UNKNOWN, REFUSED = range(5)
# The codes are the server's own: these are the sandbox's.
MEANINGS = {1403: "the card was declined", 1404: "the card has insufficient funds", 1405: "the card has expired"}


class Failure(Exception):
    def __init__(self, outcome, words):
        super().__init__(words)
        self.outcome = outcome


class Shop:
    """A server to sell at. The settings are the whole process's."""

    def __init__(self, server, port, key_file, guid):
        self.library = kestapi.load()
        with open(key_file, encoding="ascii", errors="replace") as file:
            key = file.readline().strip()
        if not key or not self.library.KestSetServer(kestapi.data(server), port, kestapi.data(key)):
            raise Failure(NOT_SOLD, f"{key_file} holds no public key of a server.")
        self.library.KestSetApplicationGuid(kestapi.data(guid))

    def field(self, thing, name):
        return kestapi.text(self.library.KestGetField(thing, kestapi.data(name)))

    @contextlib.contextmanager
    def own(self, kind):
        """A new object of that kind, destroyed at the end of the block."""
        created = getattr(self.library, "KestCreate" + kind)()
        if created is None:
            raise MemoryError
        try:
            yield created
        finally:
            getattr(self.library, "KestDestroy" + kind)(created)

    def print_products(self):
        with self.own("ProductList") as products:
            if not self.library.KestGetProductList(products, b"1.0"):
                raise Failure(NOT_SOLD, "No valid answer from the server (error 102). Nothing was charged: "
                                        "check server, port and key.")
            # A refusal does not make the call fail: it is a field of the list.
            error = self.field(products, "KEST-Error")
            if error not in ("", "0"):
                raise Failure(REFUSED, f"The server refused the product list (error {error}). Nothing was charged.")
            while (product := self.library.KestNextProduct(products)) is not None:
                print(f"{self.field(product, 'SKU'):6} {self.field(product, 'Name'):24} {self.field(product, 'Price')}")
        # What cannot be written now could not be told after the sale either.
        sys.stdout.flush()

    def sell(self, sku, card):
        with self.own("Checkout") as checkout:
            self.library.KestSetField(checkout, b"KEST-CCard-Number", kestapi.data(card))
            self.library.KestAddOrderLine(checkout, sku, 1)
            purchase = self.library.KestBillCustomer(checkout)
            if purchase is None:
                raise sale_failure(self.library.KestGetErrorCode(checkout))
            words = (f"Charged {self.field(purchase, 'KEST-TotalAmount')}, "
                     f"of which {self.field(purchase, 'KEST-TaxAmount')} is tax.\n"
                     f"Transaction {self.field(purchase, 'KEST-TxN')}")
            # It is a sale, whatever becomes of the output.
            try:
                print(words, flush=True)
            except OSError:
                print(words, file=sys.stderr)
                # Nor may the end of the program try to write it again.
                os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())


def sale_failure(code):
    if code == kestapi.ERROR_NONE:
        return Failure(NOT_SOLD, "Nothing was sent and nothing charged: memory ran out.")
    if code == kestapi.ERROR_EXCHANGE:
        return Failure(UNKNOWN, "No valid answer to the sale (error 102): the card may have been charged.\n"
                                "Do not just repeat it; ask the seller first whether there is such a sale.")
    meaning = MEANINGS.get(code, "see the server's list of errors")
    return Failure(REFUSED, f"The server refused the sale (error {code}): {meaning}. Nothing was charged.")


def number(text, most):
    """A whole number of digits alone, up to `most`: what is not understood is not sold."""
    if not (text.isascii() and text.isdigit()) or int(text) > most:
        raise ValueError(text)
    return int(text)


def run(arguments):
    try:
        settings = [os.environ[name] for name in ("KEST_SERVER", "KEST_PORT", "KEST_KEY_FILE", "KEST_GUID")]
        (sku,) = arguments
        settings[1], sku = number(settings[1], 65535), number(sku, 0xFFFFFFFF)
    except (KeyError, ValueError):
        raise Failure(USAGE, "usage: sell.py SKU <CARD, with KEST_SERVER, KEST_PORT, KEST_KEY_FILE and KEST_GUID set") from None
    card = sys.stdin.readline().strip()
    if not card:
        raise Failure(USAGE, "The first line of the input is to be a card number.")
    try:
        shop = Shop(*settings)
    except OSError as error:
        raise Failure(NOT_SOLD, str(error)) from None
    try:
        shop.print_products()
    except OSError as error:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        raise Failure(NOT_SOLD, f"The output cannot be written ({error}). Nothing was charged.") from None
    shop.sell(sku, card)


def main():
    try:
        run(sys.argv[1:])
    except Failure as failure:
        print(failure, file=sys.stderr)
        return failure.outcome
    return SOLD


if __name__ == "__main__":
    # Ctrl-C ends the program at once, also while the library waits: the outcome then is unknown, and looks like it.
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    sys.exit(main())
