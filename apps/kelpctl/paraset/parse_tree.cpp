// From JSON to a tree.

#include <limits>
#include <memory>
#include <utility>

#include "kelpctl/paraset/resource_json.h"
#include "kelpctl/paraset/tree_json.h"
#include "support/json.h"
#include "support/json_write.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using FrameUtil::CParaSet;

constexpr std::string_view kOctetsKey = "$bytes:";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Consumes digits; how many there were.
std::size_t TakeDigits(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && IsDigit(text[count])) {
        ++count;
    }
    text.remove_prefix(count);
    return count;
}

bool TakeOneOf(std::string_view& text, std::string_view characters) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

enum class Number { kNone, kInteger, kDouble };

// The kind of JSON's number that `text` is: the reader takes some that are none.
Number KindOf(std::string_view text) {
    TakeOneOf(text, "-");
    const bool zero = text.starts_with('0');
    const std::size_t digits = TakeDigits(text);
    if (digits == 0 || (zero && digits > 1)) {
        return Number::kNone;
    }
    if (text.empty()) {
        return Number::kInteger;
    }
    if (TakeOneOf(text, ".") && TakeDigits(text) == 0) {
        return Number::kNone;
    }
    if (TakeOneOf(text, "eE")) {
        TakeOneOf(text, "+-");
        if (TakeDigits(text) == 0) {
            return Number::kNone;
        }
    }
    return text.empty() ? Number::kDouble : Number::kNone;
}

// Whether this object is not a structure: one of its keys begins with a single "$".
bool IsSpecial(const Json::Value& object) {
    for (auto member = object.begin(); member != object.end(); ++member) {
        const std::string key = member.name();
        if (key.starts_with('$') && !key.starts_with("$$") && !key.starts_with(kOctetsKey)) {
            return true;
        }
    }
    return false;
}

std::optional<std::string> KeyOf(const std::string& name) {
    if (name.starts_with(kOctetsKey)) {
        return app::OctetsOfHex(std::string_view(name).substr(kOctetsKey.size()));
    }
    return name.starts_with("$$") ? name.substr(1) : name;
}

class TreeParser {
  public:
    TreeParser(std::string_view document, Complaint& why) : document_(document), why_(why) {}

    bool Value(const Json::Value& value, CParaSet& node) {
        switch (value.type()) {
            case Json::nullValue:
                return true;
            case Json::stringValue:
                node.setBytes(value.asString());
                return true;
            case Json::booleanValue:
                return Refuse("true and false have no place in a parameter set");
            case Json::arrayValue:
                return List(value, node);
            case Json::objectValue:
                return IsSpecial(value) ? Special(value, node) : Structure(value, node);
            default:
                return TakeNumber(value, node);
        }
    }

  private:
    bool Refuse(std::string text) {
        why_ = {path_.Text(), std::move(text)};
        return false;
    }

    bool TakeNumber(const Json::Value& value, CParaSet& node) {
        const std::string_view text = app::JsonNumberText(value, document_);
        const Number kind = KindOf(text);
        if (kind == Number::kInteger) {
            const auto number = app::ParseInteger(text, std::numeric_limits<std::int32_t>::min(),
                                                  std::numeric_limits<std::int32_t>::max());
            if (!number) {
                return Refuse(std::string(text) +
                              " does not fit an integer of 32 bits; with a decimal point it is a "
                              "double");
            }
            node = static_cast<int>(*number);
            return true;
        }
        const auto number = kind == Number::kDouble ? app::ParseDouble(text) : std::nullopt;
        if (!number) {
            return Refuse(std::string(text) + " is no number that a double holds");
        }
        node = *number;
        return true;
    }

