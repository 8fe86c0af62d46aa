// Reaching nodes: by index, by dotted path, by bracketed path.

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

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

// The first child of a fresh node.
CParaSet* MakeOnlyChild(CParaSet& parent, std::string_view name) {
    CParaSet*& entry = NodeAccess::Index(parent)[std::string(name)];
    entry = NodeAccess::NewChild(name);
    NodeAccess::Impl(parent).m_iValType = CParaSet::PARA_STRUCT;
    return entry;
}

// Where a key stands in a node's index, or would stand.
struct Place {
    std::map<std::string, CParaSet*>::iterator entry;
    bool known;

    CParaSet* Child() const { return known ? entry->second : nullptr; }
};

// Throws FRexception -3 for an array, whose children have no names.
Place PlaceOf(CParaSet& node, const std::string& key) {
    if (NodeAccess::Impl(node).m_iValType == CParaSet::PARA_ARRAY) {
        throw FRexception(-3);
    }
    auto& index = NodeAccess::Index(node);
    const auto entry = index.lower_bound(key);
    return {entry, entry != index.end() && entry->first == key};
}

// `place` is PlaceOf(node, key) and has no child.
void Link(CParaSet& node, const Place& place, const std::string& key,
          std::unique_ptr<CParaSet> child) {
    if (place.known) {
        place.entry->second = child.release();
    } else {
        NodeAccess::Index(node).emplace_hint(place.entry, key, child.get());
        static_cast<void>(child.release());
    }
    NodeAccess::Impl(node).m_iValType = CParaSet::PARA_STRUCT;
}

}  // namespace

CParaSet* NodeAccess::Child(const CParaSet& node, const std::string& key) {
    const auto entry = Index(node).find(key);
    return entry == Index(node).end() ? nullptr : entry->second;
}

CParaSet& NodeAccess::MakeChild(CParaSet& node, const std::string& key) {
    // Names arrive in the order of the keys, so a new one mostly belongs at the end.
    auto& index = Index(node);
    const bool is_last = !index.empty() && index.rbegin()->first < key;
    const Place place = is_last && Impl(node).m_iValType == CParaSet::PARA_STRUCT
                            ? Place{index.end(), false}
                            : PlaceOf(node, key);
    if (CParaSet* child = place.Child()) {
        return *child;
    }
    CParaSet* made = NewChild(key);
    Link(node, place, key, std::unique_ptr<CParaSet>(made));
    return *made;
}

CParaSet& CParaSet::operator[](int index) {
    if (index < 0) {
        throw FRexception(-1);
    }
    ValueType& type = m_pImpl->m_iValType;
    const auto position = static_cast<std::size_t>(index);
    if (type == PARA_ARRAY || type == PARA_NULL) {
        if (position >= m_vctValue.size()) {
            m_vctValue.resize(position + 1);
        }
        CParaSet*& slot = m_vctValue[position];
        if (slot == nullptr) {
            slot = NodeAccess::NewElement();
        }
        type = PARA_ARRAY;
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
    while (true) {
        const std::string_view head = TakeHead(path);
        key.assign(head);
        const Place place = PlaceOf(*node, key);
        if (CParaSet* child = place.Child()) {
            node = child;
            if (path == nullptr) {
                return *node;
            }
            continue;
        }
        // The rest is made apart and linked last, so that a failure leaves nothing behind.
        std::unique_ptr<CParaSet> made(NodeAccess::NewChild(head));
        CParaSet* last = made.get();
        while (path != nullptr) {
            last = MakeOnlyChild(*last, TakeHead(path));
        }
        Link(*node, place, key, std::move(made));
        return *last;
    }
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
