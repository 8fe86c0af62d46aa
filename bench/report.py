#!/usr/bin/env python3
"""Turns the figures of a benchmark run into docs/benchmarks.md and its plot.

usage: report.py FOLDER_OF_JSON DOCS_FOLDER
"""
import json
import os
import platform
import sys

import matplotlib
matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

# scenario, phase, peer, relation, must, aim. What is compared stands in value(); "must"
# decides, "aim" is where we are going; None: no limit set.
LIMITS = [
    ("Table: build the tree", "build", "jsoncpp", "<=", 0.6, 0.25),
    ("Table: build the tree", "build", "protobuf", "<=", None, 0.8),
    ("Table: tree to octets", "encode", "jsoncpp", "<=", 0.20, 0.08),
    ("Table: tree to octets", "encode", "asn1c", "<=", 0.125, 0.05),
    ("Table: octets to tree", "decode", "jsoncpp", "<=", 0.40, 0.15),
    ("Table: octets to tree", "decode", "asn1c", "<=", 1.6, 0.6),
    ("Table: whole cycle", "cycle", "jsoncpp", "<=", 0.40, 0.15),
    ("Table: whole cycle", "cycle", "nlohmann", "<=", 1.2, 0.5),
    ("Table: cycle, time a cell at 100,000 rows", "cycle", "10,000 rows", "<=", 1.3, 1.1),
    ("Table: heap a cell", "heap", "jsoncpp", "<=", 2.2, 1.4),
    ("Request of ten scalars, both ways", "request", "jsoncpp", "<=", 0.5, 0.15),
    *[(f"Codec, {what}: {phase}", f"{name} {phase}", peer, "<=", must, aim)
      for what, name in (("message of ten scalars", "message"),
                         ("record with 1,000 structures", "records"),
                         ("the message undescribed", "message undescribed"),
                         ("5,000 undescribed values", "values undescribed"))
      for phase, peer, must, aim in (("build", "jsoncpp", 0.10, 0.05),
                                     ("build", "nlohmann_cbor", 1.0, 0.5),
                                     ("build", "msgpack", None, 1.5),
                                     ("parse", "jsoncpp", 0.5, 0.15),
                                     ("parse", "nlohmann_cbor", 1.3, 0.5))],
    *[(f"Codec, time an element, {text}: {phase}", f"growth {phase}", larger, "<=", 1.3, 1.1)
      for text, larger in (("at depth 100", "depth 3"), ("of 100,000", "1000 elements"))
      for phase in ("build", "parse")],
    ("Sort 10,000 rows, distinct integers", "sort distinct", "exchanges", "<=", 0.01, 0.002),
    ("Sort 10,000 rows, distinct integers", "sort distinct", "std_sort", "<=", 4, 2),
    ("Sort 10,000 rows, any 64 bits", "sort wide", "exchanges", "<=", 0.01, 0.002),
    ("Sort 10,000 rows, any 64 bits", "sort wide", "std_sort", "<=", 4, 2),
    *[(f"Sort 10,000 rows, {text}", f"sort {name}", "exchanges", "<=", 0.05, 0.01)
      for text, name in (("many equal integers", "equal"), ("many equal texts", "text"),
                         ("two keys", "two"), ("two keys, many equal", "two_few"),
                         ("two keys, a text and an integer", "two_text"),
                         ("three keys", "three"))],
    ("Cell of 20 columns by name", "access", "index", "<=", 3, 1.5),
    ("Memory a cell, integers", "memory integer", "variant", "<=", 1.5, 1.0),
    ("Memory a cell, texts of 16 octets", "memory text", "variant", "<=", 1.5, 1.0),
    *[(f"{name}: {text} 100,000 rows", f"{phase} {database}", f"{library}", "<=", must, aim)
      for database, name, library in (("sqlite", "SQLite", "sqlite3"),
                                      ("postgresql", "PostgreSQL", "libpq"))
      for phase, text, must, aim in (("select", "SELECT of", 2.0, 1.2),
                                     ("insert", "INSERT of", 1.5, 1.1))],
    ("Identifier: parse five pairs, look two up", "uid parse", "ldap", "<=", 0.5, 0.15),
    ("Identifier: build five pairs with escapes", "uid build", "streams", "<=", 0.4, 0.2),
    ("List: join and split 20 items", "list", "streams", "<=", 0.5, 0.25),
    ("Pool pair, process without threads", "pool 0", "glibc", "<=", 1.0, 0.4),
    *[(f"Pool pair, {text}", f"pool {threads}", peer, "<=", must, aim)
      for text, threads in (("one thread of a process with threads", 1), ("two threads", 2))
      for peer, must, aim in (("boost", 0.8, 0.3), ("glibc", None, 1.2))],
    ("Round trip, 100 octets", "roundtrip/100", "unix", "<=", 2.5, 1.2),
    ("Round trip, 100 octets", "roundtrip/100", "zeromq", "<", 1.0, 0.35),
    ("Round trip, 10 kB", "roundtrip/10000", "unix", "<=", 2.5, 1.2),
    ("Round trip, 10 kB", "roundtrip/10000", "zeromq", "<", 1.0, 0.35),
    ("8 clients, requests a second, 100 octets", "clients/100", "unix", ">=", 0.35, 0.8),
    ("8 clients, requests a second, 100 octets", "clients/100", "zeromq", ">=", 1.5, 3),
    ("8 clients, requests a second, 10 kB", "clients/10000", "unix", ">=", 0.35, 0.8),
    ("8 clients, requests a second, 10 kB", "clients/10000", "zeromq", ">=", 1.5, 3),
    ("REST exchange on a kept connection, requests a second", "exchange", "easy_handle", ">=",
     0.85, 0.97),
    ("TLS handshakes in 1,000 exchanges by 8 threads", "handshakes", "threads", "<=", 1, 1),
    ("kelpd: GET over TLS, requests a second", "gateway rate", "nginx", ">=", 0.5, 0.9),
    ("kelpd: GET over TLS, 99th percentile", "gateway p99_ms", "nginx", "<=", 2, 1.1),
    ("kelpd: GET over TLS, CPU a request", "gateway cpu_us", "nginx", "<=", 2, 1.1),
]
PEER_NAMES = {"unix": "bare Unix socket", "zeromq": "ZeroMQ REQ/REP, ipc", "nlohmann":
              "nlohmann, text", "asn1c": "asn1c", "10,000 rows": "ours at 10,000 rows",
              "exchanges": "exchanges one by one", "std_sort": "std::sort of extracted keys",
              "index": "by index", "variant": "std::variant<long, double, std::string>",
              "nlohmann_cbor": "nlohmann, CBOR", "msgpack": "msgpack-cxx",
              "easy_handle": "bare libcurl easy handle", "threads": "the number of threads",
              "ldap": "ldap_str2dn", "streams": "string streams", "glibc": "glibc malloc",
              "boost": "boost::singleton_pool",
              "depth 3": "ours at depth 3", "1000 elements": "ours of 1,000"}
