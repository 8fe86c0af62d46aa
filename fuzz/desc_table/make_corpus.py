#!/usr/bin/python3
"""Writes the seed corpus of the description-file fuzzer: the example, and a file for each
oddity of the format. Run it in this folder; the files are checked in, so that replaying
them needs no Python.
"""
import pathlib

GOOD = b"1100 0 userName 4 -1 -1\n"


def seeds():
    yield "example", pathlib.Path("../../examples/codec/elements.bcp").read_bytes()
    yield "empty", b""
    yield "one", GOOD
    yield "no_newline", GOOD[:-1]
    yield "crlf", GOOD.replace(b"\n", b"\r\n") * 2
    yield "tabs", GOOD.replace(b" ", b"\t")
    yield "hash_dollar", GOOD.replace(b" ", b"#$")
    yield "mixed", b"1100#$\t0##$a#$$#$-1 -1\n# $#\n#$#$\n"
    yield "byte_order_mark", b"\xef\xbb\xbf" + GOOD
    yield "byte_order_mark_twice", b"\xef\xbb\xbf\xef\xbb\xbf" + GOOD
    yield "five_and_seven", GOOD + b"1 2 3 4 5\n1 2 3 4 5 6 7\n" + GOOD
    yield "blanks", b"  1100   0 x  2 -1 -1   \n   \n\n"
    yield "zero_octets", b"1100 0 a\0b 4 \0 1\0002\n\0\n"
    yield "numbers", (b"9223372036854775807 0 a 99999999999999999999 -2147483649 0x10\n"
                      b"key 0 b 4x +5 --6\n")
    yield "scattered", GOOD + b"1200 0 x 2 -1 -1\n" + GOOD
    yield "itself", b"1100 0 a 1100 -1 160\n1100 0 b 257 1100 -1\n"
    yield "list_of_itself", b"257 0 a 257 -1 -1\n48 0 a 257 48 -1\n-1 0 a 257 -1 -1\n"
    yield "every_type", b"".join(
        b"1100 0 n%d %d 1100 %d\n" % (kind, kind, tag)
        for kind in (2, 4, 5, 9, 16, 48, 256, 257, 258, 77) for tag in (-1, 130, 165))
    yield "long_name", b"1100 0 " + b"n" * 5000 + b" 4 -1 -1\n"
    yield "white", b"1100\v 0 \fx\r 4 \v-1 -1\f\n"


for seed_name, text in seeds():
    pathlib.Path("corpus", seed_name).write_bytes(text)
