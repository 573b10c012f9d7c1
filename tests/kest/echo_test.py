"""What kest makes of a library whose server returns everything that it was sent: echo_test.py LIBRARY KEST."""
import json
import os
import pathlib
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "road"))
from kest_host import COMMAND, FileTest, kest, kest_json  # noqa: E402

CARD = "4111111111111111"
LIBRARY = []


class Echo(FileTest):
    def run_kest(self, *arguments):
        return kest(*arguments, "--server", "echo", "--key", self.file("key", "any"), "--library", LIBRARY[0])

    def buy(self, *more):
        return self.run_kest("buy", "7", "--card", CARD, *more)

    def test_a_returned_card_number_is_masked_in_text_and_json(self):
        for form in ((), ("--json",)):
            code, out, words = self.buy("--field", f"Note=by {CARD}", "--field", f"Echo-KEST-Product=Card:{CARD}", *form)
            self.assertEqual((0, ""), (code, words))
            self.assertEqual(3, out.count("41**********1111"), out)
            self.assertNotIn(CARD, out)

    def test_the_card_number_of_a_bill_is_masked(self):
        for form in ((), ("--json",)):
            code, out, _ = self.run_kest("bill", "1", "--field", f"Echo-KEST-CCard-Number={CARD}", *form)
            self.assertEqual(0, code)
            self.assertIn("41**********1111", out)
            self.assertNotIn(CARD, out)

    def test_whatever_is_as_long_as_a_card_number_is_masked_in_names_and_values(self):
        fields = ("Note=5555 5555-5555 4444", "N5555555555554444=1", "Echo-KEST-Product=Note:5555555555554444^Price:1",
                  f"Spaced={CARD[:4]} {CARD[4:8]} {CARD[8:12]} {CARD[12:]}")
        more = [word for field in fields for word in ("--field", field)]
        listed = ("products", "--version-id", "Note=5555-5555-5555-4444;N5555555555554444=1")
        for arguments in (("buy", "7", "--card", CARD, *more), ("bill", "1", *more), listed):
            for form in ((), ("--json",)):
                code, out, words = self.run_kest(*arguments, *form)
                self.assertEqual((0, ""), (code, words))
                digits = "".join(character for character in out if character.isdecimal())
                self.assertIn("4444", digits)
                for number in (CARD, "5555555555554444"):
                    self.assertNotIn(number, digits)

    def test_transactions_and_amounts_stay_however_long_they_are(self):
        fields = ("Echo-KEST-TxN=123456789012345", "KEST-TotalAmount=123456789012.50", "KEST-TaxAmount=1234567890123")
        code, out, _ = self.buy(*(word for field in fields for word in ("--field", field)))
        self.assertEqual(0, code)
        for field in fields:
            self.assertIn(field.split("=")[1], out)

    def test_a_card_number_in_the_place_of_another_argument_is_in_no_words(self):
        spaced = "5555 5555 5555 4444"
        sale = ("buy", "7", "--server", "echo", "--library", LIBRARY[0])
        key = self.file("key", "any")
        for arguments in ((*sale, "--key", key, "--card", "@" + spaced), (*sale, "--key", spaced, "--card", CARD),
                          (*sale, "--key", key, "--card", CARD, "--proxy", spaced + ":"),
                          ("receipt", spaced, "--library", LIBRARY[0]), ("doctor", "--library", "./" + spaced),
                          ("doctor", "--library", "./" + spaced, "--json")):
            code, out, words = kest(*arguments)
            self.assertNotEqual(0, code)
            self.assertIn("4444", words, arguments)
            self.assertNotIn("5555 5555", out + words)

    def test_every_line_of_words_names_its_program(self):
        for arguments in ((), ("buy",), ("products", "--what"), ("receipt", "a\nb"), ("cards",), ("errors", "77")):
            words = kest(*arguments, *(("--library", LIBRARY[0]) if arguments[:1] == ("receipt",) else ()))[2]
            self.assertTrue(words)
            for line in words.splitlines():
                self.assertTrue(line.startswith("kest: "), words)

    def test_a_servers_error_code_is_read_as_the_library_reads_it(self):
        # "-1" is 10 * (45 - 48) + 1 and "x" 120 - 48; 4294967297 is 1 modulo 2^32, 4294967295 is -1.
        for text, code in (("1403", 1403), ("x", 72), ("-1", -29), ("4294967297", 1), ("4294967295", -1), (" 7", -153)):
            with self.subTest(error=text):
                exit_code, _, words = self.run_kest("products", "--version-id", f"KEST-Error={text}")
                self.assertEqual(4, exit_code)
                self.assertIn(f"error code {code}.", words.replace(". In the sandbox's", ". In"))
        for text in ("", "0", "000", "4294967296"):
            exit_code, _, words = self.run_kest("products", "--version-id", f"KEST-Error={text}")
            self.assertEqual((0, ""), (exit_code, words), text)

    def test_a_servers_own_code_102_is_a_refusal(self):
        code, out, words = self.run_kest("products", "--version-id", "KEST-Error=102", "--json")
        self.assertEqual((4, {"code": 102, "meaning": None, "advice": None}), (code, json.loads(out)["error"]))
        self.assertIn("its error code 102.", words)
        self.assertNotIn("no valid answer", words)

    def test_of_a_repeated_name_json_has_the_first_field(self):
        self.assertEqual("1", json.loads(self.buy("--field", "A=1", "--field", "A=2", "--json")[1])["purchase"]["A"])

    def test_a_field_takes_one_argument_and_leaves_the_order(self):
        self.assertEqual((0, ""), self.run_kest("buy", "--field", "A=B", "7", "--card", CARD)[::2])

    def test_a_text_that_is_not_utf_8_is_taken_for_iso_8859_1(self):
        note = os.fsdecode(b"Note=Bl\xe5b\xe4r")
        self.assertIn("Note  Blåbär\n", self.buy("--field", note)[1])
        self.assertEqual("Blåbär", json.loads(self.buy("--field", note, "--json")[1])["purchase"]["Note"])

    def test_a_product_is_no_field_of_the_user(self):
        for name in ("KEST-Product", "kest-product"):
            code, out, words = self.buy("--field", f"{name}=SKU:1")
            self.assertEqual((2, ""), (code, out))
            self.assertIn("SKU", words)

    def test_a_folder_in_the_place_of_a_file_is_named(self):
        folder = os.path.dirname(self.file("key", "any"))
        for arguments in (("--card", CARD, "--key", folder), ("--card", "@" + folder, "--key", self.file("key", "any"))):
            code, out, words = kest("buy", "7", "--server", "echo", "--library", LIBRARY[0], *arguments)
            self.assertEqual((1, ""), (code, out))
            self.assertIn(f"{folder} cannot be read", words)

    def test_a_path_of_any_bytes_stands_in_json(self):
        code, document, _ = kest_json("doctor", "--library", os.fsdecode(b"/no/\xff.so"))
        self.assertEqual((1, "/no/ÿ.so"), (code, document["library"]["path"]))
        self.assertIn("/no/ÿ.so", document["faults"][0])

    def test_a_folder_is_no_library_of_any_size(self):
        code, document, _ = kest_json("doctor", "--library", os.path.dirname(LIBRARY[0]))
        self.assertEqual((1, None, None), (code, document["library"]["size"], document["library"]["bits"]))

    def test_a_failure_without_a_code_is_this_machines(self):
        for arguments in (("buy", "7", "--card", CARD, "--field", "X-Fail=0"), ("bill", "1", "--field", "X-Fail=0"),
                          ("products",)):
            code, out, words = self.run_kest(*arguments)
            self.assertEqual((1, ""), (code, out))
            self.assertIn("memory", words)
            self.assertNotIn("charged", words)

    def test_a_code_that_nobody_knows_is_told_as_it_is(self):
        code, out, words = self.buy("--field", "X-Fail=77")
        self.assertEqual((4, ""), (code, out))
        self.assertIn("error code 77.", words)

    def test_control_characters_of_a_server_do_not_reach_the_terminal(self):
        # U+009B begins a terminal's command as ESC [ does.
        code, out, _ = self.buy("--field", "Note=\u009b2J")
        self.assertEqual(0, code)
        self.assertIn("Note  ?2J\n", out)


