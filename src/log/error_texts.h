// The texts of errors that were looked up, by identifier.
//
// Design notes. An identifier whose four texts are all there is kept; one that lacks a text
// is looked up again each time, since its file may still be registered. The caller holds
// the lock for writing throughout: a lookup may add an entry.
#pragma once

#include <array>
#include <map>
#include <string>

namespace FrameUtil {

/// In the order in which enAttrType counts.
struct ErrDetail {
    std::string desc;
    std::string detail;
    std::string reason;
    std::string advice;

    /// The text number `attr`, or null.
    const std::string* Get(int attr) const {
        const std::array<const std::string*, 4> texts = {&desc, &detail, &reason, &advice};
        return attr >= 0 && attr < 4 ? texts[static_cast<std::size_t>(attr)] : nullptr;
    }
};

class ErrorTexts {
  public:
    /// The texts of `id`, good as long as this object. Null, with a warning that names
    /// the first missing one, when it has not all four.
    const ErrDetail* Load(const std::string& id);

  private:
    std::map<std::string, ErrDetail> m_details;
};

}  // namespace FrameUtil
