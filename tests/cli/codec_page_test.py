"""The worked examples of docs/codec.md are what the tool writes and reads.

A marker <!-- encode: OPTIONS --> stands before a block of JSON and one of octets, which are
the pairs of digits that begin each line. "encode" reads them back, too; "encode-only" does
not; "decode" has the octets first; "decode-warns" expects a warning besides.
"""

import json
import os
import re
import unittest

from support.programs import Kelpctl, ProgramTest

ROOT = os.environ["ROOT"]
DESC = os.path.join(ROOT, "examples", "codec", "elements.bcp")
EXAMPLE = re.compile(
    r"<!-- (?P<kind>[a-z-]+):(?P<options>[^>]*) -->\n"
    r"```(?P<one>json|hex)\n(?P<first>.*?)^```\n```(?:json|hex)\n(?P<second>.*?)^```$",
    re.S | re.M)


def octets_of(block):
    octets = []
    for line in block.splitlines():
        for word in line.split():
            if not re.fullmatch("[0-9a-f]{2}", word):
                break
            octets.append(word)
    return octets


class CodecPageTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir)
        with open(os.path.join(ROOT, "docs", "codec.md"), encoding="utf-8") as file:
            cls.examples = list(EXAMPLE.finditer(file.read()))

    def run_tool(self, command, options, text):
        if "--key" in options:
            options = ["--desc", DESC, *options]
        return self.kelpctl.run("paraset", command, "--hex", *options, stdin=text.encode())

    def test_octets_are_what_the_tool_writes(self):
        seen = 0
        for example in self.examples:
            if not example["kind"].startswith("encode"):
                continue
            seen += 1
            with self.subTest(json=example["first"]):
                self.assertEqual(example["one"], "json")
                status, out, err = self.run_tool(
                    "encode", example["options"].split(), example["first"])
                self.assertEqual((status, err), (0, b""))
                self.assertEqual(out.decode().split(), octets_of(example["second"]))
        self.assertEqual(seen, 7)

    def test_json_is_what_the_tool_reads(self):
        seen = 0
        for example in self.examples:
            kind = example["kind"]
            if kind == "encode-only":
                continue
            seen += 1
            octets, text = ((example["second"], example["first"]) if kind == "encode"
                            else (example["first"], example["second"]))
            with self.subTest(json=text):
                status, out, err = self.run_tool(
                    "decode", example["options"].split(), " ".join(octets_of(octets)))
                self.assertEqual((status, err != b""), (0, kind == "decode-warns"))
                self.assertEqual(json.loads(out), json.loads(text))
        self.assertEqual(seen, 6)


if __name__ == "__main__":
    unittest.main()
