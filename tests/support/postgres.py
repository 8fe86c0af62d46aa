"""A PostgreSQL server of a test's own, on a free port of the loopback. Root may not run one,
so it then runs as the user that Debian's package makes."""

import glob
import os
import pwd
import signal
import socket
import subprocess
import time

from support.programs import DEADLINE_S

USER = "admin"
PASSWORD = "s3cr%t:w@rd"


def free_tcp_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Postgres:
    """Runs until kill(); start() again brings its data back. `folder` must be reachable by
    the user postgres."""

    def __init__(self, folder):
        self.bin = sorted(glob.glob("/usr/lib/postgresql/*/bin"))[-1]
        self.user = pwd.getpwnam("postgres") if os.getuid() == 0 else None
        os.mkdir(folder)
        self.data = os.path.join(folder, "data")
        self.log_path = os.path.join(folder, "log")
        password = os.path.join(folder, "password")
        with open(password, "w", encoding="ascii") as file:
            file.write(PASSWORD)
        if self.user is not None:
            for path in (folder, password):
                os.chown(path, self.user.pw_uid, self.user.pw_gid)
        subprocess.run(
            [self.bin + "/initdb", "-D", self.data, "-U", USER, "--pwfile", password, "-A",
             "scram-sha-256", "-E", "UTF8", "--locale=C.UTF-8", "-N"],
            check=True, stdout=subprocess.DEVNULL, preexec_fn=self._become)
        self.port = free_tcp_port()
        self.start()

    def _become(self):
        if self.user is not None:
            os.setgroups([])
            os.setgid(self.user.pw_gid)
            os.setuid(self.user.pw_uid)

    def start(self):
        with open(self.log_path, "ab") as log:
            self.process = subprocess.Popen(
                [self.bin + "/postgres", "-D", self.data, "-p", str(self.port), "-h",
                 "127.0.0.1", "-k", self.data, "-c", "fsync=off"],
                stdout=log, stderr=log, preexec_fn=self._become)
        deadline = time.monotonic() + DEADLINE_S
        ready = [self.bin + "/pg_isready", "-q", "-h", "127.0.0.1", "-p", str(self.port)]
        while subprocess.run(ready, check=False).returncode != 0:
            if self.process.poll() is not None or time.monotonic() > deadline:
                with open(self.log_path, encoding="utf-8", errors="replace") as log:
                    raise AssertionError("PostgreSQL does not start: " + log.read())

    def kill(self):
        """The orderly end that does not wait for clients."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGINT)
        self.process.wait(DEADLINE_S)
