"""nemgr's inventory in a configured database, the same on SQLite and on PostgreSQL."""

import json
import os
import signal
import sqlite3
import unittest

from support.postgres import PASSWORD, USER, Postgres
from support.programs import Kelpctl, ProgramTest, Server
from support.snmpd import Snmpd


class InventoryCases:
    """What must hold on every database; a class for each says where it is."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.root = os.path.join(cls.folder, "oss")
        os.makedirs(os.path.join(cls.root, "etc"))
        cls.configure(cls.make_database())
        cls.snmpd = Snmpd(os.path.join(cls.folder, "snmpd"))
        cls.kelpctl = Kelpctl(os.environ["KELPCTL"], cls.run_dir, [os.environ["NEMGR_COMMANDS"]])

    @classmethod
    def tearDownClass(cls):
        cls.snmpd.kill()
        super().tearDownClass()

    @classmethod
    def configure(cls, database):
        path = os.path.join(cls.root, "etc", "kelp.json")
        with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w",
                  encoding="utf-8") as file:
            json.dump({"databases": {"inventory": database}}, file)

    def nemgr(self, name="inventory"):
        return Server(
            [os.environ["NEMGR"], "--run-dir", self.run_dir, "--element", self.snmpd.address,
             "--snmp-timeout-ms", "200", "--database", name], "nemgr: ready",
            env={**os.environ, "OSS_ROOT": self.root})

    def rows(self, *arguments):
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments, "--json")
        self.assertEqual((status, err), (0, b""))
        return json.loads(out)["tables"][0]["rows"]

    def failure(self, *arguments):
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments)
        self.assertEqual(out, b"")
        return status, self.one_line(err)

    # Elements and their interfaces are known once they were read, also by the next process.
    def test_what_was_read_outlives_the_process(self):
        with self.nemgr() as nemgr:
            self.rows("writeSystem", "location=東京 'A'; DROP TABLE element")
            self.rows("readSystem")
            interfaces = self.rows("readInterfaces")
            self.assertEqual(nemgr.kill(signal.SIGTERM), 0)
        with self.nemgr():
            element, = self.rows("listElements")
            self.assertEqual(element["element"], self.snmpd.address)
            self.assertEqual(element["sysName"], os.uname().nodename)
            self.assertEqual(element["sysLocation"], "東京 'A'; DROP TABLE element")
            self.assertEqual(element["interfaces"], len(interfaces))
            self.assertRegex(element["seen"], r"^20\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
            known = self.rows("listInterfaces")
            for row in interfaces:
                for counter in ("ifInOctets", "ifOutOctets", "ifInRate", "ifOutRate"):
                    del row[counter]
            self.assertEqual(known, interfaces)
            self.assertEqual(self.rows("forgetElement"), [{"element": self.snmpd.address}])
            self.assertEqual(self.rows("listElements"), [])
            self.assertEqual(
                self.failure("listInterfaces"),
                (18, "kelpctl: listInterfaces (30014): result 18: the inventory has no such "
                     f"element: {self.snmpd.address}"))

    # The registry is loaded once; the next process finds it there.
    def test_vendors_are_loaded_once(self):
        with self.nemgr():
            pass
        with self.nemgr() as nemgr:
            self.assertNotIn("vendors were loaded", nemgr.log())
            self.assertGreater(len(self.rows("findVendors", "name=cisco")), 100)

    def test_an_unknown_database_ends_the_start(self):
        with self.assertRaisesRegex(AssertionError, "the database fails: .*NOSUCH"):
            self.nemgr("NOSUCH")


class SqliteTest(InventoryCases, ProgramTest):
    @classmethod
    def make_database(cls):
        return {"url": "sqlite:inventory.db", "type": "sqlite"}

    # Somebody else's write lock: the command fails with the reason, and works afterwards.
    def test_a_locked_file(self):
        with self.nemgr():
            self.rows("readSystem")
            other = sqlite3.connect(os.path.join(self.root, "inventory.db"), isolation_level=None)
            other.execute("BEGIN EXCLUSIVE")
            status, line = self.failure("readSystem")
            self.assertEqual(status, 17)
            self.assertIn("the database fails: the inventory cannot be written", line)
            other.execute("ROLLBACK")
            other.close()
            self.rows("readSystem")


class PostgresTest(InventoryCases, ProgramTest):
    @classmethod
    def make_database(cls):
        os.chmod(cls.folder, 0o711)
        cls.postgres = Postgres(os.path.join(cls.folder, "postgres"))
        return cls.entry(PASSWORD)

    @classmethod
    def entry(cls, password):
        return {"url": f"postgresql://127.0.0.1:{cls.postgres.port}/postgres",
                "type": "postgresql", "user": USER, "password": password}

    @classmethod
    def tearDownClass(cls):
        cls.postgres.kill()
        super().tearDownClass()

    # A server that goes away is an error that names it, and no end: when it is back, so is
    # the inventory.
    def test_the_server_goes_and_comes_back(self):
        with self.nemgr():
            self.rows("readSystem")
            self.postgres.kill()
            status, line = self.failure("listElements")
            self.assertEqual(status, 17)
            self.assertIn("the database fails", line)
            self.assertEqual(self.failure("listElements")[0], 17)
            self.postgres.start()
            self.assertEqual(len(self.rows("listElements")), 1)

    def test_a_wrong_password_is_not_shown(self):
        self.configure(self.entry("wrong:horse"))
        try:
            with self.assertRaisesRegex(AssertionError, "the database fails") as failed:
                self.nemgr()
        finally:
            self.configure(self.entry(PASSWORD))
        self.assertNotIn("horse", str(failed.exception))


if __name__ == "__main__":
    unittest.main()
