"""A real kelpd on a root and a port of its own, and clients that speak to it octet by octet."""

import json
import os
import re
import shutil
import signal
import socket
import ssl
import subprocess
import tempfile
import time
import unittest

from support.programs import DEADLINE_S, Server

GROUPS = "/rest/mrb/v1/getrestgroupinfo"


def environment(**more):
    """What the daemon is started with: nothing of this machine's own settings."""
    kept = ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS")
    return {**{name: os.environ[name] for name in kept if name in os.environ}, **more}


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def run_kelpd(*arguments, env=None, limit=None):
    """Returns (exit status, standard output, standard error)."""
    done = subprocess.run([os.environ["KELPD"], *arguments], env=environment(**(env or {})),
                          capture_output=True, timeout=DEADLINE_S, check=False,
                          preexec_fn=limit)
    return done.returncode, done.stdout.decode(), done.stderr.decode()


class Installation:
    """What `kelpd init` makes, in a folder that goes with the object."""

    def __init__(self, *hosts):
        self.folder = tempfile.mkdtemp()
        self.port = free_port()
        options = [word for host in hosts for word in ("--host", host)]
        self.base = os.path.join(self.folder, "nms")
        status, self.exports, errors = run_kelpd(
            "init", self.base, "--port", str(self.port), *options)
        if status != 0:
            raise AssertionError(errors)
        self.oss = os.path.join(self.base, "oss")

    def remove(self):
        shutil.rmtree(self.folder)

    def path(self, *parts):
        return os.path.join(self.oss, *parts)

    def ssl(self, name):
        return self.path("etc", "ssl", name)

    def change(self, section, **members):
        """Changes members of one section of kelp.json."""
        with open(self.path("etc", "kelp.json"), "r+", encoding="utf-8") as file:
            settings = json.load(file)
            settings.setdefault(section, {}).update(members)
            file.seek(0)
            file.truncate()
            json.dump(settings, file)

    def write_groups(self, text):
        """Replaces the REST groups as an editor does: at once."""
        path = self.path("etc", "rest_groups.json")
        with open(path + ".new", "w", encoding="utf-8") as file:
            file.write(text)
        os.replace(path + ".new", path)

    def start(self, limit=None, env=None):
        """The running daemon. Somebody may have taken the port since it was found free."""
        for _ in range(5):
            line = f"kelpd: ready: serves {self.oss} on https://127.0.0.1:{self.port}"
            try:
                return Server([os.environ["KELPD"], "run"], line,
                              environment(OSS_ROOT=self.oss, **(env or {})), limit)
            except AssertionError as error:
                if "is in use" not in str(error):
                    raise
                self.port = free_port()
                self.change("gateway", port=self.port, baseUrl=f"https://127.0.0.1:{self.port}")
        raise AssertionError("no free port")

    def context(self, client=True, authority=None):
        context = ssl.create_default_context(cafile=self.ssl("ca.crt"))
        if client:
            whose = authority or self
            context.load_cert_chain(whose.ssl("client.crt"), whose.ssl("client.key"))
        return context

    def connect(self, context=None, receive_octets=None):
        """A connection with its handshake done."""
        raw = socket.socket()
        if receive_octets:
            raw.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_octets)
        raw.settimeout(DEADLINE_S)
        raw.connect(("127.0.0.1", self.port))
        try:
            return (context or self.context()).wrap_socket(raw, server_hostname="127.0.0.1")
        except BaseException:
            raw.close()
            raise

    def log(self):
        with open(self.path("var", "log", "kelpd.log"), encoding="utf-8") as file:
            return file.read()

    def health(self, path):
        """(status, body) of the local socket."""
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(DEADLINE_S)
            connection.connect(self.path("var", "run", "kelpd.health.sock"))
            connection.sendall(f"GET {path} HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n"
                               .encode())
            return read_answer(connection)

    def metric(self, sample):
        """The value of one line of /metrics."""
        for line in self.health("/metrics")[1].decode().splitlines():
            if line.startswith(sample + " "):
                return int(line.rsplit(" ", 1)[1])
        raise AssertionError("no sample " + sample)


def get(target=GROUPS, more=""):
    return f"GET {target} HTTP/1.1\r\nHost: 127.0.0.1\r\n{more}\r\n".encode()


def read_answer(connection, buffer=None):
    """One answer: (status, body). `buffer` keeps what came behind it."""
    held = buffer if buffer is not None else bytearray()
    while b"\r\n\r\n" not in held:
        block = connection.recv(65536)
        if not block:
            raise EOFError(bytes(held))
        held += block
    head, _, rest = bytes(held).partition(b"\r\n\r\n")
    length = 0
    for line in head.split(b"\r\n")[1:]:
        name, _, value = line.partition(b":")
        if name.lower() == b"content-length":
            length = int(value)
    body = bytearray(rest)
    while len(body) < length:
        block = connection.recv(65536)
        if not block:
            raise EOFError(bytes(body))
        body += block
    held[:] = body[length:]
    return int(head.split(b" ")[1]), bytes(body[:length])


def read_to_end(connection):
    """What comes until the daemon ends the connection; b"" also when it resets it."""
    got = bytearray()
    try:
        while block := connection.recv(65536):
            got += block
    except (ConnectionResetError, BrokenPipeError, ssl.SSLError):
        pass
    return bytes(got)


def statuses(octets):
    """The statuses of the answers in `octets`."""
    return [int(status) for status in re.findall(rb"HTTP/1\.1 (\d{3}) ", octets)]


class KelpdTest(unittest.TestCase):
    """An installation for each test; `serve` starts its daemon."""

    hosts = ()

    def setUp(self):
        self.root = Installation(*self.hosts)
        self.addCleanup(self.root.remove)

    def serve(self, **more):
        server = self.root.start(**more)
        self.addCleanup(server.kill)
        return server

    def ask(self, octets):
        """Sends on a connection of its own and returns all that comes back."""
        with self.root.connect() as connection:
            connection.sendall(octets)
            return read_to_end(connection)

    def assert_serves(self):
        with self.root.connect() as connection:
            connection.sendall(get())
            self.assertEqual(read_answer(connection)[0], 200)

    def until(self, what, condition):
        deadline = time.monotonic() + DEADLINE_S
        while not condition():
            self.assertLess(time.monotonic(), deadline, what)
            time.sleep(0.01)

    def stop(self, server):
        self.assertEqual(server.kill(signal.SIGTERM), 0)
