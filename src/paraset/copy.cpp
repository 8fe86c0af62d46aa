// Deep copies.
//
// Design notes. The copy of the children is complete before anything of the target is
// let go: the source may be a part of the target's tree, or the target of the
// source's, and a failure for lack of memory leaves the target as it was.

#include "frameutil/log.h"
#include "paraset/node.h"

namespace FrameUtil {

namespace {

bool HasChildren(const CParaSet& node) {
    return !NodeAccess::List(node).empty() || !NodeAccess::Index(node).empty();
}

void MakeRoom(std::string& to, const std::string& from) {
    if (to.capacity() < from.size()) {
        to.reserve(from.size());
    }
}

// Everything but the children, the resource record of other types than PARA_RESID, and
// the two counters. What can fail comes first and changes nothing.
void CopyValue(CParaSet& to, const CParaSet& from) {
    CParaSetImpl& target = NodeAccess::Impl(to);
    const CParaSetImpl& source = NodeAccess::Impl(from);
    MakeRoom(NodeAccess::Desc(to), NodeAccess::Desc(from));
    kelp::BlockText name(source.m_strName);
    kelp::BlockText value(source.m_strValue);
    if (source.m_iValType == CParaSet::PARA_RESID && NodeAccess::Resource(from) != nullptr) {
        auto* copy = new AsnDistinguishedResource(*NodeAccess::Resource(from));
        delete NodeAccess::Resource(to);
        NodeAccess::Resource(to) = copy;
    }
    target.m_strName = std::move(name);
    if (!NodeAccess::Desc(from).empty() || !NodeAccess::Desc(to).empty()) {
        NodeAccess::Desc(to) = NodeAccess::Desc(from);
    }
    target.m_iValType = source.m_iValType;
    target.m_iUnread = source.m_iUnread;
    target.m_dValue = source.m_dValue;
    target.m_iValue = source.m_iValue;
    target.m_strValue = std::move(value);
}

struct Children {
    std::vector<CParaSet*> list;
    std::map<std::string, CParaSet*> index;

    Children() = default;
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;
    ~Children() { NodeAccess::Destroy(list, index); }
};

struct PendingCopy {
    const CParaSet* from;
    CParaSet* to;
};

CParaSet* CopyOf(const CParaSet& from, std::vector<PendingCopy>& pending) {
    std::unique_ptr<CParaSet> copy(NodeAccess::NewElement());
    CopyValue(*copy, from);
    if (HasChildren(from)) {
        pending.push_back({&from, copy.get()});
    }
    return copy.release();
}

void CopyChildren(const CParaSet& from, std::vector<CParaSet*>& list,
                  std::map<std::string, CParaSet*>& index, std::vector<PendingCopy>& pending) {
    list.reserve(NodeAccess::List(from).size());
    for (const CParaSet* child : NodeAccess::List(from)) {
        if (child != nullptr) {
            list.push_back(CopyOf(*child, pending));
        }
    }
    for (const auto& [key, child] : NodeAccess::Index(from)) {
        if (child == nullptr) {
            continue;
        }
        const std::size_t before = index.size();
        const auto entry = index.emplace_hint(index.end(), key, nullptr);
        if (index.size() == before) {
            Trace(
                "const CParaSet& CParaSet::setValue(const CParaSet& oParaSet), Some one recall "
                "this function at a wrong place,Please check.");
            continue;
        }
        entry->second = CopyOf(*child, pending);
    }
}

}  // namespace

CParaSet& CParaSet::operator=(const CParaSet& other) {
    if (this != &other) {
        setValue(other);
    }
    return *this;
}

const CParaSet& CParaSet::setValue(const CParaSet& other) {
    Children children;
    if (HasChildren(other)) {
        std::vector<PendingCopy> pending;
        CopyChildren(other, children.list, children.index, pending);
        while (!pending.empty()) {
            const PendingCopy next = pending.back();
            pending.pop_back();
            CopyChildren(*next.from, next.to->m_vctValue, next.to->m_mapValue, pending);
        }
    }
    CopyValue(*this, other);
    // From here on `other` may be gone: it may have been one of the old children.
    m_vctValue.swap(children.list);
    m_mapValue.swap(children.index);
    if (m_pImpl->m_pRare != nullptr) {
        std::map<std::string, CParaSet*> none;
        NodeAccess::Destroy(m_pImpl->m_pRare->unlinked, none);
    }
    return *this;
}

}  // namespace FrameUtil
