"""Do the catalogue of errors and the tables of cards and faults say what kest says and what the sandbox does?"""
import json
import re
import subprocess
import unittest

from live import KEST, SECONDS, server
from pages import TOP, rows_of, section_of

ERRORS = TOP / "docs/errors.md"
CARDS = TOP / "docs/test-cards.md"
SANDBOX_PAGE = TOP / "docs/sandbox.md"


def kest_table(name):
    done = subprocess.run([KEST, name, "--json"], capture_output=True, timeout=SECONDS, check=True)
    return json.loads(done.stdout)[name]


class Errors(unittest.TestCase):
    def test_the_librarys_code_is_there_as_kest_tells_it(self):
        told = [[str(one["code"]), one["meaning"], one["advice"]] for one in kest_table("errors")
                if one["source"] == "library"]
        rows = {row[0]: row for row in rows_of(section_of(ERRORS, "The library's own"))}
        self.assertEqual(["0", "102"], sorted(rows))
        self.assertEqual(told, [[rows["102"][place] for place in (0, 1, 3)]])

    def test_the_sandboxs_codes_are_there_as_kest_tells_them(self):
        told = [[str(one["code"]), one["meaning"], one["advice"]] for one in kest_table("errors")
                if one["source"] == "sandbox" and one["code"] != 0]
        rows = rows_of(section_of(ERRORS, "The sandbox's"))
        self.assertEqual(told, [[row[0], row[1], row[3]] for row in rows])

    def test_the_sandboxs_codes_are_those_of_its_own_page(self):
        named = {row[0]: row[1:] for row in rows_of(SANDBOX_PAGE.read_text()) if re.fullmatch(r"\d{4}|0", row[0])}
        rows = rows_of(section_of(ERRORS, "The sandbox's"))
        self.assertEqual(named, {"0": named["0"], **{row[0]: [row[1], row[3]] for row in rows}})

    def test_each_code_says_its_cause_and_whether_the_call_may_be_repeated(self):
        for row in rows_of(ERRORS.read_text()):
            self.assertEqual(5, len(row), row)
            for cell in row:
                self.assertNotEqual("", cell, row)


class Cards(unittest.TestCase):
    rows = rows_of(section_of(CARDS, "Cards"))

    def test_the_cards_are_those_that_kest_tells(self):
        told = [[one["number"], one["kind"], str(one["type"]), str(one["code"]), one["outcome"]]
                for one in kest_table("cards")]
        self.assertEqual(told, self.rows)

    def test_a_sale_with_each_card_comes_out_as_its_row_says(self):
        with server() as shop:
            for number, _, kind, code, _ in self.rows:
                guid = f"card-{number}"
                exit_code, told = shop.kest("buy", "1042", "--card", number, "--guid", guid)
                self.assertEqual(int(code), told["error"]["code"] if told["error"] else 0, number)
                self.assertEqual(4 if int(code) else 0, exit_code, number)
                self.check_receipt(shop, guid, kind if code == "0" else None)

    def check_receipt(self, shop, guid, kind):
        done = subprocess.run([KEST, "receipt", guid, "--json"], capture_output=True, timeout=SECONDS,
                              env={"KESTAPI_REGISTRY": str(shop.folder / "registry")})
        receipt = json.loads(done.stdout)["receipt"]
        self.assertEqual(kind, receipt and receipt["KEST-Receipt-Card"], guid)

    def test_other_numbers_are_refused_as_the_page_says(self):
        with server() as shop:
            for number, code in (("4000000000000010", 1407), ("4000000000000011", 1402)):
                self.assertEqual(code, shop.kest("buy", "1042", "--card", number)[1]["error"]["code"], number)


class Faults(unittest.TestCase):
    rows = rows_of(section_of(CARDS, "Faults"))

    def test_every_kind_of_fault_is_tried(self):
        kinds = {row[0].strip("`") for row in rows_of(section_of(SANDBOX_PAGE, "Faults")) if row[0].startswith("`")}
        kinds -= {"kind", "at", "service", "times"}
        self.assertEqual(kinds, {json.loads(row[0].strip("`"))["kind"] for row in self.rows})

    def test_a_sale_with_each_fault_comes_out_as_its_row_says(self):
        with server() as shop:
            for text, *outcomes in self.rows:
                for place, outcome in zip(("handshake", "request"), outcomes):
                    fault = json.loads(text.strip("`"))
                    shop.admin("/reset", {})
                    shop.admin("/faults", {"faults": [{**fault, "at": place}]})
                    error = shop.kest("buy", "1042", "--card", "4111111111111111")[1]["error"]
                    state = shop.admin("/state")
                    came = f"{error['code'] if error else 0}, sold {state['sales']}"
                    self.assertEqual(outcome, came, f"{place}: {text}")
                    self.assertEqual([], state["faults"], f"{place}: {text} did not come")


if __name__ == "__main__":
    unittest.main()
