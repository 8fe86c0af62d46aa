// kelpctl/paraset/description.h - the codec with a description file that is sound.
//
// Thread rule: thread-safe.
#pragma once

#include <memory>
#include <string>

#include "frameutil/codec.h"

namespace kelpctl {

/// The description file of the installation that OSS_ROOT names; empty without one.
std::string InstalledDescription();

/// A codec with the descriptions of `file`, or with none when that is empty. Null, with
/// `why` naming the file and the lines that hold no item, when there is anything wrong.
std::unique_ptr<FrameUtil::CEndeCode> LoadDescription(const std::string& file, std::string& why);

}  // namespace kelpctl
