"""kelpd run: who is answered, what, and what is written down about it."""

import json
import os
import signal
import socket
import ssl
import stat
import subprocess
import warnings
import unittest

from support.kelpd import (GROUPS, Installation, KelpdTest, get, read_answer, read_to_end,
                           run_kelpd)
from support.programs import DEADLINE_S


class ServeTest(KelpdTest):
    hosts = ("nms.example.net",)

    def curl(self, target, *options, client=True):
        identity = ("--cert", self.root.ssl("client.crt"), "--key", self.root.ssl("client.key"))
        return subprocess.run(
            ["curl", "-sS", "--cacert", self.root.ssl("ca.crt"), *(identity if client else ()),
             *options, f"https://127.0.0.1:{self.root.port}{target}"],
            capture_output=True, timeout=DEADLINE_S, check=False, text=True)

    def test_process_groups_for_a_client_of_the_installation(self):
        self.serve()
        done = self.curl(GROUPS, "-H", "XX-Forward-Filter: filter=group,value=mrbservice")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(json.loads(done.stdout), {"groupmap": {"3001": {"1": "nemgr"}}})
        done = self.curl(GROUPS, "--resolve", f"nms.example.net:{self.root.port}:127.0.0.1",
                         "--connect-to", f"::127.0.0.1:{self.root.port}", "--tls-max", "1.2",
                         "--tlsv1.2", "-i")
        self.assertIn("HTTP/1.1 200 OK", done.stdout)
        self.assertIn("Content-Type: application/json", done.stdout)

    def test_nobody_else_is_answered(self):
        self.serve()
        stranger = Installation()
        self.addCleanup(stranger.remove)
        self.assertEqual(self.curl(GROUPS, client=False).returncode, 56)
        for context in (self.root.context(client=False),
                        self.root.context(authority=stranger)):
            with self.assertRaises((ssl.SSLError, ConnectionResetError, EOFError)):
                with self.root.connect(context) as connection:
                    connection.sendall(get())
                    read_answer(connection)
        old = self.root.context()
        old.minimum_version = ssl.TLSVersion.MINIMUM_SUPPORTED
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            old.maximum_version = ssl.TLSVersion.TLSv1_1
        old.set_ciphers("ALL:@SECLEVEL=0")
        with self.assertRaises((ssl.SSLError, ConnectionResetError)):
            self.root.connect(old)
        self.assert_serves()
        failures = self.root.metric('kelpd_connections_total{event="handshake_failed"}')
        self.assertEqual(failures, 4)
        self.assertIn("handshake with 127.0.0.1 failed: peer did not return a certificate",
                      self.root.log())

    # The server's certificate is no client certificate.
    def test_purpose_of_a_certificate_counts(self):
        self.serve()
        context = self.root.context(client=False)
        context.load_cert_chain(self.root.ssl("server.crt"), self.root.ssl("server.key"))
        with self.assertRaises((ssl.SSLError, ConnectionResetError, EOFError)):
            with self.root.connect(context) as connection:
                connection.sendall(get())
                read_answer(connection)

    def issue(self, name, issuer, extensions):
        """A certificate that `issuer` signs, or its own key when that is none."""
        files = {end: self.root.ssl(f"{name}.{end}") for end in ("key", "csr", "crt", "ext")}
        with open(files["ext"], "w", encoding="ascii") as file:
            file.write(extensions)
        subprocess.run(["openssl", "req", "-new", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:P-256", "-nodes", "-keyout", files["key"], "-out",
                        files["csr"], "-subj", "/CN=" + name], check=True, capture_output=True)
        signer = (["-CA", self.root.ssl(issuer + ".crt"), "-CAkey",
                   self.root.ssl(issuer + ".key")] if issuer else ["-signkey", files["key"]])
        subprocess.run(["openssl", "x509", "-req", "-in", files["csr"], *signer, "-days", "3",
                        "-extfile", files["ext"], "-out", files["crt"]],
                       check=True, capture_output=True)
        os.chmod(files["key"], 0o600)

    # An authority between the root's and the gateway's own: its file holds both certificates.
    def test_certificate_with_a_chain(self):
        self.issue("top", None, "basicConstraints=critical,CA:TRUE\n")
        self.issue("middle", "top", "basicConstraints=critical,CA:TRUE\n")
        self.issue("leaf", "middle", "subjectAltName=IP:127.0.0.1\nextendedKeyUsage=serverAuth\n")
        self.issue("client", "top", "extendedKeyUsage=clientAuth\n")
        self.root.change("tls", ca="etc/ssl/top.crt", serverCertificate="etc/ssl/leaf.crt",
                         serverKey="etc/ssl/leaf.key")
        status, _, errors = run_kelpd("run", env={"OSS_ROOT": self.root.oss})
        self.assertEqual(status, 5)
        self.assertIn("leaf.crt is of no use: unable to get local issuer certificate", errors)
        with open(self.root.ssl("middle.crt"), encoding="ascii") as middle:
            with open(self.root.ssl("leaf.crt"), "a", encoding="ascii") as leaf:
                leaf.write(middle.read())
        self.serve()
        context = ssl.create_default_context(cafile=self.root.ssl("top.crt"))
        context.load_cert_chain(self.root.ssl("client.crt"), self.root.ssl("client.key"))
        with self.root.connect(context) as connection:
            connection.sendall(get())
            self.assertEqual(read_answer(connection)[0], 200)

    def test_answers_of_one_connection(self):
        self.serve()
        with self.root.connect() as connection:
            for request, status, part in (
                    (get(), 200, b"groupmap"),
                    (get("/rest"), 404, b'{"error": "no such resource"}'),
                    (get(GROUPS + "?x=1&y"), 200, b"groupmap"),
                    (get().replace(b"GET", b"PUT"), 405, b"method not allowed"),
                    (get().replace(b"GET", b"BREW"), 405, b"method not allowed"),
                    (get(), 200, b"groupmap")):
                connection.sendall(request)
                found, body = read_answer(connection)
                self.assertEqual(found, status, request)
                self.assertIn(part, body)

    def test_requests_sent_at_once_are_answered_in_order(self):
        self.serve()
        with self.root.connect() as connection:
            connection.sendall(b"".join(get(f"/{i}") if i % 2 else get() for i in range(200)))
            buffer = bytearray()
            found = [read_answer(connection, buffer)[0] for _ in range(200)]
            self.assertEqual(found, [200, 404] * 100)

    def test_head_has_the_length_and_no_body(self):
        self.serve()
        with self.root.connect() as connection:
            connection.sendall(get(more="Connection: close\r\n").replace(b"GET", b"HEAD"))
            head, _, body = read_to_end(connection).partition(b"\r\n\r\n")
            self.assertIn(b"Content-Length: 39", head)
            self.assertEqual(body, b"")

    def test_body_is_asked_for_when_the_client_waits(self):
        self.serve()
        with self.root.connect() as connection:
            connection.sendall(get(more="Content-Length: 3\r\nExpect: 100-continue\r\n"))
            leave = b"HTTP/1.1 100 Continue\r\n\r\n"
            self.assertEqual(connection.recv(len(leave)), leave)
            connection.sendall(b"abc")
            self.assertEqual(read_answer(connection)[0], 200)

    def test_http_1_0(self):
        self.serve()
        answer = self.ask(f"GET {GROUPS} HTTP/1.0\r\n\r\n".encode())
        self.assertTrue(answer.startswith(b"HTTP/1.1 200 OK"), answer)
        self.assertIn(b"Connection: close", answer)

    def test_groups_are_read_again_when_the_file_has_changed(self):
        self.serve()
        self.root.write_groups('{"groupmap": {"7": {"0": "g"}}}')
        self.until("new groups", lambda: '"g"' in self.curl(GROUPS).stdout)
        self.root.write_groups('{"groupmap": {"7": {"0": 1}}}')
        self.until("complaint", lambda: self.curl(GROUPS) and
                   "stay as they were" in self.root.log())
        self.assertIn('"g"', self.curl(GROUPS).stdout)
        self.assertIn("rest_groups.json:1: process '7': '0' is no number with a group's name",
                      self.root.log())

    def test_access_log(self):
        server = self.serve(env={"KELP_LOG_FORMAT": "json"})
        self.curl(GROUPS + "?token=secret")
        self.stop(server)
        texts = [json.loads(line)["text"] for line in self.root.log().splitlines()]
        access = [text for text in texts if text.startswith("access ")]
        self.assertEqual(len(access), 1, texts)
        self.assertRegex(access[0], 'access peer=127.0.0.1 client="kelp client" method=GET '
                         f"path={GROUPS} status=200 octets=39 us=[0-9]+$")
        self.assertNotIn("secret", "".join(texts))

    def test_log_is_opened_again_on_sighup(self):
        server = self.serve()
        log = self.root.path("var", "log", "kelpd.log")
        os.rename(log, log + ".1")
        server.process.send_signal(signal.SIGHUP)
        self.until("new log", lambda: self.curl(GROUPS) and os.path.exists(log))
        self.stop(server)

    def test_health_and_metrics_on_a_socket_of_the_user(self):
        self.serve()
        mode = os.stat(self.root.path("var", "run", "kelpd.health.sock")).st_mode
        self.assertEqual(stat.S_IMODE(mode), 0o600)
        self.assertEqual(self.root.health("/healthz"), (200, b"ok\n"))
        with self.root.connect() as connection:
            connection.sendall(get())
            read_answer(connection)
            self.assertEqual(self.root.metric("kelpd_connections_open"), 1)
        # An answer counts once it is written: the client may be quicker.
        self.until("a counted answer",
                   lambda: self.root.metric('kelpd_answers_total{status="2xx"}') == 1)
        self.assertEqual(self.root.metric("kelpd_answer_seconds_count"), 1)
        self.assertEqual(self.root.health(GROUPS)[0], 404)
        self.assertIn(b"HTTP/1.1 404", self.ask(get("/metrics", "Connection: close\r\n")))

    def test_supervisor_is_told(self):
        address = os.path.join(self.root.folder, "notify")
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as supervisor:
            supervisor.settimeout(DEADLINE_S)
            supervisor.bind(address)
            server = self.serve(env={"NOTIFY_SOCKET": address})
            self.assertEqual(supervisor.recv(100), b"READY=1")
            self.stop(server)
            self.assertEqual(supervisor.recv(100), b"STOPPING=1")

    def test_root_named_on_the_command_line(self):
        self.serve()
        status, _, err = run_kelpd("run", "--root", self.root.oss + "/")
        self.assertEqual(status, 7, err)  # it serves: another one does already


if __name__ == "__main__":
    unittest.main()
