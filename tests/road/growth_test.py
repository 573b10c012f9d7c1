"""What a product list costs, in instructions: growth_test.py KEST_PROGRAM, run by scripts/with-sandbox.

Counted by callgrind inside the exported function alone, so the result does not depend on the machine's load.
"""
import os
import re
import subprocess
import sys
import tempfile
import unittest

HOST = ""


def instructions(guid, products):
    with tempfile.TemporaryDirectory() as folder:
        command = ["valgrind", "--tool=callgrind", "--toggle-collect=KestGetProductList",
                   f"--callgrind-out-file={folder}/out", HOST, "products", "--json",
                   "--server", os.environ["KEST_SERVER"], "--port", os.environ["KEST_PORT"],
                   "--key", os.environ["KEST_KEY_FILE"], "--guid", guid]
        done = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=300)
    assert done.stdout.count('"SKU"') == products, done.stderr
    return int(re.search(r"Collected : (\d+)", done.stderr).group(1))


class Growth(unittest.TestCase):
    def test_ten_times_the_products_cost_at_most_twelve_times_the_instructions(self):
        few = instructions("few", 2000)
        many = instructions("many", 20000)
        print(f"2,000 products: {few} instructions; 20,000: {many}; ratio {many / few:.2f}")
        self.assertGreater(few, 1000000)
        self.assertLessEqual(many, 12 * few)


if __name__ == "__main__":
    HOST = sys.argv[1]
    unittest.main(argv=sys.argv[:1])
