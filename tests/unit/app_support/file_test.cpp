#include "support/file.h"

#include <gmock/gmock.h>

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

}  // namespace
