#include "log/error_texts.h"

#include <utility>

#include "kelp/log.h"
#include "kelp/resource.h"

namespace FrameUtil {

namespace {

struct Attribute {
    const char* name;
    std::string ErrDetail::*text;
};

// In the order in which they are asked for, which is not that of the members.
constexpr Attribute kAttributes[] = {
    {"desc", &ErrDetail::desc},
    {"reason", &ErrDetail::reason},
    {"detail", &ErrDetail::detail},
    {"advice", &ErrDetail::advice},
};

}  // namespace

const ErrDetail* ErrorTexts::Load(const std::string& id) {
    const auto known = m_details.find(id);
    if (known != m_details.end()) {
        return &known->second;
    }
    ErrDetail detail;
    for (const Attribute& attribute : kAttributes) {
        const std::string key = id + "." + attribute.name;
        const char* const text = KelpGetResString(key);
        if (text == nullptr) {
            LogProcess::Warn("not find attr=" + key + ".",
                             LocationInfo("error_manage", "LoadExeceptionRes", 257));
            return nullptr;
        }
        detail.*attribute.text = text;
    }
    return &m_details.emplace(id, std::move(detail)).first->second;
}

}  // namespace FrameUtil
