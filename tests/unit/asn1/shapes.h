// Records of the ASN.1 runtime's own tests: one of every kind of field, and one that
// holds itself.
#pragma once

#include "kelp/asn1.h"

namespace asn1_test {

class Names final : public AsnCopyable<Names, AsnSeqOf<AsnOcts>> {
  public:
    const char* Unit() const override { return "shapes"; }
};

/// Shape ::= SEQUENCE { flag [0] BOOLEAN OPTIONAL, number INTEGER,
///     text [1] OCTET STRING OPTIONAL, names [2] Names OPTIONAL, plain OCTET STRING OPTIONAL,
///     list Names OPTIONAL, far [31] REAL OPTIONAL, tagged [3] INTEGER }
class Shape final : public AsnCopyable<Shape, AsnSequence> {
  public:
    AsnOptional<AsnBool> flag;
    AsnInt number;
    AsnOptional<AsnOcts> text;
    AsnOptional<Names> names;
    AsnOptional<AsnOcts> plain;
    AsnOptional<Names> list;
    AsnOptional<AsnReal> far;
    AsnInt tagged;

    const refl::CClassInfor& GetClassInfor() const override {
        static const refl::CClassInfor infor = [] {
            const Shape shape;
            refl::CClassInfor described(shape, "Shape", "shapes");
            described.AddAttribInfor(0, "flag", shape.flag, 0);
            described.AddAttribInfor(1, "number", shape.number);
            described.AddAttribInfor(2, "text", shape.text, 1);
            described.AddAttribInfor(3, "names", shape.names, 2);
            described.AddAttribInfor(4, "plain", shape.plain);
            described.AddAttribInfor(5, "list", shape.list);
            described.AddAttribInfor(6, "far", shape.far, 31);
            described.AddAttribInfor(7, "tagged", shape.tagged, 3);
            return described;
        }();
        return infor;
    }
};

/// Chain ::= SEQUENCE { next [0] Chain OPTIONAL }
class Chain final : public AsnCopyable<Chain, AsnSequence> {
  public:
    AsnOptional<Chain> next;

    const refl::CClassInfor& GetClassInfor() const override {
        static const refl::CClassInfor infor = [] {
            const Chain shape;
            refl::CClassInfor described(shape, "Chain", "shapes");
            described.AddAttribInfor(0, "next", shape.next, 0);
            return described;
        }();
        return infor;
    }
};

}  // namespace asn1_test
