#include "support/file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>

#include "support/temp_folder.h"

namespace {

using testing::HasSubstr;

TEST(ReadFile, ReadsUpToItsLimitAndNamesWhatItCannotRead) {
    const TempFolder folder;
    const std::string path = folder.Path("ten");
    std::ofstream(path) << "0123456789";
    std::string out = "before";
    std::string why;
    EXPECT_TRUE(app::ReadFile(path, 10, out, why)) << why;
    EXPECT_EQ(out, "0123456789");
    EXPECT_FALSE(app::ReadFile(path, 9, out, why));
    EXPECT_THAT(why, HasSubstr(path + ": larger than 9 bytes"));
    EXPECT_EQ(out, "");
    EXPECT_FALSE(app::ReadFile(folder.Path("none"), 9, out, why));
    EXPECT_THAT(why, HasSubstr("No such file"));
    EXPECT_FALSE(app::ReadFile(folder.Path(""), 9, out, why));
    EXPECT_THAT(why, HasSubstr("Is a directory"));
    EXPECT_FALSE(app::ReadFile("/dev/zero", 100000, out, why));
    EXPECT_THAT(why, HasSubstr("larger than"));
}

// What may keep its reader waiting for ever is not even read.
TEST(ReadRegularFile, ReadsNothingElse) {
    const TempFolder folder;
    std::ofstream(folder.Path("ten")) << "0123456789";
    ASSERT_EQ(::mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    std::string out = "before";
    std::string why;
    EXPECT_TRUE(app::ReadRegularFile(folder.Path("ten"), 10, out, why)) << why;
    EXPECT_EQ(out, "0123456789");
    const struct {
        std::string path;
        std::string why;
    } cases[] = {
        {folder.Path("pipe"), "no regular file"},
        {"/dev/zero", "no regular file"},
        {folder.Path(), "Is a directory"},
        {folder.Path("none"), "No such file or directory"},
        {"-", "No such file or directory"},
    };
    for (const auto& c : cases) {
        out = "before";
        EXPECT_FALSE(app::ReadRegularFile(c.path, 10, out, why)) << c.path;
        EXPECT_EQ(why, c.path + ": " + c.why);
        EXPECT_EQ(out, "") << c.path;
    }
}

}  // namespace
