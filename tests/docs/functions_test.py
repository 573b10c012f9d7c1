"""Has every exported function its page, and does each page say what the header says?"""
import re
import unittest

from pages import TOP, blocks_of, name_of, pages, section_of

FOLDER = TOP / "docs" / "functions"
SECTIONS = ["Arguments", "Result", "Failures", "Ownership", "Example", "See also"]


def exports():
    """Name and ordinal of each export."""
    found = re.findall(r"^\s+(\w+)@\d+ @(\d+) NONAME$", (TOP / "src/api/exports.def").read_text(), re.M)
    assert len(found) == 28, found
    return found


def prototypes():
    """What the header declares, by name, each in one line."""
    header = re.sub(r"/\*.*?\*/", "", (TOP / "include/kestapi.h").read_text(), flags=re.S)
    found = {}
    for text in re.findall(r"^KEST_API ([^;]*;)", header, re.M):
        found[re.search(r"KEST_CALL (\w+)\(", text).group(1)] = " ".join(text.split())
    return found


def page_of(name):
    return FOLDER / f"{name}.md"


class Functions(unittest.TestCase):
    def test_every_export_has_its_page_and_there_is_no_other(self):
        self.assertEqual(sorted(f"{name}.md" for name, _ in exports()), sorted(path.name for path in FOLDER.iterdir()))

    def test_the_header_declares_what_is_exported(self):
        self.assertEqual(sorted(name for name, _ in exports()), sorted(prototypes()))

    def test_a_page_begins_with_its_name_and_ordinal(self):
        for name, ordinal in exports():
            self.assertRegex(page_of(name).read_text(), rf"\A# {name}\n\nOrdinal {ordinal}\. [A-Z]", name)

    def test_a_page_has_the_headers_prototype(self):
        for name, _ in exports():
            first = blocks_of(page_of(name))[0]
            self.assertEqual(("c", prototypes()[name]), (first.kind, first.text.strip()), name)

    def test_a_page_has_the_sections_of_all_pages_in_their_order(self):
        for name, _ in exports():
            self.assertEqual(SECTIONS, re.findall(r"^## (.*)$", page_of(name).read_text(), re.M), name)
            for title in SECTIONS:
                self.assertNotEqual("", section_of(page_of(name), title).strip(), f"{name}: {title}")

    def test_a_page_names_every_argument(self):
        for name, _ in exports():
            arguments = re.findall(r"(\w+)[,)]", prototypes()[name].split("(", 1)[1])
            text = section_of(page_of(name), "Arguments")
            if arguments == ["void"]:
                self.assertEqual("None.", text.strip(), name)
                continue
            rows = re.findall(r"^\| `(\w+)` \|", text, re.M)
            self.assertEqual(arguments, rows, name)

    def test_a_page_has_a_program_that_calls_the_function_and_its_output(self):
        for name, _ in exports():
            kinds = [block.kind for block in blocks_of(page_of(name))[1:]]
            self.assertEqual(["c", "text"], kinds, name)
            program = blocks_of(page_of(name))[1].text
            self.assertRegex(program, rf"\b{name}\(", name)

    def test_the_table_of_the_exports_leads_to_every_page(self):
        table = (TOP / "docs/exports.md").read_text()
        for name, ordinal in exports():
            self.assertIn(f"\n| {ordinal} | [{name}](functions/{name}.md) |", table)

    def test_a_link_that_shows_a_functions_name_leads_to_its_page(self):
        names = {name for name, _ in exports()}
        for path in pages():
            for shown, target in re.findall(r"\[(Kest\w+)\]\([^)]*?(\w+)\.md\)", path.read_text()):
                self.assertEqual((shown, True), (target, shown in names), name_of(path))


if __name__ == "__main__":
    unittest.main()
