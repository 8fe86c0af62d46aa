"""What the documents show is what is compiled and what it prints.

A document marks a code block that follows with
    <!-- snippet: tests/snippets/first_program.cpp#first-program -->
which stands in that file between the lines "// [first-program]" and
"// [/first-program]", there perhaps indented, and a block of output with
    <!-- output: first_program -->
"""

import os
import pathlib
import re
import subprocess
import tempfile
import textwrap
import unittest

ROOT = pathlib.Path(os.environ["ROOT"])
DOCUMENTS = [ROOT / "README.md", *sorted((ROOT / "docs").rglob("*.md"))]
BLOCK = r"\n+```[a-z]*\n(?P<shown>.*?)^```$"
SNIPPET = re.compile(r"<!-- snippet: (?P<file>\S+)#(?P<region>\S+) -->" + BLOCK, re.S | re.M)
OUTPUT = re.compile(r"<!-- output: (?P<program>\S+) -->" + BLOCK, re.S | re.M)


def region_of(file, name):
    text = (ROOT / file).read_text(encoding="utf-8")
    region = text.split(f"// [{name}]\n")[1].split(f"// [/{name}]\n")[0]
    # Up to the line of the end mark, which may be indented as the region is.
    return textwrap.dedent(region[:region.rindex("\n") + 1])


class SnippetsTest(unittest.TestCase):
    def found(self, pattern):
        for document in DOCUMENTS:
            text = document.read_text(encoding="utf-8")
            for match in pattern.finditer(text):
                yield document.name, match

    def test_blocks_are_the_sources(self):
        count = 0
        for document, match in self.found(SNIPPET):
            count += 1
            with self.subTest(document=document, region=match["region"]):
                self.assertEqual(match["shown"], region_of(match["file"], match["region"]))
        self.assertGreater(count, 0)

    def test_outputs_are_what_programs_print(self):
        count = 0
        for document, match in self.found(OUTPUT):
            count += 1
            with self.subTest(document=document), tempfile.TemporaryDirectory() as run_dir:
                done = subprocess.run(
                    [os.environ["PROGRAM_" + match["program"]]],
                    env={**os.environ, "KELP_RUN_DIR": run_dir, "KELP_LOG_LEVEL": "warn"},
                    capture_output=True, timeout=30, check=False)
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                self.assertEqual(match["shown"], done.stdout.decode())
        self.assertGreater(count, 0)

    # docs/tour.md: each name is in the header beside it, and each page is there.
    def test_the_tour_leads_to_what_is_there(self):
        rows = re.findall(r"^\| to .*?$|^\| (.*?) \| (.*?) \| (.*?) \| (.*?) \|$",
                          (ROOT / "docs/tour.md").read_text(encoding="utf-8"), re.M)
        rows = [row for row in rows if any(row)]
        self.assertGreater(len(rows), 20)
        for task, names, header, pages in rows:
            with self.subTest(task=task):
                for page in re.findall(r"\]\((.*?)\)", pages):
                    self.assertTrue((ROOT / "docs" / page).is_file(), page)
                if not header:
                    continue
                path = header.strip("`")
                folder = "kelp/include" if path.startswith("kelp/") else "include"
                declared = (ROOT / folder / path).read_text(encoding="utf-8")
                for part in re.findall(r"\w+", names):
                    self.assertRegex(declared, rf"\b{part}\b")


if __name__ == "__main__":
    unittest.main()
