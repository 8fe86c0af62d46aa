// Registering resource files, and looking their texts up.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "kelp/resource.h"
#include "support/captured_log.h"
#include "support/environment.h"
#include "support/temp_folder.h"

namespace {

using kelp::log::Level;
using testing::ElementsAre;
using testing::IsEmpty;

std::string Write(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
    return path;
}

std::string Get(const std::string& key) {
    const char* const text = KelpGetResString(key);
    return text == nullptr ? "(null)" : text;
}

// The table lives as long as the process: each test has keys of its own.
class ResourceTest : public testing::Test {
  protected:
    const TempFolder m_folder;
    const EnvironmentVariable m_no_language{"KELP_LANGUAGE", nullptr};
    const CapturedLog m_log;
};

TEST_F(ResourceTest, TextsAreFoundUnderTheirKeys) {
    const std::string file = Write(m_folder.Path("a.res"), "t1.desc=Text one\nt1.empty=\n");
    EXPECT_EQ(Get("t1.desc"), "(null)");
    EXPECT_EQ(KelpAddResFileWithAbsolute(file), 1);
    EXPECT_EQ(Get("t1.desc"), "Text one");
    EXPECT_EQ(Get("t1.empty"), "");
    EXPECT_EQ(Get("t1.other"), "(null)");
    EXPECT_EQ(Get("t1"), "(null)");
    EXPECT_EQ(Get(""), "(null)");
    EXPECT_EQ(Get(std::string("t1.desc\0", 8)), "(null)");
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

// The last file wins, and a pointer that was given out keeps its text.
TEST_F(ResourceTest, LaterFilesWinAndPointersStay) {
    const std::string file = Write(m_folder.Path("a.res"), "t2.a=old\nt2.b=kept\n");
    ASSERT_EQ(KelpAddResFileWithAbsolute(file), 1);
    const char* const before = KelpGetResString("t2.a");
    ASSERT_EQ(KelpAddResFileWithAbsolute(file), 1);
    EXPECT_EQ(KelpGetResString("t2.a"), before) << "the same text is the same pointer";
    ASSERT_EQ(KelpAddResFileWithAbsolute(Write(m_folder.Path("b.res"), "t2.a=new\n")), 1);
    EXPECT_EQ(Get("t2.a"), "new");
    EXPECT_EQ(Get("t2.b"), "kept");
    EXPECT_STREQ(before, "old");
}

// A refused file is named in one error, with its line, and leaves the table as it was.
TEST_F(ResourceTest, MalformedFileIsRefusedWhole) {
    const std::string file =
        Write(m_folder.Path("bad.res"), "t3.a=1\nt3.b=2\nno equals sign\nt3.c=3\n");
    EXPECT_EQ(KelpAddResFileWithAbsolute(file), 0);
    const auto entries = m_log.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::kError);
    EXPECT_EQ(entries[0].text, "[resource] " + file + ":3: there is no '=' in the line");
    EXPECT_EQ(entries[0].unit, "resource");
    for (const char* key : {"t3.a", "t3.b", "t3.c"}) {
        EXPECT_EQ(Get(key), "(null)") << key;
    }
}

// Whatever a name stands for, the call returns at once; 1 for a readable regular file.
TEST_F(ResourceTest, WhatCannotBeRead) {
    const std::string fifo = m_folder.Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string loop = m_folder.Path("loop");
    std::filesystem::create_symlink(loop, loop);
    const std::string large = m_folder.Path("large");
    Write(large, "");
    std::filesystem::resize_file(large, (std::size_t{16} << 20) + 1);
    const std::string good = Write(m_folder.Path("good"), "t4=1");
    const struct {
        std::string path;
        std::string what;
    } cases[] = {
        {m_folder.Path("missing"), "cannot be read: No such file or directory"},
        {m_folder.Path(), "cannot be read: Is a directory"},
        {fifo, "cannot be read: Invalid argument"},
        {"/dev/null", "cannot be read: Invalid argument"},
        {loop, "cannot be read: Too many levels of symbolic links"},
        {good + "/x", "cannot be read: Not a directory"},
        {m_folder.Path(std::string(300, 'x')), "cannot be read: File name too long"},
        {large, "the file is larger than 16777216 octets"},
        {"", "this is no file's name"},
        {good + std::string("\0x", 2), "this is no file's name"},
    };
    for (const auto& c : cases) {
        const CapturedLog log;
        EXPECT_EQ(KelpAddResFileWithAbsolute(c.path), 0) << c.path;
        EXPECT_THAT(log.Texts(), ElementsAre("[resource] " + c.path + ": " + c.what));
    }
    EXPECT_EQ(Get("t4"), "(null)");
    EXPECT_EQ(KelpAddResFileWithAbsolute(good), 1);
    EXPECT_EQ(Get("t4"), "1");
}

TEST_F(ResourceTest, LargestFile) {
    std::string contents;
    const std::string line = "#" + std::string(65534, ' ') + "\n";
    while (contents.size() + line.size() < (std::size_t{16} << 20)) {
        contents += line;
    }
    contents += "t5=last\n";
    contents.resize(std::size_t{16} << 20, '\n');
    EXPECT_EQ(KelpAddResFileWithAbsolute(Write(m_folder.Path("a"), contents)), 1);
    EXPECT_EQ(Get("t5"), "last");
}

// The language's files stand beside the file; the more special text wins.
TEST_F(ResourceTest, Languages) {
    Write(m_folder.Path("a.b.res"), "t6.a=a\nt6.b=b\nt6.c=c\n");
    Write(m_folder.Path("a.b_zh.res"), "t6.b=b zh\nt6.c=c zh\n");
    Write(m_folder.Path("a.b_zh_CN.res"), "t6.c=c zh_CN\n");
    Write(m_folder.Path("a.b_fr_CA.res"), "t6.a=a fr_CA\n");
    const struct {
        const char* language;
        const char *a, *b, *c;
    } cases[] = {
        {nullptr, "a", "b", "c"},       {"", "a", "b", "c"},
        {"zh", "a", "b zh", "c zh"},    {"zh_CN", "a", "b zh", "c zh_CN"},
        {"zh_TW", "a", "b zh", "c zh"}, {"zh_CN_x1", "a", "b zh", "c zh_CN"},
        {"fr_CA", "a fr_CA", "b", "c"}, {"fr", "a", "b", "c"},
        {"de", "a", "b", "c"},
    };
    for (const auto& c : cases) {
        const std::string name = c.language == nullptr ? "(none)" : c.language;
        const EnvironmentVariable language("KELP_LANGUAGE", c.language);
        ASSERT_EQ(KelpAddResFileWithAbsolute(m_folder.Path("a.b.res")), 1) << name;
        EXPECT_EQ(Get("t6.a"), c.a) << name;
        EXPECT_EQ(Get("t6.b"), c.b) << name;
        EXPECT_EQ(Get("t6.c"), c.c) << name;
    }
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

// The language goes in front of the extension of the name, not of a folder's.
TEST_F(ResourceTest, LanguageInNames) {
    const std::string folder = m_folder.Path("v1.2");
    std::filesystem::create_directory(folder);
    const EnvironmentVariable language("KELP_LANGUAGE", "de");
    const struct {
        const char* name;
        const char* translated;
    } cases[] = {
        {"errors", "errors_de"}, {".errors", ".errors_de"}, {"a.b.c", "a.b_de.c"}, {"a.", "a_de."}};
    for (const auto& c : cases) {
        const std::string key = std::string("t7.") + c.name;
        Write(folder + "/" + c.name, key + "=no");
        Write(folder + "/" + c.translated, key + "=ja");
        EXPECT_EQ(KelpAddResFileWithAbsolute(folder + "/" + c.name), 1) << c.name;
        EXPECT_EQ(Get(key), "ja") << c.name;
    }
}

TEST_F(ResourceTest, DamagedTranslationRefusesAll) {
    const std::string file = Write(m_folder.Path("a.res"), "t8.a=1\n");
    Write(m_folder.Path("a_de.res"), "t8.a=eins\n");
    const std::string special = Write(m_folder.Path("a_de_AT.res"), "t8.a\n");
    const EnvironmentVariable language("KELP_LANGUAGE", "de_AT");
    EXPECT_EQ(KelpAddResFileWithAbsolute(file), 0);
    EXPECT_EQ(Get("t8.a"), "(null)");
    EXPECT_THAT(m_log.Texts(),
                ElementsAre("[resource] " + special + ":1: there is no '=' in the line"));
}

// The language is a part of a file's name, so it can be nothing but a language.
TEST_F(ResourceTest, WhatIsNoLanguage) {
    const std::string file = Write(m_folder.Path("a.res"), "t9=1\n");
    for (const char* value : {"/../b", "x", "de_", "_de", "de__AT", "de-AT", "de.UTF-8",
                              "abcdefghi", "aa_bb_cc_dd_ee", "d\xc3\xa9", " de", "zz_..", "%s%n"}) {
        const EnvironmentVariable language("KELP_LANGUAGE", value);
        const CapturedLog log;
        EXPECT_EQ(KelpAddResFileWithAbsolute(file), 1) << value;
        EXPECT_THAT(log.Texts(Level::kWarn),
                    ElementsAre("[resource] KELP_LANGUAGE \"" + std::string(value) +
                                "\" is no language such as \"de\" or \"zh_CN\" and is ignored"));
    }
}

// Lookups while files are registered find the old text or the new one.
TEST_F(ResourceTest, ManyThreads) {
    const std::string one = Write(m_folder.Path("1"), "t10.a=one\nt10.b=one\n");
    const std::string two = Write(m_folder.Path("2"), "t10.a=two\nt10.b=two\n");
    ASSERT_EQ(KelpAddResFileWithAbsolute(one), 1);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                if (t < 2 && KelpAddResFileWithAbsolute(i % 2 == 0 ? one : two) != 1) {
                    ++wrong;
                }
                const std::string text = Get("t10.b");
                if (text != "one" && text != "two") {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
