// Design notes. The mutex is held while read entries are appended and while they are
// copied, never while the file is read: a slow disk does not hold up the check of arriving
// commands.

#include "frameutil/white_list.h"

#include <sys/stat.h>

#include <cerrno>
#include <iterator>
#include <new>
#include <system_error>
#include <utility>

#include "base/locks.h"
#include "base/regular_file.h"
#include "base/singleton.h"
#include "kelp/log.h"
#include "kelp/message.h"
#include "platform/white_list_text.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kMaxFile = std::size_t{64} << 20;
constexpr std::size_t kMostNamed = 20;
constexpr std::size_t kMostShown = 64;  // characters of an entry in a log line

const LocationInfo kWhere("QWhiteList", "Init", 0);

// Reads the file. False, with its log lines, when there is nothing to load.
bool Read(const std::string& path, FileContents& file) {
    // A name with a zero octet would be another file's to the system.
    const int error =
        path.find('\0') == std::string::npos ? ReadRegularFile(path, kMaxFile, file) : EINVAL;
    if (error != 0) {
        LogProcess::Warn("WhiteList is not exist!", LocationInfo("QWhiteList", "Init", 69));
    }
    if (error != 0 && error != ENOENT) {
        LogProcess::Warn(
            "[QWhiteList] " + path + " is not loaded: " + std::generic_category().message(error),
            kWhere);
    }
    return error == 0;
}

void WarnOfForeignEntries(const std::string& path, const std::vector<WhiteListEntry>& entries) {
    std::size_t count = 0;
    for (const WhiteListEntry& entry : entries) {
        if (!IsCommandCode(entry.text) && ++count <= kMostNamed) {
            LogProcess::Warn("[QWhiteList] " + path + ":" + std::to_string(entry.line) + ": \"" +
                                 entry.text.substr(0, kMostShown) +
                                 (entry.text.size() > kMostShown ? "...\"" : "\"") +
                                 " is no command code",
                             kWhere);
        }
    }
    if (count > kMostNamed) {
        LogProcess::Warn("[QWhiteList] " + path + ": " + std::to_string(count - kMostNamed) +
                             " more entries are no command codes",
                         kWhere);
    }
}

}  // namespace

class QWhiteList::QWhiteListImpl {
  public:
    void Append(std::vector<WhiteListEntry>&& entries) {
        const PlainMutexLock lock(m_mutex);
        m_entries.reserve(m_entries.size() + entries.size());  // all of them or none
        for (WhiteListEntry& entry : entries) {
            m_entries.push_back(std::move(entry.text));
        }
    }
    std::vector<std::string> Copy() {
        const PlainMutexLock lock(m_mutex);
        return m_entries;
    }

  private:
    PlainMutex m_mutex;
    std::vector<std::string> m_entries FRAMEUTIL_GUARDED_BY(m_mutex);
};

constinit std::atomic<QWhiteList*> QWhiteList::m_pInstance{nullptr};

QWhiteList::QWhiteList() : m_pImpl(new (std::nothrow) QWhiteListImpl) {}
QWhiteList::~QWhiteList() = default;

QWhiteList* QWhiteList::Instance() {
    return Singleton<QWhiteList>::Instance(m_pInstance);
}

void QWhiteList::Destroy() {
    Singleton<QWhiteList>::Destroy(m_pInstance);
}

int QWhiteList::Init(const std::string& dir) {
    if (m_pImpl == nullptr) {
        return 0;
    }
    const unsigned int proc_id = KelpGetProcId();
    if ((proc_id & 0xFFFFU) == 0) {
        LogProcess::Error(0xFFFFFFFF, "Get procId error!", kWhere);
        return -1;
    }
    const std::string path = dir + std::to_string(proc_id) + "_QWhiteList.properties";
    FileContents file;
    if (!Read(path, file)) {
        return 0;
    }
    if ((file.mode & S_IWOTH) != 0) {
        LogProcess::Warn("[QWhiteList] " + path + " can be written to by everybody", kWhere);
    }
    std::vector<WhiteListEntry> entries = ReadWhiteList(file.octets);
    WarnOfForeignEntries(path, entries);
    m_pImpl->Append(std::move(entries));
    return 0;
}

void QWhiteList::GetWhiteList(std::vector<std::string>& out) const {
    if (m_pImpl == nullptr) {
        out.clear();
        return;
    }
    out = m_pImpl->Copy();
}

}  // namespace FrameUtil
