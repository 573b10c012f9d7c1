"""What kest makes of a library whose server returns everything that it was sent: echo_test.py LIBRARY KEST."""
import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "road"))
from kest_host import COMMAND, FileTest, kest  # noqa: E402

CARD = "4111111111111111"
LIBRARY = []


class Echo(FileTest):
    def run_kest(self, *arguments):
        return kest(*arguments, "--server", "echo", "--key", self.file("key", "any"), "--library", LIBRARY[0])

    def buy(self, *more):
        return self.run_kest("buy", "7", "--card", CARD, *more)

    def test_a_returned_card_number_is_masked_in_text_and_json(self):
        for form in ((), ("--json",)):
            code, out, words = self.buy("--field", f"Note=by {CARD}", "--field", f"KEST-Product=Card:{CARD}", *form)
            self.assertEqual((0, ""), (code, words))
            self.assertEqual(3, out.count("41**********1111"), out)
            self.assertNotIn(CARD, out)

    def test_the_card_number_of_a_bill_is_masked(self):
        for form in ((), ("--json",)):
            code, out, _ = self.run_kest("bill", "1", "--field", f"Echo-KEST-CCard-Number={CARD}", *form)
            self.assertEqual(0, code)
            self.assertIn("41**********1111", out)
            self.assertNotIn(CARD, out)

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


if __name__ == "__main__":
    LIBRARY.append(sys.argv[1])
    COMMAND.append(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
