// The databases of the configuration, opened, and the platform's number for the main one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "kelp/dao.h"
#include "support/captured_log.h"
#include "support/installation_root.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(Configured, ARelativePathCountsFromTheRoot) {
    const InstallationRoot root;
    root.Configure(R"({"databases": {"inventory": {"url": "sqlite:etc/inv.db"}}})");
    dao::CSqlSession session;
    EXPECT_EQ(dao::OpenConfigured(session, "inventory").GetErrCode(), dao::DAO_OK);
    EXPECT_EQ(session.GetDatabase(), "sqlite://" + root.Path("etc/inv.db"));
    EXPECT_EQ(session.Exec("CREATE TABLE n (v integer)").GetErrCode(), dao::DAO_OK);
    EXPECT_TRUE(std::filesystem::exists(root.Path("etc/inv.db")));
    EXPECT_EQ(session.GetServerType(), dao::kServerTypeSqlite);
}

TEST(Configured, AMissingDatabaseIsNamed) {
    const InstallationRoot root;
    root.Configure(R"({"databases": {"nowhere": {"user": "u"}}})");
    for (const char* name : {"unknown", "nowhere"}) {
        SCOPED_TRACE(name);
        const CapturedLog log;
        dao::CSqlSession session;
        const dao::CExecStatus status = dao::OpenConfigured(session, name);
        EXPECT_EQ(status.GetErrCode(), dao::DAO_ERR_NO_DATABASE);
        EXPECT_THAT(status.GetErrText(), HasSubstr(name));
        EXPECT_THAT(log.Texts(), ElementsAre(HasSubstr(std::string("database ") + name)));
        EXPECT_FALSE(session.IsOpen());
    }
}

class ServerType : public testing::Test {
  protected:
    ~ServerType() override { dao::SetDBServerType(0); }
};

TEST_F(ServerType, IsWhatTheConfigurationSays) {
    const InstallationRoot root;
    EXPECT_EQ(dao::GetDBServerType_OnlyForFrame(), dao::kServerTypeSqlite);
    const struct {
        const char* type;
        int number;
    } cases[] = {
        {"\"postgresql\"", dao::kServerTypePostgresql},
        {"\"sqlite\"", dao::kServerTypeSqlite},
        {"7", 7},
        {"\"2\"", 2},
        {"99", 99},
        {"0", dao::kServerTypeSqlite},
        {"-1", dao::kServerTypeSqlite},
        {"\"other\"", dao::kServerTypeSqlite},
        {"[]", dao::kServerTypeSqlite},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        // A file of its own each time: two of one size within a clock's tick look alike.
        std::filesystem::remove(root.ConfigurationPath());
        root.Configure(std::string(R"({"databases": {"MCDB": {"user": ")") +
                       std::string(static_cast<std::size_t>(&c - cases), 'x') + R"(", "type": )" +
                       c.type + "}}}");
        EXPECT_EQ(dao::GetDBServerType_OnlyForFrame(), c.number);
    }
}

TEST_F(ServerType, SetByTheProgramCountsFirst) {
    const InstallationRoot root;
    root.Configure(R"({"databases": {"MCDB": {"type": 7}}})");
    dao::SetDBServerType(2);
    EXPECT_EQ(dao::GetDBServerType_OnlyForFrame(), 2);
    dao::SetDBServerType(0);
    EXPECT_EQ(dao::GetDBServerType_OnlyForFrame(), 7);
}

}  // namespace
