// Reaching nodes: by index, by dotted path, by bracketed path.

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>

#include "paraset/node.h"

namespace FrameUtil {

namespace {

// What stands before the first dot; `path` moves behind it, or becomes null when the
// text had no dot.
std::string_view TakeHead(const char*& path) {
    const char* dot = std::strchr(path, '.');
    const std::string_view head(
        path, dot == nullptr ? std::strlen(path) : static_cast<std::size_t>(dot - path));
    path = dot == nullptr ? nullptr : dot + 1;
    return head;
}

struct Component {
    std::string_view name;
    std::optional<long> index;
};

// "port[2]" is the name "port" and the index 2; without both brackets all is name.
Component ReadComponent(std::string_view head) {
    const std::size_t open = head.find('[');
    if (open == std::string_view::npos || head.find(']') == std::string_view::npos) {
        return {head, std::nullopt};
    }
    // The digits end at a bracket, a dot or the text's end, so strtol stays inside it.
    return {head.substr(0, open), std::strtol(head.data() + open + 1, nullptr, 10)};
}

}  // namespace

CParaSet* NodeAccess::Child(const CParaSet& node, const std::string& key) {
    const auto entry = Index(node).find(key);
    return entry == Index(node).end() ? nullptr : entry->second;
}

CParaSet& CParaSet::operator[](int index) {
    if (index < 0) {
        throw FRexception(-1);
    }
    ValueType& type = m_pImpl->m_iValType;
    if (type == PARA_NULL) {
        type = PARA_ARRAY;
    }
    const auto position = static_cast<std::size_t>(index);
    if (type == PARA_ARRAY) {
        if (position >= m_vctValue.size()) {
            m_vctValue.resize(position + 1);
        }
        CParaSet*& slot = m_vctValue[position];
        if (slot == nullptr) {
            slot = NodeAccess::NewChild(kElementName);
        }
        return *slot;
    }
    if (type == PARA_STRUCT) {
        if (position >= m_mapValue.size()) {
            throw FRexception(-2);
        }
        CParaSet* child = std::next(m_mapValue.begin(), index)->second;
        if (child == nullptr) {
            throw FRexception(-2);
        }
        return *child;
    }
    return *this;
}

CParaSet& CParaSet::operator[](const char* path) {
    CParaSet* node = this;
    std::string key;
    while (path != nullptr) {
        if (node->m_pImpl->m_iValType == PARA_ARRAY) {
            // Nothing has been made on the way: what was made is no array.
            throw FRexception(-3);
        }
        const std::string_view head = TakeHead(path);
        key.assign(head);
        const auto entry = node->m_mapValue.lower_bound(key);
        if (entry != node->m_mapValue.end() && entry->first == key) {
            if (entry->second == nullptr) {
                entry->second = NodeAccess::NewChild(head);
                node->m_pImpl->m_iValType = PARA_STRUCT;
            }
            node = entry->second;
            continue;
        }
        const auto made = node->m_mapValue.emplace_hint(entry, key, nullptr);
        try {
            made->second = NodeAccess::NewChild(head);
        } catch (...) {
            node->m_mapValue.erase(made);
            throw;
        }
        node->m_pImpl->m_iValType = PARA_STRUCT;
        node = made->second;
    }
    return *node;
}

CParaSet& CParaSet::operator[](const std::string& path) {
    return (*this)[path.c_str()];
}

CParaSet* CParaSet::find(const char* path) {
    CParaSet* node = this;
    std::string key;
    while (path != nullptr) {
        const Component component = ReadComponent(TakeHead(path));
        if (component.index && *component.index < 0) {
            return nullptr;
        }
        if (!component.name.empty()) {
            key.assign(component.name);
            node = NodeAccess::Child(*node, key);
            if (node == nullptr) {
                return nullptr;
            }
        }
        if (component.index) {
            if (static_cast<std::size_t>(*component.index) >= node->m_vctValue.size()) {
                return nullptr;
            }
            node = &(*node)[static_cast<int>(*component.index)];
        }
    }
    return node;
}

CParaSet* CParaSet::find(const std::string& path) {
    return find(path.c_str());
}

int CParaSet::GetIndexByName(const char* name) const {
    if (m_pImpl->m_iValType != PARA_STRUCT) {
        return -1;
    }
    const auto entry = m_mapValue.find(std::string(TakeHead(name)));
    return entry == m_mapValue.end() ? -1
                                     : static_cast<int>(std::distance(m_mapValue.begin(), entry));
}

int CParaSet::GetIndexByName(const std::string& name) const {
    return GetIndexByName(name.c_str());
}

bool CParaSet::checkParaValid(const std::string& path) {
    const CParaSet* node = find(path);
    return node != nullptr && !node->isNull();
}

}  // namespace FrameUtil
