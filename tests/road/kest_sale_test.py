"""kest buy, bill and receipt against a live server that sells."""
import datetime
import unittest
import uuid

from kest_host import GUID, FileTest, kest, kest_json, main, server_options

VISA = "4111111111111111"
ORDER = ("1042:2", "7:1")
# The order with the catalogue's tax of 10 percent.
TOTAL, TAX, PRICE = "31.90", "2.90", "29.00"
PRODUCTS = [{"SKU": "1042", "Name": "Plum Jam", "Price": "4.50", "Quantity": "2"},
            {"SKU": "7", "Name": "Blåbärssylt", "Price": "20.00", "Quantity": "1"}]
# Number, masked, the code of its type in a receipt and that in words.
GOOD_CARDS = (("4111111111111111", "41**********1111", "4", "Visa"),
              ("5555555555554444", "55**********4444", "2", "Mastercard"),
              ("6011111111111117", "60**********1117", "1", "Discover"),
              ("378282246310005", "37*********0005", "0", "American Express"),
              ("30569309025904", "30********5904", "3", "other"))
REFUSED_CARDS = (("4000000000000002", 1403, "declined"), ("4000000000009995", 1404, "insufficient"),
                 ("4000000000000069", 1405, "expired"), ("4242424242424241", 1402, "check digit"),
                 ("4000000000000119", 1406, "processed"), ("4012888888881881", 1407, "test cards"))


def buy(*order, run=kest, card=VISA, more=(), stdin="", **changed):
    return run("buy", *order, "--card", card, *more, *server_options(**changed), stdin=stdin)


def sold(record):
    """The fields that tell of the sale; the others protect one reply."""
    return {name: value for name, value in record.items() if not name.startswith(("KEST-Auth-", "KEST-Protocol-"))}


def new_guid():
    """Receipts are found by this; under Wine many runs share one registry."""
    return str(uuid.uuid4()).upper()


class Buy(FileTest):
    def test_every_good_card_buys_two_products(self):
        for number, masked, *_ in GOOD_CARDS:
            with self.subTest(card=masked):
                code, document, words = buy(*ORDER, run=kest_json, card=number)
                self.assertEqual((0, "", None), (code, words, document["error"]))
                purchase = sold(document["purchase"])
                self.assertTrue(purchase.pop("KEST-TxN").isdecimal())
                self.assertEqual({"KEST-Error": "0", "KEST-TotalAmount": TOTAL, "KEST-TaxAmount": TAX,
                                  "KEST-Merchant": "The Jam Pantry", "KEST-CCard-Number": masked}, purchase)
                self.assertEqual(PRODUCTS, document["products"])
                self.assertEqual(["purchase", "products", "error"], list(document))

    def test_the_text_names_the_sale_and_lists_its_products(self):
        code, out, words = buy(*ORDER)
        self.assertEqual((0, ""), (code, words))
        lines = out.splitlines()
        self.assertRegex(lines[0], r"^Transaction  \d+$")
        self.assertEqual([f"Total        {TOTAL}", f"Tax          {TAX}", "Merchant     The Jam Pantry",
                          "Card         41**********1111", "",
                          "SKU   Name         Price  Quantity",
                          "1042  Plum Jam     4.50   2",
                          "7     Blåbärssylt  20.00  1"], lines[1:])

    def test_every_sale_is_a_transaction_of_its_own(self):
        first, second = (buy("7", run=kest_json)[1]["purchase"]["KEST-TxN"] for _ in range(2))
        self.assertNotEqual(first, second)

    def test_a_sku_alone_is_bought_once(self):
        self.assertEqual("1", buy("1042", run=kest_json)[1]["products"][0]["Quantity"])

    def test_the_smallest_and_greatest_numbers_are_bought(self):
        code, document, _ = buy("0:65535", "4294967295:1", run=kest_json)
        self.assertEqual(0, code)
        self.assertEqual([("0", "65535"), ("4294967295", "1")],
                         [(one["SKU"], one["Quantity"]) for one in document["products"]])

    def test_every_refused_card_ends_with_its_code_in_words_and_json(self):
        for number, error, meaning in REFUSED_CARDS:
            with self.subTest(error=error):
                code, out, words = buy(*ORDER, card=number)
                self.assertEqual((4, ""), (code, out))
                self.assertIn(f"error code {error}", words)
                self.assertIn(meaning, words)
                code, document, _ = buy(*ORDER, run=kest_json, card=number)
                self.assertEqual((4, None, [], error),
                                 (code, document["purchase"], document["products"], document["error"]["code"]))
                self.assertIn(meaning, document["error"]["meaning"])

    def test_an_unknown_sku_is_refused_by_the_server(self):
        code, out, words = buy("999")
        self.assertEqual((4, ""), (code, out))
        self.assertIn("error code 1202", words)

    def test_fields_of_the_user_travel_with_the_order(self):
        # The sandbox sells the products of one application alone when the request names it.
        code, _, words = buy("1042", more=("--field", "X-Name=A: B=C", "--field", "GUID=unknown"))
        self.assertEqual(4, code)
        self.assertIn("error code 1101", words)
        self.assertEqual(0, buy("1042", more=("--field", "X-Name=A: B=C", "--field", "GUID=" + GUID))[0])

    def test_a_server_that_is_not_there_leaves_the_outcome_unknown(self):
        code, out, words = buy("1042", server="127.0.0.1", port="1")
        self.assertEqual((3, ""), (code, out))
        for part in ("102", "unknown", "may have been charged", "not just repeat"):
            self.assertIn(part, words)
        code, document, _ = buy("1042", run=kest_json, server="127.0.0.1", port="1")
        self.assertEqual((3, None, [], 102),
                         (code, document["purchase"], document["products"], document["error"]["code"]))

    def test_a_refusal_says_nothing_of_an_unknown_outcome(self):
        self.assertNotIn("may have been charged", buy("999")[2])


