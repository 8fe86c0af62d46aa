// The inventory in a database in memory.

#include <gtest/gtest.h>

#include "nemgr/inventory/database.h"
#include "nemgr/inventory/elements.h"
#include "nemgr/results.h"

namespace {

namespace inventory = nemgr::inventory;
using FrameUtil::CParaSet;

class InventoryTest : public testing::Test {
  protected:
    InventoryTest() { inventory::OpenTheDatabase(""); }
    ~InventoryTest() override { inventory::CloseTheDatabase(); }

    static void Remember(const std::string& address, const char* name) {
        CParaSet system("system");
        system["sysName"] = name;
        system["sysUpTime"] = 1.5;
        inventory::RememberSystem(address, system);
    }
    static CParaSet Interfaces(int count) {
        CParaSet table("table");
        table["##RowCount"] = 0;
        for (int i = 0; i < count; ++i) {
            CParaSet row("row");
            row["ifIndex"] = i + 1;
            row["ifDescr"] = "eth" + std::to_string(i);
            row["ifSpeed"] = 1e10;
            table.AddRow(i, row);
        }
        return table;
    }
    // "address:name" of each element, "address/index:descr" of each interface.
    static std::string All() {
        FrameUtil::CFrmTableObject rows;
        const auto session = inventory::Lease();
        std::string all;
        std::string address;
        std::string name;
        inventory::Select(*session, "SELECT address, sysName FROM element ORDER BY address", {},
                          rows);
        while (rows() != nullptr) {
            rows >> address >> name;
            all += address + ":" + name + "\n";
        }
        int index = 0;
        inventory::Select(*session,
                          "SELECT address, ifIndex, ifDescr FROM interface"
                          " ORDER BY address, ifIndex",
                          {}, rows);
        while (rows() != nullptr) {
            rows >> address >> index >> name;
            all += address + "/" + std::to_string(index) + ":" + name + "\n";
        }
        return all;
    }
};

// What is read again replaces what was known; elements do not touch each other.
TEST_F(InventoryTest, RemembersTheLastReading) {
    CParaSet two = Interfaces(2);
    CParaSet one = Interfaces(1);
    Remember("a:161", "alpha");
    Remember("b:161", "beta");
    Remember("a:161", "gamma");
    inventory::RememberInterfaces("a:161", two);
    inventory::RememberInterfaces("b:161", two);
    inventory::RememberInterfaces("a:161", one);
    EXPECT_EQ(All(), "a:161:gamma\nb:161:beta\na:161/1:eth0\nb:161/1:eth0\nb:161/2:eth1\n");
}

// Interfaces of an element whose system was never read make the element known.
TEST_F(InventoryTest, InterfacesAlone) {
    CParaSet none = Interfaces(0);
    inventory::RememberInterfaces("a:161", none);
    EXPECT_EQ(All(), "a:161:\n");
}

TEST_F(InventoryTest, Forgets) {
    CParaSet two = Interfaces(2);
    Remember("b:161", "beta");
    inventory::RememberInterfaces("a:161", two);
    EXPECT_TRUE(inventory::Forget("a:161"));
    EXPECT_FALSE(inventory::Forget("a:161"));
    EXPECT_EQ(All(), "b:161:beta\n");
}

// A reading that the database refuses leaves what was known.
TEST_F(InventoryTest, AFailedReadingChangesNothing) {
    CParaSet two = Interfaces(2);
    inventory::RememberInterfaces("a:161", two);
    const std::string before = All();
    two["ifIndex"][1] = 1;  // twice the same index
    try {
        inventory::RememberInterfaces("a:161", two);
        FAIL();
    } catch (const nemgr::CommandFailure& failure) {
        EXPECT_EQ(failure.result(), nemgr::Result::kNoDatabase);
    }
    EXPECT_EQ(All(), before);
}

TEST(Inventory, AnUnknownDatabaseIsNamed) {
    try {
        inventory::OpenTheDatabase("NOSUCH");
        FAIL();
    } catch (const nemgr::CommandFailure& failure) {
        EXPECT_EQ(failure.result(), nemgr::Result::kNoDatabase);
        EXPECT_NE(std::string(failure.item()).find("NOSUCH"), std::string::npos);
    }
    inventory::CloseTheDatabase();
}

}  // namespace
