// The tree as text, for people.

#include <cstddef>
#include <locale>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "kelp/log.h"
#include "paraset/node.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kMaxShown = 1000;  // octets of a string

// A node whose children are being written, and which of them comes next.
struct Level {
    CParaSet* node;
    std::size_t path_length;
    std::size_t slot = 0;
    std::map<std::string, CParaSet*>::const_iterator entry;
};

// What stands for the node itself.
void WriteValue(CParaSet& node, const std::string& path, std::ostringstream& out, int& count) {
    const CParaSetImpl& impl = NodeAccess::Impl(node);
    if (!NodeAccess::Desc(node).empty()) {
        out << '\n' << path << ".##desc:" << NodeAccess::Desc(node);
        ++count;
    }
    switch (impl.m_iValType) {
        case CParaSet::PARA_STRING: {
            const std::string_view text = impl.m_strValue.view();
            out << '\n' << path << ':' << text.substr(0, kMaxShown);
            out << (text.size() > kMaxShown ? "...(string)." : "(string).");
            break;
        }
        case CParaSet::PARA_DOUBLE:
            out << '\n' << path << ':' << impl.m_dValue << "(double).";
            break;
        case CParaSet::PARA_INT:
            // Not through the stream, whose flags are the caller's.
            out << '\n' << path << ':' << std::to_string(impl.m_iValue) << "(integer).";
            break;
        case CParaSet::PARA_NULL:
            out << '\n' << path << ":invalid value(NULL).";
            break;
        case CParaSet::PARA_RESID:
            if (NodeAccess::Resource(node) == nullptr) {
                return;
            }
            out << '\n' << path;
            NodeAccess::Resource(node)->Print(out, 0);
            break;
        default:
            return;
    }
    ++count;
}

// Appends the next child's step to `path` and returns the child through `child`; false
// when there is none left.
bool NextChild(Level& level, std::string& path, CParaSet*& child) {
    switch (NodeAccess::Impl(*level.node).m_iValType) {
        case CParaSet::PARA_ARRAY:
            if (level.slot == NodeAccess::List(*level.node).size()) {
                return false;
            }
            child = NodeAccess::List(*level.node)[level.slot];
            path += '.' + std::to_string(level.slot++);
            return true;
        case CParaSet::PARA_STRUCT:
            if (level.entry == NodeAccess::Index(*level.node).end()) {
                return false;
            }
            child = level.entry->second;
            path += '.' + level.entry++->first;
            return true;
        default:
            return false;
    }
}

}  // namespace

void CParaSet::subDisplay(const char* prefix, std::ostringstream& out, int& count) {
    std::string path = prefix == nullptr ? name() : prefix;
    std::vector<Level> levels;
    const auto enter = [&](CParaSet& node) {
        WriteValue(node, path, out, count);
        levels.push_back({&node, path.size(), 0, NodeAccess::Index(node).begin()});
    };
    enter(*this);
    while (!levels.empty()) {
        Level& level = levels.back();
        path.resize(level.path_length);
        CParaSet* child = nullptr;
        if (!NextChild(level, path, child)) {
            levels.pop_back();
        } else if (child == nullptr) {
            out << '\n' << path << ":not valued(NULL).";
        } else {
            enter(*child);
        }
    }
}

void CParaSet::display(const char* prefix) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    int count = 0;
    subDisplay(prefix, out, count);
    LogProcess::Error(0, out.str(), LocationInfo("paraset", "display", 1448));
}

}  // namespace FrameUtil
