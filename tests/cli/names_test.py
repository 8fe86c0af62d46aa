"""kelpctl uid and kelpctl guid, and that docs/kelpctl.md shows what they print."""

import json
import os
import pathlib
import shlex
import unittest

from support.programs import Kelpctl, ProgramTest

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "kelpctl.md"


class NamesTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir)

    def printed(self, *arguments, **more):
        status, out, err = self.kelpctl.run(*arguments, **more)
        self.assertEqual((status, err), (0, b""))
        return out.decode()

    def refused(self, *arguments, **more):
        status, out, err = self.kelpctl.run(*arguments, **more)
        self.assertEqual((status, out), (2, b""))
        line = self.one_line(err)
        self.assertTrue(line.startswith("kelpctl: "), line)
        return line

    def test_the_manual_shows_what_is_printed(self):
        section = PAGE.read_text(encoding="utf-8").split("## Names in logs\n")[1]
        lines = [line[4:] for line in section.splitlines() if line.startswith("    ")]
        commands = [n for n, line in enumerate(lines) if line.startswith("$ kelpctl ")]
        self.assertEqual(len(commands), 6)
        for begin, end in zip(commands, commands[1:] + [len(lines)]):
            with self.subTest(command=lines[begin]):
                _, out, err = self.kelpctl.run(*shlex.split(lines[begin])[2:])
                self.assertEqual((out + err).decode().splitlines(), lines[begin + 1:end])

    def test_parse(self):
        cases = [
            ("", ""),
            ("a=1", "a  1\n"),
            ("a=p\\|q,bcd=\\\\", "a    p\\|q\nbcd  \\\n"),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                self.assertEqual(self.printed("uid", "parse", text), expected)
                self.assertEqual(
                    self.printed("uid", "parse", "-", stdin=text.encode() + b"\n"), expected)

    def test_parse_as_json(self):
        text = 'a="x",b=\\\\\\c'
        document = json.loads(self.printed("uid", "parse", "--json", text))
        self.assertEqual(document, {"class": "b", "parent": 'a="x"',
                                    "pairs": [["a", '"x"'], ["b", "\\,"]]})
        self.assertEqual(json.loads(self.printed("uid", "parse", "--json", "")),
                         {"class": "", "parent": "", "pairs": []})

    def test_what_is_no_identifier(self):
        cases = [
            ("a", "'a' is no identifier: at character 2: a key without a value"),
            ("a=\\x", "'a=\\\\x' is no identifier: at character 4: an unknown escape"),
            ("a=1\x1b", "'a=1\\x1b' is no identifier: at character 4: a byte outside"),
            ("a=" + "v" * 254, "at character 257: keys and values of more than 256 bytes"),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                self.assertIn(expected, self.refused("uid", "parse", text))
        self.assertIn("a zero octet", self.refused("uid", "parse", "-", stdin=b"a=1\0,"))
        self.assertIn("larger than", self.refused("uid", "parse", "-", stdin=b"a" * 2000000))

    def test_build(self):
        cases = [
            (("a=1",), "a=1\n"),
            (("a=x,y=z", "b=\\"), "a=x\\cy\\ez,b=\\\\\n"),
            (("--parent", "a=\\c", "b=1"), "a=\\c,b=1\n"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                self.assertEqual(self.printed("uid", "build", *arguments), expected)

    def test_what_builds_no_identifier(self):
        cases = [
            (("a",), "malformed pair 'a': expected key=value"),
            (("12=x",), "malformed pair '12=x': a key is no number and of printable ASCII"),
            (("\u00e9=x",), "a key is no number and of printable ASCII"),
            (("=x",), "malformed pair '=x': a key is missing"),
            (("a=1", "b="), "malformed pair 'b=': a value is missing"),
            (("a\\b=1",), "a backslash in a key"),
            (("a,b=1",), "a key without a value"),
            (("a=\u00e9",), "a byte outside of 0x20..0x7E"),
            (("a=" + "v" * 300,), "more than 256 bytes"),
            (("a=" + "v" * 200, "b=" + "v" * 100), "more than 256 bytes"),
            # Too long to be escaped: read back as half as many backslashes, or as many pairs.
            (("a=" + "\\" * 128,), "would not read back as these pairs"),
            (("a=v" + ",b=c" * 63,), "would not read back as these pairs"),
            (("--parent", "a=", "b=1"), "'a=' is no identifier"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                self.assertIn(expected, self.refused("uid", "build", *arguments))

    def test_guid(self):
        digits = "00112233445566778899aabbccddeeff"
        expected = self.printed("guid", digits)
        self.assertTrue(expected.startswith("digits   " + digits + "\n"))
        for text in (digits.upper(), "00112233-4455-6677-8899-aabbccddeeff",
                     "00:11:22:33:44:55:66:77:88:99:aa:bb:cc:dd:ee:ff",
                     "00 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff"):
            with self.subTest(text=text):
                self.assertEqual(self.printed("guid", text), expected)
        self.assertEqual(self.printed("guid", "-", stdin=digits.encode()), expected)

    def test_guid_that_lost_zeros(self):
        cases = [
            ("00", ["0" * 32]),
            ("12", ["0" * 15 + "1" + "0" * 15 + "2"]),
            # Not 1 and 020: the second half would have lost its zero.
            ("1020", ["10".rjust(16, "0") + "20".rjust(16, "0"),
                      "102".rjust(16, "0") + "0".rjust(16, "0")]),
            ("f" * 31, ["0" + "f" * 31, "f" * 16 + "0" + "f" * 15]),
        ]
        for text, expected in cases:
            with self.subTest(text=text):
                self.assertEqual(self.printed("guid", text).splitlines(), expected)

    def test_what_is_no_guid(self):
        for text in ("", "1", "x" * 32, "0" * 33, "0012", "1-2", "00112233\x1b"):
            with self.subTest(text=text):
                self.assertIn("is no identifier of 16 bytes", self.refused("guid", text))

    def test_mistakes_on_the_command_line(self):
        cases = [
            (("uid",), "subcommand"),
            (("uid", "parse"), "text is required"),
            (("uid", "build"), "pair is required"),
            (("guid",), "text is required"),
            (("uid", "parse", "a=1", "b=2"), "b=2"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                self.assertIn(expected, self.refused(*arguments))


if __name__ == "__main__":
    unittest.main()
