"""Certificates for tests of TLS, made by openssl in a folder of the test's own.

    certificates.make("/tmp/x")     writes NAME.crt and NAME.key for each name below,
                                    and ca.crt, other_ca.crt
"""

import os
import subprocess

CONFIG = """
[ca]
default_ca = authority
[authority]
database = {folder}/{ca}.index
serial = {folder}/{ca}.serial
new_certs_dir = {folder}
default_md = sha256
policy = any
unique_subject = no
[any]
commonName = supplied
[req]
distinguished_name = name
prompt = no
[name]
CN = {name}
[ca_extensions]
basicConstraints = critical, CA:true
keyUsage = critical, keyCertSign, cRLSign
[extensions]
basicConstraints = CA:false
{alternative}
"""

HERE = "subjectAltName = IP:127.0.0.1, DNS:localhost"
ELSEWHERE = "subjectAltName = IP:127.0.0.9, DNS:elsewhere.example"

# name, who signs it, for whom it is, from, until
ISSUED = [
    ("server", "ca", HERE, "20200101000000Z", "20991231235959Z"),
    ("renewed", "ca", HERE, "20200101000000Z", "20991231235959Z"),
    ("client", "ca", "", "20200101000000Z", "20991231235959Z"),
    ("expired", "ca", HERE, "20200101000000Z", "20210101000000Z"),
    ("early", "ca", HERE, "20980101000000Z", "20991231235959Z"),
    ("wrong_host", "ca", ELSEWHERE, "20200101000000Z", "20991231235959Z"),
    ("other", "other_ca", HERE, "20200101000000Z", "20991231235959Z"),
    ("other_client", "other_ca", "", "20200101000000Z", "20991231235959Z"),
]


class Authority:
    def __init__(self, folder):
        self.folder = folder

    def path(self, name):
        return os.path.join(self.folder, name)

    def config(self, name, ca, alternative=""):
        with open(self.path("openssl.cnf"), "w", encoding="utf-8") as file:
            file.write(CONFIG.format(folder=self.folder, name=name, ca=ca, alternative=alternative))
        return self.path("openssl.cnf")

    def openssl(self, *arguments):
        subprocess.run(["openssl", *arguments], check=True, cwd=self.folder,
                       stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)

    def key(self, name):
        self.openssl("ecparam", "-name", "prime256v1", "-genkey", "-noout", "-out", name + ".key")
        os.chmod(self.path(name + ".key"), 0o600)

    def signed_by_itself(self, name, extensions, alternative=""):
        self.key(name)
        self.openssl("req", "-new", "-x509", "-key", name + ".key", "-out", name + ".crt",
                     "-days", "7000", "-config", self.config(name, name, alternative),
                     "-extensions", extensions)

    def authority(self, name):
        self.signed_by_itself(name, "ca_extensions")
        open(self.path(name + ".index"), "w", encoding="utf-8").close()
        with open(self.path(name + ".serial"), "w", encoding="utf-8") as file:
            file.write("01\n")

    def issue(self, name, ca, alternative, start, end):
        self.key(name)
        config = self.config(name, ca, alternative)
        self.openssl("req", "-new", "-key", name + ".key", "-out", name + ".csr", "-config", config)
        self.openssl("ca", "-batch", "-notext", "-config", config, "-in", name + ".csr",
                     "-out", name + ".crt", "-cert", ca + ".crt", "-keyfile", ca + ".key",
                     "-startdate", start, "-enddate", end, "-extensions", "extensions")


def make(folder):
    authority = Authority(folder)
    authority.authority("ca")
    authority.authority("other_ca")
    authority.signed_by_itself("alone", "extensions", HERE)
    for name, *how in ISSUED:
        authority.issue(name, *how)
