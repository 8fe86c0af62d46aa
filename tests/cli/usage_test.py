"""kelpctl's command line and files: every mistake is one line and exit status 2."""

import json
import os
import unittest

from support.programs import Kelpctl, ProgramTest

GOOD = {"name": "p", "procType": 7, "commands": [{"name": "c", "code": 1, "help": "does it",
                                                  "arguments": {"a": "an argument"}}]}


class UsageTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.good = cls.write("good.json", json.dumps(GOOD))
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir, [cls.good])

    @classmethod
    def write(cls, name, text):
        path = os.path.join(cls.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        return path

    def refused(self, *arguments, **more):
        status, out, err = self.kelpctl.run(*arguments, **more)
        self.assertEqual((status, out), (2, b""), err)
        line = self.one_line(err)
        self.assertTrue(line.startswith("kelpctl: "), line)
        return line

    def test_mistakes_on_the_command_line(self):
        cases = [
            ((), "subcommand"),
            (("nosuch",), "subcommand"),
            (("call",), "target is required"),
            (("call", "p"), "command is required"),
            (("call", "p", "c", "--nosuch"), "--nosuch"),
            (("call", "p", "c", "--timeout", "0"), "--timeout"),
            (("call", "p", "c", "--timeout", "soon"), "--timeout"),
            (("call", "p", "c", "--rows", "0"), "--rows"),
            (("call", "p", "c", "--user", "x"), "--user"),
            (("call", "nosuch", "c"), "unknown process 'nosuch'"),
            (("call", "65536", "1"), "unknown process '65536'"),
            (("call", "p.x", "c"), "bad handle in 'p.x'"),
            (("call", "p", "nosuch"), "unknown command 'nosuch'"),
            (("call", "8", "c"), "unknown command 'c'"),
            (("call", "p", "4294967296"), "unknown command '4294967296'"),
            (("call", "p", "c", "x"), "malformed argument 'x': expected key=value or key:=json"),
            (("call", "p", "c", "=1"), "malformed argument '=1'"),
            (("call", "p", "c", "a:={"), "argument 'a': malformed JSON"),
            (("call", "p", "c", "a=5000000000"), "argument 'a': 5000000000 does not fit"),
            (("call", "p", "c", "a=1", "a=2"), "argument 'a': given twice"),
            (("call", "p", "c", "a\x1b=1"), "argument 'a\\x1b'"),
            (("call", "p", "c", "--args", "/nonexistent"), "/nonexistent: No such file"),
            (("call", "p", "c", "--args", "/"), "/: Is a directory"),
            (("list", "--commands", "/nonexistent"), "/nonexistent: No such file"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                self.assertIn(expected, self.refused(*arguments))

    def test_malformed_argument_files(self):
        cases = [
            ("", "malformed JSON"),
            ("{", "malformed JSON"),
            ("{} {}", "malformed JSON"),
            ('{"a":1,"a":2}', "malformed JSON"),
            ("[" * 100000, "malformed JSON"),
            ('{"a":1 /* one */}', "a comment"),
            ("[1]", "not a JSON object"),
            ('{"a":null}', "argument 'a': neither"),
            ('{"a":{"b":1}}', "argument 'a': neither"),
            ('{"a.b":1}', "argument 'a.b': a name is"),
            ('{"a":"\\u0000"}', "argument 'a': a text with a zero octet"),
            (" " * 2000000, "larger than"),
        ]
        for text, expected in cases:
            with self.subTest(text=text[:40]):
                path = self.write("arguments.json", text)
                line = self.refused("call", "p", "c", "--args", path)
                self.assertIn(expected, line)
                self.assertIn(path, line)

    def test_argument_file_that_is_not_utf8(self):
        line = self.refused("call", "p", "c", "--args", "-", stdin=b'{"a":"\xff"}')
        self.assertIn("not UTF-8 at byte 6", line)

    def test_malformed_commands_files(self):
        for text, expected in (("{", "malformed JSON"), ("{}", "no object with"),
                               ('{"name":"p","procType":7,"commands":[{}]}', "a command without")):
            with self.subTest(text=text):
                path = self.write("bad.json", text)
                line = self.refused("list", env={"KELPCTL_COMMANDS": path})
                self.assertIn(path + ": " + expected, line)

    def test_list_names_commands_and_arguments(self):
        status, out, err = self.kelpctl.run("list")
        self.assertEqual((status, err), (0, b""))
        self.assertEqual(
            out.decode(), "p (process type 7)\n  c (1)  does it\n      a=  an argument\n")

    def test_commands_option_adds_to_the_environment(self):
        other = self.write("other.json", json.dumps({**GOOD, "name": "q", "procType": 8}))
        _, out, _ = self.kelpctl.run("list", "--commands", other)
        self.assertIn(b"p (process type 7)\n", out)
        self.assertIn(b"q (process type 8)\n", out)

    def test_help_documents_the_exit_statuses(self):
        for arguments in (("--help",), ("call", "--help")):
            status, out, err = self.kelpctl.run(*arguments)
            self.assertEqual((status, err), (0, b""))
            self.assertIn("Exit status:", out.decode())

    def test_version(self):
        status, out, _ = self.kelpctl.run("--version")
        self.assertEqual(status, 0)
        self.assertRegex(out.decode(), r"^kelpctl \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
