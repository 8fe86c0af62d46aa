"""kelpd init: a whole installation, or nothing."""

import ipaddress
import json
import os
import resource
import signal
import stat
import subprocess
import tempfile
import unittest

from support.kelpd import Installation, run_kelpd

# Every file and folder with its mode.
TREE = {
    "manager/etc/sysconf/nodelists.json": 0o644,
    "oss/etc/kelp.json": 0o600,
    "oss/etc/rest_groups.json": 0o644,
    "oss/etc/oss_cfg/frame/isinfo.cfg": 0o644,
    "oss/etc/oss_cfg/frame/is_server/conf/config.properties": 0o644,
    "oss/etc/ssl/ca.crt": 0o644,
    "oss/etc/ssl/ca.key": 0o600,
    "oss/etc/ssl/client.crt": 0o644,
    "oss/etc/ssl/client.key": 0o600,
    "oss/etc/ssl/server.crt": 0o644,
    "oss/etc/ssl/server.key": 0o600,
    "oss/res/errors.res": 0o644,
    "oss/rtsp/DRKFrame/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp": 0o644,
    "oss/rtsp/DRKFrame/drk/frame/conf/frame.cfg": 0o644,
}


def openssl(*arguments):
    return subprocess.run(["openssl", *arguments], capture_output=True, check=True,
                          text=True).stdout


class TreeTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        before = os.umask(0o077)  # the modes do not depend on it
        cls.root = Installation("nms.example.net", "192.0.2.7", "2001:db8::7")
        os.umask(before)

    @classmethod
    def tearDownClass(cls):
        cls.root.remove()

    def read(self, *parts):
        with open(self.root.path(*parts), encoding="utf-8") as file:
            return file.read()

    def test_files_and_modes(self):
        found = {}
        for folder, _, names in os.walk(self.root.base):
            for name in names:
                path = os.path.join(folder, name)
                found[os.path.relpath(path, self.root.base)] = stat.S_IMODE(os.stat(path).st_mode)
        self.assertEqual(found, TREE)
        for folder, mode in (("", 0o755), ("var/run", 0o700), ("var/log", 0o750)):
            self.assertEqual(stat.S_IMODE(os.stat(self.root.path(folder)).st_mode), mode, folder)

    def test_a_shell_takes_what_is_printed(self):
        out = subprocess.run(["sh", "-c", 'eval "$1"; printf "%s|%s" "$OSS_ROOT" "$MGMTSIZE"',
                              "sh", self.root.exports], capture_output=True, check=True).stdout
        self.assertEqual(out.decode(), self.root.oss + "|80000")

    def test_certificates_are_for_their_purpose_and_for_nothing_else(self):
        authority = self.root.ssl("ca.crt")
        for purpose, good, bad in (("sslserver", "server", "client"),
                                   ("sslclient", "client", "server")):
            check = ("verify", "-x509_strict", "-CAfile", authority, "-purpose", purpose)
            self.assertIn(": OK", openssl(*check, self.root.ssl(good + ".crt")))
            with self.assertRaises(subprocess.CalledProcessError):
                openssl(*check, self.root.ssl(bad + ".crt"))
        self.assertIn("CA:TRUE, pathlen:0", openssl("x509", "-in", authority, "-noout", "-text"))

    def test_server_certificate_answers_to_every_name_and_address(self):
        certificate = self.root.ssl("server.crt")
        for option, name in (("-checkhost", "localhost"), ("-checkhost", "nms.example.net"),
                             ("-checkip", "127.0.0.1"), ("-checkip", "::1"),
                             ("-checkip", "192.0.2.7"), ("-checkip", "2001:db8::7")):
            out = openssl("x509", "-in", certificate, "-noout", option, name)
            self.assertIn("does match certificate", out, name)
        out = openssl("x509", "-in", certificate, "-noout", "-checkhost", "example.net")
        self.assertIn("does NOT match", out)

    def test_keys_are_ec_p256_and_lifetimes_are_what_the_manual_says(self):
        for name, days in (("ca", 3652), ("server", 825), ("client", 825)):
            text = openssl("x509", "-in", self.root.ssl(name + ".crt"), "-noout", "-text")
            self.assertIn("NIST CURVE: P-256", text)
            self.assertIn("Signature Algorithm: ecdsa-with-SHA256", text)
            for age, expected in ((days - 1, 0), (days + 1, 1)):
                done = subprocess.run(
                    ["openssl", "x509", "-in", self.root.ssl(name + ".crt"), "-noout",
                     "-checkend", str(age * 86400)], capture_output=True, check=False)
                self.assertEqual(done.returncode, expected, (name, age))

    def test_each_installation_has_keys_of_its_own(self):
        other = Installation()
        self.addCleanup(other.remove)
        for name in ("ca.key", "server.key", "client.key"):
            with open(other.ssl(name), encoding="utf-8") as file:
                self.assertNotEqual(file.read(), self.read("etc", "ssl", name))

    # Nothing in the installation says where it is: it may be moved.
    def test_no_file_names_the_folder(self):
        for folder, _, names in os.walk(self.root.base):
            for name in names:
                with open(os.path.join(folder, name), encoding="utf-8") as file:
                    self.assertNotIn(self.root.folder, file.read(), name)

    def test_settings_name_the_port_and_the_node(self):
        port = str(self.root.port)
        settings = json.loads(self.read("etc", "kelp.json"))
        self.assertEqual(settings["gateway"]["baseUrl"], "https://127.0.0.1:" + port)
        self.assertEqual(settings["databases"]["MCDB"]["url"], "sqlite:var/mcdb.sqlite")
        self.assertIn("httpPort=" + port + "\n",
                      self.read("etc/oss_cfg/frame/is_server/conf/config.properties"))
        self.assertIn("httpPort=" + port + "\n", self.read("etc/oss_cfg/frame/isinfo.cfg"))
        self.assertRegex(self.read("rtsp/DRKFrame/drk/frame/conf/frame.cfg"),
                         r"\[X5800_VERSION\]\nX5800Product_Server_VersionName=FrameUtil \d")
        self.assertEqual(list(json.loads(self.read("etc", "rest_groups.json"))), ["groupmap"])

    def test_node_list_has_this_node_alone(self):
        with open(os.path.join(self.root.base, "manager/etc/sysconf/nodelists.json"),
                  encoding="utf-8") as file:
            nodes = json.load(file)["nodeList"]
        self.assertEqual([node["hostname"] for node in nodes], ["nms.example.net"])
        addresses = [ipaddress.ip_address(entry["IP"]) for entry in nodes[0]["IPAddresses"]]
        self.assertEqual([str(a) for a in addresses], ["127.0.0.1", "192.0.2.7", "2001:db8::7"])

    def test_every_error_of_the_resources_has_its_four_texts(self):
        kinds = {}
        for line in self.read("res", "errors.res").splitlines():
            if line and not line.startswith("#"):
                key, _, text = line.partition("=")
                identifier, _, kind = key.rpartition(".")
                self.assertTrue(text.strip(), line)
                kinds.setdefault(identifier, []).append(kind)
        self.assertTrue(kinds)
        for identifier, found in kinds.items():
            self.assertEqual(found, ["desc", "reason", "detail", "advice"], identifier)


class RefusalTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def refused(self, status, part, *arguments, limit=None):
        found, out, err = run_kelpd("init", *arguments, limit=limit)
        self.assertEqual((found, out), (status, ""), err)
        self.assertEqual(err.count("\n"), 1, err)
        self.assertTrue(err.startswith("kelpd: "), err)
        self.assertIn(part, err)

    def test_mistakes_on_the_command_line(self):
        target = os.path.join(self.folder, "nms")
        for part, *arguments in (
                ("directory is required",),
                ("--port", target, "--port", "0"),
                ("--port", target, "--port", "65536"),
                ("--host 'a b' is neither a host name nor an address", target, "--host", "a b"),
                ("--host '*.net'", target, "--host", "*.net"),
                ("--host '10.0.0.256'", target, "--host", "10.0.0.256"),
                ("--host ''", target, "--host", ""),
                ("make the folder that will hold", os.path.join(self.folder, "no", "nms")),
                ("--nosuch", target, "--nosuch")):
            self.refused(2, part, *arguments)
        self.assertEqual(os.listdir(self.folder), [])

    def test_what_is_there_is_left_alone(self):
        target = os.path.join(self.folder, "nms")
        os.mkdir(target)
        with open(os.path.join(target, "mine"), "w", encoding="utf-8") as file:
            file.write("mine")
        self.refused(8, target + " is not empty: name a new directory", target)
        self.assertEqual(os.listdir(target), ["mine"])
        self.refused(8, "is there and no directory", os.path.join(target, "mine"))
        self.assertEqual(os.listdir(self.folder), ["nms"])

    def test_empty_directory_is_taken(self):
        target = os.path.join(self.folder, "new folder's")
        os.mkdir(target)
        status, out, err = run_kelpd("init", target + "/")
        self.assertEqual((status, err), (0, ""))
        self.assertIn("export OSS_ROOT='" + self.folder + "/new folder'\\''s/oss'\n", out)
        self.assertTrue(os.path.exists(os.path.join(target, "oss/etc/kelp.json")))

    # A disk that fills up at any point is stood in for by a limit on the size of files.
    def test_nothing_is_left_of_an_attempt_that_failed(self):
        for limit in (0, 100, 500, 700, 1500):
            def limit_files(octets=limit):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (octets, octets))
            # Standard error is a pipe: it has no size.
            self.refused(1, "File too large", os.path.join(self.folder, "nms"),
                         limit=limit_files)
            self.assertEqual(os.listdir(self.folder), [], limit)


if __name__ == "__main__":
    unittest.main()