class Card(FileTest):
    def test_a_card_comes_from_the_first_line_of_stdin(self):
        self.assertEqual(0, buy("1042", card="-", stdin=VISA + "\nsomething else\n")[0])
        self.assertEqual(4, buy("1042", card="-", stdin="4000 0000 0000 0002")[0])

    def test_a_card_comes_from_the_first_line_of_a_file(self):
        for text in (VISA, VISA + "\r\nsomething else\r\n"):
            self.assertEqual(0, buy("1042", card="@" + self.file("card", text))[0])
        self.assertEqual(4, buy("1042", card="@" + self.file("card", "4000-0000-0000-0002\n"))[0])

    def test_blanks_and_dashes_are_allowed(self):
        for text in ("4111 1111 1111 1111", "4111-1111-1111-1111"):
            code, document, _ = buy("1042", run=kest_json, card=text)
            self.assertEqual((0, "41**********1111"), (code, document["purchase"]["KEST-CCard-Number"]))

    def test_a_source_without_a_number_fails(self):
        for card, stdin in (("-", ""), ("-", "\n" + VISA), ("-", "card"), ("@" + self.file("empty", ""), "")):
            code, out, words = buy("1042", card=card, stdin=stdin)
            self.assertEqual((1, ""), (code, out))
            self.assertIn("no card number", words)

    def test_a_file_that_is_not_there_is_named(self):
        code, _, words = buy("1042", card="@no-such-card")
        self.assertEqual(1, code)
        self.assertIn("no-such-card", words)

    def test_the_number_is_in_no_output(self):
        secret = "4000123456789010"
        arguments = server_options(guid=new_guid())
        runs = [buy("7", card=text, more=more, stdin=secret) for more in ((), ("--json",))
                for text in (secret, "4000 1234 5678 9010", "-")]
        runs += [buy("7", card=secret, server="127.0.0.1", port="1"), buy("7", card=secret + "x"),
                 buy("7", secret), buy(secret, card=""), buy("7:0", card=secret), buy("7", card="-", stdin=secret + "x"),
                 kest("buy", "7", "--crad", secret, *arguments), kest("buy", "7", f"--card={secret}", "--port", secret),
                 kest("buy", "7", "--card", secret, "--what", "4000-1234-5678-9010", *arguments), kest(secret)]
        for run, (code, out, words) in enumerate(runs):
            self.assertNotEqual(0, code, run)
            for text in (out, words):
                digits = "".join(character for character in text if character.isdecimal())
                self.assertNotIn(secret, digits, run)
        code, document, words = buy("7", run=kest_json)
        self.assertEqual((0, ""), (code, words))
        self.assertNotIn(VISA, str(document))


class Usage(unittest.TestCase):
    def test_what_is_no_order_line_is_a_usage_error(self):
        for text in ("x", "1042:0", "1042:65536", "1042:", ":2", "1042:x", "1042:2:3", "4294967296", "1042:-1", "-1042",
                     "+1042", "1042 ", "1042:1.5", ""):
            code, out, words = buy(text)
            self.assertEqual((2, ""), (code, out), text)
            self.assertTrue(words)

    def test_a_product_that_is_ordered_twice_is_a_usage_error(self):
        self.assertEqual((2, ""), buy("1042:1", "7", "1042:2")[:2])

    def test_no_order_and_no_card_are_usage_errors(self):
        self.assertEqual(2, buy()[0])
        self.assertEqual(2, kest("buy", "1042", *server_options())[0])

    def test_a_card_that_is_no_number_is_a_usage_error(self):
        for card in ("", "card", "4111x", " "):
            self.assertEqual((2, ""), buy("1042", card=card)[:2], card)

    def test_what_is_no_field_is_a_usage_error(self):
        for text in ("X-Name", "=value", "X:Name=value", "X Name=value", "X-Name=line\nX-Other: line"):
            self.assertEqual((2, ""), buy("1042", more=("--field", text))[:2], text)

    def test_a_field_that_has_an_option_is_a_usage_error(self):
        for text in ("KEST-CCard-Number=1", "kest-ccard-number=1", "KEST-TxN=1"):
            self.assertEqual((2, ""), buy("1042", more=("--field", text))[:2], text)


