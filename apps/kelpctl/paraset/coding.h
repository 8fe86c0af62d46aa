// kelpctl/paraset/coding.h - a tree to octets and back, in the form that was asked for,
// with nothing lost on the way that is not said.
//
// Thread rule: thread-compatible.
#pragma once

#include <memory>
#include <string>

#include "frameutil/codec.h"
#include "frameutil/paraset.h"

namespace kelpctl {

/// What octets stand for.
struct Form {
    enum class Kind {
        kRequest,      ///< AsnCommonRequest
        kResponse,     ///< AsnCommonResponse
        kCodec,        ///< CEndeCode with type, desc and tag
        kUndescribed,  ///< CEndeCode, and the value itself says how
    } kind = Kind::kUndescribed;
    int type = -1;
    int desc = -1;
    int tag = -1;
};

/// The most octets of one element that either side takes: what a structure of the codec
/// holds, and its header.
inline constexpr int kMostOctets = 0xFFFFFF + 5;

struct EncodeOptions {
    bool as_string = false;  ///< integers of named values as text
    bool one_way = false;    ///< also what would read back as something else
};

/// Encodes `tree`, whose numbers `as_string` turns to text. False with `why` naming the
/// place in the tree: it does not fit the form, or would not read back as it is.
bool EncodeTree(const FrameUtil::CEndeCode& codec, const Form& form, const EncodeOptions& options,
                FrameUtil::CParaSet& tree, std::string& octets, std::string& why);

/// Decodes `octets`, which are one element and nothing else, into `tree`, which is not
/// valued. False with `why` naming the offset. `note` says what a parameter set cannot
/// hold of it, or that parts are not described, and is empty mostly.
bool DecodeTree(const FrameUtil::CEndeCode& codec, const Form& form, std::string octets,
                FrameUtil::CParaSet& tree, std::string& why, std::string& note);

}  // namespace kelpctl
