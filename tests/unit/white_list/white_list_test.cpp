// Loading the white list of a process, and handing out copies of it.

#include "frameutil/white_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "message/identity.h"
#include "support/captured_log.h"
#include "support/failing_new.h"
#include "support/temp_folder.h"

namespace FrameUtil {
namespace {

using kelp::log::Level;
using testing::ElementsAre;
using testing::IsEmpty;

class WhiteListTest : public testing::Test {
  protected:
    WhiteListTest() { SetProcess(3001); }
    ~WhiteListTest() override { QWhiteList::Destroy(); }

    static void SetProcess(std::uint16_t proc_id) { kelp::message::SetIdentity({proc_id, 1, 0}); }

    std::string Dir() const { return m_folder.Path() + "/"; }
    std::string File() const { return m_folder.Path("3001_QWhiteList.properties"); }
    void Write(const std::string& contents) const {
        std::ofstream(File(), std::ios::binary) << contents;
    }
    static int Init(const std::string& dir) { return QWhiteList::Instance()->Init(dir); }
    static std::vector<std::string> List() {
        std::vector<std::string> list{"what was there before"};
        QWhiteList::Instance()->GetWhiteList(list);
        return list;
    }

    const TempFolder m_folder;
    const CapturedLog m_log;
};

TEST_F(WhiteListTest, OneEntryOfAFile) {
    Write("# commands without a token\n\n\t\n  2167 \n");
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), ElementsAre("2167"));
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

TEST_F(WhiteListTest, MissingFileIsAWarning) {
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), IsEmpty());
    const auto entries = m_log.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::kWarn);
    EXPECT_EQ(entries[0].text, "WhiteList is not exist!");
    EXPECT_EQ(entries[0].unit, "QWhiteList");
    EXPECT_EQ(entries[0].function, "Init");
    EXPECT_EQ(entries[0].line, 69);
}

TEST_F(WhiteListTest, ProcessWithoutIdentifier) {
    Write("1000\n");
    ASSERT_EQ(Init(Dir()), 0);
    SetProcess(0);
    std::ofstream(m_folder.Path("0_QWhiteList.properties")) << "2000\n";
    EXPECT_EQ(Init(Dir()), -1);
    EXPECT_THAT(List(), ElementsAre("1000"));
    const auto entries = m_log.Entries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, Level::kError);
    EXPECT_EQ(entries[0].code, 0xFFFFFFFFu);
    EXPECT_EQ(entries[0].text, "Get procId error!");
    EXPECT_EQ(entries[0].unit, "QWhiteList");
    EXPECT_EQ(entries[0].function, "Init");
}

// The file is the process's own, and nothing is put between directory and name.
TEST_F(WhiteListTest, NameOfTheFile) {
    const struct {
        std::uint16_t proc_id;
        const char* dir;
        const char* name;
    } cases[] = {
        {3001, "/", "3001_QWhiteList.properties"},
        {1, "/", "1_QWhiteList.properties"},
        {65535, "/", "65535_QWhiteList.properties"},
        {3001, "/proc", "proc3001_QWhiteList.properties"},
    };
    for (const auto& c : cases) {
        QWhiteList::Destroy();
        SetProcess(c.proc_id);
        std::ofstream(m_folder.Path(c.name)) << c.proc_id;
        EXPECT_EQ(Init(m_folder.Path() + c.dir), 0) << c.name;
        EXPECT_THAT(List(), ElementsAre(std::to_string(c.proc_id))) << c.name;
    }
    QWhiteList::Destroy();
    EXPECT_EQ(Init(m_folder.Path()), 0) << "without the separator it is another file";
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(WhiteListTest, EntriesAreAppended) {
    Write("1000\n2000\n");
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_EQ(Init(m_folder.Path("nowhere/")), 0);
    EXPECT_THAT(List(), ElementsAre("1000", "2000", "1000", "2000"));
}

// A copy is the caller's: what it does with it changes nothing.
TEST_F(WhiteListTest, CopiesAreIndependent) {
    Write("1000\n");
    ASSERT_EQ(Init(Dir()), 0);
    std::vector<std::string> copy;
    QWhiteList::Instance()->GetWhiteList(copy);
    copy.assign(3, "changed");
    EXPECT_THAT(List(), ElementsAre("1000"));
}

TEST_F(WhiteListTest, DestroyEmptiesTheList) {
    Write("1000\n");
    ASSERT_EQ(Init(Dir()), 0);
    QWhiteList::Destroy();
    QWhiteList::Destroy();
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), ElementsAre("1000"));
}

// The first allocation is the handle, the second what is behind it.
TEST_F(WhiteListTest, HandleWithoutAnythingBehindIt) {
    Write("1000\n");
    {
        const FailNthAllocation failing(1);
        EXPECT_THROW(QWhiteList::Instance(), std::bad_alloc);
    }
    {
        const FailNthAllocation failing(2);
        EXPECT_NE(QWhiteList::Instance(), nullptr);
        EXPECT_TRUE(failing.Fired());
    }
    SetProcess(0);
    EXPECT_EQ(Init(Dir()), 0);
    SetProcess(3001);
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_THAT(m_log.Texts(), IsEmpty());
}

