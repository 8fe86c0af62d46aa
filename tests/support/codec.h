// The codec in tests: descriptions written in place, octets as hex, and every call checked
// for what holds in all of them.
//
//     const auto codec = CodecOf("1100 0 id 2 -1 -1\n");
//     EXPECT_EQ(Built(*codec, tree, {1100}), "30 83 00 00 03 02 01 07");
//     EXPECT_EQ(Parsed(*codec, Octets("30 03 02 01 07"), {1100}), "{id: 7}");
//     EXPECT_EQ(Parsed(*codec, Octets("30 80"), {1100}), "null: the length is indefinite @0");
//
// Thread rule: thread-compatible.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "frameutil/codec.h"
#include "support/octets.h"
#include "support/paraset_shape.h"
#include "support/sweeps.h"
#include "support/temp_folder.h"

namespace support {

/// A codec with the table of a file that holds `text`.
inline std::unique_ptr<FrameUtil::CEndeCode> CodecOf(const std::string& text,
                                                     FrameUtil::DescReport* report = nullptr) {
    const TempFolder folder;
    std::ofstream(folder.Path("table.bcp"), std::ios::binary) << text;
    return std::make_unique<FrameUtil::CEndeCode>(folder.Path("table.bcp"), report);
}

/// What a call says it is about; as the codec itself, -1 takes it from the value.
struct As {
    int type = -1;
    int desc = -1;
    int tag = -1;
};

enum class Form { kPlain, kText };

/// "the buffer is too small in ne.ports[3] @17".
inline std::string TextOf(const FrameUtil::CodecFault& fault) {
    return fault.reason + (fault.path.empty() ? "" : " in " + fault.path) + " @" +
           std::to_string(fault.offset);
}

/// Builds into `room` octets. The octets written; after a failure none, and `why` says why.
inline std::string Build(const FrameUtil::CEndeCode& codec, FrameUtil::CParaSet& para, As as,
                         int room, std::string& why, Form form = Form::kPlain) {
    constexpr char kCanary = '\x5a';
    constexpr std::size_t kGuard = 32;
    const auto size = static_cast<std::size_t>(room < 0 ? 0 : room);
    std::string buffer(size + kGuard, kCanary);
    auto* const buf = reinterpret_cast<unsigned char*>(buffer.data());
    FrameUtil::CodecFault fault;
    int len = room;
    const unsigned char* const end =
        form == Form::kPlain
            ? codec.build(para, buf, len, as.type, as.desc, as.tag, &fault)
            : codec.buildAsString(para, buf, len, as.type, as.desc, as.tag, &fault);
    EXPECT_EQ(buffer.substr(size), std::string(kGuard, kCanary)) << "written behind the buffer";
    why.clear();
    if (end == nullptr) {
        EXPECT_EQ(len, room) << "len changed by a failure";
        EXPECT_STRNE(fault.reason, "");
        why = TextOf(fault);
        return {};
    }
    EXPECT_STREQ(fault.reason, "");
    EXPECT_EQ(len, room - (end - buf)) << "len is not what remains";
    return buffer.substr(0, static_cast<std::size_t>(end - buf));
}

inline constexpr int kAmple = 70000;

/// What build() wrote as hex, or "null: " and why it did not.
inline std::string Built(const FrameUtil::CEndeCode& codec, FrameUtil::CParaSet& para, As as = {},
                         int room = kAmple, Form form = Form::kPlain) {
    std::string why;
    const std::string octets = Build(codec, para, as, room, why, form);
    return why.empty() ? Hex(octets) : "null: " + why;
}

/// Parses `octets` where they are, which sweeps have put in front of an unreadable page. ""
/// when it succeeds, with the octets behind the element as " +2"; "absent"; "null: " and why.
inline std::string ParseInPlace(const FrameUtil::CEndeCode& codec, std::string_view octets,
                                FrameUtil::CParaSet& para, As as = {}) {
    auto* const buf = reinterpret_cast<unsigned char*>(const_cast<char*>(octets.data()));
    FrameUtil::CodecFault fault;
    int len = static_cast<int>(octets.size());
    const unsigned char* const end = codec.parse(para, buf, len, as.type, as.desc, as.tag, &fault);
    if (end == nullptr) {
        EXPECT_EQ(len, static_cast<int>(octets.size())) << "len changed by a failure";
        EXPECT_STRNE(fault.reason, "");
        EXPECT_GE(fault.offset, 0);
        EXPECT_LE(fault.offset, static_cast<int>(octets.size()));
        return "null: " + TextOf(fault);
    }
    EXPECT_STREQ(fault.reason, "");
    EXPECT_GE(len, 0);
    EXPECT_EQ(end - buf + len, static_cast<std::ptrdiff_t>(octets.size()));
    if (end == buf) {
        return "absent";
    }
    return len == 0 ? "" : " +" + std::to_string(len);
}

/// The same for octets that are anywhere, with the page behind them.
inline std::string Parse(const FrameUtil::CEndeCode& codec, std::string_view octets,
                         FrameUtil::CParaSet& para, As as = {}) {
    GuardedMemory memory(octets.size());
    const std::string_view placed = memory.Place(octets);
    const std::string outcome = ParseInPlace(codec, placed, para, as);
    EXPECT_TRUE(placed == octets) << "the input was changed";
    return outcome;
}

/// The tree that parse() made of `octets`, and how many are left, or why there is none.
inline std::string Parsed(const FrameUtil::CEndeCode& codec, std::string_view octets, As as = {}) {
    FrameUtil::CParaSet para("para");
    const std::string outcome = Parse(codec, octets, para, as);
    if (outcome == "absent") {
        EXPECT_TRUE(para.isNull());
        EXPECT_TRUE(para.GetMapValue().empty() && para.GetVctValue().empty());
        return outcome;
    }
    return outcome.starts_with("null") ? outcome : Shape(para) + outcome;
}

}  // namespace support
