#include "table/credentials.h"

#include <utility>

#include "frameutil/log.h"
#include "frameutil/sql.h"
#include "kelp/secure.h"
#include "kelp/settings.h"

namespace FrameUtil {

namespace {

constexpr int kWiped = 0xCC;
constexpr const char* kCredentials[] = {"user", "password", "adminUser", "adminPassword"};
constexpr const char* kMainDatabase = "MCDB";
// The server of this type knows itself who connects.
constexpr int kTypeWithoutCredentials = 2;

}  // namespace

void WipeText(std::string& text) noexcept {
    const std::size_t length = text.size();
    text.resize(text.capacity());  // within what it has: nothing moves
    static_cast<void>(memset_s(text.data(), text.size(), kWiped, text.size()));
    text.resize(length);
}

DatabaseInfo::~DatabaseInfo() {
    for (const char* key : kCredentials) {
        // One that is not there has nothing to wipe, and making it could fail.
        const auto found = m_values.find(key);
        if (found != m_values.end()) {
            WipeText(found->second);
        }
    }
}

int DatabaseInfo::Read(const std::string& dbName) {
    return KELPcommonWrap::SysConfigure().getDBServerInfoByDBName(dbName, m_values);
}

// A short text that is moved from keeps its characters in the object.
s_DBUserInfo::s_DBUserInfo(s_DBUserInfo&& other) noexcept
    : user(std::move(other.user)), password(std::move(other.password)) {
    WipeText(other.password);
}

s_DBUserInfo& s_DBUserInfo::operator=(const s_DBUserInfo& other) {
    if (this != &other) {
        *this = s_DBUserInfo(other);
    }
    return *this;
}

s_DBUserInfo& s_DBUserInfo::operator=(s_DBUserInfo&& other) noexcept {
    if (this != &other) {
        user = std::move(other.user);
        WipeText(password);
        password = std::move(other.password);
        WipeText(other.password);
        other.password.clear();
    }
    return *this;
}

s_DBUserInfo::~s_DBUserInfo() {
    WipeText(password);
}

s_DBUserInfo FrameGetUserInfo(const std::string& dbName) {
    s_DBUserInfo found;
    DatabaseInfo info;
    if (const int code = info.Read(dbName); code != 0) {
        Trace("[FrameGetUserInfo] sysConf.getDBServerInfoByDBName return error:%d.", code);
        return found;
    }
    if (GetDbType() != kTypeWithoutCredentials) {
        found.user = info["user"];
        found.password = info["password"];
    }
    return found;
}

int ReadMainDBInfo(MainDBInfo& info) {
    DatabaseInfo configured;
    const int code = configured.Read(kMainDatabase);
    if (code == 0) {
        info.lib = configured["lib"];
        info.serviceName = configured["serviceName"];
        info.user = configured["user"];
        WipeText(info.password);
        info.password = configured["password"];
        info.dbName = kMainDatabase;
    }
    return code;
}

}  // namespace FrameUtil
