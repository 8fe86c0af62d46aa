#include "nemgr/snmp/address.h"

#include <gtest/gtest.h>

namespace {

using nemgr::snmp::ParseHostPort;
using nemgr::snmp::Resolve;

TEST(HostPort, IsTakenApart) {
    const struct {
        const char* text;
        const char* host;  // null: refused
        const char* port;
    } cases[] = {
        {"10.0.0.1", "10.0.0.1", "161"},
        {"10.0.0.1:1161", "10.0.0.1", "1161"},
        {"ne-1.example:1", "ne-1.example", "1"},
        {"[::1]", "::1", "161"},
        {"[::1]:65535", "::1", "65535"},
        {"", nullptr, ""},
        {":161", nullptr, ""},
        {"host:", nullptr, ""},
        {"host:0", nullptr, ""},
        {"host:65536", nullptr, ""},
        {"host:99999999999999999999", nullptr, ""},
        {"host:1x", nullptr, ""},
        {"host:-1", nullptr, ""},
        {"::1", nullptr, ""},
        {"[::1", nullptr, ""},
        {"[::1]x", nullptr, ""},
        {"[]:1", nullptr, ""},
        {"a b:1", nullptr, ""},
        {"udp:host:1", nullptr, ""},
        {"unix:/tmp/x", nullptr, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto where = ParseHostPort(c.text);
        ASSERT_EQ(where.has_value(), c.host != nullptr);
        if (where) {
            EXPECT_EQ(where->host, c.host);
            EXPECT_EQ(where->port, c.port);
        }
    }
    EXPECT_FALSE(ParseHostPort(std::string(256, 'a')));
}

TEST(Resolve, SpellsNumericAddresses) {
    std::string why;
    EXPECT_EQ(Resolve({"127.0.0.1", "1161"}, why), "udp:127.0.0.1:1161");
    EXPECT_EQ(Resolve({"::1", "161"}, why), "udp6:[::1]:161");
    EXPECT_EQ(Resolve({"999.1.1.1.", "161"}, why), std::nullopt);
    EXPECT_NE(why, "");
}

}  // namespace