// Wherever memory runs out, the list has all of a file's entries or none.
TEST_F(WhiteListTest, WithoutMemoryTheListIsAsItWas) {
    const std::string longer(100, '7');
    Write("1000\n" + longer + "\n# 1\n2000\n");
    ASSERT_EQ(Init(Dir()), 0);
    const auto before = List();
    ASSERT_THAT(before, ElementsAre("1000", longer, "2000"));
    Write("1\n2\n3\n4\n");
    long n = 1;
    for (; support::FailNth(n, [&] { Init(Dir()); }); ++n) {
        EXPECT_EQ(List(), before) << n;
    }
    EXPECT_GT(n, 3);
    EXPECT_THAT(List(), ElementsAre("1000", longer, "2000", "1", "2", "3", "4"));
}

// What is not a readable regular file is as good as missing, and a second line says why.
TEST_F(WhiteListTest, WhatCannotBeRead) {
    const struct {
        const char* name;
        std::function<void(const std::string&)> make;
        const char* why;
    } cases[] = {
        {"directory", [](const std::string& path) { std::filesystem::create_directory(path); },
         "Is a directory"},
        {"pipe", [](const std::string& path) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); },
         "Invalid argument"},
        {"device",
         [](const std::string& path) { std::filesystem::create_symlink("/dev/zero", path); },
         "Invalid argument"},
        {"symbolic link to itself",
         [](const std::string& path) { std::filesystem::create_symlink(path, path); },
         "Too many levels of symbolic links"},
        {"larger than the limit",
         [](const std::string& path) {
             std::ofstream(path).close();
             std::filesystem::resize_file(path, (std::size_t{64} << 20) + 1);
         },
         "File too large"},
    };
    for (const auto& c : cases) {
        c.make(File());
        const CapturedLog log;
        EXPECT_EQ(Init(Dir()), 0) << c.name;
        EXPECT_THAT(log.Texts(Level::kWarn),
                    ElementsAre("WhiteList is not exist!",
                                "[QWhiteList] " + File() + " is not loaded: " + c.why))
            << c.name;
        std::filesystem::remove(File());
    }
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(WhiteListTest, DirectoryWithAZeroOctet) {
    Write("1000\n");
    EXPECT_EQ(Init(Dir() + std::string("\0/", 2)), 0);
    EXPECT_THAT(List(), IsEmpty());
    EXPECT_EQ(m_log.Count("WhiteList is not exist!"), 1u);
}

// It is loaded: the warning is for who looks after the machine.
TEST_F(WhiteListTest, FileThatEverybodyMayWriteTo) {
    Write("1000\n");
    ASSERT_EQ(::chmod(File().c_str(), 0666), 0);
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), ElementsAre("1000"));
    EXPECT_THAT(m_log.Texts(),
                ElementsAre("[QWhiteList] " + File() + " can be written to by everybody"));
}

// Entries that no command can equal are kept and named, the first twenty of them.
TEST_F(WhiteListTest, ForeignEntriesAreNamed) {
    Write("1000\nabc\n\n7 \n" + std::string(100, 'x') + "\n");
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_THAT(List(), ElementsAre("1000", "abc", "7 ", std::string(100, 'x')));
    const std::string head = "[QWhiteList] " + File();
    EXPECT_THAT(
        m_log.Texts(),
        ElementsAre(head + ":2: \"abc\" is no command code", head + ":4: \"7 \" is no command code",
                    head + ":5: \"" + std::string(64, 'x') + "...\" is no command code"));
}

TEST_F(WhiteListTest, ManyForeignEntries) {
    std::string contents;
    for (int i = 0; i < 100'000; ++i) {
        contents += "x\n";
    }
    Write(contents);
    EXPECT_EQ(Init(Dir()), 0);
    EXPECT_EQ(List().size(), 100'000u);
    const auto texts = m_log.Texts();
    ASSERT_EQ(texts.size(), 21u);
    EXPECT_EQ(texts.back(), "[QWhiteList] " + File() + ": 99980 more entries are no command codes");
}

TEST_F(WhiteListTest, LongestLine) {
    Write("1000\n" + std::string(10'000'000, '7') + "\n2000");
    EXPECT_EQ(Init(Dir()), 0);
    const auto list = List();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[1].size(), 10'000'000u);
}

// Whoever copies the list while it is loaded gets whole files.
TEST_F(WhiteListTest, ManyThreads) {
    Write("1000\n2000\n3000\n");
    std::atomic<int> wrong{0};
    std::atomic<int> loading{2};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            if (t < 2) {
                for (int i = 0; i < 50; ++i) {
                    wrong += Init(Dir()) != 0;
                }
                --loading;
                return;
            }
            do {
                const auto list = List();
                wrong += list.size() % 3 != 0;
                wrong += !list.empty() && (list.front() != "1000" || list.back() != "3000");
            } while (loading > 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(List().size(), 300u);
}

// The example of the format's page: its file has the entries of its table.
TEST_F(WhiteListTest, FormatPage) {
    const std::string page = ReadFile(WHITE_LIST_FORMAT_PAGE);
    const auto block = [&](const std::string& kind) {
        const std::string begin = "```" + kind + "\n";
        const std::size_t at = page.find(begin) + begin.size();
        return page.substr(at, page.find("```", at) - at);
    };
    Write(block("properties"));
    ASSERT_EQ(Init(Dir()), 0);
    std::string entries;
    for (const std::string& entry : List()) {
        entries += '"' + entry + "\"\n";
    }
    EXPECT_EQ(entries, block("text"));
    EXPECT_FALSE(entries.empty());
}

}  // namespace
}  // namespace FrameUtil
