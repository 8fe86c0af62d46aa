// Credentials: what is read, when nothing is, and that nothing of them stays in memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <utility>

#include "frameutil/sql.h"
#include "freed_memory.h"
#include "kelp/settings.h"
#include "support/captured_log.h"
#include "support/installation_root.h"
#include "table/credentials.h"

namespace {

using FrameUtil::s_DBUserInfo;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kShort = "s3cret-pw";  // fits into the string itself
constexpr const char* kLong = "a-much-longer-secret-password-on-the-heap";

class UserInfo : public testing::Test {
  protected:
    ~UserInfo() override { dao::SetDBServerType(0); }

    void Configure(const std::string& name, const std::string& password) const {
        m_root.Configure(R"({"databases": {")" + name +
                         R"(": {"lib": "libpq.so.5", "serviceName": "service", "user": "nemgr", )" +
                         R"("password": ")" + password + R"(", "adminUser": "admin", )" +
                         R"("adminPassword": ")" + password + R"(-of-admin"}}})");
    }

    const InstallationRoot m_root;
};

TEST_F(UserInfo, IsWhatTheConfigurationHolds) {
    Configure("inventory", kShort);
    const CapturedLog log;
    const s_DBUserInfo info = FrameUtil::FrameGetUserInfo("inventory");
    EXPECT_EQ(info.user, "nemgr");
    EXPECT_EQ(info.password, kShort);
    EXPECT_THAT(log.Texts(), ElementsAre());
}

TEST_F(UserInfo, AMissingKeyIsAnEmptyValue) {
    m_root.Configure(R"({"databases": {"A": {"user": "u"}, "B": {"password": "p"}}})");
    const s_DBUserInfo a = FrameUtil::FrameGetUserInfo("A");
    EXPECT_EQ(a.user, "u");
    EXPECT_EQ(a.password, "");
    const s_DBUserInfo b = FrameUtil::FrameGetUserInfo("B");
    EXPECT_EQ(b.user, "");
    EXPECT_EQ(b.password, "p");
}

// The configuration's own line names the database and what is wrong; the trace has the code.
TEST_F(UserInfo, AnUnknownNameYieldsNothingAndOneTrace) {
    Configure("inventory", kShort);
    const CapturedLog log;
    const s_DBUserInfo info = FrameUtil::FrameGetUserInfo("nobody");
    EXPECT_EQ(info.user, "");
    EXPECT_EQ(info.password, "");
    const std::string trace =
        "[Frame][FrameGetUserInfo] sysConf.getDBServerInfoByDBName return "
        "error:" +
        std::to_string(int{KELPcommonWrap::SYSCONF_ERR_NO_DATABASE}) + ".";
    EXPECT_THAT(log.Texts(), ElementsAre(HasSubstr("database nobody"), trace));
}

// A server of platform type 7 knows who connects: callers get nothing, deliberately.
TEST_F(UserInfo, IsEmptyWithAServerOfTypeSeven) {
    Configure("inventory", kShort);
    dao::SetDBServerType(7);
    ASSERT_EQ(FrameUtil::GetDbType(), 2);
    const CapturedLog log;
    const s_DBUserInfo info = FrameUtil::FrameGetUserInfo("inventory");
    EXPECT_EQ(info.user, "");
    EXPECT_EQ(info.password, "");
    EXPECT_THAT(log.Texts(), ElementsAre());
}

TEST_F(UserInfo, ReadingLeavesNoPasswordInFreedMemory) {
    const std::string secret = kLong;
    for (const int type : {0, 7}) {
        SCOPED_TRACE(type);
        dao::SetDBServerType(type);
        Configure("inventory", secret);
        const FreedMemory freed(secret);
        {
            const s_DBUserInfo info = FrameUtil::FrameGetUserInfo("inventory");
            EXPECT_EQ(info.password == secret, type != 7);
        }
        EXPECT_EQ(freed.WithSecret(), 0);
        // At least the file, the map's two values and, if it was filled, the record.
        EXPECT_GE(freed.Wiped(), type == 7 ? 3 : 4);
    }
}

TEST_F(UserInfo, AShortPasswordDoesNotStayInTheMapEither) {
    // The nodes of the map hold short values themselves.
    const std::string secret = kShort;
    Configure("inventory", secret);
    const FreedMemory freed(secret);
    EXPECT_EQ(FrameUtil::FrameGetUserInfo("inventory").password, secret);
    EXPECT_EQ(freed.WithSecret(), 0);
}

TEST_F(UserInfo, ARefusedFileLeavesNothingEither) {
    const std::string secret = kLong;
    for (const std::string& text :
         {R"({"databases": {"A": {"password": ")" + secret + R"(", "user": 5}}})",
          R"({"databases": {"A": {"password": ")" + secret + R"("}},})",
          R"({"databases": {"A": {"password": ")" + secret}) {
        m_root.Configure(text);
        const FreedMemory freed(secret);
        EXPECT_EQ(FrameUtil::FrameGetUserInfo("A").password, "");
        EXPECT_EQ(freed.WithSecret(), 0);
    }
}

