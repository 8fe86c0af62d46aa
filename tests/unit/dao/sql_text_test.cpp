#include "dao/sql_text.h"

#include <gtest/gtest.h>

namespace kelp::db {
namespace {

TEST(SqlText, TheFirstWord) {
    const struct {
        const char* sql;
        const char* word;
    } cases[] = {
        {"", ""},
        {"select 1", "SELECT"},
        {"  \t\n Insert INTO x", "INSERT"},
        {"-- a comment\nUPDATE x", "UPDATE"},
        {"-- a comment without end", ""},
        {"/* one */ /* two */DELETE", "DELETE"},
        {"/* without end", ""},
        {"((SELECT 1))", "SELECT"},
        {";;COMMIT;", "COMMIT"},
        {"17", ""},
        {"$1", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(FirstWord(c.sql), c.word) << c.sql;
    }
}

TEST(SqlText, GoingBackToASavepoint) {
    const struct {
        const char* sql;
        bool back;
    } cases[] = {
        {"ROLLBACK", false},
        {"ROLLBACK;", false},
        {"ROLLBACK TRANSACTION", false},
        {"rollback to here", true},
        {"ROLLBACK /* x */ TO here", true},
        {"ROLLBACK TRANSACTION TO SAVEPOINT here", true},
        {"ROLLBACK WORK TO here", true},
        {"ABORT", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(GoesBackToSavepoint(c.sql), c.back) << c.sql;
    }
}

TEST(SqlText, SecretsAreHidden) {
    const struct {
        const char* text;
        const char* secret;
        const char* shown;
    } cases[] = {
        {"no secret here", "hunter2", "no secret here"},
        {"hunter2", "hunter2", "***"},
        {"a hunter2hunter2 b", "hunter2", "a ****** b"},
        {"anything", "", "anything"},
        {"****", "*", "************"},
    };
    for (const auto& c : cases) {
        std::string text = c.text;
        HideSecret(text, c.secret);
        EXPECT_EQ(text, c.shown);
    }
}

TEST(SqlText, AMessagesFirstLine) {
    EXPECT_EQ(FirstLine("one \t\r\ntwo\n"), "one");
    EXPECT_EQ(FirstLine(""), "");
    EXPECT_EQ(FirstLine("only"), "only");
}

TEST(SqlText, WipingReachesShortTextsToo) {
    for (const std::size_t length : {0, 1, 15, 16, 1000}) {
        std::string text(length, 's');
        const char* const begin = text.data();
        const std::size_t octets = text.capacity();
        Wipe(text);
        EXPECT_TRUE(text.empty());
        EXPECT_EQ(text.data(), begin);
        text.resize(octets);  // shows nothing of what was there
        EXPECT_EQ(text.find('s'), std::string::npos);
    }
}

}  // namespace
}  // namespace kelp::db
