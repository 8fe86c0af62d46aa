"""kelpd run when the system has no more of what it needs."""

import contextlib
import os
import resource
import socket
import time
import unittest

from support.kelpd import KelpdTest, run_kelpd
from support.programs import DEADLINE_S


class ExhaustionTest(KelpdTest):
    def serves(self):
        try:
            self.assert_serves()
            return True
        except (AssertionError, OSError, EOFError):
            return False

    # Accepting fails: it is tried again ten times a second, and nothing is lost.
    def test_no_descriptor_left(self):
        server = self.serve(limit=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (48, 48)))

        def busy_s():
            with open(f"/proc/{server.process.pid}/stat", encoding="ascii") as file:
                user, system = file.read().rpartition(")")[2].split()[11:13]
            return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")
        with contextlib.ExitStack() as stack:
            for _ in range(200):
                raw = stack.enter_context(socket.create_connection(
                    ("127.0.0.1", self.root.port), DEADLINE_S))
                raw.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
            self.until("no descriptor", lambda: "cannot accept a connection: Too many open files"
                       in self.root.log())
            before = busy_s()
            time.sleep(1)  # what is measured is how much it does meanwhile
            self.assertLess(busy_s() - before, 0.5)
        self.until("an honest client", self.serves)

    # Root may start as many threads as it likes: another user is asked for.
    @unittest.skipIf(os.geteuid() != 0, "only root can become another user")
    def test_no_more_threads(self):
        nobody = 65534
        for folder, _, names in os.walk(self.root.folder):
            for path in (folder, *(os.path.join(folder, name) for name in names)):
                os.chown(path, nobody, nobody)

        def become_nobody():
            resource.setrlimit(resource.RLIMIT_NPROC, (1, 1))
            os.setgid(nobody)
            os.setuid(nobody)
        try:
            found = run_kelpd("run", env={"OSS_ROOT": self.root.oss}, limit=become_nobody)
        except PermissionError:
            self.skipTest("the program's folder is closed to others")
        self.assertEqual(found, (1, "", "kelpd: cannot start a thread: "
                                 "Resource temporarily unavailable\n"))


if __name__ == "__main__":
    unittest.main()
