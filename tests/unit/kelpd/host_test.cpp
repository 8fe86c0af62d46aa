// What a certificate may vouch for, and what it may not.

#include "kelpd/config/host.h"

#include <gtest/gtest.h>

#include <string>

namespace kelpd {
namespace {

TEST(Host, NamesAddressesAndNeither) {
    const std::string label(63, 'a');
    const std::string longest = label + "." + label + "." + label + "." + std::string(61, 'a');
    const struct {
        std::string host;
        HostKind kind;
    } cases[] = {
        {"localhost", HostKind::kName},      {"a-b.Example.net", HostKind::kName},
        {"1and1.com", HostKind::kName},      {longest, HostKind::kName},
        {longest + "a", HostKind::kNeither}, {label + "a", HostKind::kNeither},
        {"127.0.0.1", HostKind::kAddress},   {"::1", HostKind::kAddress},
        {"2001:db8::7", HostKind::kAddress}, {"[::1]", HostKind::kNeither},
        {"10.0.0.256", HostKind::kNeither},  {"10.0.1", HostKind::kNeither},
        {"17", HostKind::kNeither},          {"", HostKind::kNeither},
        {".", HostKind::kNeither},           {"a.", HostKind::kNeither},
        {"a..b", HostKind::kNeither},        {"-a", HostKind::kNeither},
        {"a-", HostKind::kNeither},          {"a_b", HostKind::kNeither},
        {"*.net", HostKind::kNeither},       {"a,IP:1.2.3.4", HostKind::kNeither},
        {"a b", HostKind::kNeither},         {std::string("127.0.0.1\0x", 11), HostKind::kNeither},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(KindOfHost(c.host), c.kind) << c.host;
    }
}

}  // namespace
}  // namespace kelpd