// ---- the record itself ------------------------------------------------------------------

// An object whose memory can still be looked at when it is gone.
class Storage {
  public:
    s_DBUserInfo* Make() { return new (m_octets) s_DBUserInfo; }
    bool Holds(const std::string& text) const {
        return ::memmem(m_octets, sizeof m_octets, text.data(), text.size()) != nullptr;
    }

  private:
    alignas(s_DBUserInfo) unsigned char m_octets[sizeof(s_DBUserInfo)] = {};
};

std::string Wiped(std::size_t length) {
    return std::string(length, '\xCC');
}

TEST(DbUserInfo, DestructionOverwritesThePassword) {
    Storage storage;
    s_DBUserInfo* info = storage.Make();
    info->user = "nemgr";
    info->password = kShort;
    ASSERT_TRUE(storage.Holds(kShort));
    info->~s_DBUserInfo();
    EXPECT_FALSE(storage.Holds(kShort));
    EXPECT_TRUE(storage.Holds(Wiped(std::strlen(kShort))));

    const std::string secret = kLong;
    const FreedMemory freed(secret);
    info = storage.Make();
    info->password = secret;
    info->~s_DBUserInfo();
    EXPECT_EQ(freed.WithSecret(), 0);
    EXPECT_EQ(freed.Wiped(), 1);
}

TEST(DbUserInfo, CopiesAndMovesLeaveNothing) {
    for (const std::string secret : {kShort, kLong}) {
        SCOPED_TRACE(secret);
        const FreedMemory freed(secret);
        Storage first;
        Storage second;
        Storage third;
        s_DBUserInfo* a = first.Make();
        a->user = "nemgr";
        a->password = secret;
        s_DBUserInfo* b = second.Make();
        *b = *a;
        EXPECT_EQ(b->password, secret);
        *b = *std::launder(b);  // itself
        EXPECT_EQ(b->password, secret);
        s_DBUserInfo* c = new (&third) s_DBUserInfo(std::move(*b));
        EXPECT_EQ(c->password, secret);
        EXPECT_EQ(c->user, "nemgr");
        EXPECT_FALSE(second.Holds(secret));
        *b = std::move(*c);
        EXPECT_EQ(b->password, secret);
        EXPECT_FALSE(third.Holds(secret));
        *b = s_DBUserInfo();  // what it held is wiped before it goes
        EXPECT_EQ(b->password, "");
        EXPECT_FALSE(second.Holds(secret));
        for (s_DBUserInfo* each : {a, b, c}) {
            each->~s_DBUserInfo();
        }
        for (const Storage* each : {&first, &second, &third}) {
            EXPECT_FALSE(each->Holds(secret));
        }
        EXPECT_EQ(freed.WithSecret(), 0);
    }
}

// ---- the main database ------------------------------------------------------------------

TEST_F(UserInfo, TheMainDatabasesRecord) {
    Configure("MCDB", kLong);
    FrameUtil::MainDBInfo info;
    EXPECT_EQ(FrameUtil::ReadMainDBInfo(info), 0);
    EXPECT_EQ(info.lib, "libpq.so.5");
    EXPECT_EQ(info.serviceName, "service");
    EXPECT_EQ(info.user, "nemgr");
    EXPECT_EQ(info.password, kLong);
    EXPECT_EQ(info.dbName, "MCDB");
    // Unlike FrameGetUserInfo it takes the credentials whatever the server's type is.
    dao::SetDBServerType(7);
    EXPECT_EQ(FrameUtil::ReadMainDBInfo(info), 0);
    EXPECT_EQ(info.user, "nemgr");
}

TEST_F(UserInfo, TheMainDatabasesRecordIsUntouchedByAFailure) {
    Configure("other", kShort);
    FrameUtil::MainDBInfo info;
    info.lib = "as";
    info.password = "it";
    info.dbName = "was";
    EXPECT_EQ(FrameUtil::ReadMainDBInfo(info), KELPcommonWrap::SYSCONF_ERR_NO_DATABASE);
    EXPECT_EQ(info.lib + info.password + info.dbName, "asitwas");
}

TEST_F(UserInfo, TheMainDatabasesRecordLeavesNoPassword) {
    const std::string secret = kLong;
    Configure("MCDB", secret);
    const FreedMemory freed(secret);
    {
        FrameUtil::MainDBInfo info;
        EXPECT_EQ(FrameUtil::ReadMainDBInfo(info), 0);
        EXPECT_EQ(FrameUtil::ReadMainDBInfo(info), 0);
    }
    EXPECT_EQ(freed.WithSecret(), 0);
}

}  // namespace
