"""nemgr's commands on a real network element, and what they say when it does not play."""

import json
import os
import signal
import unittest

from support.programs import Kelpctl, ProgramTest, Server, free_udp_port
from support.snmpd import Snmpd


class ElementTest(ProgramTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.snmpd = Snmpd(os.path.join(cls.folder, "snmpd"))
        cls.nemgr = Server(
            [os.environ["NEMGR"], "--run-dir", cls.run_dir, "--element", cls.snmpd.address,
             "--snmp-timeout-ms", "200"], "nemgr: ready")
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir, [os.environ["NEMGR_COMMANDS"]])

    @classmethod
    def tearDownClass(cls):
        status = cls.nemgr.kill(signal.SIGTERM)
        cls.snmpd.kill()
        super().tearDownClass()
        assert status == 0, f"nemgr ended with {status}"

    def rows(self, *arguments):
        """The rows of the one table of a successful answer."""
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments, "--json")
        self.assertEqual((status, err), (0, b""))
        answer = json.loads(out)
        self.assertEqual(len(answer["tables"]), 1)
        return answer["tables"][0]["rows"]

    def failure(self, *arguments):
        """Exit status and line of a failing command."""
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments)
        self.assertEqual(out, b"")
        return status, self.one_line(err)

    def test_system_group(self):
        row, = self.rows("readSystem")
        self.assertEqual(row["sysName"], os.uname().nodename)
        self.assertIn(os.uname().release, row["sysDescr"])
        self.assertRegex(row["sysObjectID"], r"^1\.3\.6\.1\.4\.1\.8072\.")
        self.assertIsInstance(row["sysUpTime"], (int, float))
        self.assertLess(row["sysUpTime"], 3600)

    def test_system_group_by_version_1(self):
        row, = self.rows("readSystem", "version=1")
        self.assertEqual(row["sysName"], os.uname().nodename)

    def check_interfaces(self, rows):
        by_name = {row["ifDescr"]: row for row in rows}
        for name in os.listdir("/sys/class/net"):
            if name not in by_name:
                continue  # came or went meanwhile; "lo" is there in any case
            with open(f"/sys/class/net/{name}/mtu", encoding="ascii") as file:
                self.assertEqual(by_name[name]["ifMtu"], int(file.read()))
            with open(f"/sys/class/net/{name}/ifindex", encoding="ascii") as file:
                self.assertEqual(by_name[name]["ifIndex"], int(file.read()))
        loopback = by_name["lo"]
        self.assertEqual(loopback["ifType"], 24)
        self.assertEqual(loopback["ifPhysAddress"], "")
        self.assertGreaterEqual(loopback["ifInOctets"], 0)

    def test_interfaces(self):
        self.check_interfaces(self.rows("readInterfaces"))

    def test_interfaces_by_version_1(self):
        self.check_interfaces(self.rows("readInterfaces", "version=1"))

    def test_hardware_addresses_keep_their_zero_octets(self):
        for row in self.rows("readInterfaces"):
            path = f"/sys/class/net/{row['ifDescr']}/address"
            if row["ifType"] == 6 and os.path.exists(path):
                with open(path, encoding="ascii") as file:
                    self.assertEqual(row["ifPhysAddress"], file.read().strip())

    def test_rates_are_numbers_from_the_second_reading_on(self):
        # The element's own clock decides: read until it is a second later.
        self.rows("readInterfaces")
        begin = self.rows("readSystem")[0]["sysUpTime"]
        while self.rows("readSystem")[0]["sysUpTime"] < begin + 1:
            pass
        for row in self.rows("readInterfaces"):
            self.assertGreaterEqual(row["ifInRate"], 0)
            self.assertGreaterEqual(row["ifOutRate"], 0)

    def test_contact_and_location_are_written(self):
        row, = self.rows("writeSystem", "contact=Zoë Ångström", "location=東京")
        self.assertEqual(row, {"sysContact": "Zoë Ångström", "sysLocation": "東京"})
        row, = self.rows("writeSystem", "location=42")
        self.assertEqual(row, {"sysContact": "Zoë Ångström", "sysLocation": "42"})
        read, = self.rows("readSystem")
        self.assertEqual((read["sysContact"], read["sysLocation"]), ("Zoë Ångström", "42"))

    def test_element_refuses_what_its_community_may_not(self):
        where = self.snmpd.address
        self.assertEqual(
            self.failure("writeSystem", "contact=x", "community=public"),
            (12, "kelpctl: writeSystem (30011): result 12: the element refuses: "
             f"{where}: 1.3.6.1.2.1.1.4.0: noAccess"))
        self.assertEqual(
            self.failure("writeSystem", "location=x", "community=public", "version=1")[0], 12)

    def test_element_refuses_a_text_that_is_too_long(self):
        status, line = self.failure("writeSystem", "contact=" + "x" * 1000)
        self.assertEqual(status, 12)
        self.assertIn("1.3.6.1.2.1.1.4.0: wrongLength", line)

    def test_element_that_does_not_exist(self):
        where = f"127.0.0.1:{free_udp_port()}"
        for command in (("readSystem",), ("readInterfaces",), ("writeSystem", "contact=x")):
            with self.subTest(command=command):
                status, line = self.failure(*command, f"element={where}")
                self.assertEqual(status, 11)
                self.assertIn(
                    f"result 11: the element does not answer: {where}: asked 2 times", line)

    def test_community_that_the_element_ignores(self):
        status, line = self.failure("readSystem", "community=wrong")
        self.assertEqual(status, 11)
        self.assertIn(f"the element does not answer: {self.snmpd.address}", line)

    def test_bad_arguments(self):
        cases = [
            (("readSystem", "elment=x"), "elment: no such argument"),
            (("readSystem", "element=:1"), "element: ':1' is no host:port"),
            (("readSystem", "element=127.0.0.1:99999"), "is no host:port"),
            (("readSystem", "element=1.5"), "element: not a text"),
            (("readSystem", "version=3"), "version: out of range"),
            (("readSystem", "version=two"), "version: not an integer"),
            (("writeSystem",), "neither contact nor location is given"),
            (("writeSystem", "element=127.0.0.1"), "neither contact nor location"),
            (("readInterfaces", "contact=x"), "contact: no such argument"),
        ]
        for arguments, expected in cases:
            with self.subTest(arguments=arguments):
                status, line = self.failure(*arguments)
                self.assertEqual(status, 10)
                self.assertIn("result 10: bad argument: ", line)
                self.assertIn(expected, line)

    def test_every_listed_command_is_served(self):
        with open(os.environ["NEMGR_COMMANDS"], encoding="utf-8") as file:
            for command in json.load(file)["commands"]:
                status, _, _ = self.kelpctl.run("call", "nemgr", command["name"], "no_such_arg=1")
                self.assertEqual(status, 10, command["name"])

    def test_eight_callers_at_once(self):
        calls = []
        for number in range(8):
            name = ("readSystem", "readInterfaces")[number % 2]
            calls.append((name, self.kelpctl.start("call", "nemgr", name, "--json")))
        for name, call in calls:
            out, err = call.communicate(timeout=60)
            self.assertEqual((call.returncode, err), (0, b""))
            row = json.loads(out)["tables"][0]["rows"][0]
            self.assertIn("sysName" if name == "readSystem" else "ifDescr", row)


if __name__ == "__main__":
    unittest.main()
