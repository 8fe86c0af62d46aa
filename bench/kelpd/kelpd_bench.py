#!/usr/bin/python3
"""kelpd against nginx: the same certificate, the same body, the same load.

usage: kelpd_bench.py KELPD FIGURES.json [REPETITIONS]

Both require a client certificate, write an access log and have one thread (a worker process)
on the first processor; the load, ab, has the second. 500 idle connections are open to
the server that is measured. Before a time is taken both answer the same octets. Rounds
alternate, so that whatever else the machine does falls on both.
"""

import contextlib
import csv
import json
import os
import resource
import shutil
import socket
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "tests"))
from support.kelpd import GROUPS, Installation, free_port, get, read_answer  # noqa: E402

IDLE = 500
CLIENTS = 8
SECONDS = 3
SERVER_CPU, LOAD_CPU = "0", "1"

NGINX = """
worker_processes 1;
daemon off;
pid {folder}/nginx.pid;
error_log {folder}/error.log;
events {{ worker_connections 2048; }}
http {{
    access_log {folder}/access.log;
    client_body_temp_path {folder}/body;
    proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi;
    uwsgi_temp_path {folder}/uwsgi;
    scgi_temp_path {folder}/scgi;
    keepalive_timeout 600s;
    keepalive_requests 1000000000;
    open_file_cache max=10;
    default_type application/json;
    server {{
        listen 127.0.0.1:{port} ssl;
        ssl_certificate {ssl}/server.crt;
        ssl_certificate_key {ssl}/server.key;
        ssl_client_certificate {ssl}/ca.crt;
        ssl_verify_client on;
        ssl_protocols TLSv1.2 TLSv1.3;
        root {folder}/www;
    }}
}}
"""


def pinned(cpu, *command):
    return ["taskset", "-c", cpu, *command]


def processes_of(pid):
    with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as file:
        return [pid] + [int(child) for child in file.read().split()]


def cpu_seconds(pid):
    """CPU time of a process and its children, in user and system mode."""
    ticks = 0
    for process in processes_of(pid):
        with open(f"/proc/{process}/stat", encoding="ascii") as file:
            fields = file.read().rpartition(")")[2].split()
        ticks += int(fields[11]) + int(fields[12])
    return ticks / os.sysconf("SC_CLK_TCK")


class Nginx:
    def __init__(self, root):
        self.root = root
        self.port = free_port()
        self.folder = os.path.join(root.folder, "nginx")
        path = os.path.join(self.folder, "www" + GROUPS)
        os.makedirs(os.path.dirname(path))
        shutil.copy(root.path("etc", "rest_groups.json"), path)
        for folder in (root.folder, self.folder):
            os.chmod(folder, 0o755)  # its worker is another user
        conf = os.path.join(self.folder, "nginx.conf")
        with open(conf, "w", encoding="utf-8") as file:
            file.write(NGINX.format(folder=self.folder, port=self.port,
                                    ssl=root.path("etc", "ssl")))
        self.process = subprocess.Popen(pinned(SERVER_CPU, "/usr/sbin/nginx", "-c", conf),
                                        stderr=subprocess.DEVNULL)

    def stop(self):
        self.process.terminate()
        self.process.wait()


def connect(root, port):
    deadline = time.monotonic() + 20
    while True:
        try:
            raw = socket.create_connection(("127.0.0.1", port), 20)
            raw.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            return root.context().wrap_socket(raw, server_hostname="127.0.0.1")
        except ConnectionRefusedError:
            if time.monotonic() > deadline:
                raise
            time.sleep(0.05)


def body_of(root, port):
    with connect(root, port) as connection:
        connection.sendall(get())
        return read_answer(connection)


def load(root, port, folder):
    """Requests a second and the 99th percentile in milliseconds."""
    percentiles = os.path.join(folder, "percentiles.csv")
    out = subprocess.run(
        pinned(LOAD_CPU, "ab", "-q", "-k", "-t", str(SECONDS), "-n", "10000000", "-c",
               str(CLIENTS), "-f", "TLS1.3", "-E", os.path.join(folder, "identity.pem"), "-e",
               percentiles, f"https://127.0.0.1:{port}{GROUPS}"),
        capture_output=True, text=True, check=True).stdout
    lines = dict(line.split(":", 1) for line in out.splitlines() if ":" in line)
    complete = int(lines["Complete requests"])
    if int(lines["Failed requests"]) or complete - int(lines["Keep-Alive requests"]) > CLIENTS:
        raise AssertionError(out)
    with open(percentiles, encoding="ascii") as file:
        p99 = {row[0]: row[1] for row in csv.reader(file)}["99"]
    return complete, float(lines["Requests per second"].split()[0]), float(p99)


def measure(root, port, pid, folder):
    with contextlib.ExitStack() as stack:
        for _ in range(IDLE):
            stack.enter_context(connect(root, port))
        before = cpu_seconds(pid)
        complete, rate, p99 = load(root, port, folder)
        return {"rate": rate, "p99_ms": p99,
                "cpu_us": 1e6 * (cpu_seconds(pid) - before) / complete}


def main():
    os.environ["KELPD"] = os.path.abspath(sys.argv[1])
    load_average = list(os.getloadavg())
    repetitions = int(sys.argv[3]) if len(sys.argv) > 3 else 9
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (max(soft, min(hard, 4096)), hard))
    root = Installation()
    server = nginx = None
    try:
        root.change("gateway", threads=1)
        root.change("limits", connectionsPerAddress=1000, idleMs=600000)
        identity = os.path.join(root.folder, "identity.pem")
        with open(identity, "w", encoding="ascii") as file:
            for name in ("client.crt", "client.key"):
                with open(root.ssl(name), encoding="ascii") as part:
                    file.write(part.read())
        nginx = Nginx(root)
        server = root.start(limit=lambda: os.sched_setaffinity(0, {int(SERVER_CPU)}))
        contestants = {"ours": (root.port, server.process.pid),
                       "nginx": (nginx.port, nginx.process.pid)}
        answers = {name: body_of(root, port) for name, (port, _) in contestants.items()}
        if answers["ours"] != answers["nginx"] or answers["ours"][0] != 200:
            raise AssertionError(answers)
        figures = {name: [] for name in contestants}
        for _ in range(repetitions):
            for name, (port, pid) in contestants.items():
                figures[name].append(measure(root, port, pid, root.folder))
        entries = [{"name": f"gateway/{name}", "run_type": "iteration", **entry}
                   for name, rounds in figures.items() for entry in rounds]
        with open(sys.argv[2], "w", encoding="utf-8") as file:
            json.dump({"context": {"load_avg": load_average}, "benchmarks": entries}, file,
                      indent=1)
        for name, rounds in figures.items():
            middle = {key: sorted(entry[key] for entry in rounds)[len(rounds) // 2]
                      for key in rounds[0]}
            print(f"{name:6} {middle['rate']:8.0f} requests/s, p99 {middle['p99_ms']:.2f} ms, "
                  f"{middle['cpu_us']:.1f} us CPU a request")
    finally:
        if server:
            server.kill()
        if nginx:
            nginx.stop()
        root.remove()


if __name__ == "__main__":
    main()
