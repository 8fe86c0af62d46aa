#!/usr/bin/python3
"""Our runtime and pyasn1, each reading what the other writes.

usage: pyasn1_judge.py ASN1_WIRE MODULE
"""
import random
import subprocess
import sys
import unittest

from pyasn1.codec.ber import decoder, encoder as ber
from pyasn1.codec.cer import encoder as cer
from pyasn1.codec.der import encoder as der
from pyasn1.type import univ

import module

# What pyasn1 0.4.8 takes NaN and minus zero for, which are younger than its REAL.
NOT_IN_PYASN1 = {"{dVal=nan}": "{dVal=7ff0000000000000}",
                 "{dVal=8000000000000000}": "{dVal=fff0000000000000}"}

# For an explicit tag around one of these, pyasn1 0.4.8 writes a definite length and then
# the end-of-contents octets of an indefinite one. Allowed to, it writes both rightly.
for scalar in (ber.BooleanEncoder, ber.IntegerEncoder, ber.RealEncoder):
    scalar.supportIndefLenMode = True
# An optional list that is present and empty is to be written in CER and DER as well.
cer.SequenceEncoder.omitEmptyOptionals = False


def ask(lines):
    """Our runtime's answers to "TYPE HEX" lines."""
    done = subprocess.run([WIRE, "decode"], input="\n".join(lines) + "\n", text=True, check=True,
                          stdout=subprocess.PIPE)
    return done.stdout.splitlines()


def golden_records():
    done = subprocess.run([WIRE, "golden"], text=True, check=True, stdout=subprocess.PIPE)
    for line in done.stdout.splitlines():
        kind, octets, text = line.split(" ", 2)
        yield kind, bytes.fromhex(octets), text


def decoded(kind, octets):
    value, rest = decoder.decode(octets, asn1Spec=TYPES[kind].clone())
    assert not rest
    return value


