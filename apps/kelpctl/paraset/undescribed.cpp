#include "kelpctl/paraset/undescribed.h"

#include <set>

#include "kelpctl/paraset/ber_header.h"
#include "kelpctl/paraset/types.h"

namespace kelpctl {
namespace {

using FrameUtil::CParaSet;

constexpr unsigned kSequence = 0x30;

Form CodecForm(int type, int desc) {
    return {Form::Kind::kCodec, type, desc, -1};
}

std::optional<Form> Refuse(std::string& why, std::string reason, std::size_t offset) {
    why = std::move(reason) + " at offset " + std::to_string(offset);
    return std::nullopt;
}

// The elements one behind another in `octets`, and where each begins.
class Elements {
  public:
    Elements(std::string_view octets, std::size_t offset) : octets_(octets), offset_(offset) {}

    /// False at the end, and where something is malformed.
    bool Next() {
        offset_ += size_;
        octets_.remove_prefix(size_);
        size_ = 0;
        if (octets_.empty() || ReadBerHeader(octets_, header_) != nullptr || header_.indefinite) {
            octets_ = {};
            return false;
        }
        size_ = header_.octets + header_.contents;
        return true;
    }

    const BerHeader& Header() const { return header_; }
    std::size_t Offset() const { return offset_; }
    std::size_t ContentsOffset() const { return offset_ + header_.octets; }
    std::string_view Contents() const { return octets_.substr(header_.octets, header_.contents); }

  private:
    std::string_view octets_;
    std::size_t offset_;
    std::size_t size_ = 0;
    BerHeader header_;
};

bool IsFullStructure(const BerHeader& header) {
    return header.Constructed() && header.contents != 0;
}

constexpr const char* kNeedsDescription = "without a description nothing is read of the structure";

bool CheckNamedValue(const Elements& value, std::set<std::string, std::less<>>& names,
                     std::string& why) {
    const std::size_t start = value.Offset();
    Elements inside(value.Contents(), value.ContentsOffset());
    if (!inside.Next()) {
        return true;
    }
    if (!names.insert(std::string(inside.Contents())).second) {
        Refuse(why, "the second value of the same name begins", start);
        return false;
    }
    if (!inside.Next()) {
        return true;
    }
    if (IsFullStructure(inside.Header())) {
        Refuse(why, kNeedsDescription, inside.Offset());
        return false;
    }
    if (inside.Next()) {
        Refuse(why, "a named value has more than a value", inside.Offset());
        return false;
    }
    return true;
}

}  // namespace

Form FormOfValue(const CParaSet& tree) {
    switch (tree.type()) {
        case CParaSet::PARA_ARRAY:
            return CodecForm(codec_type::kList, codec_type::kOfValue);
        case CParaSet::PARA_STRUCT:
            return CodecForm(codec_type::kList, codec_type::kNamedValue);
        default:
            return CodecForm(codec_type::kOfValue, -1);
    }
}

std::optional<Form> FormOfOctets(std::string_view octets, std::string& why) {
    Elements outer(octets, 0);
    if (!outer.Next() || outer.Header().first != kSequence) {
        return CodecForm(codec_type::kOfValue, -1);
    }
    if (outer.Header().contents == 0) {
        return CodecForm(codec_type::kList, codec_type::kNamedValue);
    }
    Elements inside(outer.Contents(), outer.ContentsOffset());
    if (!inside.Next()) {
        return CodecForm(codec_type::kList, codec_type::kOfValue);
    }
    if (inside.Header().first == kSequence) {
        std::set<std::string, std::less<>> names;
        do {
            if (inside.Header().first != kSequence) {
                return Refuse(why, "the list of named values ends for its reader", inside.Offset());
            }
            if (!CheckNamedValue(inside, names, why)) {
                return std::nullopt;
            }
        } while (inside.Next());
        return CodecForm(codec_type::kList, codec_type::kNamedValue);
    }
    do {
        if (inside.Header().Constructed()) {
            return Refuse(why, kNeedsDescription, inside.Offset());
        }
        if (inside.Header().first == codec_type::kNull) {
            return Refuse(why, "a list ends for its reader before the null element",
                          inside.Offset());
        }
    } while (inside.Next());
    return CodecForm(codec_type::kList, codec_type::kOfValue);
}

}  // namespace kelpctl
