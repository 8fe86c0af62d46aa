// Each operation with its first, second, third, ... allocation failing, until it gets
// through: std::bad_alloc arrives, nothing is lost, and the tree goes on working.
#include <gtest/gtest.h>

#include <climits>
#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "support/failing_new.h"
#include "support/paraset_shape.h"

namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnCommonResponse;
using FrameUtil::AsnTable;
using FrameUtil::CParaSet;

// Larger than pooled blocks, so that it comes from operator new wherever it is kept.
const std::string kLong(600, 'x');

void Nothing(CParaSet&) {}

void SomeTree(CParaSet& tree) {
    const AsnDistinguishedResource resource = Resource(kLong.c_str());
    tree["list"][2][kLong] = kLong;
    tree["list"][0] = 1;
    tree["deep.er.still"] = 2.5;
    tree["resource"] = &resource;
    tree["gone"];
    tree.clear("gone");
    tree.SetDesc(kLong);
    tree["list"].SetDesc(kLong);
}

// A common response of two tables.
void Fill(AsnCommonResponse& response) {
    response.ver.Emplace(kLong);
    response.retCodeEx.Emplace(5);
    for (const char* name : {"", "a table with quite a long name"}) {
        AsnTable& table = response.tables.Ensure().Append();
        table.name.Emplace(name);
        for (const char* column : {"number", "a text column with quite a long name"}) {
            auto& item = table.schema.Ensure().Append();
            item.name = column;
            item.type = *column == 'a' ? 4 : 2;
            item.desc.Emplace(kLong);
        }
        for (int r = 0; r != 3; ++r) {
            auto& row = table.rows.Append();
            row.Append().iVal.Emplace(r);
            row.Append().sVal.Emplace(kLong);
        }
    }
}

const AsnCommonResponse& Response() {
    static const AsnCommonResponse response = [] {
        AsnCommonResponse made;
        Fill(made);
        return made;
    }();
    return response;
}

struct Case {
    const char* name;
    void (*prepare)(CParaSet&);
    void (*act)(CParaSet&);
    bool unchanged;  // a failure leaves the tree as it was
};

const Case kCases[] = {
    {"name access, one child", Nothing, [](CParaSet& t) { t["a"]; }, true},
    {"name access, a path", Nothing, [](CParaSet& t) { t["a.b.c." + kLong]; }, true},
    {"name access, a path below what is there", SomeTree,
     [](CParaSet& t) { t["deep.er.than." + kLong + ".this"]; }, true},
    {"name access, a scalar becomes a structure", SomeTree,
     [](CParaSet& t) { t["deep.er.still.x.y." + kLong]; }, true},
    {"name access, an entry without a child", SomeTree,
     [](CParaSet& t) { t["gone." + kLong + ".x"]; }, true},
    {"find, a long name", SomeTree, [](CParaSet& t) { t.find("list[2]." + kLong); }, true},
    {"GetIndexByName, a long name", SomeTree, [](CParaSet& t) { t.GetIndexByName(kLong); }, true},
    {"remove, a long name", SomeTree, [](CParaSet& t) { t["list"][2].remove(kLong.c_str()); },
     true},
    {"remove an entry by index", SomeTree, [](CParaSet& t) { t.remove(0), t.remove(1); }, false},
    {"assign a text", SomeTree, [](CParaSet& t) { t["list"][2][kLong] = (kLong + kLong).c_str(); },
     true},
    {"assign a string", SomeTree, [](CParaSet& t) { t["list"][2][kLong] = kLong + kLong; }, true},
    {"assign a variant", Nothing, [](CParaSet& t) { t = TEValue(kLong); }, true},
    {"assign a resource", SomeTree,
     [](CParaSet& t) {
         const AsnDistinguishedResource resource = Resource(kLong.c_str());
         t["resource"] = &resource;
     },
     true},
    {"read the octets", SomeTree,
     [](CParaSet& t) {
         std::string out;
         t["list"][2][kLong].getBytes(out);
     },
     true},
    {"read the variant", SomeTree, [](CParaSet& t) { t["list"][2][kLong].value(); }, true},
    {"make a copy", SomeTree, [](CParaSet& t) { CParaSet copy(t); }, true},
    {"make a node", Nothing, [](CParaSet&) { CParaSet node(kLong.c_str(), kLong.c_str()); }, true},
    {"assign a tree over a tree", SomeTree,
     [](CParaSet& t) {
         CParaSet other(kLong.c_str(), 1);
         SomeTree(other["x"]);
         other.SetDesc(kLong + kLong);
         t = other;
     },
     true},
    {"assign a resource node over a tree", SomeTree,
     [](CParaSet& t) { t = static_cast<const CParaSet&>(t["resource"]); }, true},
    {"assign a descendant", SomeTree, [](CParaSet& t) { t["list"] = t["list"][2]; }, true},
    {"assign an ancestor", SomeTree, [](CParaSet& t) { t["deep.er.still"] = t; }, true},
    {"add a row", SomeTree,
     [](CParaSet& t) {
         CParaSet row("row");
         row["list"] = kLong;
         row["new"] = 1;
         t.AddRow(1, row);
     },
     false},
    {"get a row", Nothing,
     [](CParaSet& t) {
         CParaSet row("row");
         t[kLong][3] = kLong;
         t["b"] = 5;
         t.GetRow(3, row);
     },
     false},
    {"decode a response", Nothing, [](CParaSet& t) { t.CommonRspAsn2Para(Response()); }, false},
    {"decode a response over what is there", SomeTree,
     [](CParaSet& t) { t.CommonRspAsn2Para(Response()); }, false},
    {"encode a response", [](CParaSet& t) { t.CommonRspAsn2Para(Response()); },
     [](CParaSet& t) {
         AsnCommonResponse response;
         t.Para2CommonRspAsn(response);
     },
     true},
    {"encode a request", SomeTree,
     [](CParaSet& t) {
         AsnCommonRequest request;
         t["##ResID"] = t["resource"];
         t["##TableCount"] = 2;
         t.Para2CommonReqAsn(request);
     },
     false},
};

