// What the tests see of a parameter tree: one line of text for the tree as its readers
// know it, another for the fields of a node that its type hides.
//
//     EXPECT_EQ(Shape(tree), "{list: [1, -, \"x\"], name: -}");
//     EXPECT_EQ(CodeOf([&] { tree[-1]; }), -1);
//
// A child is shown as `-` when its slot or entry is null, and with its own name in
// parentheses when a structure knows it by another one.
#pragma once

#include <cstdio>
#include <ostream>
#include <string>

#include "frameutil/paraset.h"

inline std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '\0') {
            quoted += "\\0";
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

/// The whole tree, built by recursion: for trees of a few levels.
inline std::string Shape(FrameUtil::CParaSet& node) {
    using FrameUtil::CParaSet;
    std::string text;
    const char* separator = "";
    switch (node.type()) {
        case CParaSet::PARA_NULL:
            return "null";
        case CParaSet::PARA_INT:
            return std::to_string(node.asInt());
        case CParaSet::PARA_DOUBLE: {
            char number[32];
            std::snprintf(number, sizeof number, "%gd", node.asDouble());
            return number;
        }
        case CParaSet::PARA_STRING:
            node.getBytes(text);
            return Quoted(text);
        case CParaSet::PARA_RESID:
            return "resource(" + (node.asResID() == nullptr ? "-" : node.asResID()->resDN.str()) +
                   ")";
        case CParaSet::PARA_ARRAY:
            for (CParaSet* child : node.GetVctValue()) {
                text += separator + (child == nullptr ? "-" : Shape(*child));
                separator = ", ";
            }
            return "[" + text + "]";
        case CParaSet::PARA_STRUCT:
            for (auto& [key, child] : node.GetMapValue()) {
                text += separator + key;
                if (child != nullptr && child->name() != key) {
                    text += "(" + child->name() + ")";
                }
                text += ": " + (child == nullptr ? "-" : Shape(*child));
                separator = ", ";
            }
            return "{" + text + "}";
        default:
            return "type " + std::to_string(node.type());
    }
}

/// A node's type and the scalar fields behind it, whichever of them the type shows.
struct Fields {
    FrameUtil::CParaSet::ValueType type;
    int integer;
    double real;
    std::string text;

    bool operator==(const Fields&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Fields& fields) {
        return out << "type " << fields.type << ", integer " << fields.integer << ", double "
                   << fields.real << ", string " << Quoted(fields.text);
    }
};

inline Fields FieldsOf(FrameUtil::CParaSet& node) {
    using FrameUtil::CParaSet;
    Fields fields{node.type(), 0, 0.0, {}};
    node.SetType(CParaSet::PARA_INT);
    fields.integer = node.asInt();
    node.SetType(CParaSet::PARA_DOUBLE);
    fields.real = node.asDouble();
    node.SetType(CParaSet::PARA_STRING);
    node.getBytes(fields.text);
    node.SetType(fields.type);
    return fields;
}

/// The code of the FRexception that `act` throws, or 0 when it throws none.
template <class Act>
int CodeOf(Act&& act) {
    try {
        act();
    } catch (const FrameUtil::FRexception& failure) {
        return failure.code();
    }
    return 0;
}

/// A resource record that `resDN` tells from others.
inline AsnDistinguishedResource Resource(const char* resDN) {
    AsnDistinguishedResource resource;
    resource.resDN = resDN;
    return resource;
}