class Bill(unittest.TestCase):
    def test_the_bill_of_a_sale_tells_what_the_sale_told(self):
        purchase = buy(*ORDER, run=kest_json)[1]
        transaction = purchase["purchase"]["KEST-TxN"]
        code, document, words = kest_json("bill", transaction, *server_options())
        self.assertEqual((0, ""), (code, words))
        self.assertEqual(["bill", "products", "error"], list(document))
        self.assertEqual(sold(purchase["purchase"]), sold(document["bill"]))
        self.assertEqual(PRODUCTS, document["products"])
        self.assertIsNone(document["error"])

    def test_the_text_is_that_of_the_sale(self):
        _, sale, _ = buy(*ORDER)
        transaction = sale.split()[1]
        self.assertEqual((0, sale, ""), kest("bill", transaction, *server_options()))

    def test_an_unknown_transaction_is_refused_by_the_server(self):
        code, out, words = kest("bill", "999999", *server_options())
        self.assertEqual((4, ""), (code, out))
        self.assertIn("error code 1301", words)
        code, document, _ = kest_json("bill", "999999", *server_options())
        self.assertEqual((4, None, [], 1301),
                         (code, document["bill"], document["products"], document["error"]["code"]))

    def test_a_server_that_is_not_there_is_a_failed_exchange_without_a_charge(self):
        code, out, words = kest("bill", "1", *server_options(server="127.0.0.1", port="1"))
        self.assertEqual((3, ""), (code, out))
        self.assertNotIn("charged", words)

    def test_no_transaction_is_a_usage_error(self):
        self.assertEqual(2, kest("bill", *server_options())[0])
        self.assertEqual(2, kest("bill", "1\n2", *server_options())[0])


class Receipt(unittest.TestCase):
    def test_a_sale_is_found_afterwards_with_its_amounts(self):
        for number, _, card, name in GOOD_CARDS:
            with self.subTest(card=name):
                guid = new_guid()
                before = datetime.datetime.now(datetime.timezone.utc)
                transaction = buy(*ORDER, run=kest_json, card=number, guid=guid)[1]["purchase"]["KEST-TxN"]
                after = datetime.datetime.now(datetime.timezone.utc)
                code, document, words = kest_json("receipt", guid)
                self.assertEqual((0, ""), (code, words))
                receipt = document["receipt"]
                self.assertIn(receipt.pop("KEST-Receipt-Date"),
                              [f"{day.month}-{day.day}-{day.year}" for day in (before, after)])
                self.assertEqual({"KEST-Receipt-Price": PRICE, "KEST-Receipt-Tax": TAX, "KEST-Receipt-Total": TOTAL,
                                  "KEST-Receipt-Merchant": "The Jam Pantry", "KEST-Receipt-Card": card,
                                  "KEST-Receipt-TxN": transaction}, receipt)

    def test_the_text_has_friendly_names_and_the_card_in_words(self):
        guid = new_guid()
        transaction = buy(*ORDER, guid=guid)[1].split()[1]
        code, out, words = kest("receipt", guid)
        self.assertEqual((0, ""), (code, words))
        lines = out.splitlines()
        self.assertRegex(lines[0], r"^Date         \d+-\d+-\d{4}$")
        self.assertEqual([f"Price        {PRICE}", f"Tax          {TAX}", f"Total        {TOTAL}",
                          "Merchant     The Jam Pantry", "Card         Visa", f"Transaction  {transaction}"], lines[1:])

    def test_the_guid_may_be_an_option(self):
        guid = new_guid()
        buy("7", guid=guid)
        self.assertEqual(kest("receipt", guid), kest("receipt", "--guid", guid))
        self.assertEqual(0, kest("receipt", guid, "--guid", new_guid())[0])

    def test_without_a_guid_a_sale_without_one_is_found(self):
        self.assertEqual(0, buy("7", guid=None)[0])
        code, out, _ = kest("receipt")
        self.assertEqual(0, code)
        self.assertIn("Transaction", out)

    def test_an_application_without_a_sale_has_no_receipt(self):
        guid = new_guid()
        code, out, words = kest("receipt", guid)
        self.assertEqual((5, ""), (code, out))
        self.assertIn(guid, words)
        self.assertEqual((5, {"receipt": None}), kest_json("receipt", guid)[:2])

    def test_a_guid_counts_with_its_letter_case(self):
        guid = new_guid().replace("-", "A")
        buy("7", guid=guid)
        self.assertEqual(5, kest("receipt", guid.lower())[0])

    def test_neither_a_refusal_nor_a_failed_exchange_leaves_a_receipt(self):
        guid = new_guid()
        buy("7", guid=guid, card="4000000000000002")
        buy("7", guid=guid, server="127.0.0.1", port="1")
        self.assertEqual(5, kest("receipt", guid)[0])


if __name__ == "__main__":
    main()
