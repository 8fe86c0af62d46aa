// kelpctl/paraset/follower.h - which item of the description an element is read as.
//
// It goes beside a walk over the elements, a Level for each element around, and takes the
// decisions that CEndeCode::parse takes, so that each element gets its name and those that
// parse leaves out are known. Where parse looks into an explicit wrapper before it decides,
// this goes by the wrapper's tag alone.
//
// Thread rule: thread-compatible.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"
#include "kelpctl/paraset/coding.h"

namespace kelpctl {

class Follower {
  public:
    /// What is expected inside an element, and how far that went.
    struct Level {
        enum class Mode {
            kUnknown,     ///< nothing is described: elements have no names
            kUnread,      ///< parse does not look in here
            kOne,         ///< one element of `type`, `desc`, `tag`
            kItems,       ///< `items` in their order
            kElements,    ///< any number of `type`
            kNamedValue,  ///< a name and a value
        } mode = Mode::kUnknown;
        int type = -1;
        int desc = -1;
        int tag = -1;
        const std::vector<FrameUtil::DescItem>* items = nullptr;
        std::size_t next = 0;
        bool ended = false;
        std::set<std::string, std::less<>> names;  ///< of the named values in here
    };

    /// What an element turned out to be.
    struct Match {
        bool read = true;
        std::string name;  ///< of the item, "[3]" or empty
        int type = -1;     ///< of a scalar, as the codec's type; else -1
        Level inside;
    };

    explicit Follower(const FrameUtil::CEndeCode& codec) : codec_(codec) {}

    /// What is expected of whole octets in `form`.
    static Level Outermost(const Form& form);

    /// Whether elements are described inside: they are there then whatever the identifier
    /// says about it.
    static bool Expects(const Level& level) {
        return level.mode != Level::Mode::kUnknown && level.mode != Level::Mode::kUnread;
    }

    /// What the next element in `level` is, which has the identifier `tag` and `contents`;
    /// `around` is the level around this one, or null.
    Match Next(Level& level, Level* around, unsigned tag, std::string_view contents);

  private:
    std::optional<Match> Enter(int type, int desc, int tag, unsigned read);
    Match NextItem(Level& level, unsigned tag);
    Match NextElement(Level& level, unsigned tag);
    Match NextOfNamedValue(Level& level, Level* around, unsigned tag, std::string_view contents);
    const std::vector<FrameUtil::DescItem>& ItemsOf(int key);

    const FrameUtil::CEndeCode& codec_;
    std::map<int, std::vector<FrameUtil::DescItem>> items_;
};

}  // namespace kelpctl
