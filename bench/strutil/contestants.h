// Who reads and builds identifiers, and joins and splits lists. Each starts from texts and
// ends with the caller's own strings; what could be kept from one time to the next is not,
// by anybody, as a server handles one name at a time.
#pragma once

#include <ldap.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "frameutil/strutil.h"
#include "support/check.h"

namespace bench {

using Pairs = std::vector<std::pair<std::string, std::string>>;
using Items = std::vector<std::string>;

struct Ours {
    static constexpr const char* kName = "ours";

    /// The values of two keys.
    static void Parse(const std::string& text, const char* first, const char* second,
                      std::string& one, std::string& other) {
        FrameUtil::StrUIDParser parser;
        Require(parser.Parse(text.c_str()) && parser.GetValue(one, first, 0) &&
                    parser.GetValue(other, second, 0),
                kName, "the values are not found");
    }

    static std::string Build(const Pairs& pairs) {
        FrameUtil::StrUIDFactory factory;
        for (const auto& [key, value] : pairs) {
            factory.Append(key.c_str(), value.c_str());
        }
        return factory.GetStr();
    }

    static std::string Join(const Items& items) {
        FrameUtil::StrLinker linker('|');
        for (const std::string& item : items) {
            linker << item.c_str();
        }
        return linker();
    }
    template <class Visit>
    static void Split(const std::string& text, Visit visit) {
        FrameUtil::StrSpliter splitter(text.c_str(), '|');
        std::string item;
        while (splitter.HasNext()) {
            splitter >> item;
            visit(item);
        }
    }
};

/// The LDAP library's distinguished names.
struct Ldap {
    static constexpr const char* kName = "ldap";

    static void Parse(const std::string& text, const char* first, const char* second,
                      std::string& one, std::string& other) {
        LDAPDN name = nullptr;
        Require(ldap_str2dn(text.c_str(), &name, LDAP_DN_FORMAT_LDAPV3) == LDAP_SUCCESS, kName,
                "the text does not parse");
        Require(Find(name, first, one) && Find(name, second, other), kName,
                "the values are not found");
        ldap_dnfree(name);
    }

  private:
    static bool Find(LDAPDN name, const char* key, std::string& value) {
        const std::size_t length = std::strlen(key);
        for (LDAPRDN* part = name; *part != nullptr; ++part) {
            const LDAPAVA& pair = *(*part)[0];
            if (pair.la_attr.bv_len == length &&
                std::memcmp(pair.la_attr.bv_val, key, length) == 0) {
                value.assign(pair.la_value.bv_val, pair.la_value.bv_len);
                return true;
            }
        }
        return false;
    }
};

/// The standard library's streams.
struct Streams {
    static constexpr const char* kName = "streams";

    static std::string Build(const Pairs& pairs) {
        std::ostringstream out;
        bool first = true;
        for (const auto& [key, value] : pairs) {
            if (!first) {
                out << ',';
            }
            first = false;
            out << key << '=';
            for (const char c : value) {
                switch (c) {
                    case ',':
                        out << "\\c";
                        break;
                    case '=':
                        out << "\\e";
                        break;
                    case '\\':
                        out << "\\\\";
                        break;
                    default:
                        out << c;
                }
            }
        }
        return std::move(out).str();
    }

    // Items without separators: std::getline knows no escape.
    static std::string Join(const Items& items) {
        std::stringstream out;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (i != 0) {
                out << '|';
            }
            out << items[i];
        }
        return std::move(out).str();
    }
    template <class Visit>
    static void Split(const std::string& text, Visit visit) {
        std::stringstream in(text);
        std::string item;
        while (std::getline(in, item, '|')) {
            visit(item);
        }
    }
};

/// What touching the characters costs: a copy.
struct Null {
    static constexpr const char* kName = "null";

    static std::string Copy(const std::string& text) { return text; }
};

}  // namespace bench
