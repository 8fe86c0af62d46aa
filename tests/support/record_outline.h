// A record's value as one line of text, the same whoever decoded it: our runtime, C
// code made by asn1c, a Python program.
//
//     {userID=7 tables=[{rows=[[{iVal=1} {sVal=6578} {dVal=3ff0000000000000}]]}]}
//
// A REAL is the octets of its double ("nan" for any that is none), an OCTET STRING its
// octets in hex. Absent fields are left out.
//
// Thread rule: thread-safe.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "frameutil/records.h"

namespace support {

inline std::string OutlineOfReal(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return text;
}

inline std::string OutlineOfOctets(std::string_view octets) {
    std::string text;
    for (const char c : octets) {
        constexpr char kDigits[] = "0123456789abcdef";
        text += kDigits[static_cast<unsigned char>(c) >> 4];
        text += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

inline std::string Outline(const AsnType& value);

namespace outline {

template <class Element>
bool IsListOf(const AsnType& value, std::string& text) {
    const auto* list = dynamic_cast<const AsnList<Element>*>(&value);
    if (list != nullptr) {
        const char* separator = "[";
        for (const Element& element : *list) {
            text += separator + Outline(element);
            separator = " ";
        }
        text += list->empty() ? "[]" : "]";
    }
    return list != nullptr;
}

template <class... Elements>
std::string OfList(const AsnType& value) {
    std::string text;
    static_cast<void>((IsListOf<Elements>(value, text) || ...));
    return text;
}

inline std::string OfRecord(const AsnSequence& record) {
    std::string text = "{";
    for (const refl::CAttribInfor& field : record.GetClassInfor().Attributes()) {
        const char* const member = reinterpret_cast<const char*>(&record) + field.offset;
        const AsnType* const value =
            field.optional ? reinterpret_cast<const AsnOptionalBase*>(member)->get_type()
                           : reinterpret_cast<const AsnType*>(member);
        if (value != nullptr) {
            text += (text.size() == 1 ? "" : " ") + std::string(field.name) + "=" + Outline(*value);
        }
    }
    return text + '}';
}

}  // namespace outline

inline std::string Outline(const AsnType& value) {
    if (const auto* boolean = dynamic_cast<const AsnBool*>(&value)) {
        return *boolean ? "true" : "false";
    }
    if (const auto* integer = dynamic_cast<const AsnInt*>(&value)) {
        return std::to_string(static_cast<std::int64_t>(*integer));
    }
    if (const auto* real = dynamic_cast<const AsnReal*>(&value)) {
        return OutlineOfReal(*real);
    }
    if (const auto* octets = dynamic_cast<const AsnOcts*>(&value)) {
        return OutlineOfOctets(octets->str());
    }
    if (const auto* record = dynamic_cast<const AsnSequence*>(&value)) {
        return outline::OfRecord(*record);
    }
    using namespace FrameUtil;
    return outline::OfList<AsnOcts, AsnValue, AsnSchemaItem, AsnDataRow, AsnTable, AsnRelation,
                           AsnCommonRequest, AsnCommonResponse>(value);
}

}  // namespace support
