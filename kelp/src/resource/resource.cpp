// Design notes. The table's mutex is held for a lookup and while read texts are entered,
// never while a file is read. Texts live in a set that only grows, each once, so that a
// pointer that was given out stays good whatever is registered later, and registering the
// same file again costs nothing. The keys are replaced as a whole: a registration that
// runs out of memory has entered none of its texts.

#include "kelp/resource.h"

#include <cerrno>
#include <cstdlib>
#include <map>
#include <system_error>
#include <unordered_set>

#include "base/mutex.h"
#include "kelp/log.h"
#include "resource/files.h"
#include "resource/text.h"

namespace {

using kelp::resource::Entry;
using kelp::resource::Fault;

const LocationInfo kWhere("resource", "KelpAddResFileWithAbsolute", 0);

struct Table {
    kelp::Mutex mutex;
    std::unordered_set<std::string> texts KELP_GUARDED_BY(mutex);
    std::map<std::string, const char*> by_key KELP_GUARDED_BY(mutex);
};

Table& TheTable() {
    static auto* const table = new Table;  // outlives whatever static object asks late
    return *table;
}

// A file and what it holds; the entries point into the contents.
struct Source {
    std::string contents;
    std::vector<Entry> entries;
};

// The language that the texts are wanted in; "" for that of the files themselves.
std::string Language() {
    const char* const wanted = std::getenv("KELP_LANGUAGE");  // NOLINT(concurrency-mt-unsafe)
    if (wanted == nullptr || *wanted == '\0') {
        return {};
    }
    if (!kelp::resource::IsLanguage(wanted)) {
        LogProcess::Warn("[resource] KELP_LANGUAGE \"" + std::string(wanted) +
                             "\" is no language such as \"de\" or \"zh_CN\" and is ignored",
                         kWhere);
        return {};
    }
    return wanted;
}

void Refuse(const std::string& path, const Fault& fault) {
    const std::string line = fault.line == 0 ? "" : ":" + std::to_string(fault.line);
    LogProcess::Error(0, "[resource] " + path + line + ": " + fault.what, kWhere);
}

// Reads one file. False, with its log line, when it is refused; `missing`, if given, says
// instead that it is not there.
bool Read(const std::string& path, Source& source, bool* missing) {
    const int error = kelp::resource::ReadFile(path, source.contents);
    if (error == ENOENT && missing != nullptr) {
        *missing = true;
        return true;
    }
    Fault fault;
    if (error == EFBIG) {
        fault.what =
            "the file is larger than " + std::to_string(kelp::resource::kMaxFile) + " octets";
    } else if (error != 0) {
        fault.what = "cannot be read: " + std::generic_category().message(error);
    } else if (kelp::resource::Parse(source.contents, source.entries, fault)) {
        return true;
    }
    Refuse(path, fault);
    return false;
}

void Enter(const std::vector<Source>& sources) {
    Table& table = TheTable();
    const kelp::MutexLock lock(table.mutex);
    std::map<std::string, const char*> by_key = table.by_key;
    for (const Source& source : sources) {
        for (const Entry& entry : source.entries) {
            const auto text = table.texts.emplace(entry.value).first;
            by_key.insert_or_assign(std::string(entry.key), text->c_str());
        }
    }
    table.by_key.swap(by_key);
}

}  // namespace

int KelpAddResFileWithAbsolute(const std::string& path) {
    // A name with a zero octet would be another file's to the system.
    if (path.empty() || path.find('\0') != std::string::npos) {
        Refuse(path, {0, "this is no file's name"});
        return 0;
    }
    const std::vector<std::string> translations = kelp::resource::Translations(path, Language());
    std::vector<Source> sources(1 + translations.size());
    if (!Read(path, sources[0], nullptr)) {
        return 0;
    }
    for (std::size_t i = 0; i < translations.size(); ++i) {
        bool missing = false;
        if (!Read(translations[i], sources[i + 1], &missing)) {
            return 0;
        }
    }
    Enter(sources);
    return 1;
}

const char* KelpGetResString(const std::string& key) {
    Table& table = TheTable();
    const kelp::MutexLock lock(table.mutex);
    const auto found = table.by_key.find(key);
    return found == table.by_key.end() ? nullptr : found->second;
}
