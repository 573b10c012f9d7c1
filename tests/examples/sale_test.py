"""One example against a live server: sale_test.py SECTION of examples/README.md, or sale_test.py PROGRAM, an absolute path.
Run by scripts/with-sandbox."""
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import urllib.request

import readme

GOOD_CARD, DECLINED_CARD, POOR_CARD, EXPIRED_CARD = ("4111111111111111", "4000000000000002", "4000000000009995",
                                                     "4000000000000069")
SOLD, NOT_SOLD, USAGE, UNKNOWN, REFUSED = range(5)
BUILD, COMMAND = "", ""


def admin(path, body=None):
    request = urllib.request.Request(os.environ["KEST_ADMIN"] + path, headers={"Content-Type": "application/json"},
                                     data=None if body is None else json.dumps(body).encode(),
                                     method="GET" if body is None else "POST")
    with urllib.request.urlopen(request, timeout=30) as reply:
        return json.load(reply)


def setUpModule():
    # A program that is given stands there already.
    if BUILD:
        subprocess.run(["bash", "-euc", BUILD], cwd=readme.TOP, check=True, timeout=300, stdin=subprocess.DEVNULL)


class Sale(unittest.TestCase):
    def setUp(self):
        admin("/reset", {})

    def sell(self, card=GOOD_CARD, arguments=readme.ARGUMENTS, **changed):
        """Runs the example; answers its exit code, its output and its words."""
        settings = {**os.environ, "KEST_GUID": readme.guid(), **changed}
        environment = {name: value for name, value in settings.items() if value is not None}
        # Files, not pipes: Wine's background processes hold what they inherit, and a reader would wait for them too.
        with tempfile.TemporaryFile() as given, tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as words:
            given.write((card + "\n").encode() if card else b"")
            given.seek(0)
            done = subprocess.run(["bash", "-c", COMMAND + arguments], cwd=readme.TOP, env=environment, timeout=120,
                                  stdin=given, stdout=out, stderr=words)
            texts = []
            for file in (out, words):
                file.seek(0)
                texts.append(file.read().decode().replace("\r", ""))
        for text in texts:
            self.assertNotIn(card or GOOD_CARD, text, "the card number is shown")
        return done.returncode, *texts

    def books(self):
        """What the server has sold and refused, and its billings as pairs of request and reply fields."""
        state = admin("/state")
        billings = [(one["request"], dict(one["reply"])) for one in admin("/requests")["requests"]
                    if one["path"] == "/BillCustomer" and one["kind"] == "request"]
        return state["sales"], state["refusals"], billings

    def assert_nothing_was_billed(self):
        self.assertEqual((0, 0, []), self.books())

    def test_a_good_card_is_charged_for_the_one_product(self):
        code, out, words = self.sell()
        self.assertEqual((SOLD, ""), (code, words))
        sales, refusals, billings = self.books()
        self.assertEqual((1, 0, 1), (sales, refusals, len(billings)))
        request, reply = billings[0]
        self.assertEqual(["SKU:1042^Quantity:1"], [value for name, value in request if name == "KEST-Product"])
        *products, charged, transaction = out.splitlines()
        self.assertEqual("Charged 31.39, of which 2.39 is tax.", charged)
        self.assertEqual("31.39", reply["KEST-TotalAmount"])
        self.assertEqual("Transaction " + reply["KEST-TxN"], transaction)
        self.assertEqual([("1042", "Lantern Standard", "29.00"), ("1043", "Lantern Studio", "79.50"),
                          ("7", "Brush collection", "4.95"), ("8", "Printed manual", "18.25")],
                         [(line[:7].strip(), line[7:32].strip(), line[32:]) for line in products])

    def test_another_product_is_sold_when_it_is_asked_for(self):
        self.assertEqual(SOLD, self.sell(arguments=" 8")[0])
        self.assertEqual(["SKU:8^Quantity:1"], [value for name, value in self.books()[2][0][0] if name == "KEST-Product"])

    def test_a_refused_card_is_told_in_words_and_nothing_is_sold(self):
        for card, error, meaning in ((DECLINED_CARD, 1403, "declined"), (POOR_CARD, 1404, "insufficient"),
                                     (EXPIRED_CARD, 1405, "expired")):
            with self.subTest(error=error):
                admin("/reset", {})
                code, out, words = self.sell(card)
                self.assertEqual(REFUSED, code)
                for part in (f"error {error}", meaning, "Nothing was charged"):
                    self.assertIn(part, words)
                self.assertNotIn("Charged", out)
                self.assertEqual((0, 1), self.books()[:2])

    def test_a_product_that_is_not_sold_is_refused(self):
        code, _, words = self.sell(arguments=" 999")
        self.assertEqual(REFUSED, code)
        self.assertIn("error 1202", words)
        self.assertEqual(0, self.books()[0])

    def test_a_server_that_is_not_there_is_told_in_words(self):
        code, out, words = self.sell(KEST_PORT="1")
        self.assertEqual((NOT_SOLD, ""), (code, out))
        for part in ("error 102", "Nothing was charged", "port"):
            self.assertIn(part, words)
        self.assert_nothing_was_billed()

    def test_a_lost_answer_leaves_the_outcome_unknown_and_is_not_repeated(self):
        admin("/faults", {"faults": [{"kind": "wrong-digest", "service": "BillCustomer"}]})
        code, out, words = self.sell()
        self.assertEqual(UNKNOWN, code)
        for part in ("error 102", "may have been charged", "Do not just repeat"):
            self.assertIn(part, words)
        self.assertNotIn("Charged", out)
        # That is why: the server has sold, once.
        sales, refusals, billings = self.books()
        self.assertEqual((1, 0, 1), (sales, refusals, len(billings)))

    def test_an_unknown_application_ends_before_the_sale(self):
        code, out, words = self.sell(KEST_GUID="{00000000-0000-0000-0000-000000000000}")
        self.assertEqual((REFUSED, ""), (code, out))
        self.assertIn("error 1101", words)
        self.assert_nothing_was_billed()

    def test_a_file_that_is_no_key_is_named(self):
        path = pathlib.Path(os.environ["KEST_SANDBOX_DIR"], "no.key")
        for text in ("this is no key\n", ""):
            path.write_text(text)
            code, _, words = self.sell(KEST_KEY_FILE=str(path))
            self.assertEqual(NOT_SOLD, code)
            self.assertIn("no.key", words)
        self.assert_nothing_was_billed()

    def test_a_key_file_that_is_not_there_is_no_sale(self):
        self.assertEqual(NOT_SOLD, self.sell(KEST_KEY_FILE="/no-such.key")[0])
        self.assert_nothing_was_billed()

    def test_a_missing_setting_is_a_usage_error(self):
        for name in ("KEST_SERVER", "KEST_PORT", "KEST_KEY_FILE", "KEST_GUID"):
            code, _, words = self.sell(**{name: None})
            self.assertEqual(USAGE, code, name)
            self.assertIn("usage", words)

    def test_no_product_and_two_are_usage_errors(self):
        for arguments in ("", " 1042 7"):
            self.assertEqual(USAGE, self.sell(arguments=arguments)[0])
        self.assert_nothing_was_billed()

    def test_what_is_no_number_is_a_usage_error(self):
        for sku in ("abc", "-1", "7:2", "10 42", "1042x", "4294967296", "4294968338", "''"):
            with self.subTest(sku=sku):
                code, _, words = self.sell(arguments=" " + sku)
                self.assertEqual(USAGE, code)
                self.assertIn("usage", words)
        for port in ("http", "-1", "65536", "80x"):
            with self.subTest(port=port):
                self.assertEqual(USAGE, self.sell(KEST_PORT=port)[0])
        self.assert_nothing_was_billed()

    def test_an_output_that_cannot_be_written_is_noticed_before_the_sale(self):
        code, _, words = self.sell(arguments=" 1042 >/dev/full")
        if "wine" in COMMAND:
            # Wine takes the bytes and says that they are written.
            self.assertEqual((SOLD, 1), (code, self.books()[0]), words)
            return
        self.assertEqual(NOT_SOLD, code, words)
        self.assert_nothing_was_billed()

    def test_a_reader_that_leaves_does_not_make_a_sale_none(self):
        # The reader has left by the time that the answer to the sale comes.
        admin("/faults", {"faults": [{"kind": "delay", "milliseconds": 700, "service": "BillCustomer"}]})
        code, _, words = self.sell(arguments=" 1042 | head -n 1 >/dev/null; exit ${PIPESTATUS[0]}")
        sales, _, billings = self.books()
        self.assertEqual((SOLD, 1), (code, sales), words)
        if "wine" not in COMMAND:
            self.assertIn("Transaction " + billings[0][1]["KEST-TxN"], words)

    def test_an_input_without_a_card_is_a_usage_error(self):
        self.assertEqual(USAGE, self.sell(card="")[0])
        self.assert_nothing_was_billed()


if __name__ == "__main__":
    (what,) = sys.argv[1:]
    if pathlib.Path(what).is_absolute():
        COMMAND = what
    else:
        builds, COMMAND = readme.program(what)
        BUILD = readme.preparation() + builds
    unittest.main(argv=sys.argv[:1])
