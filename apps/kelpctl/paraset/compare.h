// kelpctl/paraset/compare.h - whether what was written reads back as what was meant.
//
// Thread rule: thread-compatible.
#pragma once

#include <optional>

#include "frameutil/paraset.h"
#include "kelpctl/paraset/tree_path.h"

namespace kelpctl {

/// The first place where `read` lacks or changes what `meant` holds; nothing when there is
/// none. What reading adds is no loss: an integer that was described as a double, empty
/// lists and structures, reserved children of the root. A child of a structure that is not
/// valued, or absent, may be missing in what was read if `nulls` says so.
/// REQUIRES: neither is deeper than kTreeJsonDepth.
enum class Nulls { kStay, kVanish };
std::optional<Complaint> FirstLoss(FrameUtil::CParaSet& meant, FrameUtil::CParaSet& read,
                                   Nulls nulls);

}  // namespace kelpctl
