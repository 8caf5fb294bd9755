"""The pages of the repository point to what is there: files, folders and headings."""

import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).parents[2]
LINK = re.compile(r"\]\(([^)\s]+)\)")
CODE_BLOCK = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)
HEADING = re.compile(r"^#+ +(.*)$", re.MULTILINE)


def pages():
    names = subprocess.run(["git", "ls-files", "*.md"], cwd=ROOT, capture_output=True, text=True, check=False).stdout
    return [ROOT / name for name in names.split()] or [
        page for page in ROOT.rglob("*.md") if "build" not in page.relative_to(ROOT).parts
    ]


def prose(page):
    return CODE_BLOCK.sub("", page.read_text(encoding="utf-8"))


def anchor(heading):
    """The name that a page's reader gives a heading: lower case, hyphens for spaces, without other signs."""
    return re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-")


def is_there(page, link):
    path, _, heading = link.partition("#")
    target = page.parent / path if path else page
    if not target.exists():
        return False
    return not heading or heading in (anchor(text) for text in HEADING.findall(prose(target)))


class LinksTest(unittest.TestCase):
    def test_every_link_leads_somewhere(self):
        links = [(page, link) for page in pages() for link in LINK.findall(prose(page)) if "://" not in link]
        self.assertGreater(len(links), 10)
        self.assertEqual([], [(str(page.relative_to(ROOT)), link) for page, link in links if not is_there(page, link)])

    def test_every_page_of_docs_is_found_from_the_readme(self):
        linked = {(ROOT / link.partition("#")[0]).resolve() for link in LINK.findall(prose(ROOT / "README.md"))}
        self.assertEqual([], [page.name for page in (ROOT / "docs").glob("*.md") if page.resolve() not in linked])


if __name__ == "__main__":
    unittest.main()
