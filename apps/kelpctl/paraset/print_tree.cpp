// From a tree to JSON.

#include <algorithm>
#include <cmath>
#include <string>

#include "kelpctl/paraset/resource_json.h"
#include "kelpctl/paraset/tree_json.h"
#include "support/json_write.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using FrameUtil::CParaSet;

std::string TextOfDouble(double value) {
    if (std::isnan(value)) {
        return R"({"$double": "NaN"})";
    }
    if (std::isinf(value)) {
        return value > 0 ? R"({"$double": "Infinity"})" : R"({"$double": "-Infinity"})";
    }
    const std::string text = app::DoubleText(value);
    return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string TextOfKey(const std::string& key) {
    if (app::InvalidUtf8At(key) != std::string_view::npos) {
        return "\"$bytes:" + app::HexText(key) + '"';
    }
    return app::JsonQuoted(key.starts_with('$') ? '$' + key : key);
}

// A value without children, or with none.
std::string TextOfLeaf(CParaSet& node) {
    switch (node.type()) {
        case CParaSet::PARA_INT:
            return std::to_string(node.asInt());
        case CParaSet::PARA_DOUBLE:
            return TextOfDouble(node.asDouble());
        case CParaSet::PARA_STRING: {
            std::string octets;
            node.getBytes(octets);
            return JsonOfOctets(octets);
        }
        case CParaSet::PARA_ARRAY:
            return "[]";
        case CParaSet::PARA_STRUCT:
            return "{}";
        case CParaSet::PARA_RESID:
            return "{\"$resource\": " +
                   (node.asResID() == nullptr ? "null" : JsonOfResource(*node.asResID())) + '}';
        default:
            return "null";
    }
}

bool IsLeaf(CParaSet& node) {
    switch (node.type()) {
        case CParaSet::PARA_ARRAY:
            return node.GetVctValue().empty();
        case CParaSet::PARA_STRUCT:
            return node.GetMapValue().empty();
        default:
            return true;
    }
}

class TreePrinter {
  public:
    explicit TreePrinter(std::ostream& out) : out_(out) {}

    // `name` is what the node is called by where it stands.
    void Node(CParaSet* node, std::string_view name) {
        if (node == nullptr) {
            out_ << R"({"$absent": true})";
            return;
        }
        const std::string own = node->name();
        const std::string& desc = node->GetDesc();
        if (own == name && desc.empty()) {
            Value(*node);
            return;
        }
        out_ << '{';
        if (own != name) {
            out_ << "\"$name\": " << JsonOfOctets(own) << ", ";
        }
        if (!desc.empty()) {
            out_ << "\"$desc\": " << JsonOfOctets(desc) << ", ";
        }
        out_ << "\"$value\": ";
        Value(*node);
        out_ << '}';
    }

  private:
    void Value(CParaSet& node) {
        if (IsLeaf(node)) {
            out_ << TextOfLeaf(node);
        } else if (node.type() == CParaSet::PARA_ARRAY) {
            List(node.GetVctValue());
        } else {
            Structure(node);
        }
    }

    // Elements that are short stand on one line.
    void List(const std::vector<CParaSet*>& list) {
        const bool on_one_line = std::all_of(list.begin(), list.end(), [](CParaSet* child) {
            return child == nullptr || (IsLeaf(*child) && child->type() != CParaSet::PARA_RESID);
        });
        out_ << '[';
        ++depth_;
        const char* separator = "";
        for (CParaSet* child : list) {
            out_ << separator;
            separator = on_one_line ? ", " : ",";
            if (!on_one_line) {
                BreakLine();
            }
            Node(child, kRootName);
        }
        --depth_;
        if (!on_one_line) {
            BreakLine();
        }
        out_ << ']';
    }

    void Structure(CParaSet& node) {
        out_ << '{';
        ++depth_;
        const char* separator = "";
        for (const auto& [key, child] : node.GetMapValue()) {
            out_ << separator;
            separator = ",";
            BreakLine();
            out_ << TextOfKey(key) << ": ";
            Node(child, key);
        }
        --depth_;
        BreakLine();
        out_ << '}';
    }

    // What lies very deep is not indented further: its blanks would outweigh it.
    void BreakLine() { out_ << '\n' << std::string(2 * std::min(depth_, kIndented), ' '); }

    static constexpr std::size_t kIndented = 16;

    std::ostream& out_;
    std::size_t depth_ = 0;
};

}  // namespace

void PrintTree(CParaSet& tree, std::ostream& out) {
    TreePrinter(out).Node(&tree, kRootName);
    out << '\n';
}

}  // namespace kelpctl
