#include "kelpctl/paraset/resource_json.h"

#include "support/json_write.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

bool Refuse(const TreePath& path, std::string text, Complaint& why) {
    why = {path.Text(), std::move(text)};
    return false;
}

bool Take(const Json::Value& value, TreePath& path, AsnInt& field, Complaint& why) {
    if (!value.isInt64() || value.type() == Json::realValue) {
        return Refuse(path, "is no integer of 64 bits", why);
    }
    field = AsnInt(value.asInt64());
    return true;
}

bool Take(const Json::Value& value, TreePath& path, AsnOcts& field, Complaint& why) {
    const auto octets = OctetsOfJson(value);
    if (!octets) {
        return Refuse(path, "is no text", why);
    }
    field = *octets;
    return true;
}

bool Take(const Json::Value& value, TreePath& path, AsnRelation& record, Complaint& why);
template <class List>
bool Take(const Json::Value& value, TreePath& path, List& list, Complaint& why);

// A record's members by name; each is taken once, and what is left over is unknown.
class Members {
  public:
    Members(const Json::Value& object, TreePath& path, Complaint& why)
        : object_(object), path_(path), why_(why) {
        good_ = object.isObject() || Refuse(path, "is no object", why);
    }

    template <class Field>
    void Mandatory(const char* name, Field& field) {
        const Json::Value* value = Find(name);
        if (value == nullptr) {
            good_ = good_ && Refuse(path_, std::string("has no member \"") + name + '"', why_);
            return;
        }
        const auto step = path_.Into(name);
        good_ = Take(*value, path_, field, why_);
    }

    template <class Field>
    void Optional(const char* name, AsnOptional<Field>& field) {
        if (const Json::Value* value = Find(name)) {
            const auto step = path_.Into(name);
            good_ = Take(*value, path_, field.Ensure(), why_);
        }
    }

    bool Finish() {
        if (good_ && taken_ != object_.size()) {
            return Refuse(path_, "has a member that no resource record has", why_);
        }
        return good_;
    }

  private:
    const Json::Value* Find(const char* name) {
        if (!good_ || !object_.isMember(name)) {
            return nullptr;
        }
        ++taken_;
        return &object_[name];
    }

    const Json::Value& object_;
    TreePath& path_;
    Complaint& why_;
    bool good_;
    Json::ArrayIndex taken_ = 0;
};

bool Take(const Json::Value& value, TreePath& path, AsnRelation& record, Complaint& why) {
    Members members(value, path, why);
    members.Mandatory("iRelation", record.iRelation);
    members.Mandatory("iDepend", record.iDepend);
    members.Mandatory("aResDN", record.aResDN);
    return members.Finish();
}

// A list of the runtime: names, relations.
template <class List>
bool Take(const Json::Value& value, TreePath& path, List& list, Complaint& why) {
    if (!value.isArray()) {
        return Refuse(path, "is no array", why);
    }
    for (Json::ArrayIndex i = 0; i < value.size(); ++i) {
        const auto step = path.Into(std::size_t{i});
        if (!Take(value[i], path, list.Append(), why)) {
            return false;
        }
    }
    return true;
}

std::string JsonOf(const AsnInt& field) {
    return std::to_string(static_cast<std::int64_t>(field));
}
std::string JsonOf(const AsnOcts& field) {
    return JsonOfOctets(field.view());
}
std::string JsonOf(const AsnRelation& record);

template <class List>
std::string JsonOf(const List& list) {
    std::string text;
    for (const auto& element : list) {
        text += (text.empty() ? "" : ", ") + JsonOf(element);
    }
    return '[' + text + ']';
}

std::string JsonOf(const AsnRelation& record) {
    return "{\"iRelation\": " + JsonOf(record.iRelation) +
           ", \"iDepend\": " + JsonOf(record.iDepend) + ", \"aResDN\": " + JsonOf(record.aResDN) +
           '}';
}

template <class Field>
std::string OptionalMember(const char* name, const AsnOptional<Field>& field) {
    return field ? std::string(", \"") + name + "\": " + JsonOf(*field) : std::string();
}

}  // namespace

std::optional<std::string> OctetsOfJson(const Json::Value& value) {
    if (value.isString()) {
        return value.asString();
    }
    if (value.isObject() && value.size() == 1 && value.isMember("$bytes") &&
        value["$bytes"].isString()) {
        return app::OctetsOfHex(value["$bytes"].asString());
    }
    return std::nullopt;
}

std::string JsonOfOctets(std::string_view octets) {
    return app::InvalidUtf8At(octets) == std::string_view::npos
               ? app::JsonQuoted(octets)
               : "{\"$bytes\": \"" + app::HexText(octets) + "\"}";
}

bool ParseResource(const Json::Value& value, TreePath& path, AsnDistinguishedResource& record,
                   Complaint& why) {
    Members members(value, path, why);
    members.Mandatory("resDN", record.resDN);
    members.Optional("label", record.label);
    members.Optional("maintype", record.maintype);
    members.Optional("subtype", record.subtype);
    members.Optional("iResNumber", record.iResNumber);
    members.Optional("wholeLabel", record.wholeLabel);
    members.Optional("aResRelation", record.aResRelation);
    return members.Finish();
}

std::string JsonOfResource(const AsnDistinguishedResource& record) {
    return "{\"resDN\": " + JsonOf(record.resDN) + OptionalMember("label", record.label) +
           OptionalMember("maintype", record.maintype) + OptionalMember("subtype", record.subtype) +
           OptionalMember("iResNumber", record.iResNumber) +
           OptionalMember("wholeLabel", record.wholeLabel) +
           OptionalMember("aResRelation", record.aResRelation) + '}';
}

}  // namespace kelpctl