class Output(FileTest):
    """What becomes of a sale when stdout cannot be written."""

    def sell(self, *more, leaving=None, **streams):
        """Answers the exit code, the words, and whether the library was asked to sell. `leaving` is for the program alone."""
        sold = pathlib.Path(self.file("key", "any")).with_name("sold")
        sold.unlink(missing_ok=True)
        process = subprocess.Popen(
            [*COMMAND, "buy", "7", "--card", "-", "--server", "echo", "--key", self.file("key", "any"),
             "--library", LIBRARY[0], "--field", f"X-Sold={sold}", *more],
            stdin=subprocess.PIPE, stderr=subprocess.PIPE, **streams)
        if leaving is not None:
            os.close(leaving)
        _, words = process.communicate(CARD.encode(), timeout=60)
        return process.returncode, words.decode(), sold.exists()

    def check_told(self, code, words, sold):
        self.assertEqual((1, True), (code, sold), words)
        self.assertIn("the sale WAS made: transaction 123456789012345, total 31.90", words)
        self.assertIn("could not be written", words)

    TOLD = ("--field", "Echo-KEST-TxN=123456789012345", "--field", "KEST-TotalAmount=31.90")

    def test_a_full_disk_does_not_hide_that_the_sale_was_made(self):
        for form in ((), ("--json",)):
            with open("/dev/full", "wb") as full:
                self.check_told(*self.sell(*self.TOLD, *form, stdout=full))

    def test_a_reader_that_leaves_does_not_hide_that_the_sale_was_made(self):
        reader, writer = os.pipe()
        # The last reader is the library itself, which leaves during the sale.
        os.set_inheritable(reader, True)
        try:
            arguments = (*self.TOLD, "--field", f"X-Close={reader}")
            self.check_told(*self.sell(*arguments, stdout=writer, close_fds=False, leaving=reader))
        finally:
            os.close(writer)

    def test_the_card_number_is_not_told_as_transaction(self):
        with open("/dev/full", "wb") as full:
            _, words, _ = self.sell("--field", f"Echo-KEST-TxN={CARD}", stdout=full)
        self.assertIn("the sale WAS made: transaction 41**********1111, total unknown", words)

    def test_nothing_is_sold_when_stdout_is_closed(self):
        code, words, sold = self.sell(stdout=None, preexec_fn=lambda: os.close(1))
        self.assertEqual((1, False), (code, sold))
        self.assertIn("nothing was done", words)

    def test_nothing_is_sold_when_nobody_reads_stdout(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            self.assertEqual((1, False), self.sell(stdout=writer)[::2])
        finally:
            os.close(writer)

    def test_nothing_is_sold_when_the_reader_leaves_before_the_card_is_given(self):
        reader, writer = os.pipe()
        card = self.file("key", "any") + ".card"
        os.mkfifo(card)
        process = subprocess.Popen(
            [*COMMAND, "buy", "7", "--card", "@" + card, "--server", "echo", "--key", self.file("key", "any"),
             "--library", LIBRARY[0], "--field", f"X-Sold={card}.sold"], stdout=writer, stderr=subprocess.PIPE)
        os.close(writer)
        # Opening waits until the other side reads, which has looked at its stdout by then.
        with open(card, "w") as given:
            os.close(reader)
            given.write(CARD)
        _, words = process.communicate(timeout=60)
        self.assertEqual((1, False), (process.returncode, os.path.exists(card + ".sold")))
        self.assertIn(b"nothing was sold", words)

    def test_a_failed_sale_keeps_its_exit_code(self):
        for error, expected in (("102", 3), ("1403", 4)):
            with open("/dev/full", "wb") as full:
                code, words, _ = self.sell("--json", "--field", f"X-Fail={error}", stdout=full)
            self.assertEqual(expected, code)
            self.assertNotIn("WAS made", words)
            self.assertIn("could not be written", words)

    def test_a_table_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([*COMMAND, "errors"], stdout=full, stderr=subprocess.PIPE, timeout=60)
        self.assertEqual(1, done.returncode)
        self.assertIn(b"could not be written", done.stderr)


if __name__ == "__main__":
    LIBRARY.append(sys.argv[1])
    COMMAND.append(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
