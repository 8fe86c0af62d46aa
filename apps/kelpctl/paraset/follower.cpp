#include "kelpctl/paraset/follower.h"

#include <utility>

#include "kelpctl/paraset/types.h"

namespace kelpctl {
namespace {

using namespace codec_type;
using FrameUtil::DescItem;
using Mode = Follower::Level::Mode;

constexpr int kFirstClassTag = 64;
constexpr int kFirstExplicit = 0xA0;
constexpr int kLastTag = 255;

Follower::Match Unread() {
    Follower::Match match;
    match.read = false;
    match.inside.mode = Mode::kUnread;
    return match;
}

bool IsConstructed(int type) {
    return type == kStructure || type == kList || type == kNamedValue;
}

}  // namespace

Follower::Level Follower::Outermost(const Form& form) {
    Level level;
    if (form.kind == Form::Kind::kCodec) {
        level.mode = Mode::kOne;
        level.type = form.type;
        level.desc = form.desc;
        level.tag = form.tag;
    }
    return level;
}

const std::vector<DescItem>& Follower::ItemsOf(int key) {
    const auto known = items_.find(key);
    return known != items_.end() ? known->second
                                 : items_.emplace(key, codec_.findDesc(key)).first->second;
}

std::optional<Follower::Match> Follower::Enter(int type, int desc, int tag, unsigned read) {
    const int there = static_cast<int>(read);
    if (desc == -1 && tag == -1) {
        const std::vector<DescItem>& items = ItemsOf(type);
        if (items.size() == 1 && items.front().type == kList) {
            type = kList;
            desc = items.front().desc;
            tag = items.front().tag;
        }
    }
    if (type == kOfValue) {
        type = there;
    }
    if (desc >= kFirstClassTag && desc <= kLastTag && desc != there) {
        return std::nullopt;
    }
    if (type > kLastCode) {
        desc = type;
        type = kStructure;
    }
    const int own = type == kList || type == kNamedValue ? kStructure : type;
    const bool expected = tag == -1 ? type == kWrapper || there == own : there == (tag & 0xFF);
    if (!expected) {
        return std::nullopt;
    }
    Match match;
    Level& inside = match.inside;
    if (there >= kFirstExplicit && !IsConstructed(type)) {
        inside.mode = Mode::kOne;
        inside.type = type;
        inside.desc = desc;
    } else if (type == kWrapper) {
        return Enter(there, -1, -1, read);
    } else if (type == kStructure) {
        inside.mode = Mode::kItems;
        inside.items = &ItemsOf(desc);
    } else if (type == kList) {
        inside.mode = Mode::kElements;
        inside.type = desc;
    } else if (type == kNamedValue) {
        inside.mode = Mode::kNamedValue;
    } else {
        inside.mode = Mode::kUnread;
        match.type = type;
    }
    return match;
}

Follower::Match Follower::Next(Level& level, Level* around, unsigned tag,
                               std::string_view contents) {
    switch (level.mode) {
        case Mode::kUnknown:
            return {};
        case Mode::kOne:
            if (!std::exchange(level.ended, true)) {
                return Enter(level.type, level.desc, level.tag, tag).value_or(Unread());
            }
            return Unread();
        case Mode::kItems:
            return NextItem(level, tag);
        case Mode::kElements:
            return NextElement(level, tag);
        case Mode::kNamedValue:
            return NextOfNamedValue(level, around, tag, contents);
        default:
            return Unread();
    }
}

Follower::Match Follower::NextItem(Level& level, unsigned tag) {
    while (level.next < level.items->size()) {
        const DescItem& item = (*level.items)[level.next++];
        if (auto match = Enter(item.type, item.desc, item.tag, tag)) {
            match->name = item.name;
            return *std::move(match);
        }
    }
    return Unread();
}

Follower::Match Follower::NextElement(Level& level, unsigned tag) {
    const std::size_t index = level.next++;
    auto match = level.ended ? std::nullopt : Enter(level.type, -1, -1, tag);
    if (!match) {
        level.ended = true;
        return Unread();
    }
    level.ended = match->type == kNull;  // as no value, it ends the list
    match->name = '[' + std::to_string(index) + ']';
    return *std::move(match);
}

Follower::Match Follower::NextOfNamedValue(Level& level, Level* around, unsigned tag,
                                           std::string_view contents) {
    switch (level.next++) {
        case 0: {
            Match match;
            match.name = "name";
            match.type = kString;
            match.inside.mode = Mode::kUnread;
            if (around != nullptr && !around->names.insert(std::string(contents)).second) {
                match.read = false;  // the second of its name is dropped
            }
            return match;
        }
        case 1: {
            Match match = Enter(kOfValue, -1, -1, tag).value_or(Unread());
            match.name = "value";
            return match;
        }
        default:
            return Unread();
    }
}

}  // namespace kelpctl
