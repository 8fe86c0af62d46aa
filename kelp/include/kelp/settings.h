// Where the platform is installed and what it is configured to do.
//
//     // OSS_ROOT=/opt/nms/oss
//     ns_kelpsdk_wrap::GetPackageRelativePath("", "rtsp/DRKFrame");
//     // "/opt/nms/oss/rtsp/DRKFrame"
//
// The environment variable OSS_ROOT names the installation root; the processes of one
// installation share it. It is read at every call.
//
// thread-safe, as long as no thread changes the environment meanwhile.
#pragma once

#include <string>

#include "kelp/export.h"

namespace ns_kelpsdk_wrap {

// The directory of a package: `relative` below the installation root, or below `root` when
// that is not empty; one slash between the two, none at the end. Nothing is looked up: the
// directory need not exist. Without a root the result is empty, and a warning in the log
// says that OSS_ROOT is not set.
KELP_API std::string GetPackageRelativePath(const std::string& root, const std::string& relative);

}  // namespace ns_kelpsdk_wrap
