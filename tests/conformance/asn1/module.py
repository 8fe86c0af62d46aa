"""pyasn1 types made from an ASN.1 module, as far as docs/frameutil.asn1 needs the
language: SEQUENCE with EXPLICIT context tags and OPTIONAL fields, SEQUENCE OF.
"""
import fractions
import re
import struct

from pyasn1.type import namedtype, tag, univ

SIMPLE = {
    "BOOLEAN": univ.Boolean,
    "INTEGER": univ.Integer,
    "REAL": univ.Real,
    "OCTET STRING": univ.OctetString,
}


def load(path):
    """The types that the module at `path` defines, by name."""
    with open(path, encoding="ascii") as file:
        text = re.sub(r"--.*", "", file.read())
    assert "DEFINITIONS EXPLICIT TAGS" in text
    types = {}

    def named(name):
        return SIMPLE[name]() if name in SIMPLE else types[name].clone()

    for name, body in re.findall(r"(\w+) ::= SEQUENCE (\{[^}]*\}|OF [\w ]+\w)\s", text):
        if body.startswith("OF "):
            types[name] = univ.SequenceOf(componentType=named(body[3:]))
            continue
        fields = []
        for line in body.strip("{}").split(","):
            field, number, kind, optional = re.fullmatch(
                r"\s*(\w+)\s+(?:\[(\d+)\]\s+)?([\w ]+?)( OPTIONAL)?\s*", line).groups()
            spec = named(kind)
            if number is not None:
                spec = spec.subtype(explicitTag=tag.Tag(tag.tagClassContext, tag.tagFormatSimple,
                                                        int(number)))
            maker = namedtype.OptionalNamedType if optional else namedtype.NamedType
            fields.append(maker(field, spec))
        types[name] = univ.Sequence(componentType=namedtype.NamedTypes(*fields))
    return types


def real_outline(value):
    """The double next to a REAL's value, which is an exact fraction until then."""
    if value.isPlusInf or value.isMinusInf:
        number = float("-inf" if value.isMinusInf else "inf")
    else:
        mantissa, base, exponent = tuple(value)
        exact = fractions.Fraction(mantissa) * fractions.Fraction(base) ** exponent
        try:
            number = float(exact)  # rounded once, to nearest even
        except OverflowError:
            number = float("inf") if exact > 0 else float("-inf")
    return struct.pack(">d", number).hex()


def outline(value):
    """The text that support/record_outline.h makes of the same value."""
    if isinstance(value, univ.Boolean):
        return "true" if value else "false"
    if isinstance(value, univ.Integer):
        return str(int(value))
    if isinstance(value, univ.Real):
        return real_outline(value)
    if isinstance(value, univ.OctetString):
        return bytes(value).hex()
    if isinstance(value, univ.SequenceOf):
        return "[" + " ".join(outline(element) for element in value) + "]"
    fields = ["%s=%s" % (name, outline(value[name]))
              for name in value.componentType if value[name].hasValue()]
    return "{" + " ".join(fields) + "}"
