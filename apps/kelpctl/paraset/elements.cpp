#include "kelpctl/paraset/elements.h"

#include <optional>
#include <vector>

#include "kelpctl/paraset/element_text.h"

namespace kelpctl {
namespace {

constexpr std::size_t kToItsMark = static_cast<std::size_t>(-1);

// An element whose contents are being walked over.
struct Open {
    std::size_t end;  // kToItsMark: an indefinite length
    Follower::Level level;
};

bool IsMark(std::string_view octets) {
    return octets.size() >= 2 && octets[0] == 0 && octets[1] == 0;
}

class Walk {
  public:
    Walk(const FrameUtil::CEndeCode& codec, const Form& form, std::string_view octets,
         const std::function<void(const WalkedElement&)>& visit)
        : follower_(codec), octets_(octets), visit_(visit) {
        open_.push_back({octets.size(), Follower::Outermost(form)});
    }

    WalkResult Run() {
        do {
            if (!Step()) {
                return result_;
            }
            while (open_.size() > 1 && at_ == open_.back().end) {
                open_.pop_back();
            }
        } while (open_.size() > 1);
        result_.end = at_;
        return result_;
    }

  private:
    bool Fail(const char* reason) {
        result_ = {at_, reason, at_};
        return false;
    }

    // The innermost end that is known: no header and no contents reach beyond it.
    std::size_t Limit() const {
        for (auto open = open_.rbegin(); open != open_.rend(); ++open) {
            if (open->end != kToItsMark) {
                return open->end;
            }
        }
        return octets_.size();
    }

    bool Step() {
        const std::string_view rest = octets_.substr(at_, Limit() - at_);
        BerHeader header;
        if (const char* reason = ReadBerHeader(rest, header)) {
            return Fail(reason);
        }
        if (open_.back().end == kToItsMark && IsMark(rest)) {
            const Follower::Match none;
            visit_({at_, open_.size() - 1, header, {}, none, false});
            open_.pop_back();
            at_ += header.octets;
            return true;
        }
        if (open_.size() > kMostElementDepth) {
            return Fail("more than 128 elements are inside one another");
        }
        const std::string_view contents = rest.substr(header.octets, header.contents);
        Follower::Level* const around = open_.size() > 1 ? &open_[open_.size() - 2].level : nullptr;
        Follower::Match match = follower_.Next(open_.back().level, around, header.first, contents);
        const bool opened = header.Constructed() || Follower::Expects(match.inside);
        visit_({at_, open_.size() - 1, header, contents, match, opened});
        at_ += header.octets;
        if (!opened) {
            at_ += header.contents;
        } else {
            open_.push_back(
                {header.indefinite ? kToItsMark : at_ + header.contents, std::move(match.inside)});
        }
        return true;
    }

    Follower follower_;
    std::string_view octets_;
    const std::function<void(const WalkedElement&)>& visit_;
    std::vector<Open> open_;
    std::size_t at_ = 0;
    WalkResult result_;
};

// The first place of a kind, and how many there are.
struct Tally {
    std::size_t count = 0;
    std::size_t first = 0;

    void Add(std::size_t offset) {
        if (count++ == 0) {
            first = offset;
        }
    }
    std::string Text(const char* what) const {
        return what + (": " + std::to_string(count)) + ", the first at offset " +
               std::to_string(first);
    }
};

}  // namespace

WalkResult WalkElements(const FrameUtil::CEndeCode& codec, const Form& form,
                        std::string_view octets,
                        const std::function<void(const WalkedElement&)>& visit) {
    return Walk(codec, form, octets, visit).Run();
}

std::string NoteOfLosses(const FrameUtil::CEndeCode& codec, const Form& form,
                         std::string_view octets) {
    Tally unread;
    Tally wide;
    std::size_t inside_unread = kToItsMark;  // its depth: what is in it is not counted again
    WalkElements(codec, form, octets, [&](const WalkedElement& element) {
        if (element.depth > inside_unread) {
            return;
        }
        inside_unread = element.match.read ? kToItsMark : element.depth;
        if (!element.match.read) {
            unread.Add(element.offset);
        } else if (!FitsInteger32(element)) {
            wide.Add(element.offset);
        }
    });
    std::string note;
    if (unread.count != 0) {
        note = unread.Text("elements that nothing reads");
    }
    if (wide.count != 0) {
        note += (note.empty() ? "" : "; ") + wide.Text("integers cut to their low 32 bits");
    }
    return note;
}

}  // namespace kelpctl
