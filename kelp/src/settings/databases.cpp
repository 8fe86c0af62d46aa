#include "settings/databases.h"

#include <sys/stat.h>

#include <new>
#include <string_view>

#include "kelp/log.h"
#include "kelp/secure.h"
#include "kelp/settings.h"
#include "settings/installation_root.h"
#include "settings/secret_json.h"

namespace kelp::settings {

namespace {

constexpr std::string_view kCredentials[] = {"user", "password", "adminUser", "adminPassword"};
constexpr std::string_view kPasswords[] = {"password", "adminPassword"};
constexpr mode_t kOthers = S_IROTH | S_IWOTH | S_IWGRP;

const Json::Value* Member(const Json::Value& object, std::string_view name) {
    return object.isObject() ? object.find(name.data(), name.data() + name.size()) : nullptr;
}

bool HoldsPasswords(const SecretJson& file, const Json::Value& databases) {
    for (const std::string& name : databases.getMemberNames()) {
        const Json::Value* database = Member(databases, name);
        for (const std::string_view key : kPasswords) {
            const Json::Value* value = Member(*database, key);
            if (value != nullptr && !(value->isString() && file.IsEmptyText(*value))) {
                return true;
            }
        }
    }
    return false;
}

// Whoever is told a database's URL may write it into a log.
bool HoldsCredentials(std::string_view url) {
    const std::size_t query = url.find('?');
    const std::string_view head = url.substr(0, query);
    return (head.find("//") != std::string_view::npos &&
            head.find('@') != std::string_view::npos) ||
           (query != std::string_view::npos &&
            (url.find("password=", query) != std::string_view::npos ||
             url.find("user=", query) != std::string_view::npos));
}

// Wipes what was read so far unless all of it is wanted.
class Draft {
  public:
    ~Draft() { WipeValues(info); }
    DatabaseInfo info;
};

bool IsCredential(std::string_view key) {
    for (const std::string_view credential : kCredentials) {
        if (key == credential) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string ConfigurationPath() {
    const std::string root = InstallationRoot();
    return root.empty() ? root : ConfigurationPathIn(root);
}

void WipeValues(DatabaseInfo& info) noexcept {
    for (auto& [key, value] : info) {
        static_cast<void>(memset_s(value.data(), value.size(), 0xCC, value.size()));
    }
}

int ReadDatabase(const std::string& name, DatabaseInfo& info, std::string& why) {
    using namespace KELPcommonWrap;
    const std::string path = ConfigurationPath();
    if (path.empty()) {
        why = kRootIsNotSet;
        return SYSCONF_ERR_NO_ROOT;
    }
    SecretJson file;
    if (!file.Read(path, why)) {
        return file.File().st_ino == 0 ? SYSCONF_ERR_FILE : SYSCONF_ERR_FORMAT;
    }
    const Json::Value* databases = Member(file.Root(), "databases");
    if (databases != nullptr && !databases->isObject()) {
        why = file.Place(*databases) + ": \"databases\" is no object";
        return SYSCONF_ERR_FORMAT;
    }
    const Json::Value* database = databases == nullptr ? nullptr : Member(*databases, name);
    if (database == nullptr) {
        why = path + ": there is no database of that name";
        return SYSCONF_ERR_NO_DATABASE;
    }
    if (!database->isObject()) {
        why = file.Place(*database) + ": the database is no object";
        return SYSCONF_ERR_FORMAT;
    }
    if ((file.File().st_mode & kOthers) != 0 && HoldsPasswords(file, *databases)) {
        why = path + ": holds passwords, but others may read or change it (chmod 600)";
        return SYSCONF_ERR_PERMISSION;
    }
    Draft draft;
    for (const std::string& key : database->getMemberNames()) {
        const Json::Value& value = *Member(*database, key);
        std::string& text = draft.info[key];
        if (value.isString()) {
            file.Text(value, text);
        } else if (value.isInt() && !IsCredential(key)) {
            text = std::to_string(value.asInt());
        } else {
            why = file.Place(value) + ": \"" + key + "\" is no text";
            return SYSCONF_ERR_FORMAT;
        }
        if (key == "url" && HoldsCredentials(text)) {
            why = file.Place(value) +
                  ": \"url\" holds credentials: they belong into \"user\" and \"password\"";
            return SYSCONF_ERR_FORMAT;
        }
    }
    info.swap(draft.info);
    return 0;
}

}  // namespace kelp::settings

namespace KELPcommonWrap {

int SysConfigure::getDBServerInfoByDBName(const std::string& dbName,
                                          std::map<std::string, std::string>& info) const noexcept {
    try {
        std::string why;
        const int code = kelp::settings::ReadDatabase(dbName, info, why);
        if (code != 0) {
            LogProcess::Warn("[settings] database " + dbName + ": " + why,
                             LocationInfo("settings", "getDBServerInfoByDBName", 0));
        }
        return code;
    } catch (const std::bad_alloc&) {
        return SYSCONF_ERR_NO_MEMORY;
    }
}

}  // namespace KELPcommonWrap
