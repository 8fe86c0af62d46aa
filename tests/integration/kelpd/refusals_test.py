"""kelpd run refuses an unfit installation: one line that says what to do, and a status."""

import json
import os
import socket
import subprocess
import unittest

from support.kelpd import KelpdTest, run_kelpd


class RefusalsTest(KelpdTest):
    def refused(self, status, *parts, env=None):
        env = {"OSS_ROOT": self.root.oss} if env is None else env
        found, out, err = run_kelpd("run", env=env)
        self.assertEqual((found, out), (status, ""), err)
        self.assertEqual(err.count("\n"), 1, err)
        self.assertTrue(err.startswith("kelpd: "), err)
        for part in parts:
            self.assertIn(part, err)

    def test_no_root(self):
        self.refused(3, "OSS_ROOT is not set: run 'kelpd init DIR'", env={})
        self.refused(3, "/nonexistent: No such file", "run 'kelpd init DIR'",
                     env={"OSS_ROOT": "/nonexistent"})
        self.refused(3, "is no directory", env={"OSS_ROOT": self.root.path("etc/kelp.json")})
        os.unlink(self.root.path("etc", "kelp.json"))
        self.refused(3, "kelp.json: No such file", "run 'kelpd init DIR'")

    def test_settings(self):
        with open(self.root.path("etc", "kelp.json"), encoding="utf-8") as file:
            good = json.load(file)
        deep = "[" * 1100 + "]" * 1100
        for part, text in (
                ("malformed JSON", "{"),
                ("no JSON object", "[]"),
                ("malformed JSON", '{"gateway": ' + deep + "}"),
                ("malformed JSON", json.dumps(good) + "x"),
                ("not UTF-8", b'{"a": "\xff"}'),
                ('"limits" is no object', json.dumps({**good, "limits": 1})),
                ('unknown member "limits.idelMs"', json.dumps({**good, "limits": {"idelMs": 1}})),
                ('unknown member "gateway.prot"', json.dumps({**good, "gateway": {"prot": 1}})),
                ('"gateway.port" is no whole number from 1 to 65535',
                 json.dumps({**good, "gateway": {"port": "18443"}})),
                ('"gateway.port" is no', json.dumps({**good, "gateway": {"port": 70000}})),
                ('"gateway.port" is no', json.dumps({**good, "gateway": {"port": 5e9}})),
                ('"gateway.listen" is no IPv4 or IPv6 address',
                 json.dumps({**good, "gateway": {"listen": "localhost"}})),
                ('"tls.ca" is no text', json.dumps({**good, "tls": {"ca": 1}})),
                ('"tls.serverKey" is empty', json.dumps({**good, "tls": {"serverKey": ""}})),
                ('"health.socket" is empty', json.dumps({**good, "health": {"socket": ""}})),
                ('"limits.stopMs" is no', json.dumps({**good, "limits": {"stopMs": 10000}}))):
            with self.subTest(part):
                self.write_settings(text)
                self.refused(3, self.root.path("etc", "kelp.json") + ":", part)

    def write_settings(self, text):
        with open(self.root.path("etc", "kelp.json"), "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())

    # Where an editor has to be pointed at.
    def test_lines_of_what_is_malformed(self):
        for line, text in (
                (3, '{\n"gateway": {},\n"limits": []\n}'),
                (4, '{"gateway": {\n"threads": 1,\n\n"port": 0}}'),
                (2, '{"limits":\n{"idelMs": 1}}'),
                (3, '{"gateway": {\n"threads": 1,\n"listen": "localhost"}}'),
                (2, '{"tls":\n{"ca": 1}}'),
                (2, '{"tls":\n{"ca": ""}}')):
            with self.subTest(text):
                self.write_settings(text)
                self.refused(3, self.root.path("etc", "kelp.json") + f":{line}: ")
        for part, text in (("line 2", b'{\n"a": "\xff"}'), ("line 3", '{\n\n/**/}'),
                           ("Line 3", '{"a": 1,\n"b": 2,\n}'), ("line 2", '{\n"a": "\\ude00"}')):
            with self.subTest(text):
                self.write_settings(text)
                self.refused(3, self.root.path("etc", "kelp.json") + ": ", part)
        self.write_settings("{}")
        self.root.write_groups('{"groupmap": {\n"1": {"1": "g"},\n"2": {"1":\n7}}}')
        self.refused(3, self.root.path("etc", "rest_groups.json") + ":4: process '2': '1' is no")

    # What would have to be waited for is refused as well.
    def test_pipes_in_the_place_of_files(self):
        for name, status in (("rest_groups.json", 3), ("kelp.json", 3), ("ssl/server.key", 5)):
            path = self.root.path("etc", name)
            os.rename(path, path + ".aside")
            os.mkfifo(path)
            self.refused(status, f"{path}: no regular file")
            os.rename(path + ".aside", path)

    def test_rest_groups(self):
        for part, text in (
                ("malformed JSON", "{"),
                ('no object with an object "groupmap"', '{"groupmap": []}'),
                ('no object with an object "groupmap"', "17"),
                ("process '0' is no positive number", '{"groupmap": {"0": {}}}'),
                ("process 'a' is no positive number", '{"groupmap": {"a": {}}}'),
                ("process '99999999999' is no", '{"groupmap": {"99999999999": {}}}'),
                ("process '1' is no object", '{"groupmap": {"1": "g"}}'),
                ("process '1': '-1' is no number", '{"groupmap": {"1": {"-1": "g"}}}'),
                ("malformed JSON", '{"groupmap": {"1": {}, "1": {}}}')):
            with self.subTest(part):
                self.root.write_groups(text)
                self.refused(3, "rest_groups.json:", part)
        os.unlink(self.root.path("etc", "rest_groups.json"))
        self.refused(3, "rest_groups.json: No such file")

    # Whom processes trust hangs on it.
    def test_node_list(self):
        path = os.path.join(self.root.base, "manager", "etc", "sysconf", "nodelists.json")
        for line, part, text in (
                (1, 'no object with a list "nodeList"', "[]"),
                (1, 'no object with a list "nodeList"', '{"nodeList": {}}'),
                (2, 'has no text "hostname"', '{"nodeList": [\n{"IPAddresses": []}]}'),
                (2, 'has no list "IPAddresses"', '{"nodeList": [\n{"hostname": "a"}]}'),
                (3, 'no object with an IPv4 or IPv6 address',
                 '{"nodeList": [{"hostname": "a",\n"IPAddresses": [{"IP": "::1"},\n"::1"]}]}'),
                (2, 'no object with an IPv4 or IPv6 address',
                 '{"nodeList": [{"hostname": "a", "IPAddresses":\n[{"IP": "10.0.0.256"}]}]}')):
            with self.subTest(text):
                with open(path, "w", encoding="utf-8") as file:
                    file.write(text)
                self.refused(3, f"nodelists.json:{line}: ", part)
        with open(path, "w", encoding="utf-8") as file:
            file.write('{"nodeList": [\n]]')
        self.refused(3, "nodelists.json: ", "Line 2")
        os.unlink(path)
        self.stop(self.serve())

    def test_address(self):
        with socket.socket() as other:
            other.bind(("127.0.0.1", 0))
            other.listen()
            port = other.getsockname()[1]
            self.root.change("gateway", port=port)
            self.refused(4, f"127.0.0.1 port {port} is in use: run 'ss -ltnp sport = :{port}'")
        self.root.change("gateway", listen="192.0.2.1")
        self.refused(4, "cannot listen on 192.0.2.1", "gateway.listen")
        self.root.change("gateway", listen="127.0.0.1")
        self.root.change("health", socket="var/run/" + "x" * 200)
        self.refused(4, "health.socket")
        # What is no socket is not the leaving of a killed daemon.
        self.root.change("health", socket="etc/rest_groups.json")
        self.refused(4, "rest_groups.json: Address already in use", "health.socket")
        self.assertTrue(os.path.exists(self.root.path("etc", "rest_groups.json")))

    def test_keys(self):
        key = self.root.ssl("server.key")
        for mode in (0o640, 0o604, 0o620, 0o602):
            os.chmod(key, mode)
            self.refused(5, f"is open to others (mode {mode:04o}): run 'chmod 600 {key}'")
        os.chmod(key, 0o600)
        with open(key, "rb") as file:
            good = file.read()
        with open(self.root.ssl("client.key"), "rb") as file:
            other = file.read()
        for name, octets, part in (
                ("server.key", b"", "cannot use the key"),
                ("server.key", other, "cannot use the key"),
                ("server.key", good[:100], "cannot use the key"),
                ("server.crt", b"", "cannot read the certificate"),
                ("ca.crt", b"x", "cannot read the authority's certificate")):
            with self.subTest(name + part):
                with open(self.root.ssl(name), "r+b") as file:
                    before = file.read()
                    file.seek(0)
                    file.truncate()
                    file.write(octets)
                self.refused(5, part, self.root.ssl(name))
                with open(self.root.ssl(name), "r+b") as file:
                    file.write(before)
        os.unlink(key)
        self.refused(5, f"cannot read the key {key}: No such file")
        os.mkdir(key)
        self.refused(5, f"cannot read the key {key}: no regular file")

    def test_certificate_that_clients_would_refuse(self):
        now = "/C=XX/CN=self"
        subprocess.run(["openssl", "req", "-x509", "-new", "-key", self.root.ssl("server.key"),
                        "-subj", now, "-days", "3", "-out", self.root.ssl("server.crt")],
                       check=True, capture_output=True)
        self.refused(5, "server.crt is of no use: self-signed certificate",
                     "run 'kelpd init DIR'")

    def test_expired_certificate(self):
        request = self.root.ssl("r.csr")
        subprocess.run(["openssl", "req", "-new", "-key", self.root.ssl("server.key"), "-subj",
                        "/CN=x", "-out", request], check=True, capture_output=True)
        subprocess.run(["openssl", "x509", "-req", "-in", request, "-CA",
                        self.root.ssl("ca.crt"), "-CAkey", self.root.ssl("ca.key"), "-days",
                        "-1", "-out", self.root.ssl("server.crt")],
                       check=True, capture_output=True)
        self.refused(5, "server.crt is of no use: certificate has expired")

    def test_folders_that_others_may_write_to(self):
        for folder in ("", "etc", "etc/ssl", "var/run"):
            path = self.root.path(folder).rstrip("/")
            before = os.stat(path).st_mode
            os.chmod(path, 0o777)
            self.refused(6, f"{path} may be written to by others (mode 0777): run 'chmod go-w")
            os.chmod(path, before)

    def test_root_of_another_user(self):
        if os.geteuid() != 0:  # only root can give files away
            return self.refused(6, "/usr belongs to root: run kelpd as that user",
                                env={"OSS_ROOT": "/usr"})
        nobody = 65534
        os.chown(self.root.oss, nobody, nobody)
        self.refused(6, f"{self.root.oss} belongs to nobody: run kelpd as that user")
        os.chown(self.root.oss, 0, 0)
        os.chown(self.root.ssl("server.key"), nobody, nobody)
        self.refused(5, "server.key belongs to nobody: run 'chown root")

    def test_second_daemon_on_one_root(self):
        self.serve()
        self.root.change("gateway", port=1)
        self.refused(7, "a kelpd serves this root already: run 'fuser")
        self.assertEqual(self.root.health("/healthz")[0], 200)

    def test_command_line(self):
        for arguments, part in (((), "subcommand"), (("serve",), "subcommand"),
                                (("run", "--nosuch"), "--nosuch")):
            status, out, err = run_kelpd(*arguments)
            self.assertEqual((status, out, err.count("\n")), (2, "", 1))
            self.assertIn(part, err)
        status, out, _ = run_kelpd("run", "--help")
        self.assertEqual(status, 0)
        self.assertIn("Exit status:", out)
        self.assertRegex(run_kelpd("--version")[1], r"^kelpd \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
