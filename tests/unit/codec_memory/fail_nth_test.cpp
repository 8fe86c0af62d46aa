// The codec with its first, second, third, ... allocation failing: std::bad_alloc arrives,
// nothing is lost, and the tree and the codec go on working.
#include <gtest/gtest.h>

#include <climits>

#include "support/codec.h"
#include "support/failing_new.h"
#include "support/quiet_log.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CodecFault;
using FrameUtil::CParaSet;

const CEndeCode& Codec() {
    static const CEndeCode codec(CODEC_EXAMPLE);
    return codec;
}

// Larger than what strings and blocks hold without an allocation.
const std::string kLong(700, 'x');

void Fill(CParaSet& para) {
    para["neId"] = 7;
    para["neName"] = kLong;
    para["load"] = 0.25;
    para["location"]["site"] = kLong;
    para["location"]["latitude"] = 35.7;
    para["location"]["longitude"] = 139.7;
    para["interfaces"][0]["index"] = 1;
    para["interfaces"][0]["name"] = "eth0";
    para["interfaces"][0]["addresses"][0] = "10.0.0.1";
    para["interfaces"][0]["counters"]["octetsIn"] = 5;
    para["interfaces"][0]["counters"]["octetsOut"] = 6;
    para["attributes"][kLong] = "r1";
    para["attributes"]["slots"] = 300;
    para["vendorData"] = 5;
    para["note"] = "n";
}

struct Octets {
    unsigned char octets[8000];
    int len = sizeof octets;
};

// What the tree of Fill() is as octets.
const std::string& Stream() {
    static const std::string stream = [] {
        CParaSet para("para");
        Fill(para);
        std::string why;
        return support::Build(Codec(), para, {2000}, 8000, why);
    }();
    return stream;
}

const unsigned char* Parse(const std::string& stream, CParaSet& para, CodecFault* fault = nullptr) {
    int len = static_cast<int>(stream.size());
    std::string octets(stream);
    auto* const buf = reinterpret_cast<unsigned char*>(octets.data());
    const unsigned char* const end = Codec().parse(para, buf, len, 2000, -1, -1, fault);
    return end == nullptr ? nullptr : reinterpret_cast<const unsigned char*>(stream.data());
}

// The number of allocations that failed until `work` got through; nothing is leaked.
template <class Work>
long UntilItGetsThrough(Work work) {
    const QuietLog quiet;
    work();  // what is made once for the whole process is there afterwards
    long n = 1;
    while (true) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        const long before = LiveAllocations();
        const bool failed = support::FailNth(n, work);
        EXPECT_EQ(LiveAllocations(), before);
        if (!failed || testing::Test::HasFailure()) {
            return n - 1;
        }
        ++n;
    }
}

// However a tree is made up, when its names are there nothing is allocated.
TEST(Allocations, BuildMakesNone) {
    CParaSet para("para");
    Fill(para);
    Octets out;
    ASSERT_NE(Codec().build(para, out.octets, out.len, 2000), nullptr);  // enters missing names
    const std::size_t size = Stream().size();
    const FailNthAllocation failing(1);
    out.len = sizeof out.octets;
    EXPECT_NE(Codec().build(para, out.octets, out.len, 2000), nullptr);
    EXPECT_FALSE(failing.Fired());
    EXPECT_EQ(static_cast<std::size_t>(out.len), sizeof out.octets - size);
    out.len = 20;
    EXPECT_EQ(Codec().build(para, out.octets, out.len, 2000), nullptr);
    EXPECT_FALSE(failing.Fired()) << "a failure that nobody asks about";
}

TEST(FailNth, Parse) {
    const long failures = UntilItGetsThrough([] {
        CParaSet para("para");
        Parse(Stream(), para);
    });
    EXPECT_GT(failures, 20);
}

