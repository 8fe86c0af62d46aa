"""The large answer: nemgr's vendor registry against an independent reading of its files."""

import csv
import json
import os
import re
import signal
import time
import unittest

from support.programs import Kelpctl, ProgramTest, Server

REGISTRY = "/usr/share/ieee-data"
FILES = ("oui.csv", "mam.csv", "oui36.csv", "iab.csv")
# The whole registry takes its time where the machine is busy and the build is a slow one.
FIND = ("call", "nemgr", "findVendors", "--timeout", "150")
COLUMNS = ("assignment", "block", "organization", "postalAddress")


def read_registry():
    rows = []
    for name in FILES:
        with open(os.path.join(REGISTRY, name), encoding="utf-8", newline="") as file:
            for block, assignment, organization, address in list(csv.reader(file))[1:]:
                rows.append((assignment, block, organization, address))
    rows.sort(key=lambda row: row[0])
    return rows


class VendorsTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.expected = read_registry()
        cls.nemgr = Server([os.environ["NEMGR"], "--run-dir", cls.run_dir], "nemgr: ready")
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir, [os.environ["NEMGR_COMMANDS"]])

    @classmethod
    def tearDownClass(cls):
        status = cls.nemgr.kill(signal.SIGTERM)
        super().tearDownClass()
        assert status == 0, f"nemgr ended with {status}"

    def find(self, *arguments):
        status, out, err = self.kelpctl.run(*FIND, *arguments, "--json")
        self.assertEqual((status, err), (0, b""))
        table, = json.loads(out)["tables"]
        self.assertEqual(tuple(table["columns"]), COLUMNS)
        return [tuple(row[column] for column in COLUMNS) for row in table["rows"]]

    def test_the_whole_registry(self):
        self.assertGreater(len(self.expected), 40000)
        self.assertTrue(any(not row[2].isascii() for row in self.expected))
        for arguments in ((), ("prefix=",), ("name=",)):
            self.assertEqual(self.find(*arguments), self.expected)

    def test_by_prefix(self):
        for prefix, digits in (("00", "00"), ("00:00:0c", "00000C"), ("70b3d5", "70B3D5"),
                               ("112233", "112233")):
            wanted = [row for row in self.expected
                      if row[0].startswith(digits) or digits.startswith(row[0])]
            if wanted:
                self.assertEqual(self.find(f"prefix={prefix}"), wanted)

    def test_by_whole_address(self):
        digits = "70B3D5BEC123"
        wanted = [row for row in self.expected if digits.startswith(row[0])]
        self.assertEqual(len(wanted), 2)
        self.assertEqual(self.find("prefix=70-b3-d5-be-c1-23"), wanted)

    def test_by_name(self):
        for name in ("Cisco", "xerox", "TOKYO ", "Zhejiang"):
            wanted = [row for row in self.expected if row[2].lower().startswith(name.lower())]
            self.assertGreater(len(wanted), 0, name)
            self.assertEqual(self.find(f"name={name}"), wanted)

    def test_one_vendor_is_a_list_of_values(self):
        assignment, block, organization, address = next(
            row for row in self.expected if not row[2].isascii() and "\n" not in row[3])
        status, out, _ = self.kelpctl.run(
            "call", "nemgr", "findVendors", f"prefix:=\"{assignment}\"")
        self.assertEqual(status, 0)
        self.assertEqual(
            out.decode(), f"assignment     {assignment}\nblock          {block}\n"
            f"organization   {organization}\npostalAddress  {address}\n")

    def test_table_is_one_line_a_row(self):
        status, out, _ = self.kelpctl.run(*FIND)
        self.assertEqual(status, 0)
        lines = out.decode().split("\n")
        self.assertEqual(len(lines), len(self.expected) + 4)
        self.assertEqual(lines[-2], f"{len(self.expected)} rows")
        self.assertFalse(re.search(r"[\x00-\x09\x0b-\x1f\x7f]", out.decode()))

    def test_unknown_vendors(self):
        for argument, shown in (("prefix=fffff", "fffff"), ("name=No Such Vendor", "No Such Vendor")):
            status, out, err = self.kelpctl.run("call", "nemgr", "findVendors", argument)
            self.assertEqual((status, out), (14, b""))
            self.assertEqual(
                self.one_line(err),
                f"kelpctl: findVendors (30020): result 14: no such vendor: '{shown}'")

    def test_bad_arguments(self):
        for arguments, expected in ((("prefix=xyz",), "prefix: 'xyz' is not hexadecimal"),
                                    (("prefix=00", "name=x"), "both prefix and name are given"),
                                    (("vendor=x",), "vendor: no such argument")):
            status, _, err = self.kelpctl.run("call", "nemgr", "findVendors", *arguments)
            self.assertEqual(status, 10)
            self.assertIn(expected, self.one_line(err))

    def test_eight_large_answers_at_once(self):
        start = time.monotonic()
        calls = [self.kelpctl.start(*FIND, "--json") for _ in range(8)]
        outputs = [call.communicate(timeout=200) for call in calls]
        print(f"8 x {len(self.expected)} rows in {time.monotonic() - start:.1f} s")
        for call, (out, err) in zip(calls, outputs):
            self.assertEqual((call.returncode, err), (0, b""))
            self.assertEqual(out, outputs[0][0])
        self.assertEqual(len(json.loads(outputs[0][0])["tables"][0]["rows"]), len(self.expected))


class NoRegistryTest(ProgramTest):
    def test_missing_registry_is_named(self):
        with Server([os.environ["NEMGR"], "--run-dir", self.run_dir, "--registry",
                     self.folder], "nemgr: ready"):
            kelpctl = Kelpctl(os.environ["KELPCTL"], self.run_dir, [os.environ["NEMGR_COMMANDS"]])
            status, _, err = kelpctl.run("call", "nemgr", "findVendors")
        self.assertEqual(status, 15)
        self.assertIn(
            "result 15: the vendor registry is not available: no registry file in " + self.folder,
            self.one_line(err))


class StartTest(ProgramTest):
    def test_wrong_option_is_refused(self):
        with self.assertRaisesRegex(AssertionError, "--snmp-retries"):
            Server([os.environ["NEMGR"], "--snmp-retries", "11"], "nemgr: ready")

    def test_second_instance_of_one_identity_is_refused(self):
        command = [os.environ["NEMGR"], "--run-dir", self.run_dir]
        with Server(command, "nemgr: ready"):
            with self.assertRaisesRegex(AssertionError, "ended instead of serving"):
                Server(command, "nemgr: ready")
            with Server([*command, "--handle", "2"], "nemgr: ready"):
                pass


if __name__ == "__main__":
    unittest.main()
