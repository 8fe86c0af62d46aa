#include "frameutil/error_manage.h"

#include <json/value.h>

#include <cstdarg>
#include <new>

#include "base/locks.h"
#include "base/singleton.h"
#include "frameutil/log.h"
#include "kelp/resource.h"
#include "kelp/secure.h"
#include "log/error_texts.h"

namespace FrameUtil {

namespace {

constexpr std::size_t kFormatSize = 5000;

struct ErrorMember {
    const char* name;
    std::string ErrDetail::*text;
};
constexpr ErrorMember kMembers[] = {
    {"descArgs", &ErrDetail::desc},
    {"detailArgs", &ErrDetail::detail},
    {"reasonArgs", &ErrDetail::reason},
    {"adviceArgs", &ErrDetail::advice},
};

// jsoncpp throws where a value is of another kind than it is used as; nothing that a
// caller passes makes this library throw.
Json::Value& ArrayOf(Json::Value& error, const char* member) {
    if (!error.isNull() && !error.isObject()) {
        TraceWarn("[AppendError] the error is no object and becomes one");
        error = Json::Value(Json::objectValue);
    }
    Json::Value& value = error[member];
    if (!value.isNull() && !value.isArray()) {
        TraceWarn("[AppendError] the member %s is no array and becomes one", member);
        value = Json::Value(Json::arrayValue);
    }
    return value;
}

void AppendTexts(Json::Value& error, const ErrDetail& detail) {
    for (const ErrorMember& member : kMembers) {
        ArrayOf(error, member.name).append(Json::Value(detail.*member.text));
    }
}

// The number of characters that `format` and the arguments make, or -1.
int Format(char* buffer, const std::string& format, std::va_list arguments) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    return vsnprintf_s(buffer, kFormatSize, kFormatSize - 1, format.c_str(), arguments);
#pragma GCC diagnostic pop
}

}  // namespace

class ErrorManage::ErrorManageImpl {
  public:
    ReadWriteLock lock;
    ErrorTexts texts FRAMEUTIL_GUARDED_BY(lock);
};

constinit std::atomic<ErrorManage*> ErrorManage::m_pInstance{nullptr};

ErrorManage::ErrorManage() : m_pImpl(new (std::nothrow) ErrorManageImpl) {}
ErrorManage::~ErrorManage() = default;

ErrorManage* ErrorManage::Instance() {
    return Singleton<ErrorManage>::Instance(m_pInstance);
}

void ErrorManage::Destroy() {
    Singleton<ErrorManage>::Destroy(m_pInstance);
}

bool ErrorManage::InitRes(const std::string& path) {
    if (m_pImpl == nullptr) {
        return false;
    }
    if (KelpAddResFileWithAbsolute(path) == 1) {
        return true;
    }
    Trace("failed to init res file=%s.", path.c_str());
    return false;
}

unsigned int ErrorManage::FormatAttr(const std::string& id, enAttrType attr, ...) {
    if (m_pImpl == nullptr) {
        return 0;
    }
    // The text is chosen below, after it was used as the format: see the header.
    std::string text;
    const auto buffer = std::make_unique<char[]>(kFormatSize);
    std::va_list arguments;
    // An enumeration of int is passed as an int, which is all that is asked of the last
    // argument with a name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wvarargs"
    va_start(arguments, attr);
#pragma GCC diagnostic pop
    const int length = Format(buffer.get(), text, arguments);
    va_end(arguments);

    const WriteGuard guard(m_pImpl->lock);
    const ErrDetail* const detail = m_pImpl->texts.Load(id);
    if (detail == nullptr) {
        LogProcess::Warn("not find exception ID=" + id,
                         LocationInfo("error_manage", "FormatAttr", 135));
        return ERROR_NO_RESOURCE;
    }
    const std::string* const chosen = detail->Get(attr);
    if (chosen == nullptr) {
        LogProcess::Warn("attrIndex=" + std::to_string(attr) + " is not in range.",
                         LocationInfo("error_manage", "FormatAttr", 156));
        return ERROR_NO_RESOURCE;
    }
    text = *chosen;
    return length < 1 ? ERROR_NO_TEXT : 0;
}

unsigned int ErrorManage::AppendError(const std::string& id, Json::Value& error) {
    if (m_pImpl == nullptr) {
        return 0;
    }
    if (id.empty()) {
        return ERROR_NO_RESOURCE;
    }
    const WriteGuard guard(m_pImpl->lock);
    const ErrDetail* const detail = m_pImpl->texts.Load(id);
    if (detail != nullptr) {
        AppendTexts(error, *detail);
        return 0;
    }
    AppendTexts(error, ErrDetail());
    LogProcess::Error(ERROR_NO_RESOURCE, "Resource(" + id + ") is not exist",
                      LocationInfo("error_manage", "AppendError", 235));
    return ERROR_NO_RESOURCE;
}

}  // namespace FrameUtil
