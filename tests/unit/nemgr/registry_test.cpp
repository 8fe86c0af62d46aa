#include "nemgr/vendors/registry.h"

#include <gmock/gmock.h>

namespace {

using nemgr::vendors::PrefixDigits;
using nemgr::vendors::Registry;
using nemgr::vendors::Vendor;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kText =
    "Registry,Assignment,Organization Name,Organization Address\r\n"
    "MA-L,AABBCC,\"Beta, Inc\",Street 1\r\n"
    "MA-L,001122,Alpha,Street 2\r\n"
    "MA-L,AABBCC,Second Beta,Street 3\r\n"
    "MA-M,AABBCCD,Gamma \u00fc,Street 4\r\n"
    "MA-S,NOTHEX,Broken,Street 5\r\n"
    "MA-L,112233\r\n"
    "IAB,AABBCCDEF,alphabet,Street 6\r\n";

class RegistryTest : public testing::Test {
  protected:
    RegistryTest() { registry_.Add(kText); }

    static std::vector<std::string> Names(const std::vector<const Vendor*>& found) {
        std::vector<std::string> names;
        for (const Vendor* vendor : found) {
            names.push_back(vendor->organization);
        }
        return names;
    }
    std::vector<std::string> ByPrefix(const char* text) {
        return Names(registry_.FindPrefix(PrefixDigits(text).value()));
    }

    Registry registry_;
};

TEST_F(RegistryTest, LeavesOutWhatIsNoRecord) {
    EXPECT_EQ(registry_.size(), 5U);
}

TEST_F(RegistryTest, FindsByPrefixInTheOrderOfAssignments) {
    EXPECT_THAT(ByPrefix(""),
                ElementsAre("Alpha", "Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
    EXPECT_THAT(ByPrefix("a"), ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
    EXPECT_THAT(ByPrefix("00:11"), ElementsAre("Alpha"));
    EXPECT_THAT(ByPrefix("bb"), IsEmpty());
}

TEST_F(RegistryTest, AWholeAddressFindsWhoOwnsItsPrefixes) {
    EXPECT_THAT(ByPrefix("aa:bb:cc:d0:00:00"),
                ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc"));
    EXPECT_THAT(ByPrefix("aabb.ccde.f000"),
                ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
}

TEST_F(RegistryTest, FindsByNameInAnyCase) {
    EXPECT_THAT(Names(registry_.FindName("ALPHA")), ElementsAre("Alpha", "alphabet"));
    EXPECT_THAT(Names(registry_.FindName("gamma \u00fc")), ElementsAre("Gamma \u00fc"));
    EXPECT_THAT(Names(registry_.FindName("eta")), IsEmpty());
}

TEST(PrefixDigits, AreHexadecimalWithSeparators) {
    EXPECT_EQ(PrefixDigits("00-1a:2B.3"), "001A2B3");
    EXPECT_EQ(PrefixDigits(""), "");
    EXPECT_EQ(PrefixDigits("112233445566"), "112233445566");
    for (const char* text : {"1122334455667", "0x11", "gg", "11 22", "\u00e4"}) {
        EXPECT_EQ(PrefixDigits(text), std::nullopt) << text;
    }
}

TEST(RegistryFiles, AMissingDirectoryIsNamed) {
    Registry registry;
    registry.Load("/no/such/directory");
    EXPECT_TRUE(registry.empty());
    EXPECT_EQ(registry.fault(), "no registry file in /no/such/directory");
}

}  // namespace
