#!/usr/bin/python3
"""The program of docs/startup.md: it starts in an installation of its own, serves, and ends
with status 0 when it is told to; without a place for its socket it ends with status 1."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = sys.argv.pop(1)


class StartupTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name, "oss")
        for part in ("etc", "res"):
            (self.root / part).mkdir(parents=True)
        (self.root / "etc/3001_QWhiteList.properties").write_text("2167\nabc\n")
        (self.root / "res/errors.res").write_text("a.desc=A\n")

    def start(self, **environment):
        return subprocess.Popen(
            [PROGRAM], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env={**os.environ, "OSS_ROOT": str(self.root), "MGMTSIZE": "1500",
                 "KELP_LOG_LEVEL": "info", **environment})

    def stop(self, program):
        program.send_signal(signal.SIGTERM)
        return program.communicate(timeout=30)

    def test_starts_serves_and_ends(self):
        with self.start() as program:
            self.assertEqual(program.stdout.readline(), "ready\n")
            self.assertTrue((self.root / "var/run/3001.1.sock").exists())
            output, log = self.stop(program)
        self.assertEqual((program.returncode, output), (0, ""))
        for line in ("[Frame]MGMTSIZE is too small, return min value",
                     "[Frame]get MGMTSIZE: 2000", "[Frame]get max thread num: 10",
                     '3001_QWhiteList.properties:2: "abc" is no command code'):
            self.assertIn(line, log)
        self.assertFalse((self.root / "var/run/3001.1.sock").exists())

    def test_errors_without_texts(self):
        (self.root / "res/errors.res").write_text("a.desc=A\nb\n")
        with self.start() as program:
            self.assertEqual(program.stdout.readline(), "errors have no texts\n")
            self.assertEqual(program.stdout.readline(), "ready\n")
            _, log = self.stop(program)
        self.assertEqual(program.returncode, 0)
        self.assertIn("res/errors.res:2: there is no '=' in the line", log)
        self.assertIn("[Frame]failed to init res file=", log)

    def test_a_place_that_is_not_there(self):
        (self.root / "var").write_text("not a folder")
        with self.start() as program:
            output, log = program.communicate(timeout=30)
        self.assertEqual((program.returncode, output), (1, ""))
        self.assertIn("[KelpAppMgr] not initialised", log)


if __name__ == "__main__":
    unittest.main()
