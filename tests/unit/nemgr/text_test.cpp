#include "nemgr/text.h"

#include <gtest/gtest.h>

namespace {

TEST(HexText, KeepsEveryOctet) {
    EXPECT_EQ(nemgr::HexText(""), "");
    EXPECT_EQ(nemgr::HexText(std::string("\x00\x1a\xff", 3)), "00:1a:ff");
}

TEST(DisplayText, IsTheTextOrItsOctets) {
    const struct {
        const char* name;
        std::string octets;
        const char* text;
    } cases[] = {
        {"plain", "eth0", "eth0"},
        {"empty", "", ""},
        {"lines", "a\r\n\tb", "a\r\n\tb"},
        {"eight bits", "Z\xfcrich", "Z\xfcrich"},
        {"zeros at the end", std::string("lo\0\0", 4), "lo"},
        {"zeros only", std::string("\0", 1), ""},
        {"zero inside", std::string("a\0b", 3), "61:00:62"},
        {"control", "\x01", "01"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(nemgr::DisplayText(c.octets), c.text) << c.name;
    }
}

}  // namespace
