// What the parameter set's own source files see of a node.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frameutil/paraset.h"
#include "kelp/block_text.h"

namespace FrameUtil {

// A cache line's worth: a table is read and written cell by cell. Nobody outside sees this
// object, so its texts are block texts, and what few nodes have is made when it is needed.
// What reading a value takes comes first: in a child's block it shares a line with the
// pointer that leads to it.
struct CParaSetImpl {
    explicit CParaSetImpl(kelp::BlockText&& name) noexcept : m_strName(std::move(name)) {}

    struct Rare {
        std::int32_t m_iTableCount = 0;
        // Children that remove(int) took off a structure: callers may still hold
        // references to them.
        std::vector<CParaSet*> unlinked;
    };

    CParaSet::ValueType m_iValType = CParaSet::PARA_NULL;
    std::int32_t m_iUnread = 0;  // copied with the node; no operation reads it
    double m_dValue = 0.0;
    std::int32_t m_iValue = 0;
    std::int32_t m_iRowCount = 0;
    kelp::BlockText m_strValue;
    std::unique_ptr<Rare> m_pRare;
    kelp::BlockText m_strName;

    Rare& EnsureRare() {
        if (m_pRare == nullptr) {
            m_pRare = std::make_unique<Rare>();
        }
        return *m_pRare;
    }
};

struct NodeAccess {
    static CParaSetImpl& Impl(const CParaSet& node) { return *node.m_pImpl; }
    static std::vector<CParaSet*>& List(CParaSet& node) { return node.m_vctValue; }
    static const std::vector<CParaSet*>& List(const CParaSet& node) { return node.m_vctValue; }
    static std::map<std::string, CParaSet*>& Index(CParaSet& node) { return node.m_mapValue; }
    static const std::map<std::string, CParaSet*>& Index(const CParaSet& node) {
        return node.m_mapValue;
    }
    static AsnDistinguishedResource*& Resource(CParaSet& node) { return node.m_pResID; }
    static AsnDistinguishedResource* Resource(const CParaSet& node) { return node.m_pResID; }
    static std::string& Desc(CParaSet& node) { return node.m_strDesc; }
    static const std::string& Desc(const CParaSet& node) { return node.m_strDesc; }

    /// A child on the free store, in one block with its implementation object.
    static CParaSet* NewChild(kelp::BlockText name) { return new CParaSet(std::move(name)); }
    static CParaSet* NewChild(std::string_view name) { return NewChild(kelp::BlockText(name)); }
    /// A child with the name that elements get which index access makes.
    static CParaSet* NewElement() { return NewChild(kelp::BlockText::Literal(kElementName)); }

    /// As operator=(const std::string&).
    static void AssignText(CParaSet& node, std::string_view text);
    /// The same with `size` octets that the caller writes.
    static char* OverwriteText(CParaSet& node, std::size_t size);

    /// Destroys these nodes (nulls among them are skipped) with all that is below them,
    /// in constant stack and without allocating; the containers are left empty.
    static void Destroy(std::vector<CParaSet*>& list,
                        std::map<std::string, CParaSet*>& index) noexcept;
    static void Destroy(CParaSet* node) noexcept;
    /// The same for all children of `node`, unlinked ones included.
    static void DestroyChildren(CParaSet& node) noexcept;

    /// The name that elements get which index access makes.
    static constexpr const char* kElementName = "root";

    /// Asks the processor to fetch what reading a child's value takes.
    [[gnu::always_inline]] static void Prefetch(const CParaSet* node) {
        __builtin_prefetch(node + 1);
    }
    /// The same for all of a child.
    [[gnu::always_inline]] static void PrefetchAll(const CParaSet* node) {
        const char* line = reinterpret_cast<const char*>(node);
        __builtin_prefetch(line);
        __builtin_prefetch(line + 64);
        __builtin_prefetch(line + 128);
    }

    /// The child whose key is exactly `key`; null when it is not there or its entry is
    /// empty.
    static CParaSet* Child(const CParaSet& node, const std::string& key);
    /// The child whose key is exactly `key`, dots and all, made if it is not there.
    static CParaSet& MakeChild(CParaSet& node, const std::string& key);
};

}  // namespace FrameUtil
