#!/usr/bin/python3
"""Writes the seed corpus of the codec fuzzer: a stream for every description that its
target knows and every coding form, a few of them damaged. Run it in this folder; the files
are checked in, so that replaying them needs no Python.
"""
import pathlib


def length(octets):
    if octets < 0x80:
        return bytes([octets])
    body = octets.to_bytes((octets.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(body)]) + body


def tlv(tag, content=b""):
    return bytes([tag]) + length(len(content)) + content


def built(tag, *parts):
    """With the header that build reserves."""
    content = b"".join(parts)
    return bytes([tag, 0x83]) + len(content).to_bytes(3, "big") + content


def integer(value, tag=0x02):
    return tlv(tag, value.to_bytes(value.bit_length() // 8 + 1, "big", signed=True))


def text(value, tag=0x04):
    return tlv(tag, value if isinstance(value, bytes) else value.encode())


def real(content, tag=0x09):
    return tlv(tag, content)


def seq(*parts):
    return built(0x30, *parts)


def named(name, value):
    return seq(text(name), value)


NULL = b"\x05\0"
HALF = real(b"\x80\xff\x01")

# As in target.cpp.
KEYS = {2000: 0, 2010: 1, 2020: 2, 2030: 3, 2060: 4, 2070: 5, 2071: 6, 2072: 7, 2080: 8,
        "48 2000": 9, "list 2000": 10, "list 2060": 11, "any": 12, "integer": 13, "string": 14,
        "real": 15, "integers": 16, "strings": 17, "reals": 18, "named": 19, "lists": 20,
        "wrapper": 21, "integer 82": 22, "string 82": 23, "named a3": 24, "2000 a4": 25,
        "value": 26, "value a1": 27, "unknown": 28, "real 82": 29}

LOCATION = [text("tokyo"), real(b"\x80\xfd\x8b"), real(b"\xc1\x03\xff\x01")]
PORT = seq(integer(1), text("eth0"), seq(text("10.0.0.1"), text("10.0.0.2")),
           built(0xA0, integer(5, 128), integer(1 << 20, 129)))
ELEMENT = [integer(7), text("ne"), HALF, NULL, built(0xA0, *LOCATION), built(0xA1, PORT, PORT),
           built(0xA2, named("rack", text("r1")), named("slots", integer(300))),
           tlv(0xA5, integer(5)), text("note", 131)]
ALARM = seq(integer(1), integer(-5, 128), built(0xA1, integer(7), text("ne")),
            built(0xA2, named("a", HALF)))


def tree(depth):
    return seq(text("l%d" % depth), seq(*[tree(depth - 1)] * 2) if depth else b"\x30\0")


def streams():
    yield "element", 2000, seq(*ELEMENT)
    yield "element_short", 2000, seq(*ELEMENT[:4])
    yield "element_without_end", 2000, seq(*ELEMENT[:3])
    yield "element_shortest", 2000, tlv(0x30, b"".join(ELEMENT))
    yield "element_wrapped_text", 2000, seq(*ELEMENT[:4], tlv(0xA5, text("x" * 130)))
    yield "element_twice_named", 2000, seq(*ELEMENT[:6], built(
        0xA2, named("a", integer(1)), named("a", integer(2))))
    yield "element_unknown_behind", 2000, seq(*ELEMENT, tlv(0x99, b"x"), b"\xff")
    yield "element_other_order", 2000, seq(*ELEMENT[::-1])
    yield "location", 2010, seq(*LOCATION)
    yield "location_part", 2010, seq(text("x"), integer(1))
    yield "port", 2020, PORT
    yield "counters", 2030, seq(integer(1, 128), integer(2, 129))
    yield "tree", 2060, tree(3)
    yield "tree_deep", 2060, b"".join(b"\x30\x84" + ((90 - i) * 8).to_bytes(4, "big") + b"\4\0"
                                      for i in range(91))
    yield "alarms", 2070, seq(integer(2), seq(ALARM, ALARM))
    yield "alarm", 2071, ALARM
    yield "separators", 2080, seq(integer(1), text("x"))
    yield "elements", "list 2000", seq(seq(*ELEMENT), seq(*ELEMENT[:4]))
    yield "trees", "list 2060", seq(tree(1), tree(0))
    for name, content in (("zero", b""), ("minus_zero", b"\x43"), ("infinity", b"\x40"),
                          ("nan", b"\x42"), ("base16", b"\xec\xff\x03"), ("nr1", b"\x01  -42"),
                          ("nr3", b"\x03-3.14159E-2"), ("huge", b"\x031E999"),
                          ("long_exponent", b"\x83\x04\0\0\0\x03\x05"), ("bad", b"\xb0\0\1")):
        yield "real_" + name, "real", real(content)
    yield "integer_long", "integer", tlv(2, b"\0" * 7 + b"\5")
    yield "integer_too_long", "integer", tlv(2, b"\0" * 9)
    yield "integer_none", "integer", tlv(2)
    yield "integer_64", "integer", integer(-(1 << 63))
    yield "string", "string", text(b"a\0b\xff")
    yield "string_300", "string", text("x" * 300)
    yield "any_null", "any", NULL
    yield "any_structure", "any", seq(integer(1))
    yield "any_tag", "any", tlv(0xA2, integer(1))
    yield "integers", "integers", seq(*[integer(i * 77) for i in range(5)])
    yield "integers_and_text", "integers", seq(integer(1), text("x"))
    yield "named", "named", seq(named("b", integer(1)), named("a", text("x")), named("", HALF))
    yield "named_null", "named", seq(named("b", NULL), named("a", integer(1)))
    yield "named_structure", "named", seq(named("b", seq(integer(1))))
    yield "value", "value", named("n", integer(1))
    yield "value_no_name", "value", seq(integer(1), integer(1))
    yield "wrapper", "wrapper", tlv(0xA5, integer(5))
    yield "wrappers", "wrapper", tlv(0xA5, tlv(0xA6, tlv(0xC0, text("x"))))
    yield "wrapper_none", "wrapper", tlv(0xA5)
    yield "lengths", "integer", b"\x02\x84\0\0\0\x01\x05"
    yield "indefinite", 2000, b"\x30\x80" + ELEMENT[0] + b"\0\0"
    yield "length_lies", 2000, b"\x30\x84\xff\xff\xff\xff" + ELEMENT[0]
    yield "long_tag", "any", b"\x3f\x81\x01\x00"
    yield "cut", 2000, seq(*ELEMENT)[:-3]
    yield "nothing", 2000, b""


def chosen():
    for name, key, octets in streams():
        yield name, bytes([KEYS[key]]) + octets
    for name, args, octets in (
            ("list_by_key", (2041, -1, -1), seq(integer(1))),
            ("list_in_structure", (2041, -1, 48), seq(seq(integer(1)))),
            ("choice_error", (2050, -1, -1), seq(integer(5, 129))),
            ("choice_text", (2050, -1, -1), seq(text("x", 130))),
            ("explicit", (2, -1, 0xA2), tlv(0xA2, integer(1))),
            ("desc_tag", (2, 130, 130), integer(1, 130)),
            ("wrapper_any", (256, -1, -1), tlv(0xA5, seq())),
            ("wrapper_own", (256, -1, -1), seq(integer(1))),
            ("unknown_type", (16, -1, -1), b"\x10\0"),
            ("untyped_list", (257, -1, -1), seq(integer(1), text("x"), NULL))):
        yield name, b"\x80" + b"".join(
            arg.to_bytes(2, "big", signed=True) for arg in args) + octets


for seed_name, seed in chosen():
    pathlib.Path("corpus", seed_name).write_bytes(seed)