// Returns whether the n-th allocation was reached.
bool Try(const Case& row, long n) {
    CParaSet tree("tree");
    row.prepare(tree);
    const std::string before = Shape(tree) + tree.name() + tree.GetDesc();
    bool fired = false;
    bool threw = false;
    {
        const FailNthAllocation failing(n);
        try {
            row.act(tree);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        fired = failing.Fired();
    }
    EXPECT_EQ(threw, fired);
    if (threw && row.unchanged) {
        EXPECT_EQ(Shape(tree) + tree.name() + tree.GetDesc(), before);
    }
    CParaSet copy(tree);
    EXPECT_EQ(copy.type(), tree.type());
    tree.clear();
    tree["again"][1] = kLong;
    EXPECT_EQ(Shape(tree), "{again: [-, \"" + kLong + "\"]}");
    return fired;
}

TEST(FailNth, LosesNothingAndTheTreeWorksOn) {
    constexpr long kNever = LONG_MAX;
    long failures = 0;
    for (const Case& row : kCases) {
        SCOPED_TRACE(row.name);
        Try(row, kNever);  // what is made once for the whole process is there afterwards
        bool fired = true;
        long n = 0;
        while (fired) {
            ++n;
            SCOPED_TRACE("allocation " + std::to_string(n));
            const long before = LiveAllocations();
            fired = Try(row, n);
            ASSERT_EQ(LiveAllocations(), before);
        }
        failures += n - 1;
    }
    // Some operations take all their memory from pools, which a sanitizer's build has not.
    EXPECT_GT(failures, static_cast<long>(std::size(kCases)));
}

// A list that grows before its new element cannot be made may stay grown.
TEST(FailNth, IndexAccessMayLeaveTheListExtended) {
    for (long n = 1;; ++n) {
        SCOPED_TRACE(n);
        const long before = LiveAllocations();
        bool fired = false;
        {
            CParaSet tree("tree");
            {
                const FailNthAllocation failing(n);
                try {
                    tree[5];
                } catch (const std::bad_alloc&) {
                    EXPECT_TRUE(tree.isNull());
                }
                fired = failing.Fired();
            }
            if (!fired) {
                EXPECT_EQ(Shape(tree), "[-, -, -, -, -, null]");
            }
            tree[1] = 1;
            EXPECT_EQ(tree.find("[1]")->asInt(), 1);
        }
        EXPECT_EQ(LiveAllocations(), before);
        if (!fired) {
            EXPECT_GT(n, 1);
            break;
        }
    }
}

TEST(FailNth, AnIndexThatNoMemoryHoldsIsAFailedAllocation) {
    CParaSet tree("tree");
    CParaSet list("list");
    list[0] = 1;
    {
        const FailNthAllocation failing(LONG_MAX);
        EXPECT_THROW(tree[INT_MAX], std::bad_alloc);
        EXPECT_THROW(list[INT_MAX - 1], std::bad_alloc);
    }
    EXPECT_TRUE(tree.isNull());
    EXPECT_EQ(Shape(list), "[1]");
    list[1] = 2;
    EXPECT_EQ(Shape(list), "[1, 2]");
}

// A record that is decoded may be shared: reading it leaves it as it is.
TEST(FailNth, DecodingAllocatesNothingInTheRecord) {
    AsnCommonResponse response;
    Fill(response);
    {
        CParaSet tree("tree");
        tree.CommonRspAsn2Para(Response());
    }
    const long before = LiveAllocations();
    {
        CParaSet tree("tree");
        tree.CommonRspAsn2Para(response);
    }
    EXPECT_EQ(LiveAllocations(), before);
}

// Destroying must not need memory: there may be none left.
TEST(FailNth, ClearingAndDestroyingNeedNoMemory) {
    const auto act = [] {
        auto tree = std::make_unique<CParaSet>("tree");
        for (const char* name : {"a", "b", "c", "lost"}) {
            SomeTree((*tree)[name]["x"][3]);
        }
        tree->remove(tree->GetIndexByName("lost"));
        const FailNthAllocation failing(1);
        EXPECT_TRUE(tree->clear("a"));
        EXPECT_TRUE(tree->remove("b"));
        EXPECT_TRUE((*tree)["c"]["x"].remove(3));
        tree.reset();
        EXPECT_FALSE(failing.Fired());
    };
    act();  // what is made once for the whole process is there afterwards
    const long before = LiveAllocations();
    act();
    EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace
