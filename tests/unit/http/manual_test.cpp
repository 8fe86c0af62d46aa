// The manual lists every code with its number.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

#include "http/options.h"
#include "kelp/http.h"
#include "support/temp_folder.h"

namespace {

TEST(HttpManual, ListsEveryCode) {
    const std::string header = ReadFile(HTTP_HEADER);
    const std::string manual = ReadFile(HTTP_MANUAL);
    const std::regex code("(HTTP_ERR_[A-Z_]+) = (0x[0-9A-F]+),");
    int codes = 0;
    for (std::sregex_iterator it(header.begin(), header.end(), code), end; it != end; ++it) {
        const std::string row = "| " + it->str(2) + " | `" + it->str(1) + "` |";
        EXPECT_NE(manual.find(row), std::string::npos) << row;
        ++codes;
    }
    EXPECT_EQ(codes, 22);
    EXPECT_EQ(UFHTTPMSGMGR::HTTP_ERR_OTHER, 0x43520019);
}

TEST(HttpManual, TellsTheLimits) {
    const std::string manual = ReadFile(HTTP_MANUAL);
    const kelp::http::Limits limits;
    for (const std::string& row : {"| " + std::to_string(limits.response_bytes) + " (64 MiB) |",
                                   "together | " + std::to_string(limits.connect_ms) + " |",
                                   "| " + std::to_string(limits.low_speed_bytes) + ", " +
                                       std::to_string(limits.low_speed_s) + " |",
                                   "| " + std::to_string(limits.idle_connections) + ", " +
                                       std::to_string(limits.idle_s) + " |"}) {
        EXPECT_NE(manual.find(row), std::string::npos) << row;
    }
}

}  // namespace
