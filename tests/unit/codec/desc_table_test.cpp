// The description file: which lines hold an item, how their fields become numbers, and what
// is traced of the others.
#include "codec/desc_table.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "support/captured_log.h"
#include "support/codec.h"
#include "support/quiet_log.h"

namespace FrameUtil {

bool operator==(const DescItem& a, const DescItem& b) {
    return a.name == b.name && a.type == b.type && a.desc == b.desc && a.tag == b.tag;
}

std::ostream& operator<<(std::ostream& out, const DescItem& item) {
    return out << item.name << ' ' << item.type << ' ' << item.desc << ' ' << item.tag;
}

}  // namespace FrameUtil

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::DescItem;
using FrameUtil::DescReport;
using support::CodecOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::string FoundError(int accepted, int fields) {
    return "[Frame]init bms_desc_Asn1ParaDesc in line " + std::to_string(accepted) +
           " found error, size is " + std::to_string(fields);
}

std::string End(int total) {
    return "[Frame]init bms_desc_Asn1ParaDesc end, total size is " + std::to_string(total) + ".";
}

std::string WithZero(const char* before, const char* after) {
    return std::string(before) + '\0' + after;
}

const DescItem kUserName{"userName", 4, -1, -1};

TEST(DescTable, LinesOfSixFields) {
    const struct {
        const char* name;
        std::string text;
        DescItem item;
    } rows[] = {
        {"blanks", "1100 0 userName 4 -1 -1\n", kUserName},
        {"tabs", "1100\t0\tuserName\t4\t-1\t-1\n", kUserName},
        {"#$", "1100#$0#$userName#$4#$-1#$-1\n", kUserName},
        {"all three", "1100#$0 userName\t4#$-1 -1\n", kUserName},
        {"no newline at the end", "1100 0 userName 4 -1 -1", kUserName},
        {"CRLF", "1100 0 userName 4 -1 -1\r\n", kUserName},
        {"several blanks in a row", "1100  0   userName 4 -1    -1\n", kUserName},
        {"a blank and a tab", "1100 \t0 #$userName 4 -1 -1\n", kUserName},
        {"blanks at both ends", "  1100 0 userName 4 -1 -1  \n", kUserName},
        {"a byte-order mark",
         "\xef\xbb\xbf"
         "1100 0 userName 4 -1 -1\n",
         kUserName},
        {"column 2 is text", "1100 x userName 4 -1 -1\n", kUserName},
        {"column 2 is a large number", "1100 99999999999999999999 userName 4 -1 -1\n", kUserName},
        {"column 2 is negative", "1100 -7 userName 4 -1 -1\n", kUserName},
        {"white space that is trimmed", "1100\v 0 \fuserName\r 4 \v-1 -1\f\n", kUserName},
        {"# without $", "1100 0 user#Name 4 -1 -1\n", {"user#Name", 4, -1, -1}},
        {"# before #$", "1100 0 user##$4 -1 -1\n", {"user#", 4, -1, -1}},
        {"$ alone", "1100 0 $ 4 -1 -1\n", {"$", 4, -1, -1}},
        {"no numbers", "1100 0 n four one x\n", {"n", 0, 0, 0}},
        {"numbers with something behind", "1100x 0 n 4x 5.9 6-7\n", {"n", 4, 5, 6}},
        {"a plus", "+1100 0 n +4 +5 +6\n", {"n", 4, 5, 6}},
        {"base 10 only", "01100 0 n 010 0x10 0b1\n", {"n", 10, 0, 0}},
        {"the ends of 32 bits", "1100 0 n 2147483647 -2147483648 0\n", {"n", INT_MAX, INT_MIN, 0}},
        {"beyond 32 bits the low ones count",
         "1100 0 n 2147483648 4294967298 -4294967297\n",
         {"n", INT_MIN, 2, -1}},
        {"beyond 64 bits those of the nearest number",
         "1100 0 n 99999999999999999999 -99999999999999999999 0\n",
         {"n", -1, 0, 0}},
        {"a type that does not exist", "1100 0 n 77 1 300\n", {"n", 77, 1, 300}},
        {"octets above 127 in the name",
         "1100 0 n\xc3\xa9\xff 4 -1 -1\n",
         {"n\xc3\xa9\xff", 4, -1, -1}},
        {"a zero octet in the name",
         WithZero("1100 0 n", "m 4 -1 -1\n"),
         {WithZero("n", "m"), 4, -1, -1}},
        {"a zero octet in a number", WithZero("1100 0 n 4", "5 -1 -1\n"), {"n", 4, -1, -1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CapturedLog log;
        DescReport report;
        const auto codec = CodecOf(row.text, &report);
        EXPECT_THAT(codec->findDesc(1100), ElementsAre(row.item));
        EXPECT_THAT(log.Texts(), ElementsAre(End(1)));
        EXPECT_EQ(report.error, 0);
        EXPECT_THAT(report.rejected, IsEmpty());
    }
}

// The number of the first trace is how many lines were accepted so far.
TEST(DescTable, OtherLinesAreTracedAndLeftOut) {
    const std::string good = "1100 0 userName 4 -1 -1\n";
    const struct {
        const char* name;
        std::string text;
        std::vector<std::string> traces;
        std::vector<std::pair<int, int>> rejected;  // line, fields
    } rows[] = {
        {"an empty file", "", {End(0)}, {}},
        {"five fields", "1100 0 userName 4 -1\n", {FoundError(0, 5), End(0)}, {{1, 5}}},
        {"seven fields", "1100 0 userName 4 -1 -1 x\n", {FoundError(0, 7), End(0)}, {{1, 7}}},
        {"five and seven after two lines",
         good + good + "1100 0 userName 4 -1\n" + "1 2 3 4 5 6 7\n" + good,
         {FoundError(2, 5), FoundError(2, 7), End(3)},
         {{3, 5}, {4, 7}}},
        {"an empty line", good + "\n" + good, {FoundError(1, 0), End(2)}, {}},
        {"empty lines of CRLF", "\r\n" + good, {FoundError(0, 1), End(1)}, {}},
        {"blanks alone", "  \t #$ \n" + good, {FoundError(0, 0), End(1)}, {}},
        {"a comment", "# what follows\n" + good, {FoundError(0, 3), End(1)}, {}},
        {"a comment behind blanks", "  # what follows\n" + good, {FoundError(0, 3), End(1)}, {}},
        {"a field of #$ that is none",
         "1100#$#$0#$userName#$4#$-1\n",
         {FoundError(0, 5), End(0)},
         {{1, 5}}},
        {"a carriage return behind a blank",
         "1100 0 userName 4 -1 -1 \r\n",
         {FoundError(0, 7), End(0)},
         {{1, 7}}},
        {"the last line, without a newline", good + "1100", {FoundError(1, 1), End(1)}, {{2, 1}}},
        {"a byte-order mark alone", "\xef\xbb\xbf", {FoundError(0, 0), End(0)}, {}},
        {"a byte-order mark in the second line",
         good + "\xef\xbb\xbf\n",
         {FoundError(1, 1), End(1)},
         {{2, 1}}},
        {"zero octets", std::string(3, '\0') + "\n", {FoundError(0, 1), End(0)}, {{1, 1}}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CapturedLog log;
        DescReport report;
        const auto codec = CodecOf(row.text, &report);
        EXPECT_EQ(log.Texts(), row.traces);
        std::vector<std::pair<int, int>> rejected;
        for (const DescReport::Line& line : report.rejected) {
            rejected.emplace_back(line.number, line.fields);
        }
        EXPECT_EQ(rejected, row.rejected);
        EXPECT_EQ(report.error, 0);
    }
}

// Two lines with key 1100 separated by lines of other keys produce one list of two items in
// file order.
TEST(DescTable, LinesOfAKeyNeedNotStandTogether) {
    const auto codec = CodecOf(
        "1100 0 z 4 -1 -1\n1200 0 x 2 -1 -1\n-5 0 y 2 -1 -1\n"
        "1100 0 a 2 1 128\n1100 0 z 9 -1 -1\n");
    EXPECT_THAT(
        codec->findDesc(1100),
        ElementsAre(DescItem{"z", 4, -1, -1}, DescItem{"a", 2, 1, 128}, DescItem{"z", 9, -1, -1}));
    EXPECT_THAT(codec->findDesc(1200), ElementsAre(DescItem{"x", 2, -1, -1}));
    EXPECT_THAT(codec->findDesc(-5), ElementsAre(DescItem{"y", 2, -1, -1}));
}

TEST(DescTable, KeysAreSigned32BitNumbers) {
    const auto codec = CodecOf(
        "9223372036854775807 0 max 2 -1 -1\nkey 0 none 2 -1 -1\n"
        "4294968396 0 wrapped 2 -1 -1\n");
    EXPECT_THAT(codec->findDesc(-1), ElementsAre(DescItem{"max", 2, -1, -1}));
    EXPECT_THAT(codec->findDesc(0), ElementsAre(DescItem{"none", 2, -1, -1}));
    EXPECT_THAT(codec->findDesc(1100), ElementsAre(DescItem{"wrapped", 2, -1, -1}));
}

TEST(DescTable, AnUnknownKeyHasNoItemsHoweverOftenItIsAsked) {
    const auto codec = CodecOf("1100 0 a 4 -1 -1\n");
    for (const int key : {0, -1, 1099, 1101, INT_MAX, INT_MIN, 1099}) {
        EXPECT_THAT(codec->findDesc(key), IsEmpty()) << key;
    }
}

TEST(DescTable, WhatALookUpReturnsIsACopy) {
    const auto codec = CodecOf("1100 0 userName 4 -1 -1\n");
    auto items = codec->findDesc(1100);
    items.front().name = "other";
    items.clear();
    EXPECT_THAT(codec->findDesc(1100), ElementsAre(kUserName));
}

TEST(DescTable, WithoutAFileToReadTheTableIsEmpty) {
    const TempFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", folder.Path("loop"));
    std::ofstream(folder.Path("file")) << "1100 0 a 4 -1 -1\n";
    const struct {
        const char* name;
        std::string file;
        int error;
    } rows[] = {
        {"missing", folder.Path("missing"), ENOENT},
        {"no name", "", ENOENT},
        {"a folder", folder.Path(), EISDIR},
        {"a pipe that nobody writes to", folder.Path("pipe"), EINVAL},
        {"a device", "/dev/zero", EINVAL},
        {"a link to itself", folder.Path("loop"), ELOOP},
        {"below a file", folder.Path("file/below"), ENOTDIR},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        CapturedLog log;
        DescReport report;
        const CEndeCode codec(row.file, &report);
        EXPECT_THAT(log.Texts(), ElementsAre(End(0)));
        EXPECT_EQ(report.error, row.error);
        EXPECT_THAT(report.rejected, IsEmpty());
        EXPECT_THAT(codec.findDesc(1100), IsEmpty());
        EXPECT_THAT(CEndeCode(row.file).findDesc(1100), IsEmpty()) << "nobody asks why";
    }
}

TEST(DescTable, AReportIsOfTheLastFileOnly) {
    DescReport report;
    CEndeCode("/nowhere", &report);
    EXPECT_EQ(report.error, ENOENT);
    CodecOf("1 2 3\n", &report);
    EXPECT_EQ(report.error, 0);
    EXPECT_EQ(report.rejected.size(), 1u);
    CodecOf("", &report);
    EXPECT_THAT(report.rejected, IsEmpty());
}

// With no table every structured value is an empty sequence and is read without children.
TEST(DescTable, AnEmptyTableCodesEmptyStructures) {
    const auto codec = CodecOf("");
    FrameUtil::CParaSet para("para");
    para["a"] = 1;
    EXPECT_EQ(support::Built(*codec, para, {1100}), "30 83 00 00 00");
    EXPECT_EQ(support::Parsed(*codec, support::Octets("30 03 02 01 07"), {1100}), "{}");
}

TEST(DescTable, ALineOfTenMegabytes) {
    constexpr std::size_t kMany = 10'000'000;
    CapturedLog log;
    DescReport report;
    const std::string good = "1100 0 userName 4 -1 -1\n";
    EXPECT_THAT(CodecOf(good + std::string(kMany, 'x') + "\n" + good, &report)->findDesc(1100),
                ElementsAre(kUserName, kUserName));
    EXPECT_THAT(log.Texts(), ElementsAre(FoundError(1, 1), End(2)));
    log.Clear();
    const std::string blanks = support::Repeat("x ", kMany / 2);
    EXPECT_THAT(CodecOf(blanks + "\n" + good, &report)->findDesc(1100), ElementsAre(kUserName));
    EXPECT_THAT(log.Texts(), ElementsAre(FoundError(0, kMany / 2), End(1)));
    const std::string name(kMany, 'n');
    EXPECT_TRUE(CodecOf("1100 0 " + name + " 4 -1 -1")->findDesc(1100).at(0).name == name);
}

// Lines that end where a piece of the file that is read at once ends.
TEST(DescTable, LinesOfEveryLengthAroundThePowersOfTwo) {
    for (const std::size_t size : support::SizesAroundPowersOfTwo(14)) {
        if (size == 0) {
            continue;
        }
        const std::string name(size, 'n');
        const std::string line = "1100 0 " + name + " 4 -1 -1";
        const auto codec = CodecOf(line + "\n" + line);
        EXPECT_THAT(codec->findDesc(1100),
                    ElementsAre(DescItem{name, 4, -1, -1}, DescItem{name, 4, -1, -1}))
            << size;
    }
}

TEST(DescTable, AMillionLines) {
    constexpr int kLines = 1'000'000;
    std::string text;
    for (int i = 0; i < kLines; ++i) {
        text += std::to_string(2000 + i % 1000) + " 0 n" + std::to_string(i) + " 2 -1 -1\n";
    }
    CapturedLog log;
    const auto codec = CodecOf(text);
    EXPECT_THAT(log.Texts(), ElementsAre(End(kLines)));
    ASSERT_EQ(codec->findDesc(2999).size(), 1000u);
    EXPECT_EQ(codec->findDesc(2999).back().name, "n999999");
}

TEST(DescTable, ManyLinesThatHoldNothing) {
    constexpr int kLines = 20'000;
    const QuietLog quiet;  // standard error need not have them all
    CapturedLog log;
    DescReport report;
    CodecOf(support::Repeat("1 2 3\n", kLines), &report);
    EXPECT_EQ(log.Count(FoundError(0, 3)), static_cast<std::size_t>(kLines));
    ASSERT_EQ(report.rejected.size(), static_cast<std::size_t>(kLines));
    EXPECT_EQ(report.rejected.back().number, kLines);
}

// The file is read once: what becomes of it afterwards is nothing to the table.
TEST(DescTable, IsNotReadAgain) {
    const TempFolder folder;
    std::ofstream(folder.Path("file")) << "1100 0 userName 4 -1 -1\n";
    const CEndeCode codec(folder.Path("file"));
    std::ofstream(folder.Path("file")) << "1100 0 other 2 -1 -1\n";
    EXPECT_THAT(codec.findDesc(1100), ElementsAre(kUserName));
}

TEST(DescTable, LoadingLeavesNoDescriptorOpen) {
    const TempFolder folder;
    std::ofstream(folder.Path("file")) << "1100 0 userName 4 -1 -1\n";
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    CEndeCode(folder.Path("file"));
    const auto before = descriptors();
    for (const char* file : {"file", "missing", "."}) {
        CEndeCode(folder.Path(file));
    }
    EXPECT_EQ(descriptors(), before);
}

// ---- where the platform keeps it

class PlatformTable : public testing::Test {
  protected:
    void SetUp() override {
        if (const char* root = std::getenv("OSS_ROOT")) {
            m_former = root;
        }
    }
    void TearDown() override {
        if (m_former.empty()) {
            unsetenv("OSS_ROOT");
        } else {
            setenv("OSS_ROOT", m_former.c_str(), 1);
        }
    }
    std::string m_former;
};

TEST_F(PlatformTable, StandsBelowTheInstallationRoot) {
    setenv("OSS_ROOT", "/opt/nms/oss", 1);
    EXPECT_EQ(FrameUtil::PlatformDescFile(),
              "/opt/nms/oss/rtsp/DRKFrame/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp");
    unsetenv("OSS_ROOT");
    EXPECT_EQ(FrameUtil::PlatformDescFile(), "/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp");
}

TEST_F(PlatformTable, IsReadByACodecWithoutAFile) {
    const TempFolder folder;
    const std::string conf = folder.Path("rtsp/DRKFrame/drk/frame/conf");
    std::filesystem::create_directories(conf);
    std::ofstream(conf + "/MCDB..bms_desc_Asn1ParaDesc.bcp") << "1100 0 userName 4 -1 -1\n";
    setenv("OSS_ROOT", folder.Path().c_str(), 1);
    EXPECT_THAT(CEndeCode().findDesc(1100), ElementsAre(kUserName));
}

TEST_F(PlatformTable, WithoutARootOneLineSaysSo) {
    unsetenv("OSS_ROOT");
    CapturedLog log;
    EXPECT_THAT(CEndeCode().findDesc(1100), IsEmpty());
    EXPECT_THAT(log.Texts(),
                ElementsAre("[settings] there is no package rtsp/DRKFrame: OSS_ROOT is not set: "
                            "run 'kelpd init DIR' and export what it prints",
                            End(0)));
}

// ---- the example

TEST(DescTable, TheExampleHoldsADozenKeysAndNoMalformedLine) {
    DescReport report;
    const CEndeCode codec(CODEC_EXAMPLE, &report);
    EXPECT_EQ(report.error, 0);
    EXPECT_THAT(report.rejected, IsEmpty());
    int keys = 0;
    for (int key = 2000; key < 3000; ++key) {
        keys += codec.findDesc(key).empty() ? 0 : 1;
    }
    EXPECT_GE(keys, 12);
    EXPECT_THAT(codec.findDesc(2080),
                ElementsAre(DescItem{"first", 2, -1, -1}, DescItem{"second", 4, -1, -1}));
}

}  // namespace
