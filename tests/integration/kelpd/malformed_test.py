"""What no two readers would read alike is refused, and nothing behind it is looked at."""

import re
import unittest

from support.kelpd import GROUPS, KelpdTest, get, statuses

LINE = f"GET {GROUPS} HTTP/1.1\r\n".encode()
HOST = b"Host: 127.0.0.1\r\n"


def post(headers, body=b""):
    return f"POST {GROUPS} HTTP/1.1\r\n".encode() + HOST + headers + b"\r\n" + body


def chunked(body):
    return post(b"Transfer-Encoding: chunked\r\n", body)


def resident_octets(server):
    """The most memory that the process has had."""
    with open(f"/proc/{server.process.pid}/status", encoding="ascii") as file:
        return int(re.search(r"VmHWM:\s+(\d+) kB", file.read()).group(1)) * 1024


CASES = [
    ("length and chunks", 400, post(b"Content-Length: 3\r\nTransfer-Encoding: chunked\r\n",
                                    b"0\r\n\r\n")),
    ("chunks and length", 400, post(b"Transfer-Encoding: chunked\r\nContent-Length: 3\r\n",
                                    b"0\r\n\r\n")),
    ("two lengths", 400, post(b"Content-Length: 3\r\nContent-Length: 4\r\n", b"abcd")),
    ("one length twice", 400, post(b"Content-Length: 3\r\nContent-Length: 3\r\n", b"abc")),
    ("list of lengths", 400, post(b"Content-Length: 3, 3\r\n", b"abc")),
    ("length with a sign", 400, post(b"Content-Length: +3\r\n", b"abc")),
    ("negative length", 400, post(b"Content-Length: -1\r\n", b"abc")),
    ("length in hexadecimal", 400, post(b"Content-Length: 0x3\r\n", b"abc")),
    ("length of 20 digits", 400, post(b"Content-Length: 18446744073709551617\r\n")),
    ("length above the limit", 413, post(b"Content-Length: 1048577\r\n")),
    ("chunk size with a plus", 400, chunked(b"+5\r\nabcde\r\n0\r\n\r\n")),
    ("chunk size with a minus", 400, chunked(b"-2\r\nab\r\n0\r\n\r\n")),
    ("chunk size of 17 digits", 400, chunked(b"10000000000000000\r\nab\r\n0\r\n\r\n")),
    ("chunk size with 0x", 400, chunked(b"0x2\r\nab\r\n0\r\n\r\n")),
    ("empty chunk size", 400, chunked(b"\r\nab\r\n0\r\n\r\n")),
    ("chunk size above the limit", 413, chunked(b"100001\r\n")),
    ("chunks above the limit together", 413, chunked(b"80000\r\n" + b"a" * 0x80000 + b"\r\n"
                                                      b"80001\r\n")),
    ("chunk that is longer than it says", 400, chunked(b"2\r\nabc\r\n0\r\n\r\n")),
    ("endless chunk line", 400, chunked(b"2;" + b"a" * 100000)),
    ("endless trailers", 400, chunked(b"0\r\n" + b"a: b\r\n" * 10000)),
    ("folded trailer", 400, chunked(b"0\r\na: b\r\n c\r\n\r\n")),
    ("chunk line with a bare line feed", 400, chunked(b"2\nab\r\n0\r\n\r\n")),
    ("quoted extension that swallows a line", 400, chunked(b'2;a="\r\n"\r\nab\r\n0\r\n\r\n')),
    ("last chunk without its end", 400, chunked(b"0\r\nGET / HTTP/1.1\r\n\0\r\n")),
    ("other transfer coding", 501, post(b"Transfer-Encoding: gzip\r\n")),
    ("chunked and another", 501, post(b"Transfer-Encoding: chunked, gzip\r\n")),
    ("chunked spelt oddly", 501, post(b"Transfer-Encoding: xchunked\r\n")),
    ("chunked twice", 400, post(b"Transfer-Encoding: chunked\r\n" * 2)),
    ("chunks in HTTP/1.0", 400, b"POST / HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n"),
    ("header without an end", 431, LINE + HOST + b"a: " + b"b" * (1 << 20)),
    ("header just too large", 431, LINE + HOST + b"a: " + b"b" * 8192 + b"\r\n\r\n"),
    ("100,000 header lines", 431, LINE + HOST + b"a:b\r\n" * 100000 + b"\r\n"),
    ("65 header lines", 431, LINE + HOST + b"a:b\r\n" * 64 + b"\r\n"),
    ("no Host", 400, LINE + b"\r\n"),
    ("two Hosts", 400, LINE + HOST + HOST + b"\r\n"),
    ("folded line", 400, LINE + HOST + b"a: b\r\n c\r\n\r\n"),
    ("bare line feeds", 400, LINE + HOST + b"a: b\nc: d\r\n\r\n"),
    ("blank before the colon", 400, LINE + HOST + b"a : b\r\n\r\n"),
    ("header line without a colon", 400, LINE + HOST + b"a\r\n\r\n"),
    ("zero octet in a header", 400, LINE + HOST + b"a: b\0c\r\n\r\n"),
    ("no method", 400, b" / HTTP/1.1\r\n" + HOST + b"\r\n"),
    ("no version", 400, b"GET /\r\n" + HOST + b"\r\n"),
    ("version 2", 505, b"GET / HTTP/2.0\r\n" + HOST + b"\r\n"),
    ("octets of another protocol", 400, bytes(range(256)) + b"\r\n\r\n"),
    ("unknown expectation", 417, post(b"Expect: coffee\r\nContent-Length: 1\r\n")),
    ("path with an encoded slash", 400, get("/rest%2Fmrb")),
    ("path with dots", 400, get("/rest/../x")),
    ("path with encoded dots", 400, get("/rest/%2e%2E/x")),
    ("path with a zero octet", 400, get("/rest/%00")),
    ("path with half an escape", 400, get("/rest/%4")),
    ("path that is no UTF-8", 400, get("/rest/%ff")),
    ("path with a line break", 400, get("/rest/%0d%0aa:b")),
    ("path of another host", 400, get("https://other/rest")),
    ("path with an empty segment", 400, get("//rest")),
    ("query with 65 parameters", 400, get("/rest?" + "a&" * 65)),
]


