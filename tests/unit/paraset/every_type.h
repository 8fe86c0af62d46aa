// A node of each type, with something in every field behind it.
#pragma once

#include <string>

#include "support/paraset_shape.h"

inline constexpr auto kUnknownType = static_cast<FrameUtil::CParaSet::ValueType>(99);

inline constexpr FrameUtil::CParaSet::ValueType kEveryType[] = {
    FrameUtil::CParaSet::PARA_NULL,
    FrameUtil::CParaSet::PARA_DOUBLE,
    FrameUtil::CParaSet::PARA_INT,
    FrameUtil::CParaSet::PARA_STRING,
    FrameUtil::CParaSet::PARA_ARRAY,
    FrameUtil::CParaSet::PARA_STRUCT,
    FrameUtil::CParaSet::PARA_RESERVED,
    FrameUtil::CParaSet::PARA_RESID,
    kUnknownType,
};

inline std::string NameOf(FrameUtil::CParaSet::ValueType type) {
    const char* const names[] = {"null",  "double", "int",      "string",
                                 "array", "struct", "reserved", "resource"};
    return type >= 0 && type < 8 ? names[type] : "type " + std::to_string(type);
}

/// The fields hold 3, 2.5 and "old" whatever the type; an array has two elements, a
/// structure two children, a resource node a record.
inline void MakeNode(FrameUtil::CParaSet& node, FrameUtil::CParaSet::ValueType type) {
    using FrameUtil::CParaSet;
    node = 3;
    node.SetType(CParaSet::PARA_DOUBLE);
    node = 2.5;
    node.SetType(CParaSet::PARA_STRING);
    node = "old";
    node.SetType(CParaSet::PARA_NULL);
    if (type == CParaSet::PARA_ARRAY) {
        node[0] = 1;
        node[1] = 2;
    } else if (type == CParaSet::PARA_STRUCT) {
        node["a"] = 1;
        node["b"] = 2;
    } else if (type == CParaSet::PARA_RESID) {
        const AsnDistinguishedResource resource = Resource("own");
        node = &resource;
    }
    node.SetType(type);
}
