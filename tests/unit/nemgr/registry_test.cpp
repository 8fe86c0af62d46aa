#include "nemgr/vendors/registry.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "nemgr/inventory/database.h"
#include "nemgr/inventory/vendors.h"
#include "nemgr/results.h"
#include "support/temp_folder.h"

namespace {

namespace inventory = nemgr::inventory;
using nemgr::vendors::PrefixDigits;
using nemgr::vendors::Registry;
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

TEST(Registry, LeavesOutWhatIsNoRecord) {
    Registry registry;
    registry.Add(kText);
    EXPECT_EQ(registry.size(), 5U);
}

// Loaded into a database in memory, and from there found.
class VendorsTest : public testing::Test {
  protected:
    VendorsTest() {
        WriteFile(kText);
        inventory::OpenTheDatabase("");
        inventory::LoadVendors(folder_.Path());
    }
    ~VendorsTest() override { inventory::CloseTheDatabase(); }

    void WriteFile(const std::string& text) const {
        std::ofstream(folder_.Path("oui.csv"), std::ios::binary) << text;
    }
    static std::vector<std::string> Names(FrameUtil::CFrmTableObject& found) {
        std::vector<std::string> names;
        while (found() != nullptr) {
            found["organization"] >> names.emplace_back();
        }
        return names;
    }
    static std::vector<std::string> ByPrefix(const char* text) {
        FrameUtil::CFrmTableObject found;
        inventory::FindPrefix(PrefixDigits(text).value(), found);
        return Names(found);
    }
    static std::vector<std::string> ByName(const char* name) {
        FrameUtil::CFrmTableObject found;
        inventory::FindName(name, found);
        return Names(found);
    }

    const TempFolder folder_;
};

TEST_F(VendorsTest, FoundByPrefixInTheOrderOfAssignments) {
    EXPECT_THAT(ByPrefix(""),
                ElementsAre("Alpha", "Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
    EXPECT_THAT(ByPrefix("a"), ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
    EXPECT_THAT(ByPrefix("00:11"), ElementsAre("Alpha"));
    EXPECT_THAT(ByPrefix("bb"), IsEmpty());
}

TEST_F(VendorsTest, AWholeAddressFindsWhoOwnsItsPrefixes) {
    EXPECT_THAT(ByPrefix("aa:bb:cc:d0:00:00"),
                ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc"));
    EXPECT_THAT(ByPrefix("aabb.ccde.f000"),
                ElementsAre("Beta, Inc", "Second Beta", "Gamma \u00fc", "alphabet"));
}

TEST_F(VendorsTest, FoundByNameInAnyCase) {
    EXPECT_THAT(ByName("ALPHA"), ElementsAre("Alpha", "alphabet"));
    EXPECT_THAT(ByName("gamma \u00fc"), ElementsAre("Gamma \u00fc"));
    EXPECT_THAT(ByName("eta"), IsEmpty());
    EXPECT_THAT(ByName("a%"), IsEmpty()) << "no pattern";
    EXPECT_THAT(ByName("' OR '1'='1"), IsEmpty()) << "no SQL";
}

// Files that changed are loaded in place of what was there; files that are gone change nothing.
TEST_F(VendorsTest, LoadedAgainWhenTheFilesChange) {
    WriteFile("MA-L,AABBCC,Other,Street\r\n");
    inventory::LoadVendors(folder_.Path());
    EXPECT_THAT(ByPrefix(""), ElementsAre("Other"));
    std::filesystem::remove(folder_.Path("oui.csv"));
    inventory::LoadVendors(folder_.Path());
    EXPECT_THAT(ByPrefix(""), ElementsAre("Other"));
}

TEST(Vendors, AMissingRegistryIsNamed) {
    inventory::OpenTheDatabase("");
    inventory::LoadVendors("/no/such/directory");
    FrameUtil::CFrmTableObject found;
    try {
        inventory::FindPrefix("", found);
        FAIL();
    } catch (const nemgr::CommandFailure& failure) {
        EXPECT_EQ(failure.result(), nemgr::Result::kNoRegistry);
        EXPECT_STREQ(failure.item(), "no registry file in /no/such/directory");
    }
    inventory::CloseTheDatabase();
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
