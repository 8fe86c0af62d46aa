// Error codes of statuses and results, and the numbers of the kinds of servers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "frameutil/sql.h"
#include "support/captured_log.h"

namespace {

using FrameUtil::GetDBErrCode;
using testing::IsEmpty;

const dao::CExecStatus kFailed(dao::DAO_ERR_SYNTAX, 1, "42601", "near nothing");

TEST(DbErrCode, LogsTheTextOfAFailure) {
    dao::CExecResult result;
    result.SetStatus(kFailed);
    const struct {
        int code;
        int line;
        int (*get)(const dao::CExecResult&);
    } cases[] = {
        {dao::DAO_ERR_SYNTAX, 41,
         [](const dao::CExecResult& r) { return GetDBErrCode(r, "it failed"); }},
        {dao::DAO_ERR_SYNTAX, 50,
         [](const dao::CExecResult& r) { return GetDBErrCode(r.GetStatus(), "it failed"); }},
    };
    for (const auto& c : cases) {
        const CapturedLog log;
        EXPECT_EQ(c.get(result), c.code);
        const auto entries = log.Entries();
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(entries[0].level, kelp::log::Level::kWarn);
        EXPECT_EQ(entries[0].text, "it failed");
        EXPECT_EQ(entries[0].unit, "dbapi.cpp");
        EXPECT_EQ(entries[0].function, "GetDBErrCode");
        EXPECT_EQ(entries[0].line, c.line);
    }
}

TEST(DbErrCode, LogsNothingWithoutATextOrAFailure) {
    dao::CExecResult failed;
    failed.SetStatus(kFailed);
    const dao::CExecResult fine;
    const CapturedLog log;
    EXPECT_EQ(GetDBErrCode(failed, nullptr), dao::DAO_ERR_SYNTAX);
    EXPECT_EQ(GetDBErrCode(kFailed, nullptr), dao::DAO_ERR_SYNTAX);
    for (const char* text : {"", "it is fine", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(GetDBErrCode(fine, text), 0);
        EXPECT_EQ(GetDBErrCode(fine.GetStatus(), text), 0);
    }
    EXPECT_THAT(log.Texts(), IsEmpty());
}

TEST(DbType, OfEveryServerType) {
    const struct {
        int platform;
        int ours;
    } cases[] = {{1, 0}, {2, 1}, {7, 2},  {3, 3},  {6, 4},      {4, 5},
                 {5, 5}, {8, 5}, {99, 5}, {-1, 5}, {1 << 30, 5}};
    for (const auto& c : cases) {
        dao::SetDBServerType(c.platform);
        EXPECT_EQ(FrameUtil::GetDbType(), c.ours) << c.platform;
    }
    dao::SetDBServerType(0);
    // The defaults are among the numbers that are told apart, and keep their credentials.
    dao::SetDBServerType(dao::kServerTypePostgresql);
    EXPECT_EQ(FrameUtil::GetDbType(), 3);
    dao::SetDBServerType(dao::kServerTypeSqlite);
    EXPECT_EQ(FrameUtil::GetDbType(), 4);
    dao::SetDBServerType(0);
}

}  // namespace
