#!/usr/bin/python3
"""Writes the seed corpus of the record fuzzer: one common request or response of every
shape and coding form, a few of them damaged. Run it in this folder; the files are
checked in, so that replaying them needs no Python.
"""
import pathlib
import struct


def length(octets):
    if octets < 0x80:
        return bytes([octets])
    body = octets.to_bytes((octets.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(body)]) + body


def tlv(identifier, content=b""):
    return bytes([identifier]) + length(len(content)) + content


def open_tlv(identifier, content=b""):
    return bytes([identifier, 0x80]) + content + b"\0\0"


def integer(value):
    return tlv(0x02, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def text(value):
    return tlv(0x04, value if isinstance(value, bytes) else value.encode())


def seq(*parts):
    return tlv(0x30, b"".join(parts))


def tag(number, *parts):
    return tlv(0xA0 | number, b"".join(parts))


def cell(number, value):
    return seq(tag(number, value))


def column(name, code, desc=None):
    return seq(text(name), integer(code), tag(0, text(desc)) if desc else b"")


def table(rows, columns, name=None, coder=seq):
    return coder(
        tag(0, text(name)) if name is not None else b"",
        tag(1, coder(*columns)) if columns is not None else b"",
        coder(*[coder(*row) for row in rows]),
    )


def open_seq(*parts):
    return open_tlv(0x30, b"".join(parts))


def real(content):
    return cell(2, tlv(0x09, content))


COLUMNS = [column("index", 2), column("rate", 9, "octets a second"), column("name", 4)]


def row(number):
    return [cell(1, integer(number)), real(b"\x80\xfe" + bytes([number])),
            cell(3, text("eth%d" % number))]


RESOURCE = seq(text("NE=7,PORT=1"), tag(0, text("tokyo-1")), tag(1, integer(70000)),
               tag(2, integer(-3)), tag(3, integer(1 << 40)), tag(4, text("asia/tokyo-1")),
               tag(5, seq(seq(integer(1), integer(2), seq(text("NE=8"), text(""))))))

REALS = {
    "zero": b"", "minus_zero": b"\x43", "infinity": b"\x40", "minus_infinity": b"\x41",
    "not_a_number": b"\x42", "base8": b"\x94\x03\x05", "base16": b"\xec\xff\x03",
    "exponent2": b"\x81\xfb\xcd\x03", "exponent3": b"\x82\xff\xff\xff\x02",
    "exponent_n": b"\x83\x04\0\0\0\x03\x05", "long_mantissa": b"\x80\0" + b"\xff" * 12,
    "nr1": b"\x01  -42", "nr2": b"\x02+1,5", "nr3": b"\x03-3.14159E-2", "nr3_huge": b"\x031E999",
}


def request(*rest, user=7):
    return seq(integer(user), *rest)


def response(*rest, code=0):
    return seq(integer(code), *rest)


def seeds():
    yield "request_empty", request()
    yield "request_largest_user", request(user=(1 << 63) - 1)
    yield "request_resource", request(tag(0, RESOURCE))
    yield "request_no_tables", request(tag(1, seq()))
    yield "request_single_row", request(tag(1, seq(table([row(1)], COLUMNS))))
    yield "request_rows", request(tag(1, seq(table([row(i) for i in range(5)], COLUMNS))))
    yield "request_named", request(tag(1, seq(table([row(1), row(2)], COLUMNS, "ports"))))
    yield "request_two_named", request(tag(1, seq(table([row(1)], COLUMNS, "a"),
                                                  table([row(2)], COLUMNS, "b"))))
    yield "request_two_unnamed", request(tag(1, seq(table([row(1)], COLUMNS),
                                                    table([row(2), row(3)], COLUMNS))))
    yield "request_no_schema", request(tag(1, seq(table([row(1)], None))))
    yield "request_no_rows", request(tag(1, seq(table([], COLUMNS))))
    yield "request_short_rows", request(tag(1, seq(table([row(1)[:1], [], row(2)], COLUMNS))))
    yield "request_long_rows", request(tag(1, seq(table([row(1) + row(2)], COLUMNS))))
    yield "request_wrong_kinds", request(tag(1, seq(table([row(1)[::-1], row(2)], COLUMNS))))
    yield "request_all", request(tag(0, RESOURCE), tag(1, seq(table([row(1)], COLUMNS, "t"))))
    yield "request_dotted_names", request(tag(1, seq(table(
        [row(1), row(2)], [column("a.b", 2), column("a..c", 9), column(".", 4)]))))
    yield "request_reserved_names", request(tag(1, seq(table(
        [row(1)], [column("##RowCount", 2), column("##UserID", 9), column("##TableCount", 4)]))))
    yield "request_same_names", request(tag(1, seq(table(
        [row(1), row(2)], [column("x", 2), column("x", 9), column("x", 4)]))))
    yield "request_brackets", request(tag(1, seq(table(
        [row(1)], [column("a[5]", 2), column("", 9), column("a[-1]", 4)]))))
    yield "response_empty", response(code=0x42000030)
    yield "response_headers", response(tag(0, integer(-1)), tag(1, text("V100R002")))
    yield "response_rows", response(tag(2, seq(table([row(i) for i in range(20)], COLUMNS))))
    yield "response_all", response(tag(0, integer(5)), tag(1, text(b"V1\0x")),
                                   tag(2, seq(table([row(1)], COLUMNS),
                                              table([row(1), row(2)], COLUMNS, "ports"))))
    yield "response_booleans", response(tag(2, seq(table(
        [[cell(0, tlv(1, b"\xff")), seq(), cell(0, tlv(1, b"\0"))]], COLUMNS))))
    yield "response_two_fields", response(tag(2, seq(table(
        [[seq(tag(1, integer(1)), tag(3, text("x")))]], COLUMNS))))
    yield "response_zero_octets", response(tag(2, seq(table(
        [[cell(3, text(b"a\0b"))]], [column(b"na\0me", 4)]))))
    for name, content in REALS.items():
        yield "real_" + name, response(tag(2, seq(table([[real(content)]], [column("r", 9)]))))
    for bits, name in ((1, "denormal"), (0x7FEFFFFFFFFFFFFF, "largest")):
        value = struct.unpack(">d", struct.pack(">Q", bits))[0]
        yield "real_text_" + name, response(tag(2, seq(table(
            [[real(b"\x03" + ("%.17E" % value).encode())]], [column("r", 9)]))))
    yield "open_everywhere", open_seq(integer(0), open_tlv(0xA2, open_seq(
        table([row(1), row(2)], COLUMNS, None, open_seq))))
    yield "open_to_the_end", b"\x30\x80" + integer(0) + b"\xa2\x80\x30\x80" + table([row(1)], COLUMNS)
    yield "segments", response(tag(1, tlv(0x24, text("V1") + open_tlv(0x24, text("00") + text("")))))
    yield "long_lengths", b"\x30\x84\0\0\0\x06" + b"\x02\x84\0\0\0\x05"[:6] + b"\x05"
    yield "cut", response(tag(2, seq(table([row(1)], COLUMNS))))[:-3]
    yield "length_lies", b"\x30\x84\xff\xff\xff\xff" + integer(0)
    yield "too_deep", b"\x30\x80" + integer(0) + b"\xa1\x80" + b"\x24\x80" * 200
    yield "zeros", b"\x30\x80" + b"\0" * 64
    yield "octets_behind", response() + b"\0"


for seed_name, octets in seeds():
    pathlib.Path("corpus", seed_name).write_bytes(octets)
