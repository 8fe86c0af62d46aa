#!/usr/bin/python3
"""The codec and pyasn1, each reading what the other writes. The types that pyasn1 goes by
are made from the same description file.

usage: pyasn1_judge.py CODEC_WIRE TABLE
"""
import os
import random
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "asn1"))

from pyasn1.codec.ber import decoder, encoder as ber
from pyasn1.type import namedtype, tag, univ

from module import real_outline

# For an explicit tag around one of these, pyasn1 0.4.8 writes a definite length and then
# the end-of-contents octets of an indefinite one. Allowed to, it writes both rightly.
for scalar in (ber.IntegerEncoder, ber.RealEncoder):
    scalar.supportIndefLenMode = True

SCALARS = {2: univ.Integer, 4: univ.OctetString, 5: univ.Null, 9: univ.Real}
MOST_LEVELS = 7  # of a description that refers to itself


def any_scalar():
    return univ.Choice(componentType=namedtype.NamedTypes(
        namedtype.NamedType("integer", univ.Integer()),
        namedtype.NamedType("text", univ.OctetString()),
        namedtype.NamedType("real", univ.Real())))


def named_value():
    return univ.Sequence(componentType=namedtype.NamedTypes(
        namedtype.NamedType("name", univ.OctetString()),
        namedtype.NamedType("value", any_scalar())))


class Table:
    def __init__(self, path):
        self.keys = {}
        with open(path, encoding="ascii") as file:
            for line in file:
                fields = line.replace("#$", " ").replace("\t", " ").split()
                if len(fields) == 6:
                    self.keys.setdefault(int(fields[0]), []).append(
                        (fields[2], *map(int, fields[3:])))

    def spec(self, kind, desc=-1, octet=-1, level=0):
        """The type that a description's type, desc and tag stand for; None below too many
        levels."""
        if kind > 1023 or kind == 48:
            made = self.structure(kind if kind > 1023 else desc, level)
        elif kind == 257:
            element = named_value() if desc == 258 else self.spec(desc, level=level + 1)
            made = univ.SequenceOf(componentType=univ.Null() if element is None else element)
        elif kind == 256:
            return any_scalar().subtype(explicitTag=tag.Tag(
                octet & 0xC0, tag.tagFormatConstructed, octet & 0x1F))
        else:
            made = SCALARS[kind]()
        if made is None or octet == -1:
            return made
        return made.subtype(implicitTag=tag.Tag(octet & 0xC0, octet & 0x20, octet & 0x1F))

    def structure(self, key, level):
        if level > MOST_LEVELS:
            return None
        fields = []
        for name, kind, desc, octet in self.keys[key]:
            maker = namedtype.NamedType if octet < 64 else namedtype.OptionalNamedType
            fields.append(maker(name, self.spec(kind, desc, octet, level + 1)))
        return univ.Sequence(componentType=namedtype.NamedTypes(*fields))


def outline(value):
    """The text that codec_wire makes of the same value."""
    if isinstance(value, univ.Choice):
        return outline(value.getComponent())
    if isinstance(value, univ.Integer):
        return str(int(value))
    if isinstance(value, univ.Real):
        return "d" + real_outline(value)
    if isinstance(value, univ.OctetString):
        return "s" + bytes(value).hex()
    if isinstance(value, univ.SequenceOf):
        if isinstance(value.componentType, univ.Sequence) and \
                list(value.componentType.componentType) == ["name", "value"]:
            fields = sorted((bytes(one["name"]).decode("ascii"), outline(one["value"]))
                            for one in value)
            return "{" + " ".join("%s=%s" % field for field in fields) + "}"
        return "[" + " ".join(outline(element) for element in value) + "]"
    present = ((name, value.getComponentByName(name, None, False)) for name in value.componentType)
    fields = sorted((name, outline(field)) for name, field in present
                    if field is not None and not isinstance(field, univ.Null))
    return "{" + " ".join("%s=%s" % field for field in fields) + "}"


def built():
    """(form, key, octets, outline) of trees that the codec wrote."""
    done = subprocess.run([WIRE, TABLE_PATH, "build"], text=True, check=True,
                          stdout=subprocess.PIPE)
    for line in done.stdout.splitlines():
        form, key, octets, text = line.split(" ", 3)
        yield form, int(key), bytes.fromhex(octets), text


def ask(lines):
    done = subprocess.run([WIRE, TABLE_PATH, "parse"], input="\n".join(lines) + "\n", text=True,
                          check=True, stdout=subprocess.PIPE)
    return done.stdout.splitlines()


def elements(octets, at=0):
    """Every element as (offset, identifier, header's octets, contents' octets)."""
    end = len(octets)
    while at < end:
        identifier, size, header = octets[at], octets[at + 1], 2
        if size >= 0x80:
            header += size & 0x7F
            size = int.from_bytes(octets[at + 2:at + header], "big")
        assert at + header + size <= end
        yield at, identifier, header, size
        if identifier & 0x20:
            inside = octets[:at + header + size]
            yield from elements(inside, at + header)
        at += header + size


