"""kest products and the command line against a live server."""
import json
import os
import unittest

from kest_host import FileTest, kest, kest_json, main, server_options


def products(*more, **changed):
    return kest("products", *server_options(**{"version_id": "2.1", **changed}), *more)


class Products(FileTest):
    def test_a_table_for_people(self):
        code, out, words = products()
        self.assertEqual((0, ""), (code, words))
        self.assertEqual([
            "SKU         Name         Price  Note",
            "1042        Plum Jam     4.50   ratio 1:2, sweet",
            "7           Blåbärssylt  19.95  ",
            "4294967295  Last         0.00   ",
        ], out.splitlines())

    def test_json_for_programs(self):
        code, out, words = products("--json")
        self.assertEqual((0, ""), (code, words))
        document = json.loads(out)
        self.assertEqual(["products", "reply", "error"], list(document))
        self.assertIsNone(document["error"])
        self.assertEqual({"SKU": "7", "Name": "Blåbärssylt", "Price": "19.95"}, document["products"][1])

    def test_no_products_is_no_failure(self):
        code, out, words = products(version_id="9.9")
        self.assertEqual((0, ""), (code, out))
        self.assertIn("no products", words)

    def test_an_unknown_application_is_refused_by_the_server(self):
        code, out, words = products(guid="unknown")
        self.assertEqual((4, ""), (code, out))
        self.assertIn("error code 1101", words)

    def test_a_refusal_stands_in_the_json_with_its_meaning(self):
        code, document, _ = kest_json("products", *server_options(guid="unknown"))
        self.assertEqual((4, [], 1101), (code, document["products"], document["error"]["code"]))
        self.assertIn("GUID", document["error"]["meaning"])
        self.assertIn("GUID", document["error"]["advice"])

    def test_a_proxy_is_used(self):
        proxy = f"{os.environ['KEST_SERVER']}:{os.environ['KEST_PORT']}"
        code, out, _ = products(server="shop.invalid", proxy=proxy)
        self.assertEqual(0, code)
        self.assertIn("Plum Jam", out)

    def test_a_server_that_is_not_there_is_a_failed_exchange(self):
        code, out, words = products(server="127.0.0.1", port="1")
        self.assertEqual((3, ""), (code, out))
        self.assertIn("102", words)
        code, document, _ = kest_json("products", *server_options(server="127.0.0.1", port="1"))
        self.assertEqual((3, [], {}, 102), (code, document["products"], document["reply"], document["error"]["code"]))

    def test_a_key_file_that_is_not_there_is_named(self):
        code, out, words = products(key="no-such-file.key")
        self.assertEqual((1, ""), (code, out))
        self.assertIn("no-such-file.key", words)

    def test_a_key_that_is_none_is_named(self):
        code, out, words = products(key=self.file("bad.key", "not a key"))
        self.assertEqual((1, ""), (code, out))
        self.assertIn("bad.key", words)

    def test_an_empty_key_file_is_called_empty(self):
        code, out, words = products(key=self.file("empty.key", ""))
        self.assertEqual((1, ""), (code, out))
        self.assertIn("is empty", words)

    def test_a_proxy_that_is_none_is_named(self):
        for proxy in ("host:port", "host:", ":80", "http://127.0.0.1:1", "host:65536"):
            code, out, words = products(proxy=proxy)
            self.assertEqual((1, ""), (code, out))
            self.assertIn(proxy, words)


class CommandLine(unittest.TestCase):
    def test_no_command_is_a_usage_error(self):
        code, out, words = kest()
        self.assertEqual((2, ""), (code, out))
        self.assertTrue(words)

    def test_a_port_out_of_range_is_a_usage_error(self):
        self.assertEqual(2, products(port="65536")[0])

    def test_a_port_is_decimal_whatever_its_zeros(self):
        self.assertEqual(0, products(port="0" + os.environ["KEST_PORT"])[0])
        self.assertIn("port 10 ", products(server="127.0.0.1", port="010")[2])

    def test_a_port_that_is_no_decimal_number_is_a_usage_error(self):
        for port in ("", "0x50", "80 ", "+80", "-1", "80.0"):
            self.assertEqual((2, ""), products(port=port)[:2], port)

    def test_an_unknown_option_is_a_usage_error(self):
        self.assertEqual(2, kest("products", "--what")[0])

    def test_help_goes_to_stdout(self):
        code, out, words = kest("--help")
        self.assertEqual((0, ""), (code, words))
        self.assertIn("products", out)

    def test_a_library_that_is_not_there_is_named(self):
        code, _, words = products("--library", "no-such-library.so")
        self.assertEqual(1, code)
        self.assertIn("no-such-library.so", words)


if __name__ == "__main__":
    main()
