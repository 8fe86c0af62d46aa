#include "base/singleton.h"
#include "codec/builder.h"
#include "codec/desc_table.h"
#include "codec/parser.h"
#include "frameutil/codec.h"

namespace FrameUtil {

struct CEndeCode::CEndeCodeImpl {
    DescTable table;

    unsigned char* Build(const BuildForm& form, CParaSet& para, unsigned char* buf, int& len,
                         int type, int desc, int tag, CodecFault* fault) const {
        unsigned char* const end = buf + (buf != nullptr && len > 0 ? len : 0);
        Builder builder(table, form, buf, end, fault);
        unsigned char* const next = builder.Element(para, buf, type, desc, tag);
        if (next != nullptr) {
            len -= static_cast<int>(next - buf);
        }
        return next;
    }
};

CEndeCode* CEndeCode::Instance() {
    return Singleton<CEndeCode>::Instance();
}

CEndeCode::CEndeCode() : CEndeCode(PlatformDescFile()) {}

CEndeCode::CEndeCode(const std::string& file, DescReport* report)
    : m_pImpl(std::make_unique<CEndeCodeImpl>()) {
    m_pImpl->table.Load(file, report);
}

CEndeCode::~CEndeCode() = default;

std::vector<DescItem> CEndeCode::findDesc(int key) const {
    return m_pImpl->table.Find(key).items;
}

unsigned char* CEndeCode::build(CParaSet& para, unsigned char* buf, int& len, int type, int desc,
                                int tag, CodecFault* fault) const {
    constexpr BuildForm kForm{false, 450};
    return m_pImpl->Build(kForm, para, buf, len, type, desc, tag, fault);
}

unsigned char* CEndeCode::buildAsString(CParaSet& para, unsigned char* buf, int& len, int type,
                                        int desc, int tag, CodecFault* fault) const {
    constexpr BuildForm kForm{true, 683};
    return m_pImpl->Build(kForm, para, buf, len, type, desc, tag, fault);
}

unsigned char* CEndeCode::parse(CParaSet& para, unsigned char* buf, int& len, int type, int desc,
                                int tag, CodecFault* fault) const {
    const unsigned char* const end = buf + (buf != nullptr && len > 0 ? len : 0);
    Parser parser(m_pImpl->table, buf, fault);
    const unsigned char* const next = parser.Element(para, buf, end, type, desc, tag);
    if (next == nullptr) {
        return nullptr;
    }
    const auto read = next - buf;
    len -= static_cast<int>(read);
    return buf + read;
}

}  // namespace FrameUtil
