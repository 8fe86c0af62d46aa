#include "kelp/dao/configured.h"

#include <sys/stat.h>

#include <atomic>
#include <new>
#include <utility>

#include "base/mutex.h"
#include "dao/sql_text.h"
#include "kelp/log.h"
#include "kelp/settings.h"
#include "kelp/value.h"
#include "settings/databases.h"

namespace dao {

namespace {

using kelp::settings::DatabaseInfo;

constexpr const char* kMainDatabase = "MCDB";

std::atomic<int> g_set_type{0};

// A configuration that goes, with what is secret in it.
struct WipedInfo {
    ~WipedInfo() { kelp::settings::WipeValues(values); }
    DatabaseInfo values;
};

// "sqlite:var/x.db" counts from the installation root, wherever the process was started.
std::string FromRoot(const std::string& url) {
    constexpr std::string_view kScheme = "sqlite:";
    if (url.compare(0, kScheme.size(), kScheme) != 0 || url.size() == kScheme.size()) {
        return url;
    }
    const char first = url[kScheme.size()];
    if (first == '/' || first == ':') {
        return url;
    }
    std::string path;
    for (const char c : ns_kelpsdk_wrap::GetPackageRelativePath("", "/")) {
        path += c == '%' ? "%25" : c == '?' ? "%3F" : std::string(1, c);
    }
    return "sqlite://" + path + "/" + url.substr(kScheme.size());
}

int TypeOf(const std::string& configured) {
    if (configured == "postgresql") {
        return kServerTypePostgresql;
    }
    const int number = refl::CNumeric::FromText(configured).As<int>();
    return number > 0 ? number : kServerTypeSqlite;
}

// The main database's type as the file said it last, and which state of the file that was.
class KnownType {
  public:
    int Get() KELP_EXCLUDES(m_mutex) {
        const std::string path = kelp::settings::ConfigurationPath();
        struct stat file {};
        if (path.empty() || ::stat(path.c_str(), &file) != 0) {
            return kServerTypeSqlite;
        }
        const kelp::MutexLock lock(m_mutex);
        const bool known = path == m_path && file.st_ino == m_file.st_ino &&
                           file.st_size == m_file.st_size &&
                           file.st_mtim.tv_sec == m_file.st_mtim.tv_sec &&
                           file.st_mtim.tv_nsec == m_file.st_mtim.tv_nsec &&
                           file.st_ctim.tv_nsec == m_file.st_ctim.tv_nsec;
        if (!known) {
            WipedInfo info;
            std::string why;
            const int code = kelp::settings::ReadDatabase(kMainDatabase, info.values, why);
            m_type = code == 0 ? TypeOf(info.values["type"]) : kServerTypeSqlite;
            m_path = path;
            m_file = file;
        }
        return m_type;
    }

  private:
    kelp::Mutex m_mutex;
    std::string m_path KELP_GUARDED_BY(m_mutex);
    struct stat m_file KELP_GUARDED_BY(m_mutex) {};
    int m_type KELP_GUARDED_BY(m_mutex) = kServerTypeSqlite;
};

}  // namespace

CExecStatus OpenConfigured(CSqlSession& session, const std::string& name,
                           SessionOptions options) noexcept {
    try {
        session.Close();
        WipedInfo info;
        std::string why;
        const int code = kelp::settings::ReadDatabase(name, info.values, why);
        if (code == 0 && info.values["url"].empty()) {
            why = "it has no \"url\"";
        }
        if (!why.empty()) {
            LogProcess::Warn("[dao] database " + name + ": " + why, LocationInfo("dao", "", 0));
            return CExecStatus(DAO_ERR_NO_DATABASE, code, "", "database " + name + ": " + why);
        }
        kelp::db::Wipe(options.password);
        options.user = info.values["user"];
        options.password = info.values["password"];
        return session.Open(FromRoot(info.values["url"]), std::move(options));
    } catch (const std::bad_alloc&) {
        return CExecStatus(DAO_ERR_NO_MEMORY, 0, "", "out of memory");
    }
}

int GetDBServerType_OnlyForFrame() noexcept {
    static KnownType known;
    const int type = g_set_type.load();
    try {
        return type != 0 ? type : known.Get();
    } catch (const std::bad_alloc&) {
        return kServerTypeSqlite;
    }
}

void SetDBServerType(int number) noexcept {
    g_set_type = number;
}

}  // namespace dao
