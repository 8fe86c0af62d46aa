#include "kelpctl/paraset/compare.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "kelpctl/paraset/types.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using FrameUtil::CParaSet;

std::string OctetsOf(CParaSet& node) {
    std::string octets;
    node.getBytes(octets);
    return octets;
}

bool SameDouble(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) ||
           std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool SameResource(const AsnDistinguishedResource* a, const AsnDistinguishedResource* b) {
    if (a == nullptr || b == nullptr) {
        return a == b;
    }
    AsnBuffer first;
    AsnBuffer second;
    const auto view = [](const AsnBuffer& buffer) {
        return std::string_view(reinterpret_cast<const char*>(buffer.data()), buffer.size());
    };
    return AsnEncode(*a, first) && AsnEncode(*b, second) && view(first) == view(second);
}

// Reserved children that the records' header values become.
bool IsHeader(std::string_view key) {
    return key.starts_with("##");
}

class Comparison {
  public:
    explicit Comparison(Nulls nulls) : nulls_(nulls) {}

    bool Same(CParaSet& meant, CParaSet& read) {
        const CParaSet::ValueType type = meant.type();
        const bool as_double = type == CParaSet::PARA_INT && read.type() == CParaSet::PARA_DOUBLE;
        if (read.type() != type && !as_double) {
            return Lost(std::string("would read back as ") + KindOf(read.type()) + ", not as " +
                        KindOf(type));
        }
        if (meant.name() != read.name()) {
            return Lost("would read back with the name \"" + app::ShowText(read.name()) + '"');
        }
        if (meant.GetDesc() != read.GetDesc()) {
            return Lost("would read back without its description");
        }
        switch (type) {
            case CParaSet::PARA_INT:
                return meant.asDouble() == read.asDouble() || LostValue();
            case CParaSet::PARA_DOUBLE:
                return SameDouble(meant.asDouble(), read.asDouble()) || LostValue();
            case CParaSet::PARA_STRING:
                return OctetsOf(meant) == OctetsOf(read) || LostValue();
            case CParaSet::PARA_RESID:
                return SameResource(meant.asResID(), read.asResID()) || LostValue();
            case CParaSet::PARA_ARRAY:
                return SameList(meant.GetVctValue(), read.GetVctValue());
            case CParaSet::PARA_STRUCT:
                return SameStructure(meant, read);
            default:
                return true;
        }
    }

    Complaint complaint;

  private:
    bool Lost(std::string text) {
        complaint = {path_.Text(), std::move(text)};
        return false;
    }
    bool LostValue() { return Lost("would read back with another value"); }

    bool SameBelow(CParaSet& meant, CParaSet& read) {
        ++depth_;
        const bool same = Same(meant, read);
        --depth_;
        return same;
    }

    bool SameList(const std::vector<CParaSet*>& meant, const std::vector<CParaSet*>& read) {
        for (std::size_t i = 0; i < meant.size(); ++i) {
            const auto step = path_.Into(i);
            CParaSet* const found = i < read.size() ? read[i] : nullptr;
            if (meant[i] == nullptr ? found != nullptr || i >= read.size() : found == nullptr) {
                return Lost(found == nullptr ? "would be lost" : "would read back with a value");
            }
            if (found != nullptr && !SameBelow(*meant[i], *found)) {
                return false;
            }
        }
        return meant.size() >= read.size() || Lost("would read back with more elements");
    }

    bool SameStructure(CParaSet& meant, CParaSet& read) {
        for (const auto& [key, child] : meant.GetMapValue()) {
            if (child == nullptr && nulls_ == Nulls::kVanish) {
                continue;
            }
            const auto found = read.GetMapValue().find(key);
            const bool gone = found == read.GetMapValue().end() || found->second == nullptr;
            if (child == nullptr && found != read.GetMapValue().end() && gone) {
                continue;
            }
            const bool empty = child == nullptr || child->isNull();
            // Writing a record makes the header values that it needs.
            if (empty && ((gone && nulls_ == Nulls::kVanish) || (depth_ == 0 && IsHeader(key)))) {
                continue;
            }
            const auto step = path_.Into(key);
            if (gone || child == nullptr) {
                return Lost(gone ? "would be lost" : "would read back with a value");
            }
            if (!SameBelow(*child, *found->second)) {
                return false;
            }
        }
        for (const auto& [key, child] : read.GetMapValue()) {
            const auto known = meant.GetMapValue().find(key);
            if ((known != meant.GetMapValue().end() && known->second != nullptr) ||
                child == nullptr || (depth_ == 0 && IsHeader(key))) {
                continue;
            }
            const bool empty_list =
                child->type() == CParaSet::PARA_ARRAY && child->GetVctValue().empty();
            const bool empty_structure =
                child->type() == CParaSet::PARA_STRUCT && child->GetMapValue().empty();
            if (!empty_list && !empty_structure) {
                const auto step = path_.Into(key);
                return Lost("would be read where nothing was meant");
            }
        }
        return true;
    }

    const Nulls nulls_;
    TreePath path_;
    std::size_t depth_ = 0;
};

}  // namespace

std::optional<Complaint> FirstLoss(CParaSet& meant, CParaSet& read, Nulls nulls) {
    Comparison comparison(nulls);
    if (comparison.Same(meant, read)) {
        return std::nullopt;
    }
    return comparison.complaint;
}

}  // namespace kelpctl
