// The example of docs/formats/resources.md: its files, registered, give its table.

#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <string>

#include "kelp/resource.h"
#include "support/environment.h"
#include "support/temp_folder.h"

namespace {

TEST(ResourcesFormatPage, Example) {
    const TempFolder folder;
    const std::string page = ReadFile(RESOURCES_FORMAT_PAGE);
    const std::regex file("<!-- file: (\\S+) -->\\n```properties\\n([^`]*)```");
    int files = 0;
    for (std::sregex_iterator it(page.begin(), page.end(), file), end; it != end; ++it, ++files) {
        std::ofstream(folder.Path((*it)[1])) << (*it)[2];
    }
    EXPECT_EQ(files, 2);

    const EnvironmentVariable language("KELP_LANGUAGE", "de_AT");
    ASSERT_EQ(KelpAddResFileWithAbsolute(folder.Path("errors.res")), 1);
    const std::regex row("\\| `(port\\.[a-z.]+)` \\| `([^`\\n]*)` \\|");
    int rows = 0;
    for (std::sregex_iterator it(page.begin(), page.end(), row), end; it != end; ++it, ++rows) {
        EXPECT_STREQ(KelpGetResString((*it)[1]), (*it)[2].str().c_str());
    }
    EXPECT_EQ(rows, 4);
}

}  // namespace
