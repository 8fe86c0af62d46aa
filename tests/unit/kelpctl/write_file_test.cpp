#include "support/write_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "support/temp_folder.h"

namespace {

std::size_t FilesIn(const std::string& folder) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        count += entry.exists() ? 1 : 0;
    }
    return count;
}

TEST(WriteFile, ReplacesTheContentsAndKeepsTheMode) {
    const TempFolder folder;
    const std::string path = folder.Path("file");
    std::string why;
    ASSERT_TRUE(app::WriteFile(path, "first", why)) << why;
    ASSERT_EQ(chmod(path.c_str(), 0604), 0);
    ASSERT_TRUE(app::WriteFile(path, std::string("a\0b", 3), why)) << why;
    EXPECT_EQ(ReadFile(path), std::string("a\0b", 3));
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
    EXPECT_EQ(FilesIn(folder.Path()), 1U);
}

// A disk that fills up half way, played by the limit of a file's size.
TEST(WriteFile, LeavesTheOldFileWhenTheNewOneDoesNotFit) {
    const TempFolder folder;
    const std::string path = folder.Path("file");
    std::string why;
    ASSERT_TRUE(app::WriteFile(path, "old", why)) << why;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit few = before;
    few.rlim_cur = 4096;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &few), 0);
    const bool written = app::WriteFile(path, std::string(10000, 'x'), why);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(written);
    EXPECT_EQ(why, path + ": File too large");
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(FilesIn(folder.Path()), 1U);
}

TEST(WriteFile, RefusesWhatIsNoFile) {
    const TempFolder folder;
    std::string why;
    EXPECT_FALSE(app::WriteFile(folder.Path(), "x", why));
    EXPECT_EQ(why, folder.Path() + ": Is a directory");
    EXPECT_FALSE(app::WriteFile(folder.Path("none/file"), "x", why));
    EXPECT_EQ(why, folder.Path("none/file") + ": No such file or directory");
}

}  // namespace