class MalformedTest(KelpdTest):
    # The request behind the malformed one is what an attacker would smuggle in.
    def test_refused_and_closed(self):
        server = self.serve()
        before = resident_octets(server)
        for name, status, octets in CASES:
            with self.subTest(name):
                answer = self.ask(octets + get("/smuggled"))
                self.assertEqual(statuses(answer), [status], answer)
                self.assertIn(b"Connection: close", answer)
        self.assert_serves()
        self.assertNotIn("smuggled", self.root.log())
        self.assertLess(resident_octets(server) - before, 64 << 20)

    # The largest that is allowed, of each kind.
    def test_at_the_limit(self):
        self.serve()
        close = "Connection: close\r\n"
        for name, octets in (
                ("header", get(more=close + "a: " + "b" * (8192 - len(get(more=close)) - 5)
                               + "\r\n")),
                ("header lines", get(more=close + "a:b\r\n" * 62)),
                ("body", get(more=close + "Content-Length: 1048576\r\n") + b"a" * 1048576),
                ("chunk", get(more=close + "Transfer-Encoding: chunked\r\n") + b"100000\r\n"
                 + b"a" * 1048576 + b"\r\n0\r\n\r\n"),
                ("chunks with extension and trailer",
                 get(more=close + "Transfer-Encoding: Chunked\r\n")
                 + b"1;a=b\r\nx\r\n0A\r\n0123456789\r\n0\r\nt: u\r\n\r\n"),
                ("line breaks before a request", b"\r\n" + get(more=close)),
                ("query", get(GROUPS + "?" + "a&" * 64, close))):
            with self.subTest(name):
                self.assertEqual(statuses(self.ask(octets)), [200])

    def test_every_cut_of_a_request_waits_for_the_rest(self):
        self.serve()
        whole = get(more="Transfer-Encoding: chunked\r\n") + b"3\r\nabc\r\n0\r\n\r\n"
        with self.root.connect() as connection:
            for cut in range(1, len(whole)):
                connection.sendall(whole[:cut])
                connection.sendall(whole[cut:])
            found = bytearray()
            while found.count(b"groupmap") < len(whole) - 1:
                found += connection.recv(65536)
            self.assertEqual(statuses(bytes(found)), [200] * (len(whole) - 1))


if __name__ == "__main__":
    unittest.main()
