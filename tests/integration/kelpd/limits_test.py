"""How many connections there may be, and what slow ones come to."""

import contextlib
import resource
import socket
import threading
import unittest

from support.kelpd import KelpdTest, get, read_answer, read_to_end, statuses
from support.programs import DEADLINE_S

CLOSED = 'kelpd_timeouts_total{deadline="%s"}'


class ConnectionsTest(KelpdTest):
    def open(self, stack, count):
        return [stack.enter_context(self.root.connect()) for _ in range(count)]

    # 32 more than may be are told so; those beyond are closed at once.
    def test_too_many_from_one_address(self):
        self.root.change("limits", connectionsPerAddress=4)
        self.serve()
        with contextlib.ExitStack() as stack:
            served = self.open(stack, 4)
            for connection in self.open(stack, 32):
                connection.sendall(get())
                status, body = read_answer(connection)
                self.assertEqual((status, body), (503, b'{"error": "too many connections"}\n'))
                connection.close()
            # Connections that are being closed still count: wait for the room they leave.
            self.until("room", lambda: self.root.metric("kelpd_connections_open") == 4)
            waiting = self.open(stack, 32)
            with self.assertRaises((ConnectionError, OSError)):
                self.root.connect()
            for connection in served:
                connection.sendall(get())
                self.assertEqual(read_answer(connection)[0], 200)
            self.assertEqual(len(waiting), 32)
        self.until("room", lambda: self.root.metric("kelpd_connections_open") == 0)
        self.assert_serves()
        self.assertEqual(self.root.metric('kelpd_connections_total{event="busy"}'), 64)
        self.assertEqual(self.root.metric('kelpd_connections_total{event="dropped"}'), 1)

    def test_too_many_in_all(self):
        self.root.change("limits", connections=3)
        self.serve()
        with contextlib.ExitStack() as stack:
            self.open(stack, 3)
            with self.root.connect() as connection:
                connection.sendall(get())
                self.assertEqual(read_answer(connection)[0], 503)

    # 200 clients of a process that may open 128 files: refused in order, nothing spins.
    def test_few_descriptors(self):
        self.serve(limit=lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (128, 128)))
        self.assertIn("the limit of open files (128) allows 48 connections instead of 1024",
                      self.root.log())
        with contextlib.ExitStack() as stack:
            for _ in range(200):
                raw = stack.enter_context(socket.create_connection(
                    ("127.0.0.1", self.root.port), DEADLINE_S))
                raw.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
            self.until("all accepted", lambda: self.root.metric(
                'kelpd_connections_total{event="accepted"}') == 200)
            self.assertEqual(self.root.metric("kelpd_connections_open"), 80)
            self.assertEqual(
                self.root.metric('kelpd_connections_total{event="no_descriptors"}'), 0)
        self.until("room", lambda: self.root.metric("kelpd_connections_open") == 0)
        self.assert_serves()


class SlowTest(KelpdTest):
    def setUp(self):
        super().setUp()
        self.root.change("limits", handshakeMs=300, headerMs=300, bodyMs=300, writeMs=300,
                         idleMs=300)

    def plain(self):
        return socket.create_connection(("127.0.0.1", self.root.port), DEADLINE_S)

    def test_handshake(self):
        self.serve()
        for first in (b"", b"\x16\x03\x01"):
            with self.plain() as connection:
                connection.sendall(first)
                self.assertEqual(read_to_end(connection), b"")
        self.assertEqual(self.root.metric(CLOSED % "handshake"), 2)

    # Octets that keep coming do not put the deadline off.
    def drip(self, connection, octets, ended):
        for octet in octets:
            if ended.wait(0.02):
                return
            try:
                connection.sendall(bytes((octet,)))
            except OSError:
                return

    def test_header_and_body(self):
        self.serve()
        for deadline, octets in (
                ("header", get(more="a: " + "b" * 4000 + "\r\n")),
                ("body", get(more="Content-Length: 4000\r\n") + b"b" * 4000)):
            with self.root.connect() as connection, self.subTest(deadline):
                start = len(octets) - 3990
                connection.sendall(octets[:start])
                ended = threading.Event()
                sender = threading.Thread(target=self.drip,
                                          args=(connection, octets[start:], ended))
                sender.start()
                answer = read_to_end(connection)
                ended.set()
                sender.join()
                self.assertEqual(statuses(answer), [408], answer)
                self.assertEqual(self.root.metric(CLOSED % deadline), 1)

    def test_idle(self):
        self.serve()
        with self.root.connect() as connection:
            connection.sendall(get())
            self.assertEqual(read_answer(connection)[0], 200)
            self.assertEqual(read_to_end(connection), b"")
        self.assertEqual(self.root.metric(CLOSED % "idle"), 1)

    def test_answer_that_nobody_takes(self):
        names = ",".join(f'"{i}": "{"g" * 200}"' for i in range(4000))
        self.root.write_groups('{"groupmap": {"1": {' + names + "}}}")
        self.serve()
        with self.root.connect(receive_octets=4096) as connection:
            connection.sendall(get() * 8)
            self.until("cut", lambda: self.root.metric(CLOSED % "write") == 1)
        self.assert_serves()

    # Attackers of every kind at once; an honest client is served all the while.
    def test_honest_client_among_slow_ones(self):
        self.root.change("limits", connectionsPerAddress=1000, handshakeMs=60000,
                         headerMs=60000, bodyMs=60000)
        self.serve()
        with contextlib.ExitStack() as stack:
            for _ in range(100):
                stack.enter_context(self.plain())
            for begun in (get()[:20], get(more="Content-Length: 9\r\n")):
                for _ in range(30):
                    stack.enter_context(self.root.connect()).sendall(begun)
            with self.root.connect() as honest:
                for _ in range(50):
                    honest.sendall(get())
                    self.assertEqual(read_answer(honest)[0], 200)
            self.assertGreaterEqual(self.root.metric("kelpd_connections_open"), 160)


if __name__ == "__main__":
    unittest.main()
