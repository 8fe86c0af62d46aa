"""Debian's snmpd as a network element of a test's own, on a free port of the loopback."""

import os
import socket
import subprocess
import time

from support.programs import DEADLINE_S, free_udp_port

CONFIGURATION = """\
agentaddress udp:127.0.0.1:{port}
rwcommunity private 127.0.0.1
rocommunity public 127.0.0.1
"""

# GET of sysUpTime.0 by version 2c, community "public".
ARE_YOU_THERE = bytes.fromhex(
    "302602010104067075626c6963a01902010102010002010030"
    "0e300c06082b060102010103000500")


class Snmpd:
    """Runs until kill(); `folder` takes its configuration, its state and its log."""

    def __init__(self, folder):
        self.folder = folder
        os.makedirs(os.path.join(folder, "state"), exist_ok=True)
        for _ in range(10):  # somebody else may take the port between looking and binding
            self.port = free_udp_port()
            if self._start():
                return
        raise AssertionError("snmpd does not start: " + self.log())

    @property
    def address(self):
        return f"127.0.0.1:{self.port}"

    def log(self):
        with open(os.path.join(self.folder, "log"), encoding="utf-8", errors="replace") as file:
            return file.read()

    def _start(self):
        configuration = os.path.join(self.folder, "snmpd.conf")
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(CONFIGURATION.format(port=self.port))
        self.process = subprocess.Popen(
            ["/usr/sbin/snmpd", "-f", "-C", "-c", configuration,
             "-Lf", os.path.join(self.folder, "log")],
            env={"PATH": os.environ["PATH"], "MIBS": "",
                 "SNMP_PERSISTENT_DIR": os.path.join(self.folder, "state")})
        return self._answers()

    def _answers(self):
        deadline = time.monotonic() + DEADLINE_S
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as asker:
            asker.settimeout(0.2)
            asker.connect(("127.0.0.1", self.port))
            while time.monotonic() < deadline and self.process.poll() is None:
                try:
                    asker.send(ARE_YOU_THERE)
                    if asker.recv(4096):
                        return True
                except (ConnectionRefusedError, TimeoutError):
                    os.sched_yield()  # not bound yet
        return False

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait(DEADLINE_S)
