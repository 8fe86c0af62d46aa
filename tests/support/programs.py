"""Running the real programs in tests: servers that say when they are ready, kelpctl."""

import os
import select
import signal
import socket
import subprocess
import tempfile
import time
import unittest

DEADLINE_S = 60  # for what a healthy machine does in well under a second


class Server:
    """A process that prints `ready_line` on standard output once it serves. `limit` is
    called in the new process before it becomes the program."""

    def __init__(self, command, ready_line, env=None, limit=None):
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            command, stdout=subprocess.PIPE, stderr=self.errors, env=env,
            preexec_fn=limit)
        self._wait_for(ready_line)

    def _wait_for(self, line):
        deadline = time.monotonic() + DEADLINE_S
        seen = b""
        while line.encode() not in seen.split(b"\n"):
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.process.stdout], [], [], left)[0]:
                self._give_up("not ready in time")
            block = os.read(self.process.stdout.fileno(), 4096)
            if not block:
                self._give_up("ended instead of serving")
            seen += block

    def _give_up(self, why):
        log = self.log()
        self.kill()
        raise AssertionError(why + ": " + log)

    def log(self):
        self.errors.seek(0)
        return self.errors.read().decode(errors="replace")

    def kill(self, number=signal.SIGKILL):
        """Sends a signal that ends the process, waits, returns the exit status."""
        if self.errors.closed:
            return self.process.returncode
        if self.process.poll() is None:
            self.process.send_signal(number)
        status = self.process.wait(DEADLINE_S)
        self.process.stdout.close()
        self.errors.close()
        return status

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.kill()


class Kelpctl:
    """kelpctl with a run directory and an environment of its own."""

    def __init__(self, program, run_dir, commands_files=()):
        self.program = program
        self.env = {
            "PATH": os.environ["PATH"],
            "LC_ALL": "C.UTF-8",
            "KELP_RUN_DIR": run_dir,
            "KELPCTL_COMMANDS": ":".join(commands_files),
        }
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS"):
            if name in os.environ:
                self.env[name] = os.environ[name]

    def start(self, *arguments):
        return subprocess.Popen(
            [self.program, *arguments], env=self.env, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def start_on(self, output, *arguments):
        """The same, with `output`, a file or a descriptor, as standard output."""
        return subprocess.Popen(
            [self.program, *arguments], env=self.env, stdin=subprocess.DEVNULL,
            stdout=output, stderr=subprocess.DEVNULL)

    def run(self, *arguments, stdin=None, env=None, limit=None):
        """Returns (exit status, standard output, standard error); the texts are bytes.
        `limit` is called in the new process before it becomes kelpctl."""
        done = subprocess.run(
            [self.program, *arguments], env={**self.env, **(env or {})},
            input=stdin if stdin is not None else b"", capture_output=True,
            timeout=DEADLINE_S, check=False, preexec_fn=limit)
        return done.returncode, done.stdout, done.stderr


class ProgramTest(unittest.TestCase):
    """A temporary folder with a run directory in it, one for each class of tests."""

    @classmethod
    def setUpClass(cls):
        cls._folder = tempfile.TemporaryDirectory()
        cls.folder = cls._folder.name
        cls.run_dir = os.path.join(cls.folder, "run")
        os.mkdir(cls.run_dir, 0o700)

    @classmethod
    def tearDownClass(cls):
        cls._folder.cleanup()

    def one_line(self, errors):
        """Asserts that `errors` is one line, and returns it."""
        self.assertTrue(errors.endswith(b"\n"), errors)
        self.assertEqual(errors.count(b"\n"), 1, errors)
        return errors.decode().rstrip("\n")


def free_udp_port():
    """A port of the loopback that nobody listens on; somebody else might take it."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]
