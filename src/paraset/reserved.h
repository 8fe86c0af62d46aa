// The reserved names of children that carry header values.
#pragma once

#include <string>

namespace FrameUtil::reserved {

inline const std::string kRowCount = "##RowCount";
inline const std::string kTableCount = "##TableCount";
inline const std::string kRetCode = "##retCode";
inline const std::string kRetCodeEx = "##retCodeEx";
inline const std::string kVer = "##ver";
inline const std::string kUserID = "##UserID";
inline const std::string kResID = "##ResID";

/// Only these three are no columns for the row operations; the conversion to records
/// leaves out every name that begins with '#'.
inline bool IsNoColumn(const std::string& name) {
    return name.starts_with('#') && (name == kTableCount || name == kRowCount || name == kRetCode);
}

}  // namespace FrameUtil::reserved