class Maker:
    """Fills values of the types at random, the same in every run."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def fill(self, value, level=0):
        if isinstance(value, univ.Choice):
            name = self.random.choice(list(value.componentType))
            value = value.clone()
            value.setComponentByName(name, self.fill(value.componentType[name].asn1Object))
            return value
        if isinstance(value, univ.Null):  # which is an octet string to pyasn1
            return value.clone("")
        if isinstance(value, univ.Integer):
            return value.clone(self.random.randint(-1, 1) * self.random.getrandbits(
                self.random.choice((1, 8, 16, 31))))
        if isinstance(value, univ.OctetString):
            size = self.random.choice((0, 1, 3, 127, 128, 300))
            return value.clone(bytes(self.random.getrandbits(8) for _ in range(size)))
        if isinstance(value, univ.Real):
            base = self.random.choice((2, 2, 10))
            exponent = self.random.randint(-300, 300)
            return value.clone((self.random.getrandbits(40) | 1, base, exponent))
        if isinstance(value, univ.SequenceOf):
            named = list(getattr(value.componentType, "componentType", ())) == ["name", "value"]
            value = value.clone()
            value.clear()
            for i in range(0 if level > 5 else self.random.randint(0, 3)):
                element = self.fill(value.componentType.clone(), level + 1)
                if named:
                    element["name"] = "n%d" % i
                value.setComponentByPosition(i, element)
            return value
        value = value.clone()
        for named in value.componentType.namedTypes:
            if not named.isOptional or self.random.random() < 0.7:
                value.setComponentByName(named.name, self.fill(named.asn1Object, level + 1))
        return value


KEYS = (2000, 2010, 2020, 2030, 2070, 2071, 2072, 2080)


class Judge(unittest.TestCase):
    maxDiff = 2000

    def test_there_is_something_to_judge(self):
        cases = list(built())
        self.assertGreater(len(cases), 500)
        self.assertEqual({form for form, _, _, _ in cases}, {"build", "text"})
        self.assertLessEqual(set(KEYS), {key for _, key, _, _ in cases})
        self.assertGreater(max(len(octets) for _, _, octets, _ in cases), 1000)

    def test_pyasn1_reads_what_we_write(self):
        for form, key, octets, text in built():
            with self.subTest(form=form, key=key, octets=octets[:80].hex()):
                value, rest = decoder.decode(octets, asn1Spec=TABLE.spec(key))
                self.assertEqual(rest, b"")
                self.assertEqual(outline(value), text)

    def test_headers_have_the_forms_that_are_promised(self):
        for form, key, octets, _ in built():
            with self.subTest(form=form, key=key, octets=octets[:80].hex()):
                for at, identifier, header, size in elements(octets):
                    if octets[at:at + 2] == b"\x30\0":
                        continue  # a missing list
                    if identifier & 0x20 and identifier != 0xA5:
                        self.assertEqual((header, octets[at + 1]), (5, 0x83))
                    else:
                        shortest = 2 if size < 128 else 3 if size < 256 else 4
                        self.assertEqual(header, shortest)

    def test_named_integers_of_the_string_build_are_text(self):
        seen = 0
        for form, key, octets, text in built():
            if form == "text" and key in (2000, 2071):
                value, _ = decoder.decode(octets, asn1Spec=TABLE.spec(key))
                for field in ("attributes", "details"):
                    if field in value.componentType and value[field].hasValue():
                        for one in value[field]:
                            self.assertNotEqual(one["value"].getName(), "integer")
                            seen += 1
        self.assertGreater(seen, 10)

    def test_we_read_what_pyasn1_writes(self):
        maker = Maker("codec")
        cases = []
        for key in KEYS:
            for _ in range(40):
                value = maker.fill(TABLE.spec(key))
                cases.append((key, ber.encode(value), outline(value)))
        answers = ask("%d %s" % (key, octets.hex()) for key, octets, _ in cases)
        self.assertEqual(len(answers), len(cases))
        for (key, octets, text), answer in zip(cases, answers):
            with self.subTest(key=key, octets=octets[:200].hex()):
                self.assertEqual(answer, "yes " + text)

    def test_we_refuse_what_pyasn1_writes_with_indefinite_lengths(self):
        maker = Maker("indefinite")
        octets = [ber.encode(maker.fill(TABLE.spec(2010)), defMode=False) for _ in range(20)]
        self.assertEqual(ask("2010 " + one.hex() for one in octets),
                         ["no the length is indefinite"] * 20)

    def test_both_refuse_what_is_cut(self):
        cut = [(key, octets[:at]) for _, key, octets, _ in list(built())[::9]
               if len(octets) < 300 for at in range(1, len(octets))]
        self.assertGreater(len(cut), 500)
        answers = ask("%d %s" % (key, octets.hex()) for key, octets in cut)
        for (key, octets), answer in zip(cut, answers):
            with self.subTest(key=key, octets=octets.hex()):
                self.assertTrue(answer.startswith("no "), answer)
                with self.assertRaises(Exception):
                    decoder.decode(octets, asn1Spec=TABLE.spec(key))


if __name__ == "__main__":
    WIRE, TABLE_PATH = sys.argv[1:3]
    TABLE = Table(TABLE_PATH)
    unittest.main(argv=sys.argv[:1])
