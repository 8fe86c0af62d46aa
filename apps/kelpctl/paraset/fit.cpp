#include "kelpctl/paraset/fit.h"

#include <string>
#include <vector>

#include "kelpctl/paraset/tree_json.h"
#include "kelpctl/paraset/types.h"
#include "support/utf8.h"

namespace kelpctl {

using FrameUtil::CParaSet;
using FrameUtil::DescItem;

const char* KindOf(CParaSet::ValueType type) {
    switch (type) {
        case CParaSet::PARA_INT:
            return "an integer";
        case CParaSet::PARA_DOUBLE:
            return "a double";
        case CParaSet::PARA_STRING:
            return "a text";
        case CParaSet::PARA_ARRAY:
            return "a list";
        case CParaSet::PARA_STRUCT:
            return "a structure";
        case CParaSet::PARA_RESID:
            return "a resource record";
        default:
            return "null";
    }
}

namespace {

using namespace codec_type;

constexpr int kFirstClassTag = 64;  // items with tags below are not optional

class Fitting {
  public:
    Fitting(const FrameUtil::CEndeCode& codec, Complaint& why) : codec_(codec), why_(why) {}

    // `name` is what parse() will call the node.
    bool Value(CParaSet& node, int type, int desc, const std::string& name) {
        if (!Plain(node, type == kNamedValue ? node.name() : name)) {
            return false;
        }
        if (type > kLastCode) {
            desc = type;
            type = kStructure;
        }
        switch (type) {
            case kOfValue:
            case kWrapper:
            case kNamedValue:
                return OwnType(node);
            case kInteger:
                return Is(node, CParaSet::PARA_INT);
            case kString:
                return Is(node, CParaSet::PARA_STRING);
            case kReal:
                return node.type() == CParaSet::PARA_INT || Is(node, CParaSet::PARA_DOUBLE);
            case kStructure:
                return Is(node, CParaSet::PARA_STRUCT) && Structure(node, desc);
            case kList:
                return desc == kNamedValue ? Is(node, CParaSet::PARA_STRUCT) && NamedValues(node)
                                           : Is(node, CParaSet::PARA_ARRAY) && List(node, desc);
            default:
                return true;  // the codec says that it cannot write this
        }
    }

  private:
    bool Refuse(std::string text) {
        why_ = {path_.Text(), std::move(text)};
        return false;
    }

    bool RefuseAbsent() { return Refuse("what is absent cannot be carried here; leave it out"); }

    bool Is(CParaSet& node, CParaSet::ValueType type) {
        return node.type() == type || Refuse(std::string("is ") + KindOf(node.type()) + ", where " +
                                             KindOf(type) + " is described");
    }

    // What no form carries.
    bool Plain(CParaSet& node, const std::string& name) {
        if (node.isNull()) {
            return Refuse("null cannot be carried here; leave it out");
        }
        if (node.type() == CParaSet::PARA_RESID) {
            return Refuse("a resource record is only carried by common requests");
        }
        if (!node.GetDesc().empty()) {
            return Refuse("the description of a node cannot be carried");
        }
        return node.name() == name ||
               Refuse("the name \"" + app::ShowText(node.name()) + "\" cannot be carried here");
    }

    // A value that is written and read without description, by what it is.
    bool OwnType(CParaSet& node) {
        if (node.type() == CParaSet::PARA_ARRAY) {
            return Refuse("a list needs a description here: it would be read as a structure");
        }
        return node.type() != CParaSet::PARA_STRUCT || node.GetMapValue().empty() ||
               Refuse("a structure needs a description here: nothing of it would be written");
    }

    bool Structure(CParaSet& node, int key) {
        const std::vector<DescItem> items = codec_.findDesc(key);
        for (const auto& [name, child] : node.GetMapValue()) {
            const auto step = path_.Into(name);
            if (child == nullptr) {
                return RefuseAbsent();
            }
            bool described = false;
            for (const DescItem& item : items) {
                if (item.name == name) {
                    described = true;
                    if (!Item(*child, item)) {
                        return false;
                    }
                }
            }
            if (!described) {
                return Refuse("description " + std::to_string(key) + " has no such member");
            }
        }
        return NothingMissing(node, key, items);
    }

    bool Item(CParaSet& child, const DescItem& item) {
        if (item.type == kNull) {
            // build() writes the same null element whatever stands there.
            return child.isNull() ||
                   Refuse(std::string("is ") + KindOf(child.type()) + ", where null is described");
        }
        return Value(child, item.type, item.desc, item.name);
    }

    // parse() does without the items behind the last octet only if their tags say so.
    bool NothingMissing(CParaSet& node, int key, const std::vector<DescItem>& items) {
        for (auto item = items.rbegin(); item != items.rend(); ++item) {
            const bool empty_list =
                item->tag < 128 && (item->type == kEmptyList || item->type == kList);
            if (item->type == kNull || empty_list || node.GetMapValue().contains(item->name)) {
                return true;
            }
            if (item->tag < kFirstClassTag) {
                return Refuse("the member \"" + app::ShowText(item->name) +
                              "\" is missing; description " + std::to_string(key) + " demands it");
            }
        }
        return true;
    }

    bool NamedValues(CParaSet& node) {
        for (const auto& [name, child] : node.GetMapValue()) {
            const auto step = path_.Into(name);
            if (child == nullptr) {
                return RefuseAbsent();
            }
            if (!Plain(*child, name) || !OwnType(*child)) {
                return false;
            }
        }
        return true;
    }

    bool List(CParaSet& node, int element_type) {
        const std::vector<CParaSet*>& list = node.GetVctValue();
        for (std::size_t i = 0; i < list.size(); ++i) {
            const auto step = path_.Into(i);
            if (list[i] == nullptr) {
                return RefuseAbsent();
            }
            if (!Value(*list[i], element_type, -1, kRootName)) {
                return false;
            }
        }
        return true;
    }

    const FrameUtil::CEndeCode& codec_;
    Complaint& why_;
    TreePath path_;
};

}  // namespace

bool FitsDescription(const FrameUtil::CEndeCode& codec, CParaSet& tree, int type, int desc,
                     Complaint& why) {
    return Fitting(codec, why).Value(tree, type, desc, kRootName);
}

}  // namespace kelpctl
