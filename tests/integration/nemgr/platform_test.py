"""nemgr on an installation that kelpd made and serves: its start, its end, and what it says
when a part of the installation is not as it should be."""

import json
import os
import shutil
import unittest

from support.kelpd import KelpdTest, environment
from support.programs import Kelpctl, Server

THREADS = 10  # of a server for a small network


class PlatformTest(KelpdTest):
    def setUp(self):
        super().setUp()
        shutil.copytree(os.environ["NEMGR_ROOT"], self.root.oss, dirs_exist_ok=True)
        self.kelpctl = Kelpctl(os.environ["KELPCTL"], self.root.path("var", "run"),
                               [os.environ["NEMGR_COMMANDS"]])

    def nemgr(self, network_size=1500):
        server = Server(
            [os.environ["NEMGR"], "--registry", self.root.folder], "nemgr: ready",
            environment(OSS_ROOT=self.root.oss, MGMTSIZE=str(network_size),
                        KELP_LOG_LEVEL="info"))
        self.addCleanup(server.kill)
        return server

    def row(self, *arguments):
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments, "--json")
        self.assertEqual((status, err), (0, b""))
        return json.loads(out)["tables"][0]["rows"][0]

    def failure(self, *arguments):
        status, out, err = self.kelpctl.run("call", "nemgr", *arguments)
        self.assertEqual(out, b"")
        return status, err.decode()

    def assert_in_order(self, lines, log):
        position = 0
        for line in lines:
            self.assertIn(line, log[position:])
            position = log.index(line, position)

    def test_start_work_and_end(self):
        kelpd = self.serve()
        nemgr = self.nemgr()
        self.assertEqual(self.row("readServer"),
                         {"procHandle": 1, "networkSize": 2000, "workers": THREADS,
                          "restGroups": "nemgr", "withoutToken": "30016"})
        self.assert_in_order(
            ("[Frame]MGMTSIZE is too small, return min value", "[Frame]get MGMTSIZE: 2000",
             f"[Frame]get max thread num: {THREADS}", "LoadKelpMRBRestGroup OK: proc size = 1",
             "LoadMRBRestGroup OK: old proc size = 0", "LoadMRBRestGroup OK: new proc size = 1"),
            nemgr.log())
        self.stop(nemgr)
        self.assertFalse(os.path.exists(self.root.path("var", "run", "3001.1.sock")))
        self.stop(kelpd)
        self.assertIn('client="kelp client" method=GET path=/rest/mrb/v1/getrestgroupinfo status=200',
                      self.root.log())

    def test_workers_grow_with_the_network(self):
        for size, workers in ((79999, 10), (80000, 60), (300000, 100)):
            nemgr = self.nemgr(size)
            threads = len(os.listdir(f"/proc/{nemgr.process.pid}/task"))
            self.assertGreater(threads, workers, size)
            self.assertLess(threads, workers + 10, size)
            self.stop(nemgr)

    def test_a_failed_command_says_what_to_do(self):
        nemgr = self.nemgr()
        self.assertEqual(
            self.failure("readSystem", "version=3"),
            (10, "kelpctl: readSystem (30010): result 10: bad argument: version: out of range "
                 "(Correct the argument and repeat the command.)\n"))
        self.stop(nemgr)

    # The start does not depend on the gateway; what it would have said is asked for later.
    def test_without_gateway(self):
        nemgr = self.nemgr()
        self.assertIn("LoadKelpMRBRestGroup: strURL: https://127.0.0.1:", nemgr.log())
        status, line = self.failure("readServer")
        self.assertEqual(status, 19)
        self.assertIn("the platform's gateway cannot be asked: the REST groups are not known",
                      line)
        kelpd = self.serve()
        self.assertEqual(self.row("readServer")["restGroups"], "nemgr")
        self.stop(nemgr)
        self.stop(kelpd)

    def test_malformed_files_are_named(self):
        for path, text, complaint in (
                ("etc/3001_QWhiteList.properties", "30016\nall\n",
                 ':2: "all" is no command code'),
                ("res/nemgr.res", "a.desc = A\na.reason\n", ":2: there is no '=' in the line"),
                ("etc/kelp.json", '{"gateway": {\n"baseUrl": 7}}', ":2: ")):
            with open(self.root.path(path), encoding="utf-8") as file:
                before = file.read()
            with open(self.root.path(path), "w", encoding="utf-8") as file:
                file.write(text)
            nemgr = self.nemgr()
            self.assertIn(path + complaint, nemgr.log())
            self.assertEqual(self.failure("readSystem", "version=3")[0], 10)
            self.stop(nemgr)
            with open(self.root.path(path), "w", encoding="utf-8") as file:
                file.write(before)


if __name__ == "__main__":
    unittest.main()
