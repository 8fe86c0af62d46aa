#!/usr/bin/python3
"""Writes the seed corpus beside this file: one well-formed or nearly well-formed stream each."""

import os

HOST = "Host: h\r\n"
SEEDS = {
    "get": "GET /a/b%20c/d?x=1&y=%41+z HTTP/1.1\r\n" + HOST + "\r\n",
    "pipelined": ("GET / HTTP/1.1\r\n" + HOST + "\r\n") * 3 + "HEAD / HTTP/1.0\r\n\r\n",
    "length": "POST /a/b/c HTTP/1.1\r\n" + HOST + "Content-Length: 5\r\n\r\nhello\r\n",
    "chunked": "POST /a/b/c HTTP/1.1\r\n" + HOST + "Transfer-Encoding: chunked\r\n"
               "Expect: 100-continue\r\n\r\n3;a=b\r\nabc\r\nA\r\n0123456789\r\n0\r\nT: u\r\n\r\n",
    "both": "POST / HTTP/1.1\r\n" + HOST + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n",
    "two_lengths": "POST / HTTP/1.1\r\n" + HOST + "Content-Length: 3\r\nContent-Length: 4\r\n\r\n",
    "chunk_sign": "POST / HTTP/1.1\r\n" + HOST + "Transfer-Encoding: chunked\r\n\r\n+3\r\nabc\r\n",
    "folded": "GET / HTTP/1.1\r\n" + HOST + "a: b\r\n c\r\n\r\n",
    "bare": "GET / HTTP/1.1\n" + HOST + "\n\n",
    "dots": "GET /a/../%2e/%2f?%zz HTTP/1.1\r\n" + HOST + "\r\n",
    "many_headers": "GET / HTTP/1.1\r\n" + HOST + "a:b\r\n" * 9 + "\r\n",
    "close": "GET / HTTP/1.1\r\n" + HOST + "Connection: close, upgrade\r\nUpgrade: x\r\n\r\n",
}

folder = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
os.makedirs(folder, exist_ok=True)
for name, text in SEEDS.items():
    with open(os.path.join(folder, name), "wb") as file:
        file.write(b"\x06" + text.encode())