    bool List(const Json::Value& value, CParaSet& node) {
        node.SetType(CParaSet::PARA_ARRAY);
        std::vector<CParaSet*>& list = node.GetVctValue();
        list.reserve(value.size());
        for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
            const auto step = path_.Into(std::size_t{i});
            std::unique_ptr<CParaSet> child;
            if (!Child(value[i], kRootName, child)) {
                return false;
            }
            list.push_back(child.release());
        }
        return true;
    }

    bool Structure(const Json::Value& value, CParaSet& node) {
        node.SetType(CParaSet::PARA_STRUCT);
        for (auto member = value.begin(); member != value.end(); ++member) {
            const auto key = KeyOf(member.name());
            const auto step = path_.Into(key ? *key : member.name());
            if (!key) {
                return Refuse("the name is not \"$bytes:\" and pairs of hexadecimal digits");
            }
            if (node.GetMapValue().contains(*key)) {
                return Refuse("the name is there twice");
            }
            std::unique_ptr<CParaSet> child;
            if (!Child(*member, *key, child)) {
                return false;
            }
            CParaSet*& entry = node.GetMapValue()[*key];
            entry = child.release();
        }
        return true;
    }

    // A child, or null for one that is absent.
    bool Child(const Json::Value& value, const std::string& name,
               std::unique_ptr<CParaSet>& child) {
        if (value.isObject() && value.isMember("$absent")) {
            return (value.size() == 1 && value["$absent"] == Json::Value(true)) ||
                   Refuse("\"$absent\" is true, and alone");
        }
        child = std::make_unique<CParaSet>("");
        child->SetName(name);
        return Value(value, *child);
    }

    // ---- objects with a "$" member

    bool Special(const Json::Value& object, CParaSet& node) {
        if (object.isMember("$value")) {
            return Annotated(object, node);
        }
        if (object.size() == 1) {
            const Json::Value& value = *object.begin();
            const std::string kind = object.begin().name();
            if (kind == "$bytes") {
                const auto octets = OctetsOfJson(object);
                if (!octets) {
                    return Refuse("\"$bytes\" is no text of pairs of hexadecimal digits");
                }
                node.setBytes(*octets);
                return true;
            }
            if (kind == "$double") {
                return SpecialDouble(value, node);
            }
            if (kind == "$resource") {
                return TakeResource(value, node);
            }
            if (kind == "$absent") {
                return Refuse("only elements and members can be absent");
            }
        }
        return Refuse("unknown member \"" + app::ShowText(UnknownOf(object)) +
                      "\"; a name that begins with $ is written with $$");
    }

    static std::string UnknownOf(const Json::Value& object) {
        for (auto member = object.begin(); member != object.end(); ++member) {
            std::string key = member.name();
            const bool known = key == "$value" || key == "$name" || key == "$desc" ||
                               key.starts_with("$$") || !key.starts_with('$');
            if (!known) {
                return key;
            }
        }
        return object.begin().name();
    }

    bool Annotated(const Json::Value& object, CParaSet& node) {
        Json::ArrayIndex known = 1;
        for (const char* annotation : {"$name", "$desc"}) {
            if (!object.isMember(annotation)) {
                continue;
            }
            ++known;
            const auto text = OctetsOfJson(object[annotation]);
            if (!text) {
                return Refuse(std::string("\"") + annotation + "\" is no text");
            }
            if (annotation[1] == 'n') {
                node.SetName(*text);
            } else {
                node.SetDesc(*text);
            }
        }
        if (known != object.size()) {
            return Refuse("unknown member beside \"$value\": there may be \"$name\" and \"$desc\"");
        }
        const Json::Value& value = object["$value"];
        if (value.isObject() && (value.isMember("$value") || value.isMember("$absent"))) {
            return Refuse("\"$value\" holds no value of its own");
        }
        return Value(value, node);
    }

    bool SpecialDouble(const Json::Value& value, CParaSet& node) {
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        const std::string text = value.isString() ? value.asString() : "";
        if (text == "NaN") {
            node = std::numeric_limits<double>::quiet_NaN();
        } else if (text == "Infinity" || text == "-Infinity") {
            node = text.starts_with('-') ? -kInfinity : kInfinity;
        } else {
            return Refuse("\"$double\" is \"NaN\", \"Infinity\" or \"-Infinity\"");
        }
        return true;
    }

    bool TakeResource(const Json::Value& value, CParaSet& node) {
        node.SetType(CParaSet::PARA_RESID);
        if (value.isNull()) {
            return true;
        }
        AsnDistinguishedResource record;
        const auto step = path_.Into("$resource");
        if (!ParseResource(value, path_, record, why_)) {
            return false;
        }
        node = &record;
        return true;
    }

    std::string_view document_;
    Complaint& why_;
    TreePath path_;
};

}  // namespace

bool ParseTree(std::string_view text, CParaSet& tree, Complaint& why) {
    why = {};
    const auto value = app::ParseJson(text, &why.text, {kTreeJsonBytes, kTreeJsonDepth});
    return value && TreeParser(text, why).Value(*value, tree);
}

}  // namespace kelpctl
