"""The pages' links, the site and the man pages: is every page made, and does everything lead somewhere?"""
import html.parser
import pathlib
import re
import subprocess
import tempfile
import unittest

from live import SECONDS
from pages import TOP, anchors_of, blocks_of, links_of, name_of, pages


def all_pages():
    return pages() + sorted((TOP / "examples").rglob("*.md"))


class Links(unittest.TestCase):
    def test_every_link_of_a_page_leads_somewhere(self):
        for path in all_pages():
            for number, target in links_of(path):
                place = f"{name_of(path)}:{number}: {target}"
                self.assertNotRegex(target, r"^\w+:", f"{place}: a page needs no network")
                name, _, anchor = target.partition("#")
                to = (path.parent / name).resolve() if name else path
                self.assertTrue(to.exists(), place)
                self.assertIn(TOP, to.parents, place)
                if anchor:
                    self.assertIn(anchor, anchors_of(to), place)

    def test_no_page_has_two_headings_of_one_anchor_that_is_linked(self):
        linked = {(str((path.parent / name).resolve() if name else path), anchor) for path in all_pages()
                  for _, target in links_of(path) for name, _, anchor in [target.partition("#")] if anchor}
        for path, anchor in linked:
            self.assertEqual(1, anchors_of(pathlib.Path(path)).count(anchor), f"{path}#{anchor}")

    def test_every_page_is_reached_from_the_first_one(self):
        reached, waiting = set(), [TOP / "README.md"]
        while waiting:
            path = waiting.pop()
            if path in reached:
                continue
            reached.add(path)
            if path.suffix == ".md":
                waiting += [(path.parent / target.partition("#")[0]).resolve() for _, target in links_of(path)
                            if target.partition("#")[0] and not (path.parent / target).is_dir()]
        self.assertEqual([], [name_of(path) for path in pages() if path not in reached])


class Reader(html.parser.HTMLParser):
    """What a page of the site has: its anchors, links and pictures, whatever it loads, and whether all is closed."""
    VOID = {"meta", "link", "br", "hr", "img", "input"}

    def __init__(self, text):
        super().__init__()
        self.anchors, self.targets, self.pictures, self.loads, self.open, self.current = [], [], [], [], [], 0
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        named = dict(attributes)
        if tag not in self.VOID:
            self.open.append(tag)
        if "id" in named:
            self.anchors.append(named["id"])
        if tag == "a":
            self.targets.append(named["href"])
            self.current += named.get("aria-current") == "page"
        elif tag == "img":
            assert named.get("alt"), "a picture says nothing to whoever does not see it"
            self.pictures.append(named["src"])
        elif "href" in named or "src" in named:
            self.loads.append(named.get("href") or named.get("src"))

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)

    def handle_endtag(self, tag):
        assert self.open and self.open[-1] == tag, f"</{tag}> closes {self.open[-3:]}"
        self.open.pop()


class Site(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.site = pathlib.Path(folder.name, "site")
        subprocess.run([TOP / "scripts/make-site", cls.site], check=True, timeout=SECONDS)
        cls.read = {path: Reader(path.read_text()) for path in cls.site.rglob("*.html")}

    def test_every_page_is_there(self):
        wanted = {re.sub(r"README\.html$", "index.html", name_of(path)[:-3] + ".html") for path in all_pages()}
        self.assertEqual(wanted, {path.relative_to(self.site).as_posix() for path in self.read})

    def test_every_page_is_in_the_navigation_of_every_page(self):
        for path, page in self.read.items():
            leads = {(path.parent / target).resolve() for target in page.targets}
            self.assertEqual(set(), {one.resolve() for one in self.read} - leads, path.name)
            self.assertEqual(1, page.current, path.name)

    def test_every_link_leads_somewhere(self):
        for path, page in self.read.items():
            self.assertEqual([], page.open, path)
            for target in page.targets:
                name, _, anchor = target.partition("#")
                to = (path.parent / name).resolve() if name else path
                self.assertTrue(to.is_file(), f"{path.name}: {target}")
                if anchor:
                    self.assertIn(anchor, self.read[to].anchors, f"{path.name}: {target}")

    def test_nothing_is_loaded_from_elsewhere(self):
        for path, page in self.read.items():
            loads = [(path.parent / one).resolve() for one in page.loads]
            self.assertEqual([(self.site / "style.css").resolve()], loads, path.name)
            self.assertNotIn("<script", path.read_text())
        self.assertNotRegex((self.site / "style.css").read_text(), r"@import|url\(")

    def test_every_picture_is_the_trees_own_and_comes_along(self):
        for path, page in self.read.items():
            for picture in page.pictures:
                there = (path.parent / picture).resolve()
                self.assertIn(self.site.resolve(), there.parents, picture)
                here = TOP / there.relative_to(self.site.resolve())
                self.assertEqual(here.read_bytes(), there.read_bytes(), picture)

    def test_a_page_is_readable_on_a_phone(self):
        for path in self.read:
            text = path.read_text()
            self.assertIn('<meta name="viewport" content="width=device-width', text)
            # What is wider than the screen scrolls by itself.
            self.assertEqual(text.count("<table>"), text.count('<div class="table"><table>'), path.name)
        style = (self.site / "style.css").read_text()
        self.assertIn("pre { overflow-x: auto;", style)
        self.assertIn("img { max-width: 100%;", style)

    def test_blocks_and_tables_became_what_they_are(self):
        for path in all_pages():
            name = re.sub(r"README\.html$", "index.html", name_of(path)[:-3] + ".html")
            text = (self.site / name).read_text()
            self.assertEqual(len(blocks_of(path)), text.count("<pre>"), name)
            self.assertNotIn("```", text, name)


class ManPages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        subprocess.run([TOP / "scripts/make-man", cls.folder], check=True, timeout=SECONDS)
        cls.shown = {}
        for path in sorted((cls.folder / "man3").iterdir()):
            done = subprocess.run(["groff", "-man", "-Tutf8", "-Kutf8", "-ww", "-P-cbou", "-rLL=140n", path],
                                  capture_output=True, text=True, timeout=SECONDS, check=True)
            assert done.stderr == "", done.stderr
            cls.shown[path.stem] = done.stdout

    def test_every_function_has_one(self):
        self.assertEqual(sorted(path.stem for path in (TOP / "docs/functions").iterdir()), list(self.shown))

    def test_it_has_the_name_the_prototype_and_the_sections(self):
        for name, text in self.shown.items():
            page = TOP / "docs/functions" / f"{name}.md"
            headings = re.findall(r"^[A-Z][A-Z ]+$", text, re.M)
            self.assertEqual(["NAME", "SYNOPSIS", "DESCRIPTION"] + [
                title.upper() for title in re.findall(r"^## (.*)$", page.read_text(), re.M)], headings, name)
            self.assertRegex(text, rf"\n +{name} - [A-Z]")
            self.assertIn(blocks_of(page)[0].text.strip(), text)

    def test_its_example_is_the_pages_letter_by_letter(self):
        for name, text in self.shown.items():
            for block in blocks_of(TOP / "docs/functions" / f"{name}.md")[1:]:
                indented = "".join(f"{' ' * 11}{line}\n" if line else "\n" for line in block.text.splitlines())
                self.assertIn(indented, text, block)

    def test_it_is_ascii_and_shows_no_markup(self):
        for name, text in self.shown.items():
            prose = text.split("\nEXAMPLE\n")[0]
            self.assertNotRegex(prose, r"\*\*|`|\]\(|\\f", name)


if __name__ == "__main__":
    unittest.main()
