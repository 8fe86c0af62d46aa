// kelpctl/paraset/fit.h - whether a tree fits what it is to be encoded as, before a single
// octet is written.
//
// The codec converts a value of another kind than described, and leaves out members that
// the description does not have. That suits a process; a document that somebody wrote has
// a mistake then.
//
// Thread rule: thread-compatible.
#pragma once

#include "frameutil/codec.h"
#include "frameutil/paraset.h"
#include "kelpctl/paraset/tree_path.h"

namespace kelpctl {

/// Whether build(tree, ..., type, desc, -1) writes all that `tree` holds, and nothing is
/// missing that parse() demands. An integer is taken where a double is described. False
/// with the first place that does not fit.
bool FitsDescription(const FrameUtil::CEndeCode& codec, FrameUtil::CParaSet& tree, int type,
                     int desc, Complaint& why);

}  // namespace kelpctl
