// A node's making and identity.

#include "paraset/node.h"

#include <utility>

#include "kelp/blocks.h"

namespace FrameUtil {

namespace {

// A child's implementation object with the counters that std::allocate_shared puts in
// front of it.
constexpr std::size_t kImplRoom = sizeof(CParaSetImpl) + 3 * sizeof(void*);
constexpr std::size_t kPairSize = sizeof(CParaSet) + kImplRoom;

// Places the implementation object behind its node, in the node's own block.
template <class T>
struct BesideNode {
    using value_type = T;
    explicit BesideNode(CParaSet* owner) : node(owner) {}
    template <class U>
    BesideNode(const BesideNode<U>& other) : node(other.node) {}  // NOLINT

    T* allocate(std::size_t) const {
        static_assert(sizeof(T) <= kImplRoom, "the block has room for the object");
        static_assert(alignof(T) <= alignof(CParaSet));
        return reinterpret_cast<T*>(reinterpret_cast<char*>(node) + sizeof(CParaSet));
    }
    void deallocate(T*, std::size_t) const noexcept {}
    template <class U>
    bool operator==(const BesideNode<U>& other) const {
        return node == other.node;
    }

    CParaSet* node;
};

}  // namespace

const char* FRexception::what() const noexcept {
    switch (m_iCode) {
        case -1:
            return "parameter set: negative index, or no scalar to read";
        case -2:
            return "parameter set: index beyond the children";
        case -3:
            return "parameter set: the operation does not fit the node's type";
        default:
            return "parameter set: failure";
    }
}

void* CParaSet::operator new(std::size_t size) {
    return kelp::AllocateBlock(size == sizeof(CParaSet) ? kPairSize : size);
}

void CParaSet::operator delete(void* node, std::size_t size) noexcept {
    kelp::FreeBlock(node, size == sizeof(CParaSet) ? kPairSize : size);
}

CParaSet::CParaSet(const char* name) : m_pImpl(std::make_shared<CParaSetImpl>(name)) {}

CParaSet::CParaSet(const char* name, int value) : CParaSet(name) {
    m_pImpl->m_iValue = value;
    m_pImpl->m_iValType = PARA_INT;
}

CParaSet::CParaSet(const char* name, const char* value) : CParaSet(name) {
    m_pImpl->m_strValue = std::string(value);
    m_pImpl->m_iValType = PARA_STRING;
}

CParaSet::CParaSet(ChildTag, std::string_view name)
    : m_pImpl(std::allocate_shared<CParaSetImpl>(BesideNode<CParaSetImpl>(this), name)) {}

CParaSet::CParaSet(const CParaSet& other) : m_pImpl(std::make_shared<CParaSetImpl>(kElementName)) {
    setValue(other);
}

CParaSet::~CParaSet() {
    if (!m_vctValue.empty() || !m_mapValue.empty() || m_pImpl->m_pUnlinked != nullptr) {
        NodeAccess::DestroyChildren(*this);
    }
    delete m_pResID;
}

bool CParaSet::isNull() const {
    return m_pImpl->m_iValType == PARA_NULL;
}

std::string CParaSet::name() const {
    return m_pImpl->m_strName;
}

void CParaSet::SetName(std::string name) {
    m_pImpl->m_strName = std::move(name);
}

CParaSet::ValueType CParaSet::type() const {
    return m_pImpl->m_iValType;
}

void CParaSet::SetType(ValueType type) {
    m_pImpl->m_iValType = type;
}

int CParaSet::getType() const {
    switch (m_pImpl->m_iValType) {
        case PARA_DOUBLE:
            return 9;
        case PARA_INT:
            return 2;
        case PARA_STRING:
            return 4;
        case PARA_ARRAY:
            return 257;
        case PARA_STRUCT:
        case PARA_RESID:
            return 48;
        default:
            return 5;
    }
}

void CParaSet::SetDesc(const std::string& desc) {
    m_strDesc = desc;
}

std::string& CParaSet::GetDesc() {
    return m_strDesc;
}

std::vector<CParaSet*>& CParaSet::GetVctValue() {
    return m_vctValue;
}

std::map<std::string, CParaSet*>& CParaSet::GetMapValue() {
    return m_mapValue;
}

int CParaSet::count() const {
    switch (m_pImpl->m_iValType) {
        case PARA_DOUBLE:
        case PARA_INT:
            return 1;
        default:
            return size();
    }
}

int CParaSet::size() const {
    switch (m_pImpl->m_iValType) {
        case PARA_DOUBLE:
            return 8;
        case PARA_INT:
            return 4;
        case PARA_STRING:
            return static_cast<int>(m_pImpl->m_strValue.size());
        case PARA_ARRAY:
            return static_cast<int>(m_vctValue.size());
        case PARA_STRUCT:
            return static_cast<int>(m_mapValue.size());
        default:
            return 0;
    }
}

}  // namespace FrameUtil