# What ours is measured against itself: the larger of two sizes, by the smaller.
LARGER = {"depth 3": "depth 100", "1000 elements": "100000 elements"}


def median(values):
    values = sorted(values)
    middle = len(values) // 2
    return values[middle] if len(values) % 2 else (values[middle - 1] + values[middle]) / 2


class Figures:
    """Every repetition's value by (phase, contestant), in the unit that phase is told in."""

    def __init__(self, folder):
        self.values = {}
        self.octets = {}
        self.allocations = {}
        self.context = {}
        for scenario in ("table", "request", "codec", "sort", "cell", "sql", "strutil", "pool",
                         "pool_threads", "bus", "http", "kelpd"):
            with open(os.path.join(folder, scenario + ".json"), encoding="utf-8") as file:
                run = json.load(file)
            self.context[scenario] = run["context"]
            for entry in run["benchmarks"]:
                if entry["run_type"] == "iteration":
                    getattr(self, "_" + scenario)(entry)
        with open(os.path.join(folder, "syscalls.json"), encoding="utf-8") as file:
            self.syscalls = json.load(file)

    def _add(self, phase, contestant, value):
        self.values.setdefault((phase, contestant), []).append(value)

    def _table(self, entry):
        phase, contestant, rows = entry["name"].split("/")[:3]
        if rows != "10000":
            contestant += "@" + rows
        self._add(phase, contestant, entry["real_time"] * 1e6 / entry["cells"])
        self._add("first " + phase, contestant, entry["first_ms"] * 1e6 / entry["cells"])
        if "heap_a_cell" in entry:
            self._add("heap", contestant, entry["heap_a_cell"])
        if "octets" in entry:
            self.octets[contestant] = int(entry["octets"])

    def _request(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        self._add(phase, contestant, entry["cpu_time"])
        self.octets["request/" + contestant] = int(entry["octets"])

    def _codec(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        self._add(phase, contestant, entry["cpu_time"] / entry.get("elements", 1))
        if "octets" in entry:
            self.octets[phase + "/" + contestant] = int(entry["octets"])
            self.allocations[phase, contestant] = entry["allocations"]

    def _sort(self, entry):
        scenario, contestant = entry["name"].split("/")[:2]
        self._add("sort " + scenario, contestant, entry["real_time"])

    def _cell(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        if phase == "access":
            contestant = {"name": "ours"}.get(contestant, contestant)
            self._add(phase, contestant, entry["real_time"] * 1e3 / entry["cells"])
        else:
            self._add("memory " + phase, contestant, entry["heap_a_cell"])

    def _sql(self, entry):
        phase, database, contestant = entry["name"].split("/")[:3]
        peer = {"sqlite": "sqlite3", "postgresql": "libpq"}[database]
        self._add(f"{phase} {database}", {"c": peer}.get(contestant, contestant),
                  entry["real_time"])

    def _strutil(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        self._add(phase, contestant, entry["cpu_time"])

    def _pool(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        # Two threads that wait for one another use less CPU time than they take.
        time = "real_time" if phase == "pool 2" else "cpu_time"
        self._add(phase, contestant, entry[time])

    _pool_threads = _pool

    def _bus(self, entry):
        phase, contestant, octets = entry["name"].split("/")[:3]
        value = entry.get("requests_per_second", entry["real_time"])
        self._add(phase + "/" + octets, contestant, value)
        if "cpu_us" in entry:
            self._add("cpu/" + octets, contestant, entry["cpu_us"])

    def _http(self, entry):
        phase, contestant = entry["name"].split("/")[:2]
        if phase == "handshakes":
            self._add(phase, contestant, entry["handshakes"])
            self._add(phase, "threads", 8)
        else:
            self._add(phase, contestant, 1e6 / entry["real_time"])
            self._add("exchange CPU", contestant, entry["cpu_time"])

    def _kelpd(self, entry):
        phase, contestant = entry["name"].split("/")
        for figure in ("rate", "p99_ms", "cpu_us"):
            self._add(f"{phase} {figure}", contestant, entry[figure])

    def of(self, phase, contestant):
        return median(self.values[phase, contestant])

    def spread(self, phase, contestant):
        """Half of the range of the middle half, relative: how far the figure moves."""
        values = sorted(self.values[phase, contestant])
        quarter = len(values) // 4
        return (values[-1 - quarter] - values[quarter]) / 2 / median(values)

    def ratio(self, phase, peer):
        if peer == "10,000 rows":
            return self.of(phase, "ours@100000") / self.of(phase, "ours")
        if peer in LARGER:
            return self.of(phase, LARGER[peer]) / self.of(phase, peer)
        return self.of(phase, "ours") / self.of(phase, peer)


def holds(ratio, relation, limit):
    return {"<=": ratio <= limit, "<": ratio < limit, ">=": ratio >= limit}[relation]


AIM_RELATION = {"<=": "<=", "<": "<=", ">=": ">="}


def limit_text(relation, limit):
    return "-" if limit is None else f"{relation} {limit:g}"


def verdict(ratio, relation, limit):
    return "-" if limit is None else "yes" if holds(ratio, relation, limit) else "**no**"


def ratio_table(figures):
    yield "| scenario | measured against | ratio | must | met | aim | met | spread |"
    yield "|---|---|---:|---:|---|---:|---|---:|"
    for scenario, phase, peer, relation, must, aim in LIMITS:
        ratio = figures.ratio(phase, peer)
        yield (f"| {scenario} | {PEER_NAMES.get(peer, peer)} | {ratio:.3g} "
               f"| {limit_text(relation, must)} | {verdict(ratio, relation, must)} "
               f"| {limit_text(AIM_RELATION[relation], aim)} "
               f"| {verdict(ratio, AIM_RELATION[relation], aim)} "
               f"| {100 * figures.spread(phase, LARGER.get(peer, 'ours')):.0f} % |")


def missed(figures, column):
    names = [f"{row[0]} against {PEER_NAMES.get(row[2], row[2])}" for row in LIMITS
             if row[column] is not None
             and not holds(figures.ratio(row[1], row[2]),
                           AIM_RELATION[row[3]] if column == 5 else row[3], row[column])]
    return "; ".join(names) if names else "none"


def cell_table(figures):
    contestants = ["ours", "ours_addrow", "ours@100000", "jsoncpp", "nlohmann", "protobuf",
                   "asn1c", "null"]
    yield "| nanoseconds a cell | build | encode | decode | cycle | octets | heap a cell |"
    yield "|---|---:|---:|---:|---:|---:|---:|"
    for name in contestants:
        times = " | ".join(f"{figures.of(phase, name):.1f}"
                           for phase in ("build", "encode", "decode", "cycle"))
        yield f"| {name} | {times} | {figures.octets[name]} | {figures.of('heap', name):.0f} |"


def codec_table(figures):
    yield "| microseconds | build | parse | octets | allocations in build |"
    yield "|---|---:|---:|---:|---:|"
    for name in ("message", "records", "message undescribed", "values undescribed"):
        for contestant in ("ours", "jsoncpp", "nlohmann_cbor", "msgpack"):
            key = (name + " parse", contestant)
            parse = f"{figures.of(*key) / 1000:.2f}" if key in figures.values else "-"
            build = name + " build"
            yield (f"| {name}, {PEER_NAMES.get(contestant, contestant)} "
                   f"| {figures.of(build, contestant) / 1000:.2f} | {parse} "
                   f"| {figures.octets[build + '/' + contestant]} "
                   f"| {figures.allocations[build, contestant]:.0f} |")


def sort_table(figures):
    yield "| milliseconds | ours | exchanges | std::sort of extracted keys |"
    yield "|---|---:|---:|---:|"
    for text, name in (("distinct integers", "distinct"), ("any 64 bits", "wide"),
                       ("20 different integers", "equal"), ("500 different texts", "text"),
                       ("two keys of a million values", "two"), ("two keys of 50", "two_few"),
                       ("two keys, 100 texts and 1,000 integers", "two_text"),
                       ("three keys of 1,000", "three")):
        phase = "sort " + name
        std = f"{figures.of(phase, 'std_sort'):.3f}" if (phase, "std_sort") in figures.values \
            else "-"
        yield (f"| {text} | {figures.of(phase, 'ours'):.3f} "
               f"| {figures.of(phase, 'exchanges'):.0f} | {std} |")


def cells_text(figures):
    return CELLS.format(
        name=figures.of("access", "ours"), index=figures.of("access", "index"),
        **{f"{phase}_{peer}": figures.of("memory " + phase, peer)
           for phase in ("integer", "text") for peer in ("ours", "variant")})


def name_table(figures):
    yield "| nanoseconds | ours | peer | copy |"
    yield "|---|---:|---:|---:|"
    for phase, text, peer in (("uid parse", "parse five pairs, look two up", "ldap"),
                              ("uid build", "build five pairs", "streams"),
                              ("list", "join and split 20 items", "streams")):
        yield (f"| {text}, {PEER_NAMES[peer]} | {figures.of(phase, 'ours'):.0f} "
               f"| {figures.of(phase, peer):.0f} | {figures.of(phase, 'null'):.0f} |")


def pool_table(figures):
    yield "| nanoseconds a pair | without threads | one thread | two threads |"
    yield "|---|---:|---:|---:|"
    for contestant in ("ours", "glibc", "boost", "null"):
        times = " | ".join(f"{figures.of(f'pool {threads}', contestant):.1f}"
                           for threads in (0, 1, 2))
        yield f"| {PEER_NAMES.get(contestant, contestant)} | {times} |"


def bus_table(figures):
    heads = ("round trip, us", "CPU of both sides, us", "8 clients, requests/s", "system calls")
    yield "| | " + " | ".join(f"{head}: 100 octets | 10 kB" for head in heads) + " |"
    yield "|---|---:|---:|---:|---:|---:|---:|---:|---:|"
    for name in ("ours", "unix", "zeromq"):
        trips = " | ".join(f"{figures.of('roundtrip/' + n, name):.1f}" for n in ("100", "10000"))
        cpu = " | ".join(f"{figures.of('cpu/' + n, name):.1f}" for n in ("100", "10000"))
        rates = " | ".join(f"{figures.of('clients/' + n, name):.0f}" for n in ("100", "10000"))
        calls = " | ".join(f"{figures.syscalls[name + '/' + n]['total']:g}"
                           for n in ("100", "10000"))
        yield f"| {PEER_NAMES.get(name, name)} | {trips} | {cpu} | {rates} | {calls} |"


def gateway_table(figures):
    yield "| | requests/s | 99th percentile, ms | CPU a request, us |"
    yield "|---|---:|---:|---:|"
    for name in ("ours", "nginx"):
        yield (f"| {name} | {figures.of('gateway rate', name):.0f} "
               f"| {figures.of('gateway p99_ms', name):.2f} "
               f"| {figures.of('gateway cpu_us', name):.1f} |")


def calls_text(figures):
    for side in ("client", "server"):
        calls = figures.syscalls["ours/100"][side]
        listed = ", ".join(f"{name} {count:g}" for name, count in calls.items())
        yield f"- our {side}, 100 octets: {listed}"


def sql_table(figures):
    yield "| milliseconds | ours | C interface |"
    yield "|---|---:|---:|"
    for database, peer in (("sqlite", "sqlite3"), ("postgresql", "libpq")):
        for phase in ("select", "insert"):
            key = f"{phase} {database}"
            yield f"| {key} | {figures.of(key, 'ours'):.0f} | {figures.of(key, peer):.0f} |"


def cpu_model():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        return next((line.split(":")[1].strip() for line in file if "model name" in line), "?")


def machine(figures):
    caches = ", ".join(f"L{c['level']} {c['type']} {c['size'] // 1024} KiB"
                       for c in figures.context["table"]["caches"])
    yield f"- {figures.context['table']['num_cpus']} CPUs, {cpu_model()}; {caches}"
    yield f"- {platform.system()} {platform.release()}, g++ 12, Release"
    loads = ", ".join(f"{name} {context['load_avg'][0]:.1f}"
                      for name, context in figures.context.items())
    yield f"- load average when each scenario began: {loads}"
    repetitions = len(figures.values["cycle", "ours"])
    yield f"- {figures.context['table']['date'][:10]}, {repetitions} repetitions"


def plot(figures, path):
    rows = [row for row in LIMITS if row[4] is not None][::-1]
    figure, axes = plt.subplots(figsize=(9, 0.38 * len(rows) + 1))
    for y, (scenario, phase, peer, relation, must, aim) in enumerate(rows):
        # Above 1 is worse than what must be, whichever way the relation points.
        def share(value):
            return must / value if relation == ">=" else value / must
        ratio = figures.ratio(phase, peer)
        good = holds(ratio, relation, must)
        axes.barh(y, share(ratio), color="#4878a8" if good else "#c05040", height=0.6)
        axes.plot([share(aim)], [y], marker="|", markersize=14, color="black")
    axes.axvline(1, color="black", linewidth=1)
    axes.set_yticks(range(len(rows)),
                    [f"{row[0]} / {PEER_NAMES.get(row[2], row[2])}" for row in rows], fontsize=8)
    axes.set_xlabel("share of what is allowed (line: must, ticks: aim); shorter is better")
    figure.tight_layout()
    plt.rcParams["svg.fonttype"] = "none"
    plt.rcParams["svg.hashsalt"] = "benchmarks"
    figure.savefig(path, metadata={"Date": None})


CELLS = """By name {name:.1f} ns a cell, by index {index:.1f} ns, the conversion to a number
included; 20 names of 2 to 12 octets. Heap a cell, in rows of 20: integers {integer_ours:.0f}
octets (variant {integer_variant:.0f}), texts of 16 octets {text_ours:.0f} (variant
{text_variant:.0f})."""

TEXT = """# Benchmarks

Written by `scripts/bench.sh`; do not edit. All ratios are ours over the peer's, medians of
one run whose repetitions were interleaved at random. Before a time is taken, every
contestant proves that it gives back what it was given. "Must" decides whether we are good
enough, "aim" is where we are going. "Spread" is how far our own figure moved between
repetitions (half of the interquartile range).

![Ratios as a share of what is allowed](benchmarks.svg)

{ratios}

Limits that are not met: {missed_must}.

Aims that are not met: {missed_aim}.

## A table

10,000 rows of 8 columns: 2 integers, 2 doubles with three decimals, 4 texts of 6 to 40
octets. CPU time of the thread. What we encode and decode goes through the common response:
making and destroying the records is in our times. The judged way to build is column access
(`root["name"][row] = value`); `ours_addrow` builds a row and adds it. asn1c's structure is
built outside of the time and is the end of its decoding: the step between named values and
the structure, which is in our times, is given to that peer. jsoncpp's writer, reader and
stream are made once. protobuf has a compiled schema. `null` copies the rows' octets into
one string: what touching the data costs.

{cells}

A process that serves commands is warm: every measurement's first iteration is told apart.
The first cycle of 100,000 rows, mostly on memory fresh from the system, took {first_many:.0f} ns a
cell (all: {many:.0f}), of 10,000 rows {first:.0f} ns.

Heap counts octets allocated and not freed by a built tree: malloc's and the block pools'.

## A request

Ten named scalars to octets and back into a fresh tree: {request_ours:.0f} ns, jsoncpp
{request_jsoncpp:.0f} ns, plain copy {request_null:.0f} ns; {octets_ours} octets,
jsoncpp {octets_jsoncpp}.

## The codec

A message of ten named scalars and a record with a list of 1,000 structures of five scalars,
both by a description that both sides know, so that no names travel; then the message and
5,000 scalars without a description, as lists of named values. Every contestant starts from
a tree of its own kind; msgpack-cxx from its dynamic objects. Writers, readers and buffers
are kept.

{codec}

## Sorting a value table

10,000 rows in memory of their own, CPU time. The order is that of exchanging each row with
every later one that it does not precede; `exchanges` does that, and the rows come out the
same. `std::sort` gets the keys and row numbers of one column, extracted outside of its time,
and moves no rows.

{sorts}

## Cells of a value table

{cell_access}

## Databases

100,000 rows of 8 columns. SELECT reads them into a value table, whose cursor then goes
through all cells; the C interfaces read into a vector of variants. INSERT runs one prepared
statement for each row in one transaction. SQLite: CPU time of the thread. PostgreSQL: the time
that passes, most of it in the server, which runs on the same machine.

{sql}

## Identifiers and lists

A name of five pairs; building escapes in three of its values. A list of 20 items of about 20
characters, read into one string after another. Nobody keeps anything from one time to the
next. The copy is that of the text.

{names}

## Small blocks

1,000 live blocks of 4 to 128 bytes; a pair returns a random one and takes another of a
random size. CPU time, but with two threads, which share all pools, elapsed time a pair of
both. `boost::singleton_pool` has a pool for each size and a mutex in each, as ours have.

{pools}

## Processes

A round trip of one client has both processes on one CPU. Eight clients are eight processes
that ask for {seconds} s; the bare Unix socket's server has a thread a connection. Payloads
go both ways and are checked. Both sides' CPU time a round trip stands beside its time,
since other processes on the same CPU stretch the time but not the CPU time: our CPU time is
{cpu_ratios} times the bare Unix socket's. System calls are of both sides
together, counted by strace without pinning.

{bus}

{calls}

## REST

One exchange of a small JSON body with a TLS server on the same CPU, through the HTTP manager
as its callers use it, a new object for each request: {rest_ours:.0f} requests a second, a bare
libcurl easy handle with everything set once {rest_bare:.0f}. CPU of the client alone:
{rest_cpu_ours:.1f} us and {rest_cpu_bare:.1f} us. Both verify the server.

## The gateway

GET of a small body over TLS 1.3 on kept connections, with client certificates required and an
access log written, while 500 further connections are idle. Eight clients of ab have one
processor, the server has the other and one thread; the contestants take turns. CPU is the
server's, which other processes on the same processor do not stretch.

{gateway}

## The machine

{machine}
"""


def main(folder, docs):
    figures = Figures(folder)
    text = TEXT.format(
        ratios="\n".join(ratio_table(figures)), missed_must=missed(figures, 4),
        missed_aim=missed(figures, 5), cells="\n".join(cell_table(figures)),
        request_ours=figures.of("request", "ours"),
        request_jsoncpp=figures.of("request", "jsoncpp"),
        request_null=figures.of("request", "null"), octets_ours=figures.octets["request/ours"],
        octets_jsoncpp=figures.octets["request/jsoncpp"], seconds=1.5,
        first_many=figures.of("first cycle", "ours@100000"),
        many=figures.of("cycle", "ours@100000"), first=figures.of("first cycle", "ours"),
        cpu_ratios=" and ".join(f"{figures.ratio('cpu/' + n, 'unix'):.2f}"
                                for n in ("100", "10000")),
        codec="\n".join(codec_table(figures)), sorts="\n".join(sort_table(figures)),
        cell_access=cells_text(figures), sql="\n".join(sql_table(figures)),
        bus="\n".join(bus_table(figures)), calls="\n".join(calls_text(figures)),
        rest_ours=figures.of("exchange", "ours"), rest_bare=figures.of("exchange", "easy_handle"),
        rest_cpu_ours=figures.of("exchange CPU", "ours"),
        rest_cpu_bare=figures.of("exchange CPU", "easy_handle"),
        names="\n".join(name_table(figures)), pools="\n".join(pool_table(figures)),
        gateway="\n".join(gateway_table(figures)),
        machine="\n".join(machine(figures)))
    with open(os.path.join(docs, "benchmarks.md"), "w", encoding="utf-8") as file:
        file.write(text)
    plot(figures, os.path.join(docs, "benchmarks.svg"))
    print("\n".join(ratio_table(figures)))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        raise SystemExit(__doc__)
    main(sys.argv[1], sys.argv[2])
