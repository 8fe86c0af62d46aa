// Any octets as a description file: the table holds what a second, plain reader of the
// format finds in them, and codes with whatever that is.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"
#include "frameutil/paraset.h"
#include "kelp/log.h"
#include "require.h"
#include "support/heap_meter.h"

namespace {

using FrameUtil::CEndeCode;
using FrameUtil::CParaSet;
using FrameUtil::DescItem;

// A file without a name that holds `text`.
class MemoryFile {
  public:
    explicit MemoryFile(std::string_view text) : m_descriptor(memfd_create("table", 0)) {
        Require(m_descriptor >= 0, "no file in memory");
        Require(write(m_descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
                "the file is not written");
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

  private:
    int m_descriptor;
};

void Replace(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c != ' ') {
            fields.back() += c;
        } else if (!fields.back().empty()) {
            fields.emplace_back();
        }
    }
    if (fields.back().empty()) {
        fields.pop_back();
    }
    return fields;
}

std::string Trimmed(const std::string& field) {
    const char* const white = " \t\r\n\v\f";
    const std::size_t first = field.find_first_not_of(white);
    return first == std::string::npos
               ? ""
               : field.substr(first, field.find_last_not_of(white) - first + 1);
}

int Number(const std::string& field) {
    return static_cast<int>(std::strtol(Trimmed(field).c_str(), nullptr, 10));
}

struct Expected {
    std::map<int, std::vector<DescItem>> items;
    int rejected = 0;
};

Expected ReadPlainly(std::string text) {
    Expected expected;
    if (text.starts_with("\xef\xbb\xbf")) {
        text.erase(0, 3);
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        Replace(line, "#$", " ");
        Replace(line, "\t", " ");
        const std::vector<std::string> fields = Fields(line);
        if (fields.size() == 6) {
            expected.items[Number(fields[0])].push_back(
                {Trimmed(fields[2]), Number(fields[3]), Number(fields[4]), Number(fields[5])});
        } else if (const std::string shown = Trimmed(line); !shown.empty() && shown[0] != '#') {
            ++expected.rejected;
        }
    }
    return expected;
}

bool Same(const std::vector<DescItem>& a, const std::vector<DescItem>& b) {
    bool same = a.size() == b.size();
    for (std::size_t i = 0; same && i < a.size(); ++i) {
        same = a[i].name == b[i].name && a[i].type == b[i].type && a[i].desc == b[i].desc &&
               a[i].tag == b[i].tag;
    }
    return same;
}

// A description of any kind codes within its bounds: the text itself serves as octets.
void CodeWith(const CEndeCode& codec, int key, std::string text) {
    CParaSet para("para");
    auto* const octets = reinterpret_cast<unsigned char*>(text.data());
    int len = static_cast<int>(text.size());
    codec.parse(para, octets, len, key);
    Require(len >= 0 && len <= static_cast<int>(text.size()), "more is read than is there");
    CParaSet tree("tree", 7);
    for (const DescItem& item : codec.findDesc(key)) {
        CParaSet child("x");
        child["x"][1] = 1.5;
        CParaSet*& entry = tree.GetMapValue()[item.name];
        if (entry == nullptr) {
            entry = new CParaSet(child);
        }
    }
    std::vector<unsigned char> room(300 + 1, 0xa5);
    int left = 300;
    codec.build(tree, room.data(), left, key);
    Require(room.back() == 0xa5, "written behind the buffer");
    Require(left >= 0 && left <= 300, "more is written than fits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = (kelp::log::SetLevel(kelp::log::Level::kOff), true);
    const std::string text(reinterpret_cast<const char*>(data), quiet ? size : 0);
    const MemoryFile file(text);
    const std::size_t before = support::HeapInUse();
    FrameUtil::DescReport report;
    const CEndeCode codec(file.Path(), &report);
    Require(support::HeapInUse() <= before + 64 * size + support::kHeapNoise,
            "a table holds too much memory");
    const Expected expected = ReadPlainly(text);
    Require(report.error == 0, "a file cannot be read");
    Require(report.rejected.size() == static_cast<std::size_t>(expected.rejected),
            "other lines are rejected");
    int coded = 0;
    for (const auto& [key, items] : expected.items) {
        Require(Same(codec.findDesc(key), items), "an item is not what its line says");
        if (++coded <= 4 && size <= 4096) {
            CodeWith(codec, key, text);
        }
    }
    return 0;
}