// Whatever parse had read until then is a tree.
TEST(FailNth, ParseLeavesATree) {
    const QuietLog quiet;
    bool failed = true;
    for (long n = 1; failed; ++n) {
        SCOPED_TRACE(n);
        CParaSet para("para");
        failed = support::FailNth(n, [&] { Parse(Stream(), para); });
        CParaSet copy(para);
        EXPECT_EQ(Shape(copy), Shape(para));
        para.clear();
        EXPECT_NE(Parse(Stream(), para), nullptr);
        EXPECT_EQ(para.find("interfaces[0].counters.octetsOut")->asInt(), 6);
    }
}

TEST(FailNth, ParseOfWhatIsMalformed) {
    // Cut inside, so that the failure is on the way while allocations fail.
    const std::string cut = [] {
        std::string octets = Stream().substr(0, Stream().size() - 30);
        const std::size_t contents = octets.size() - 5;
        octets[3] = static_cast<char>(contents >> 8);
        octets[4] = static_cast<char>(contents);
        return octets;
    }();
    const long failures = UntilItGetsThrough([&] {
        CParaSet para("para");
        CodecFault fault;
        EXPECT_EQ(Parse(cut, para, &fault), nullptr);
        EXPECT_FALSE(fault.path.empty());
    });
    EXPECT_GT(failures, 20);
}

TEST(FailNth, BuildThatEntersNames) {
    const long failures = UntilItGetsThrough([] {
        CParaSet para("para", 5);
        Octets out;
        EXPECT_NE(Codec().build(para, out.octets, out.len, 2000), nullptr);
    });
    EXPECT_GE(failures, 8);  // an entry each
}

TEST(FailNth, BuildAsString) {
    const QuietLog quiet;
    bool failed = true;
    for (long n = 1; failed; ++n) {
        SCOPED_TRACE(n);
        CParaSet para("para");
        para["a"] = 1;
        para["b"] = 2;
        Octets out;
        failed = support::FailNth(n, [&] {
            EXPECT_NE(Codec().buildAsString(para, out.octets, out.len, 257, 258), nullptr);
        });
        out.len = sizeof out.octets;
        EXPECT_NE(Codec().buildAsString(para, out.octets, out.len, 257, 258), nullptr);
        EXPECT_EQ(Shape(para), "{a: \"1\", b: \"2\"}");
    }
}

TEST(FailNth, BuildThatSaysWhyItFails) {
    const long failures = UntilItGetsThrough([] {
        CParaSet para("para");
        para["interfaces"][0]["addresses"][0] = "10.0.0.1";
        Octets out;
        out.len = 24;
        CodecFault fault;
        EXPECT_EQ(Codec().build(para, out.octets, out.len, 2000, -1, -1, &fault), nullptr);
        EXPECT_FALSE(fault.path.empty());
    });
    EXPECT_GT(failures, 0);
}

// Out of memory while loading propagates, and what was loaded is freed.
TEST(FailNth, Loading) {
    const long failures = UntilItGetsThrough([] {
        FrameUtil::DescReport report;
        const CEndeCode codec(CODEC_EXAMPLE, &report);
        EXPECT_EQ(codec.findDesc(2000).size(), 9u);
    });
    EXPECT_GT(failures, 30);
}

TEST(FailNth, LookingUp) {
    EXPECT_GT(UntilItGetsThrough([] { EXPECT_EQ(Codec().findDesc(2000).size(), 9u); }), 0);
    EXPECT_EQ(UntilItGetsThrough([] { EXPECT_TRUE(Codec().findDesc(1).empty()); }), 0);
}

// A length is not believed before the octets are there.
TEST(FailNth, NoInputMakesAnAllocationOfItsClaimedSize) {
    const QuietLog quiet;
    const FailNthAllocation failing(LONG_MAX);  // huge ones fail
    for (const char* hex : {"04 84 7f ff ff ff 61", "30 84 7f ff ff ff 02 01 05"}) {
        CParaSet para("para");
        EXPECT_EQ(Parse(support::Octets(hex), para), nullptr);
    }
    EXPECT_FALSE(failing.Fired());
}

}  // namespace
