"""Does the work tell in which way a reply is wrong? equal_work_test.py OPENING_WORK

Replies of one length, each wrong in another way, are opened under callgrind, which counts the instructions of each; so
are comparisons of bytes that differ in another place. Within a kind all counts are equal, to the instruction.
"""
import collections
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

PROGRAM = ""


def count():
    """{kind: {name: instructions}}"""
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/out", PROGRAM],
                              check=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=300)
        assert done.stdout == "", done.stdout
        kinds = collections.defaultdict(dict)
        for path in pathlib.Path(folder).glob("out.*"):
            text = path.read_text()
            name = re.search(r"^desc: Trigger: Client Request: (.*?): (.*)$", text, re.M)
            if name:
                kinds[name.group(1)][name.group(2)] = int(re.search(r"^(?:summary|totals): (\d+)", text, re.M).group(1))
    return kinds


class EqualWork(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.kinds = count()

    def check(self, kind, names, least):
        counts = self.kinds[kind]
        print(f"{kind}: {len(counts)} ways, {min(counts.values())} to {max(counts.values())} instructions")
        self.assertEqual(names, len(counts))
        self.assertGreater(min(counts.values()), least)
        self.assertEqual(1, len(set(counts.values())), counts)

    def test_bad_paddings_and_bad_digests_cost_the_same(self):
        self.check("message", 33, 20000)

    def test_a_wrong_client_challenge_costs_the_same_wherever_it_differs(self):
        self.check("client challenge", 4, 20000)

    def test_a_wrong_server_challenge_costs_the_same_wherever_it_differs(self):
        self.check("server challenge", 4, 20000)

    def test_a_comparison_costs_the_same_wherever_bytes_differ(self):
        self.check("comparison", 65, 64)

    def test_a_comparison_that_ends_at_the_first_difference_is_noticed(self):
        counts = self.kinds["hasty comparison"]
        print(f"hasty comparison: {counts}")
        self.assertLess(counts["byte 3"], counts["byte 4"])
        self.assertLess(counts["byte 4"], counts["byte 60"])


if __name__ == "__main__":
    PROGRAM = sys.argv[1]
    unittest.main(argv=sys.argv[:1])
