"""Makes the reference of the C interface as the build does and looks at what comes out."""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCES = Path(os.environ["K740_SOURCES"])
CALLBACKS = 11
PARTS = ["NAME", "SYNOPSIS", "DESCRIPTION", "RETURN VALUE", "SEE ALSO"]

for tool in ("doxygen", "man", "mandoc", "nm"):
    if shutil.which(tool) is None:
        sys.exit(f"{tool} is missing; scripts/setup --tests installs it")


def run_doxygen(sources, output):
    environment = {**os.environ, "K740_REFERENCE": str(output)}
    doxyfile = SOURCES / "docs" / "reference" / "Doxyfile"
    return subprocess.run(["doxygen", doxyfile], cwd=sources, env=environment, capture_output=True, text=True)


def run_man_pages(output):
    script = SOURCES / "docs" / "reference" / "man_pages.py"
    version = os.environ["K740_VERSION"]
    command = [sys.executable, "-B", script, output / "xml", output / "man", version, "2000-01-01"]
    return subprocess.run(command, capture_output=True, text=True)


def exported_names():
    command = ["nm", "--dynamic", "--defined-only", "--format=just-symbols", os.environ["K740_LIBRARY"]]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.split()


class ReferenceTest(unittest.TestCase):
    """Makes the reference once."""

    @classmethod
    def setUpClass(cls):
        directory = tempfile.TemporaryDirectory()
        cls.addClassCleanup(directory.cleanup)
        cls.output = Path(directory.name)
        cls.doxygen = run_doxygen(SOURCES, cls.output)


class HtmlReferenceTest(ReferenceTest):
    def test_doxygen_warns_of_nothing(self):
        self.assertEqual((0, ""), (self.doxygen.returncode, self.doxygen.stderr))

    def test_every_exported_function_is_in_it(self):
        text = "".join(page.read_text() for page in self.output.glob("html/group__*.html"))
        documented = set(re.findall(r'class="memname">\w+ (K740_\w+) <', text))
        self.assertEqual(set(exported_names()), documented)

    def test_the_pages_of_the_documentation_are_in_it(self):
        for page in ("index.html", "md_docs_wire_format.html", "md_docs_packages.html"):
            self.assertTrue((self.output / "html" / page).exists(), page)


class ManPagesTest(ReferenceTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.generator = run_man_pages(cls.output)
        cls.pages = {page.stem: page for page in cls.output.glob("man/man*/*")}

    def test_the_generator_finds_no_gap(self):
        self.assertEqual((0, ""), (self.generator.returncode, self.generator.stderr))

    def test_there_is_a_page_for_every_exported_function_callback_and_record(self):
        functions = set(exported_names())
        callbacks = {name for name in self.pages if re.fullmatch("P[A-Z]+", name)}
        self.assertEqual(41, len(functions))
        self.assertEqual(CALLBACKS, len(callbacks))
        self.assertEqual(functions | callbacks | {"K740_PACING", "k740"}, set(self.pages))

    def test_the_page_of_a_function_has_its_parts(self):
        for name in exported_names():
            text = self.pages[name].read_text()
            titles = re.findall(r'^\.SH "(.*)"$', text, re.MULTILINE)
            takes_nothing = "(void)" in text
            parts = [title for title in titles if title not in ("NOTES", "PARAMETERS")]
            self.assertEqual((PARTS, not takes_nothing), (parts, "PARAMETERS" in titles), name)

    def test_the_overview_names_every_function(self):
        overview = self.pages["k740"].read_text()
        for name in exported_names():
            self.assertIn(f".BR {name} (3)\n", overview)

    def test_a_page_is_rendered_as_the_header_says(self):
        page = self.pages["K740_AddZones"]
        text = subprocess.run(["man", "-l", page], capture_output=True, text=True, env={**os.environ, "MANWIDTH": "200"})
        words = re.sub(r"\s+", " ", text.stdout)
        self.assertIn("K740_AddZones - Makes more zone controllers join a broadcasting task", words)
        self.assertIn("int K740_AddZones(int taskID, const char *zones);", words)
        self.assertIn("zones see Naming zones in k740(7)", words)
        self.assertIn("RETURN VALUE 0; -1 for bad zones; -2 when the task is not broadcasting", words)

    def test_no_page_makes_man_or_mandoc_warn(self):
        for command in (["man", "--warnings", "-l"], ["mandoc", "-Tlint", "-Wwarning"]):
            done = subprocess.run([*command, *self.pages.values()], capture_output=True, text=True)
            warnings = done.stderr + (done.stdout if command[0] == "mandoc" else "")
            self.assertEqual((0, ""), (done.returncode, warnings))


class DocumentationGapsTest(unittest.TestCase):
    """What happens when the header leaves something out."""

    def gaps_without(self, line):
        """The messages of the generator when the header's only line with this text is missing."""
        with tempfile.TemporaryDirectory() as directory:
            sources, output = Path(directory, "sources"), Path(directory, "output")
            for folder in (sources / "app", sources / "docs", output):
                folder.mkdir(parents=True)
            lines = (SOURCES / "app" / "k740.h").read_text().splitlines(keepends=True)
            kept = [kept for kept in lines if line not in kept]
            self.assertEqual(len(lines) - 1, len(kept))
            (sources / "app" / "k740.h").write_text("".join(kept))
            run_doxygen(sources, output)
            done = run_man_pages(output)
            return done.returncode, done.stderr

    def test_a_parameter_that_is_not_documented_is_an_error(self):
        self.assertEqual((1, "PZONESTATUS: states is not documented\n"),
                         self.gaps_without("@param states   eight zone states"))

    def test_a_result_that_is_not_documented_is_an_error(self):
        self.assertEqual((1, "K740_StopTask: the result is not documented\n"),
                         self.gaps_without("0; -1 when the ID is outside 1..50000"))


if __name__ == "__main__":
    unittest.main()
