#!/usr/bin/env python3
"""Counts the system calls a round trip makes, server and client together.

usage: syscalls.py BENCH_BUS OUT.json

Runs server and client under strace with two numbers of round trips; what start and end
cost falls out of the difference.
"""
import json
import re
import subprocess
import sys
import tempfile

FEW, MANY = 500, 2500
CONTESTANTS = ("ours", "unix", "zeromq")
SIZES = (100, 10000)


def calls_in(path):
    """The calls by name in a table that strace -c wrote."""
    calls = {}
    with open(path, encoding="utf-8") as table:
        for line in table:
            row = re.match(r"\s*[\d.]+\s+[\d.]+\s+\d+\s+(\d+)\s+(?:\d+\s+)?(\w+)$", line)
            if row and row[2] != "total":
                calls[row[2]] = calls.get(row[2], 0) + int(row[1])
    return calls


def run(bench, contestant, octets, requests):
    """The calls of a server and of a client that asks so often."""
    with tempfile.TemporaryDirectory(prefix="bench_bus.") as folder:
        line = [contestant, folder, str(octets)]
        trace = ["strace", "-f", "-c", "-o"]
        server_table, client_table = folder + "/server.strace", folder + "/client.strace"
        server = subprocess.Popen([*trace, server_table, bench, "serve", *line],
                                  stdout=subprocess.PIPE, text=True)
        if server.stdout.readline() != "ready\n":
            raise SystemExit(f"{contestant}: the server does not start")
        subprocess.run([*trace, client_table, bench, "count", *line, str(requests)], check=True)
        # strace hands SIGTERM on to nobody: it goes to what strace started.
        child = subprocess.run(["pgrep", "-P", str(server.pid)], capture_output=True, text=True,
                               check=True).stdout.split()[0]
        subprocess.run(["kill", child], check=True)
        server.wait()
        return calls_in(server_table), calls_in(client_table)


def difference(many, few):
    """Calls a round trip, by name."""
    each = {name: (count - few.get(name, 0)) / (MANY - FEW) for name, count in many.items()}
    return {name: round(count, 2) for name, count in sorted(each.items()) if count >= 0.01}


def main(bench, out):
    result = {}
    for contestant in CONTESTANTS:
        for octets in SIZES:
            few, many = (run(bench, contestant, octets, n) for n in (FEW, MANY))
            server, client = (difference(m, f) for m, f in zip(many, few))
            result[f"{contestant}/{octets}"] = {
                "server": server, "client": client,
                "total": round(sum(server.values()) + sum(client.values()), 2)}
            print(contestant, octets, result[f"{contestant}/{octets}"])
    with open(out, "w", encoding="utf-8") as file:
        json.dump(result, file, indent=1)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    main(sys.argv[1], sys.argv[2])
