// kelpctl/paraset/resource_json.h - a resource record as JSON:
//
//     {"resDN": "NE=7", "label": "seven", "maintype": 3, "aResRelation":
//         [{"iRelation": 1, "iDepend": 0, "aResDN": ["NE=8"]}]}
//
// The members are the record's fields; optional ones may be missing. Texts that are no
// UTF-8 are {"$bytes": "ff00"}. Integers have 64 bits.
//
// Thread rule: thread-compatible.
#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

#include "frameutil/records.h"
#include "kelpctl/paraset/tree_path.h"

namespace kelpctl {

/// The octets of a text or of {"$bytes": "..."}; nothing when `value` is neither.
std::optional<std::string> OctetsOfJson(const Json::Value& value);
/// The JSON for octets: a text where they are UTF-8.
std::string JsonOfOctets(std::string_view octets);

/// Fills `record`, which is empty, from `value`, which stands at `path`.
bool ParseResource(const Json::Value& value, TreePath& path, AsnDistinguishedResource& record,
                   Complaint& why);

/// The record on one line.
std::string JsonOfResource(const AsnDistinguishedResource& record);

}  // namespace kelpctl
