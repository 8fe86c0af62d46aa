"""The end of the daemon: what runs is answered, and a killed one leaves nothing in the way."""

import contextlib
import os
import signal
import socket
import unittest

from support.kelpd import KelpdTest, get, read_answer, read_to_end
from support.programs import DEADLINE_S


class StopTest(KelpdTest):
    def await_end_of_listening(self):
        def refused():
            try:
                socket.create_connection(("127.0.0.1", self.root.port), DEADLINE_S).close()
                return False
            except ConnectionResetError:
                return False  # the listener went while it was asked
            except ConnectionRefusedError:
                return True
        self.until("the listener's end", refused)

    def stop_begins(self, server, number=signal.SIGTERM):
        server.process.send_signal(number)
        self.await_end_of_listening()

    def big_groups(self):
        names = ",".join(f'"{i}": "{"g" * 200}"' for i in range(4000))
        text = '{"groupmap": {"1": {' + names + "}}}"
        self.root.write_groups(text)
        return text.encode()

    # A hundred connections whose requests have begun, half of them with a body to come.
    def test_requests_under_way_are_answered(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            server = self.serve()
            whole = (get(), get(more="Content-Length: 3\r\n") + b"abc")
            with contextlib.ExitStack() as stack:
                running = [stack.enter_context(self.root.connect()) for _ in range(100)]
                for i, connection in enumerate(running):
                    connection.sendall(whole[i % 2][:-2])
                idle = stack.enter_context(self.root.connect())
                # An answer on the last connection: the octets sent before have been read, on
                # each thread, or are in its socket, which is looked into before it is closed.
                idle.sendall(get())
                self.assertEqual(read_answer(idle)[0], 200)
                self.stop_begins(server, number)
                self.assertEqual(read_to_end(idle), b"")
                self.assertEqual(self.root.health("/healthz"), (503, b"stopping\n"))
                for i, connection in enumerate(running):
                    connection.sendall(whole[i % 2][-2:])
                    answer = read_to_end(connection)
                    self.assertTrue(answer.startswith(b"HTTP/1.1 200 OK\r\n"), answer)
                    self.assertIn(b"Connection: close", answer)
            self.assertEqual(server.process.wait(DEADLINE_S), 0)
            self.assertIn("stopping: requests that run are answered", self.root.log())
            self.assertFalse(os.path.exists(self.root.path("var/run/kelpd.health.sock")))

    def test_answer_under_way_is_delivered_whole(self):
        expected = self.big_groups()
        server = self.serve()
        with self.root.connect(receive_octets=4096) as connection:
            connection.sendall(get())
            first = connection.recv(1)
            self.stop_begins(server)
            answer = first + read_to_end(connection)
            self.assertEqual(answer.partition(b"\r\n\r\n")[2], expected)
        self.assertEqual(server.process.wait(DEADLINE_S), 0)

    def test_what_does_not_end_in_time_is_cut(self):
        self.root.change("limits", stopMs=300, writeMs=60000)
        self.big_groups()
        server = self.serve()
        with self.root.connect(receive_octets=4096) as reader, self.root.connect() as writer:
            reader.sendall(get() * 8)
            reader.recv(1)
            writer.sendall(get()[:30])
            self.until("a request that has begun",
                       lambda: self.root.metric("kelpd_connections_open") == 2)
            server.process.send_signal(signal.SIGTERM)
            self.assertEqual(server.process.wait(DEADLINE_S), 0)

    def test_second_signal_ends_at_once(self):
        server = self.serve()
        with self.root.connect() as connection:
            connection.sendall(get()[:30])
            self.stop_begins(server)
            self.assertIsNone(server.process.poll())
            server.process.send_signal(signal.SIGTERM)
            self.assertEqual(server.process.wait(DEADLINE_S), -signal.SIGTERM)

    # A killed daemon leaves its lock file, its socket and connections of its port behind.
    def test_start_after_a_kill(self):
        for _ in range(3):
            server = self.serve()
            with self.root.connect() as connection:
                connection.sendall(get() + get()[:30])
                self.assertEqual(read_answer(connection)[0], 200)
                server.kill(signal.SIGKILL)
                self.assertEqual(read_to_end(connection), b"")
            self.assertTrue(os.path.exists(self.root.path("var/run/kelpd.health.sock")))
        self.serve()
        self.assert_serves()
        self.assertEqual(self.root.health("/healthz"), (200, b"ok\n"))


if __name__ == "__main__":
    unittest.main()
