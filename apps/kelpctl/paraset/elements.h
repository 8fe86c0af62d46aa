// kelpctl/paraset/elements.h - a walk over the elements of BER octets, each with what the
// description says of it.
//
// Elements of any identifier and length form are walked over, at most kMostElementDepth
// inside one another; the walk does not recurse.
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

#include "kelpctl/paraset/ber_header.h"
#include "kelpctl/paraset/follower.h"

namespace kelpctl {

inline constexpr std::size_t kMostElementDepth = 128;

struct WalkedElement {
    std::size_t offset;
    std::size_t depth;
    BerHeader header;
    std::string_view contents;  ///< empty where the length is indefinite
    const Follower::Match& match;
    bool opened;  ///< the elements inside come next
};

struct WalkResult {
    std::size_t end = 0;           ///< behind the element
    const char* reason = nullptr;  ///< why it is malformed; a literal
    std::size_t offset = 0;        ///< where
};

/// Calls `visit` for the element that `octets` begin with and all inside it, outer ones
/// first, up to where they are malformed. End-of-contents octets are visited as well.
WalkResult WalkElements(const FrameUtil::CEndeCode& codec, const Form& form,
                        std::string_view octets,
                        const std::function<void(const WalkedElement&)>& visit);

/// One line about an element: offset, depth, octets of header and contents, then,
/// indented by its depth, its name, identifier and value.
void PrintElement(const WalkedElement& element, std::ostream& out);

/// What CEndeCode::parse leaves out or cuts of well-formed `octets`: elements that are not
/// described, integers of more than 32 bits. One line naming the first offset, or empty.
std::string NoteOfLosses(const FrameUtil::CEndeCode& codec, const Form& form,
                         std::string_view octets);

}  // namespace kelpctl
