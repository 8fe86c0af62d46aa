// Bounded copies that fail: each is traced with its line and the error, and the call goes
// on with what the copy left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "failing_copy.h"
#include "support/captured_log.h"
#include "support/codec.h"

namespace {

using FrameUtil::CParaSet;
using support::As;
using support::CodecOf;
using support::Form;
using support::Octets;
using testing::ElementsAre;

std::string Failed(int line) {
    return "[Frame]memcpy_s failed at line " + std::to_string(line) +
           " errno: " + std::to_string(FailNthCopy::kError);
}

TEST(FailingCopy, OfARealInBuildIsLine450AndInBuildAsString683) {
    const auto codec = CodecOf("");
    for (const auto& [form, line] : {std::pair{Form::kPlain, 450}, {Form::kText, 683}}) {
        CParaSet para("para");
        para = -0.5;
        CapturedLog log;
        const FailNthCopy failing(1);
        EXPECT_EQ(support::Built(*codec, para, {}, 5, form), "09 03 00 00 00");
        EXPECT_TRUE(failing.Fired());
        EXPECT_THAT(log.Texts(), ElementsAre(Failed(line)));
    }
    // And at a depth, where the same build is at work.
    CParaSet list("list");
    list[0][0] = -0.5;
    CapturedLog log;
    const FailNthCopy failing(1);
    EXPECT_EQ(support::Built(*codec, list, {}, 100, Form::kText),
              "30 83 00 00 0a 30 83 00 00 05 09 03 00 00 00");
    EXPECT_THAT(log.Texts(), ElementsAre(Failed(683)));
}

TEST(FailingCopy, OfAStringInBuildIsTheParameterSets) {
    const auto codec = CodecOf("");
    CParaSet para("para", "abc");
    CapturedLog log;
    const FailNthCopy failing(1);
    EXPECT_EQ(support::Built(*codec, para), "04 03 00 00 00");
    EXPECT_THAT(log.Texts(), ElementsAre(Failed(1280)));
}

TEST(FailingCopy, OfLengthOctetsInParseIsLine540) {
    const auto codec = CodecOf("");
    for (const char* octets : {"04 81 01 61", "04 84 00 00 00 01 61"}) {
        CParaSet para("para");
        CapturedLog log;
        const FailNthCopy failing(1);
        // A length of which nothing is known is taken for 0.
        EXPECT_EQ(support::Parse(*codec, Octets(octets), para), " +1");
        EXPECT_EQ(Shape(para), "\"\"");
        EXPECT_THAT(log.Texts(), ElementsAre(Failed(540)));
    }
}

TEST(FailingCopy, OfAStringInParseIsLine382) {
    const auto codec = CodecOf("");
    CParaSet para("para");
    CapturedLog log;
    {
        const FailNthCopy failing(1);
        EXPECT_EQ(support::Parse(*codec, Octets("04 03 61 62 63"), para), "");
    }
    EXPECT_EQ(Shape(para), "\"\\0\\0\\0\"");
    EXPECT_THAT(log.Texts(), ElementsAre(Failed(382)));
    log.Clear();
    CParaSet named("para");
    {
        const FailNthCopy failing(1);
        EXPECT_EQ(support::Parse(*codec, Octets("30 06 04 01 6e 02 01 07"), named, {258}), "");
    }
    EXPECT_EQ(named.name(), std::string(1, '\0'));
    EXPECT_THAT(log.Texts(), ElementsAre(Failed(382)));
}

// Whichever copy fails: the call ends within its bounds and the tree can be used.
TEST(FailingCopy, AnyOfThemEndsInATree) {
    const FrameUtil::CEndeCode codec(CODEC_EXAMPLE);
    CParaSet para("para");
    para["neId"] = 7;
    para["neName"] = "tokyo";
    para["load"] = 0.25;
    para["location"]["site"] = std::string(300, 's');
    para["location"]["latitude"] = 35.7;
    para["location"]["longitude"] = 139.7;
    para["attributes"]["rack"] = "r1";
    para["attributes"]["slots"] = 300;
    para["interfaces"][0]["index"] = 1;
    para["interfaces"][0]["name"] = "eth0";
    para["interfaces"][0]["addresses"][0] = "10.0.0.1";
    std::string why;
    const std::string octets = support::Build(codec, para, {2000}, 1000, why);
    ASSERT_EQ(why, "");
    CParaSet whole("whole");
    ASSERT_EQ(support::Parse(codec, octets, whole, {2000}), "");
    bool fired = true;
    int n = 0;
    while (fired) {
        ++n;
        SCOPED_TRACE(n);
        CParaSet back("back");
        CapturedLog log;
        {
            const FailNthCopy failing(n);
            support::Parse(codec, octets, back, {2000});
            fired = failing.Fired();
        }
        CParaSet copy(back);
        EXPECT_EQ(Shape(copy), Shape(back));
        EXPECT_EQ(log.Count("memcpy_s failed at line"), fired ? 1u : 0u);
    }
    EXPECT_GT(n, 10);
}

}  // namespace
