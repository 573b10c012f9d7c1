"""kest cards and kest errors against the tables that the server is built from."""
import re
import unittest

from kest_host import TOP, kest, kest_json, main

TEXT = r'"((?:[^"\\]|\\.)*)"'


def table(name, macro, pattern):
    """The entries of a table file; every one must be understood."""
    text = (TOP / "sandbox/tables" / name).read_text()
    entries = re.findall(macro + r"\(" + pattern + r"\)", text)
    assert entries and len(entries) == len(re.findall(rf"^{macro}\(", text, re.M))
    return entries


ERRORS = table("error_codes.inc", "KEST_ERROR_CODE", rf"(\w+), (\d+), {TEXT},\s+{TEXT}")
CARDS = table("test_cards.inc", "KEST_TEST_CARD", rf"{TEXT}, {TEXT}, (\d+), (\w+), {TEXT}")


class Errors(unittest.TestCase):
    def test_every_code_of_the_sandbox_is_there_with_its_words(self):
        code, document, _ = kest_json("errors")
        self.assertEqual(0, code)
        shown = [(one["name"], str(one["code"]), one["meaning"], one["advice"])
                 for one in document["errors"] if one["source"] == "sandbox"]
        self.assertEqual(sorted(ERRORS, key=lambda one: int(one[1])), shown)

    def test_the_librarys_own_code_is_102_alone(self):
        errors = kest_json("errors")[1]["errors"]
        self.assertEqual([102], [one["code"] for one in errors if one["source"] == "library"])

    def test_the_text_has_one_line_a_code(self):
        code, out, words = kest("errors")
        self.assertEqual(0, code)
        self.assertEqual(sorted([102] + [int(one[1]) for one in ERRORS]),
                         [int(line.split()[0]) for line in out.splitlines()[1:]])
        self.assertIn("sandbox", words)

    def test_one_code_is_shown_alone(self):
        name, number, meaning, advice = ERRORS[-1]
        self.assertEqual({"errors": [{"code": int(number), "name": name, "source": "sandbox", "meaning": meaning,
                                      "advice": advice}]}, kest_json("errors", number)[1])
        self.assertEqual(2, len(kest("errors", number)[1].splitlines()))

    def test_a_code_that_nobody_knows_is_not_found(self):
        code, out, words = kest("errors", "77")
        self.assertEqual((5, ""), (code, out))
        self.assertIn("77", words)
        self.assertEqual((5, {"errors": []}), kest_json("errors", "77")[:2])

    def test_a_code_that_is_no_number_is_a_usage_error(self):
        for text in ("x", "12x", "2147483648", "99999999999999999999"):
            self.assertEqual((2, ""), kest("errors", text)[:2], text)


class Cards(unittest.TestCase):
    def test_every_card_of_the_sandbox_is_there(self):
        code, document, _ = kest_json("cards")
        self.assertEqual(0, code)
        codes = {name: int(number) for name, number, _, _ in ERRORS}
        self.assertEqual([{"number": number, "kind": kind, "type": int(kind_code), "code": codes[error],
                           "outcome": outcome} for number, kind, kind_code, error, outcome in CARDS],
                         [{name: one[name] for name in ("number", "kind", "type", "code", "outcome")}
                          for one in document["cards"]])

    def test_a_receipts_card_type_stands_in_words(self):
        names = {one["type"]: one["typeName"] for one in kest_json("cards")[1]["cards"]}
        self.assertEqual({0: "American Express", 1: "Discover", 2: "Mastercard", 3: "other", 4: "Visa"}, names)

    def test_the_text_has_one_line_a_card(self):
        code, out, words = kest("cards")
        self.assertEqual(0, code)
        self.assertEqual([card[0] for card in CARDS], [line.split()[0] for line in out.splitlines()[1:]])
        self.assertIn("sandbox", words)


if __name__ == "__main__":
    main()