class Maker:
    """Makes records at random, the same ones in every run."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def integer(self):
        bits = self.random.choice((1, 7, 8, 9, 15, 16, 31, 32, 33, 62, 63))
        return self.random.choice((-1, 1)) * self.random.getrandbits(bits)

    def octets(self):
        size = self.random.choice((0, 1, 2, 3, 4, 5, 17, 127, 128, 300))
        return bytes(self.random.getrandbits(8) for _ in range(size))

    def real(self):
        """Base 10 or 2; written with base 2, 8 or 16 as pyasn1 is told to."""
        base = self.random.choice((2, 2, 2, 10))
        # Mantissas of up to 53 bits: pyasn1 moves digits about in floating point.
        mantissa = self.random.choice((-1, 1)) * (self.random.getrandbits(
            self.random.choice((1, 8, 30, 53))) | 1)
        exponent = self.random.randint(-340, 310) if base == 10 else self.random.randint(-1074, 970)
        value = univ.Real((mantissa, base, exponent))
        value.binEncBase = self.random.choice((2, 8, 16, None)) if exponent > 0 else 2
        return value

    def fill(self, value):
        """`value`, an empty value of the module, with contents."""
        if isinstance(value, univ.Boolean):
            return value.clone(self.random.random() < 0.5)
        if isinstance(value, univ.Integer):
            return value.clone(self.integer())
        if isinstance(value, univ.Real):
            made = value.clone(tuple(self.real()))
            made.binEncBase = self.random.choice((2, None))
            return made
        if isinstance(value, univ.OctetString):
            return value.clone(self.octets())
        if isinstance(value, univ.SequenceOf):
            value.clear()  # empty, which is not the same as absent
            for i in range(self.random.choice((0, 1, 2, 3))):
                value.setComponentByPosition(i, self.fill(value.componentType.clone()))
            return value
        for named in value.componentType.namedTypes:
            if not named.isOptional or self.random.random() < 0.7:
                value.setComponentByName(named.name, self.fill(named.asn1Object.clone()))
        return value


def elements(octets):
    """The elements that `octets` are, as (identifier, contents or list of elements)."""
    at = 0
    while at < len(octets):
        identifier, size = octets[at], octets[at + 1]
        at += 2
        if size >= 0x80:
            count = size & 0x7F
            size, at = int.from_bytes(octets[at:at + count], "big"), at + count
        content = octets[at:at + size]
        at += size
        yield identifier, list(elements(content)) if identifier & 0x20 else content


class Recoder:
    """Writes elements in any form that BER allows: lengths short, long, padded and
    indefinite, octet strings in segments of segments."""

    def __init__(self, seed, depth):
        self.random = random.Random(seed)
        self.depth = depth  # of segments

    def length(self, size):
        padding = self.random.choice((None, 0, 1, 3, 8))
        body = size.to_bytes((size.bit_length() + 7) // 8, "big")
        if padding is None and size < 0x80:
            return bytes([size])
        body = bytes(padding or 0) + body
        return bytes([0x80 | len(body)]) + body if body else b"\x81\0"

    def element(self, identifier, content, constructed):
        if constructed and self.random.random() < 0.4:
            return bytes([identifier, 0x80]) + content + b"\0\0"
        return bytes([identifier]) + self.length(len(content)) + content

    def octet_string(self, octets, depth=0):
        if depth == self.depth or self.random.random() < 0.6:
            return self.element(0x04, octets, False)
        cut = self.random.randint(0, len(octets))
        parts = self.octet_string(octets[:cut], depth + 1)
        if self.random.random() < 0.7 or cut < len(octets):
            parts += self.octet_string(octets[cut:], depth + 1)
        return self.element(0x24, parts, True)

    def write(self, identifier, content):
        if identifier == 0x04:
            return self.octet_string(content)
        if identifier & 0x20:
            return self.element(identifier, b"".join(self.write(*part) for part in content), True)
        return self.element(identifier, content, False)


class Judge(unittest.TestCase):
    maxDiff = 2000

    def test_there_is_something_to_judge(self):
        kinds = [kind for kind, _, _ in golden_records()]
        self.assertGreaterEqual(len(kinds), 200)
        self.assertLessEqual(set(kinds), set(TYPES))
        self.assertEqual(len(TYPES), 15)

    def test_pyasn1_reads_what_we_write(self):
        for kind, octets, text in golden_records():
            with self.subTest(kind=kind, octets=octets[:60].hex()):
                self.assertEqual(module.outline(decoded(kind, octets)),
                                 NOT_IN_PYASN1.get(text, text))

    def agree(self, cases):
        """Our runtime reads (kind, octets, outline) cases as their outlines say."""
        cases = list(cases)
        answers = ask("%s %s" % (kind, octets.hex()) for kind, octets, _ in cases)
        self.assertEqual(len(answers), len(cases))
        for (kind, octets, text), answer in zip(cases, answers):
            with self.subTest(kind=kind, octets=octets[:200].hex()):
                self.assertEqual(answer, "yes " + text)

    def test_we_read_what_pyasn1_writes(self):
        writers = {
            "BER": lambda value: ber.encode(value),
            "BER, indefinite": lambda value: ber.encode(value, defMode=False),
            "BER, in chunks": lambda value: ber.encode(value, maxChunkSize=4),
            "BER, indefinite, in chunks":
                lambda value: ber.encode(value, defMode=False, maxChunkSize=3),
            "CER": cer.encode,
            "DER": der.encode,
        }
        for name, write in writers.items():
            with self.subTest(writer=name):
                maker = Maker(name)
                cases = []
                for kind in sorted(TYPES):
                    for _ in range(12):
                        value = maker.fill(TYPES[kind].clone())
                        cases.append((kind, write(value), module.outline(value)))
                self.agree(cases)

    def test_reals_of_every_base(self):
        maker = Maker("reals")
        cases = []
        for _ in range(3000):
            real = maker.real()
            octets = ber.encode(real)
            cell = bytes([0xA2]) + bytes([len(octets)]) + octets
            exact = decoder.decode(octets, asn1Spec=univ.Real())[0] if octets[2] & 0x80 else real
            cases.append(("AsnValue", bytes([0x30, len(cell)]) + cell,
                          "{dVal=%s}" % module.real_outline(exact)))
        self.agree(cases)

    def recoded(self, depth):
        recoder = Recoder("forms", depth)
        for kind, octets, text in golden_records():
            if len(octets) < 3000:
                tree = list(elements(octets))
                for _ in range(4):
                    yield kind, b"".join(recoder.write(*part) for part in tree), text

    def test_every_form_that_ber_allows(self):
        self.agree(self.recoded(4))

    def test_pyasn1_agrees_on_the_forms_it_knows(self):
        """It takes segments of segments for contents."""
        for kind, octets, text in self.recoded(1):
            with self.subTest(kind=kind, octets=octets[:200].hex()):
                self.assertEqual(module.outline(decoded(kind, octets)),
                                 NOT_IN_PYASN1.get(text, text))

    def test_both_refuse_what_is_cut(self):
        """Definite lengths only: one left open to the end of the input is ours to accept."""
        cut = [(kind, octets[:at]) for kind, octets, _ in list(golden_records())[::7]
               if len(octets) < 200 for at in range(len(octets))]
        answers = ask("%s %s" % (kind, octets.hex()) for kind, octets in cut)
        for (kind, octets), answer in zip(cut, answers):
            with self.subTest(kind=kind, octets=octets.hex()):
                self.assertTrue(answer.startswith("no "), answer)
                with self.assertRaises(Exception):
                    decoded(kind, octets)


if __name__ == "__main__":
    WIRE, TYPES = sys.argv[1], module.load(sys.argv[2])
    unittest.main(argv=sys.argv[:1])
