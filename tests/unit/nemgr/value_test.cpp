#include "nemgr/snmp/value.h"

// The order of these two is net-snmp's rule.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using nemgr::snmp::BindingOf;
using nemgr::snmp::NumberOf;
using nemgr::snmp::OctetsOf;
using nemgr::snmp::Oid;
using nemgr::snmp::Value;

const Oid kName{1, 3, 6, 1, 2, 1, 1, 1, 0};

// A variable as the library holds it, and what is copied out of it.
Value Read(unsigned char type, const void* data, std::size_t size) {
    netsnmp_variable_list* list = nullptr;
    EXPECT_NE(snmp_varlist_add_variable(&list, kName.data(), kName.size(), type, data, size),
              nullptr);
    const nemgr::snmp::Binding binding = BindingOf(*list);
    snmp_free_varbind(list);
    EXPECT_EQ(binding.oid, kName);
    return binding.value;
}

TEST(Values, AreCopiedByType) {
    const long minus = -5;
    EXPECT_EQ(Read(ASN_INTEGER, &minus, sizeof minus), Value(std::int64_t{-5}));
    const unsigned long most = 0xffffffffUL;
    for (const unsigned char type : {ASN_COUNTER, ASN_GAUGE, ASN_TIMETICKS}) {
        EXPECT_EQ(Read(type, &most, sizeof most), Value(std::uint64_t{0xffffffff})) << int{type};
    }
    const counter64 wide{0xffffffffUL, 0xfffffffeUL};
    EXPECT_EQ(Read(ASN_COUNTER64, &wide, sizeof wide), Value(std::uint64_t{0xfffffffffffffffe}));
    EXPECT_EQ(Read(ASN_OCTET_STR, "a\0b", 3), Value(std::string("a\0b", 3)));
    EXPECT_EQ(Read(ASN_OCTET_STR, "", 0), Value(std::string()));
    EXPECT_EQ(Read(ASN_OBJECT_ID, kName.data(), kName.size() * sizeof(oid)), Value(kName));
    for (const unsigned char type :
         {ASN_NULL, SNMP_NOSUCHOBJECT, SNMP_NOSUCHINSTANCE, SNMP_ENDOFMIBVIEW}) {
        EXPECT_EQ(Read(type, nullptr, 0), Value()) << int{type};
    }
}

TEST(Values, ReadAsNumbersOrOctets) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(NumberOf(std::int64_t{-5}, nan), -5);
    EXPECT_EQ(NumberOf(std::uint64_t{1} << 40, nan), 1099511627776.0);
    EXPECT_TRUE(std::isnan(NumberOf(std::string("7"), nan)));
    EXPECT_EQ(OctetsOf(std::string("x")), "x");
    EXPECT_EQ(OctetsOf(Oid{1, 3, 6}), "1.3.6");
    EXPECT_EQ(OctetsOf(std::int64_t{5}), "");
    EXPECT_EQ(OctetsOf(Value()), "");
}

TEST(Oids, CompareByPrefix) {
    using nemgr::snmp::StartsWith;
    EXPECT_TRUE(StartsWith({1, 3, 6}, {1, 3}));
    EXPECT_TRUE(StartsWith({1, 3}, {1, 3}));
    EXPECT_FALSE(StartsWith({1, 3}, {1, 3, 6}));
    EXPECT_FALSE(StartsWith({1, 4, 6}, {1, 3}));
    EXPECT_EQ(nemgr::snmp::OidText({}), "");
}

}  // namespace
