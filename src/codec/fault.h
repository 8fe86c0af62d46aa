// Remembers the first failure of a call for a caller who asked for it.
#pragma once

#include <string>
#include <string_view>

#include "frameutil/codec.h"

namespace FrameUtil {

class FaultRecorder {
  public:
    /// Records into `fault`, which may be null; offsets count from `origin`.
    FaultRecorder(CodecFault* fault, const unsigned char* origin)
        : m_fault(fault), m_origin(origin) {}

    /// Null, so that a failing step is one return.
    std::nullptr_t At(const unsigned char* where, const char* reason) {
        if (m_fault != nullptr) {
            m_fault->reason = reason;
            m_fault->path.clear();
            m_fault->offset = static_cast<int>(where - m_origin);
        }
        return nullptr;
    }

    /// On the way back to the root: the failure is in the child of this name.
    std::nullptr_t In(std::string_view name) {
        if (m_fault != nullptr) {
            std::string path(name);
            if (!m_fault->path.empty() && m_fault->path.front() != '[') {
                path += '.';
            }
            m_fault->path.insert(0, path);
        }
        return nullptr;
    }

    /// The same for an element of a list.
    std::nullptr_t In(std::size_t index) {
        return m_fault == nullptr ? nullptr : In('[' + std::to_string(index) + ']');
    }

  private:
    CodecFault* const m_fault;
    const unsigned char* const m_origin;
};

}  // namespace FrameUtil
