// A node's making and identity.

#include "paraset/node.h"

#include <utility>

#include "kelp/blocks.h"

namespace FrameUtil {

namespace {

// A child on the free store and its implementation object share a block.
constexpr std::size_t kPairSize = sizeof(CParaSet) + sizeof(CParaSetImpl);
static_assert(alignof(CParaSetImpl) <= alignof(CParaSet));

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

CParaSet::CParaSet(const char* name)
    : m_pImpl(std::make_shared<CParaSetImpl>(kelp::BlockText(name))) {}

CParaSet::CParaSet(const char* name, int value) : CParaSet(name) {
    m_pImpl->m_iValue = value;
    m_pImpl->m_iValType = PARA_INT;
}

CParaSet::CParaSet(const char* name, const char* value) : CParaSet(name) {
    m_pImpl->m_strValue.assign(value);
    m_pImpl->m_iValType = PARA_STRING;
}

// A pointer without owner: nodes never share the object, so there is nothing to count.
CParaSet::CParaSet(kelp::BlockText&& name) noexcept
    : m_pImpl(std::shared_ptr<CParaSetImpl>(),
              new (reinterpret_cast<char*>(this) + sizeof(CParaSet))
                  CParaSetImpl(std::move(name))) {}

CParaSet::CParaSet(const CParaSet& other)
    : m_pImpl(std::make_shared<CParaSetImpl>(kelp::BlockText::Literal(NodeAccess::kElementName))) {
    setValue(other);
}

CParaSet::~CParaSet() {
    if (!m_vctValue.empty() || !m_mapValue.empty() || m_pImpl->m_pRare != nullptr) {
        NodeAccess::DestroyChildren(*this);
    }
    delete m_pResID;
    if (m_pImpl.use_count() == 0) {
        std::destroy_at(m_pImpl.get());
    }
}

bool CParaSet::isNull() const {
    return m_pImpl->m_iValType == PARA_NULL;
}

std::string CParaSet::name() const {
    return std::string(m_pImpl->m_strName.view());
}

void CParaSet::SetName(const std::string& name) {
    m_pImpl->m_strName.assign(name);
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
