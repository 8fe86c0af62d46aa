#include "codec/desc_table.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/types.h"
#include "frameutil/log.h"
#include "kelp/settings.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kFields = 6;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A pipe would keep the first user of the codec waiting for ever, so only regular files
// are read. Null with errno otherwise.
File OpenRegular(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && !S_ISREG(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    } else if (std::FILE* file = fdopen(descriptor, "r")) {
        return File(file);
    }
    const int error = errno;
    close(descriptor);
    errno = error;
    return nullptr;
}

class LineReader {
  public:
    explicit LineReader(std::FILE* file) : m_file(file) {}

    /// The next line without its newline; false at the end, or when reading fails.
    bool Next(std::string& line) {
        line.clear();
        while (m_next != m_count || Refill()) {
            const char* const from = m_piece + m_next;
            const auto* const newline =
                static_cast<const char*>(std::memchr(from, '\n', m_count - m_next));
            if (newline != nullptr) {
                line.append(from, newline);
                m_next = static_cast<std::size_t>(newline - m_piece) + 1;
                return true;
            }
            line.append(from, m_count - m_next);
            m_next = m_count;
        }
        return !line.empty();
    }

  private:
    bool Refill() {
        m_next = 0;
        m_count = std::fread(m_piece, 1, sizeof m_piece, m_file);
        return m_count != 0;
    }

    std::FILE* const m_file;
    char m_piece[4096];
    std::size_t m_next = 0;
    std::size_t m_count = 0;
};

// Makes the three separators one: a table exported from a database has "#$" between the
// columns, one written by hand tabs.
void UnifySeparators(std::string& line) {
    std::size_t to = 0;
    for (std::size_t from = 0; from < line.size(); ++from, ++to) {
        if (line[from] == '#' && from + 1 < line.size() && line[from + 1] == '$') {
            line[to] = ' ';
            ++from;
        } else {
            line[to] = line[from] == '\t' ? ' ' : line[from];
        }
    }
    line.resize(to);
}

std::string_view Trim(std::string_view text) {
    constexpr std::string_view kWhite = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(kWhite);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

// The low 32 bits of the number that a field begins with, 0 if it begins with none.
int Number(std::string_view field) {
    return static_cast<int>(std::strtol(std::string(field).c_str(), nullptr, 10));
}

void SortByName(Description& description) {
    const std::vector<DescItem>& items = description.items;
    for (unsigned i = 0; i < items.size(); ++i) {
        if (items[i].type != codec::kNull) {
            description.by_name.push_back(i);
        }
    }
    std::sort(description.by_name.begin(), description.by_name.end(), [&](unsigned a, unsigned b) {
        const int order = items[a].name.compare(items[b].name);
        return order != 0 ? order < 0 : a < b;
    });
}

}  // namespace

const Description DescTable::s_none;

bool DescTable::TakeLine(std::string& line, int& fields) {
    UnifySeparators(line);
    // Several blanks in a row are one separator, so that columns may be aligned.
    std::array<std::string_view, kFields> field;
    std::size_t count = 0;
    for (std::size_t at = line.find_first_not_of(' '); at != std::string::npos; ++count) {
        const std::size_t end = std::min(line.find(' ', at), line.size());
        if (count < kFields) {
            field[count] = Trim(std::string_view(line).substr(at, end - at));
        }
        at = line.find_first_not_of(' ', end);
    }
    fields = static_cast<int>(count);
    if (count != kFields) {
        return false;
    }
    m_descriptions[Number(field[0])].items.push_back(
        {std::string(field[2]), Number(field[3]), Number(field[4]), Number(field[5])});
    return true;
}

void DescTable::Load(const std::string& file, DescReport* report) {
    if (report != nullptr) {
        *report = DescReport();  // of this file, whatever it was used for before
    }
    const File input = OpenRegular(file);
    if (input == nullptr && report != nullptr) {
        report->error = errno;
    }
    int accepted = 0;
    int number = 0;
    std::string line;
    LineReader lines(input.get());
    while (input != nullptr && lines.Next(line)) {
        if (++number == 1 && line.starts_with("\xEF\xBB\xBF")) {
            line.erase(0, 3);
        }
        int fields = 0;
        if (TakeLine(line, fields)) {
            ++accepted;
            continue;
        }
        Trace("init bms_desc_Asn1ParaDesc in line %d found error, size is %d", accepted, fields);
        const std::string_view text = Trim(line);
        if (report != nullptr && !text.empty() && text.front() != '#') {
            report->rejected.push_back({number, fields});
        }
    }
    if (input != nullptr && std::ferror(input.get()) != 0 && report != nullptr) {
        report->error = EIO;
    }
    Trace("init bms_desc_Asn1ParaDesc end, total size is %d.", accepted);
    for (auto& [key, description] : m_descriptions) {
        SortByName(description);
        const std::vector<DescItem>& items = description.items;
        if (items.size() == 1 && items.front().type == codec::kList) {
            m_sole_lists.emplace(key, &items.front());
        }
    }
}

std::string PlatformDescFile() {
    return ns_kelpsdk_wrap::GetPackageRelativePath("", "rtsp/DRKFrame") +
           "/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp";
}

}  // namespace FrameUtil
