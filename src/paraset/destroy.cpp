// Destroying and clearing trees of any depth.
//
// Design notes. A destructor can neither recurse (a chain of a million nodes would use
// up the stack) nor allocate a work list (it must not fail). So a node that is doomed
// and has children waits in a list that runs through a field it no longer needs: its
// resource record is deleted first, and the pointer to it becomes the link.

#include <iterator>
#include <utility>

#include "paraset/node.h"

namespace FrameUtil {

namespace {

class DoomedNodes {
  public:
    void Add(CParaSet* node) noexcept {
        if (node == nullptr) {
            return;
        }
        if (NodeAccess::List(*node).empty() && NodeAccess::Index(*node).empty() &&
            NodeAccess::Impl(*node).m_pRare == nullptr) {
            delete node;
            return;
        }
        AsnDistinguishedResource*& link = NodeAccess::Resource(*node);
        delete link;
        link = reinterpret_cast<AsnDistinguishedResource*>(first_);
        first_ = node;
    }

    void AddList(std::vector<CParaSet*>& list) noexcept {
        constexpr std::size_t kAhead = 8;
        for (std::size_t i = list.size(); i != 0; --i) {
            if (i > kAhead && list[i - 1 - kAhead] != nullptr) {
                NodeAccess::PrefetchAll(list[i - 1 - kAhead]);
            }
            Add(list[i - 1]);
        }
        list.clear();
    }

    void AddIndex(std::map<std::string, CParaSet*>& index) noexcept {
        for (const auto& [key, child] : index) {
            Add(child);
        }
        index.clear();
    }

    void AddUnlinked(CParaSet& node) noexcept {
        if (const auto& rare = NodeAccess::Impl(node).m_pRare) {
            AddList(rare->unlinked);
        }
    }

    void DestroyAll() noexcept {
        while (first_ != nullptr) {
            CParaSet* node = first_;
            AsnDistinguishedResource*& link = NodeAccess::Resource(*node);
            first_ = reinterpret_cast<CParaSet*>(link);
            link = nullptr;
            AddList(NodeAccess::List(*node));
            AddIndex(NodeAccess::Index(*node));
            AddUnlinked(*node);
            delete node;
        }
    }

  private:
    CParaSet* first_ = nullptr;
};

}  // namespace

void NodeAccess::Destroy(CParaSet* node) noexcept {
    DoomedNodes doomed;
    doomed.Add(node);
    doomed.DestroyAll();
}

void NodeAccess::Destroy(std::vector<CParaSet*>& list,
                         std::map<std::string, CParaSet*>& index) noexcept {
    DoomedNodes doomed;
    doomed.AddList(list);
    doomed.AddIndex(index);
    doomed.DestroyAll();
}

void NodeAccess::DestroyChildren(CParaSet& node) noexcept {
    DoomedNodes doomed;
    doomed.AddList(List(node));
    doomed.AddIndex(Index(node));
    doomed.AddUnlinked(node);
    doomed.DestroyAll();
}

void CParaSet::clear() {
    NodeAccess::DestroyChildren(*this);
    m_pImpl->m_iValType = PARA_NULL;
}

bool CParaSet::clear(const char* name) {
    const auto entry = m_mapValue.find(name);
    if (entry == m_mapValue.end() || entry->second == nullptr) {
        return false;
    }
    NodeAccess::Destroy(entry->second);
    entry->second = nullptr;
    return true;
}

bool CParaSet::clear(const std::string& name) {
    return clear(name.c_str());
}

bool CParaSet::remove(int index) {
    if (index < 0) {
        throw FRexception(-1);
    }
    const auto position = static_cast<std::size_t>(index);
    if (m_pImpl->m_iValType == PARA_ARRAY) {
        if (position >= m_vctValue.size()) {
            throw FRexception(-2);
        }
        CParaSet* child = m_vctValue[position];
        if (child == nullptr) {
            return true;
        }
        // Callers may have put a node into the list twice: the first occurrence goes.
        auto slot = m_vctValue.begin();
        while (*slot != child) {
            ++slot;
        }
        m_vctValue.erase(slot);
        NodeAccess::Destroy(child);
        return true;
    }
    if (m_pImpl->m_iValType == PARA_STRUCT) {
        if (position >= m_mapValue.size()) {
            throw FRexception(-2);
        }
        const auto entry = std::next(m_mapValue.begin(), index);
        if (entry->second != nullptr) {
            m_pImpl->EnsureRare().unlinked.push_back(entry->second);
        }
        m_mapValue.erase(entry);
        return true;
    }
    return false;
}

bool CParaSet::remove(const char* name) {
    const auto entry = m_mapValue.find(name);
    if (entry == m_mapValue.end()) {
        return false;
    }
    CParaSet* child = entry->second;
    m_mapValue.erase(entry);
    NodeAccess::Destroy(child);
    return true;
}

bool CParaSet::remove(const std::string& name) {
    return remove(name.c_str());
}

}  // namespace FrameUtil
