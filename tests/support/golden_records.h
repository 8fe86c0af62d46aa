// The golden records: common records of every shape, whose encodings all tests of the
// wire format sweep over, and that independent decoders read value by value.
//
//     for (const GoldenRecord& golden : GoldenRecords()) {
//         SCOPED_TRACE(golden.name);
//         EXPECT_EQ(Decode(golden.octets), ...);
//     }
//
// Thread rule: thread-safe.
#pragma once

#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frameutil/records.h"

namespace support {

struct GoldenRecord {
    std::string name;
    std::string type;  // its name in docs/frameutil.asn1
    std::shared_ptr<const AsnType> value;
    std::string octets;  // what our runtime writes
};

inline std::string EncodingOf(const AsnType& value) {
    AsnBuffer out;
    value.BEnc(out);
    return {reinterpret_cast<const char*>(out.data()), out.size()};
}

/// A new record or list of the module's type `type`; null when it has none so named.
inline std::unique_ptr<AsnType> MakeRecord(std::string_view type) {
    using namespace FrameUtil;
    const struct {
        std::string_view name;
        std::unique_ptr<AsnType> (*make)();
    } kTypes[] = {
        {"AsnValue", [] { return std::unique_ptr<AsnType>(new AsnValue); }},
        {"AsnSchemaItem", [] { return std::unique_ptr<AsnType>(new AsnSchemaItem); }},
        {"AsnSchemaDef", [] { return std::unique_ptr<AsnType>(new AsnSchemaDef); }},
        {"AsnDataRow", [] { return std::unique_ptr<AsnType>(new AsnDataRow); }},
        {"AsnTableSeqOf", [] { return std::unique_ptr<AsnType>(new AsnTableSeqOf); }},
        {"AsnTable", [] { return std::unique_ptr<AsnType>(new AsnTable); }},
        {"AsnTableList", [] { return std::unique_ptr<AsnType>(new AsnTableList); }},
        {"AsnResDNList", [] { return std::unique_ptr<AsnType>(new AsnResDNList); }},
        {"AsnRelation", [] { return std::unique_ptr<AsnType>(new AsnRelation); }},
        {"AsnDistinguishedResourceSeqOf",
         [] { return std::unique_ptr<AsnType>(new AsnDistinguishedResourceSeqOf); }},
        {"AsnDistinguishedResource",
         [] { return std::unique_ptr<AsnType>(new AsnDistinguishedResource); }},
        {"AsnCommonRequest", [] { return std::unique_ptr<AsnType>(new AsnCommonRequest); }},
        {"AsnCommonResponse", [] { return std::unique_ptr<AsnType>(new AsnCommonResponse); }},
        {"AsnCommonRequestSeqOf",
         [] { return std::unique_ptr<AsnType>(new AsnCommonRequestSeqOf); }},
        {"AsnCommonResponseSeqOf",
         [] { return std::unique_ptr<AsnType>(new AsnCommonResponseSeqOf); }},
    };
    for (const auto& known : kTypes) {
        if (known.name == type) {
            return known.make();
        }
    }
    return nullptr;
}

/// INTEGERs at every change of length and at the ends.
inline const std::vector<std::int64_t>& GoldenIntegers() {
    static const std::vector<std::int64_t> integers = [] {
        std::vector<std::int64_t> all{0, 1, -1};
        for (int octets = 1; octets < 8; ++octets) {
            const std::int64_t limit = std::int64_t{1} << (8 * octets - 1);
            all.insert(all.end(), {limit - 1, limit, -limit, -limit - 1});
        }
        all.insert(all.end(), {std::numeric_limits<std::int64_t>::max(),
                               std::numeric_limits<std::int64_t>::min()});
        return all;
    }();
    return integers;
}

/// REALs of every length of mantissa and exponent, and the special values.
inline const std::vector<double>& GoldenReals() {
    static const std::vector<double> reals = [] {
        using Limits = std::numeric_limits<double>;
        std::vector<double> all{0.0,
                                -0.0,
                                1.0,
                                -1.0,
                                0.5,
                                10.0,
                                0.1,
                                -118.625,
                                3.141592653589793,
                                1e300,
                                -1e-300,
                                Limits::max(),
                                Limits::min(),
                                Limits::denorm_min(),
                                0x0.fffffffffffffp-1022,
                                Limits::infinity(),
                                -Limits::infinity(),
                                Limits::quiet_NaN(),
                                0x1p127,
                                0x1p128,
                                0x1p-128,
                                0x1p-129};
        for (int octets = 1; octets < 7; ++octets) {
            const auto limit = static_cast<double>(std::int64_t{1} << 8 * octets);
            all.insert(all.end(), {limit - 1, limit + 1});
        }
        return all;
    }();
    return reals;
}

/// OCTET STRINGs at every change of the length's form, and with octets of every kind.
inline const std::vector<std::string>& GoldenTexts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> all{"",
                                     "a",
                                     "eth0",
                                     "M\xc3\xbcnchen",
                                     "\xff\xfe",
                                     std::string("a\0b", 3),
                                     std::string(1, '\0')};
        for (const std::size_t size : {15, 16, 127, 128, 255, 256, 65535, 65536}) {
            all.push_back(std::string(size, 'x'));
        }
        std::string octets;
        for (int octet = 0; octet < 256; ++octet) {
            octets += static_cast<char>(octet);
        }
        all.push_back(octets);
        return all;
    }();
    return texts;
}

/// A table of `rows` rows and eight columns: two integers, two doubles, four texts, some
/// cells not valued.
inline FrameUtil::AsnTable GoldenTable(std::int64_t rows) {
    constexpr const char* kNames[] = {"index", "mtu",  "rate", "load",
                                      "name",  "desc", "mac",  "note"};
    constexpr int kCodes[] = {2, 2, 9, 9, 4, 4, 4, 4};
    FrameUtil::AsnTable table;
    FrameUtil::AsnSchemaDef& schema = table.schema.Ensure();
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        FrameUtil::AsnSchemaItem& item = schema.Append();
        item.name = kNames[i];
        item.type = kCodes[i];
        if (i % 3 == 0) {
            item.desc.Emplace(std::string("the ") + kNames[i]);
        }
    }
    for (std::int64_t r = 0; r < rows; ++r) {
        FrameUtil::AsnDataRow& row = table.rows.Append();
        row.Append().iVal.Emplace(r);
        row.Append().iVal.Emplace(r * 7919 % 9000 - 100);
        row.Append().dVal.Emplace(static_cast<double>(r) / 3);
        row.Append().dVal.Emplace(static_cast<double>(r % 100) / 100);
        row.Append().sVal.Emplace("eth" + std::to_string(r));
        row.Append().sVal.Emplace("a port with number " + std::to_string(r) + " in its text");
        row.Append().sVal.Emplace(std::string("\x02\0\0\0\0", 5) + static_cast<char>(r));
        FrameUtil::AsnValue& note = row.Append();
        if (r % 4 == 1) {
            note.sVal.Emplace("");
        } else if (r % 4 == 2) {
            note.bVal.Emplace(true);
        }
    }
    return table;
}

/// A resource with the optional fields whose bits are set in `present` (0 to 63).
inline AsnDistinguishedResource GoldenResource(unsigned present) {
    AsnDistinguishedResource resource;
    resource.resDN = "NE=7340033,PORT=" + std::to_string(present);
    if ((present & 1) != 0) {
        resource.label.Emplace("tokyo-1");
    }
    if ((present & 2) != 0) {
        resource.maintype.Emplace(70'000);
    }
    if ((present & 4) != 0) {
        resource.subtype.Emplace(-3);
    }
    if ((present & 8) != 0) {
        resource.iResNumber.Emplace(std::int64_t{1} << 40);
    }
    if ((present & 16) != 0) {
        resource.wholeLabel.Emplace("asia/japan/tokyo-1");
    }
    if ((present & 32) != 0) {
        AsnDistinguishedResourceSeqOf& relations = resource.aResRelation.Ensure();
        relations.Append().iRelation = 1;
        AsnRelation& relation = relations.Append();
        relation.iRelation = -2;
        relation.iDepend = 300;
        relation.aResDN.Append() = "NE=1";
        relation.aResDN.Append() = "";
    }
    return resource;
}

namespace golden {

class Collector {
  public:
    template <class T>
    void Add(std::string name, std::string_view type, T value) {
        auto shared = std::make_shared<const T>(std::move(value));
        std::string octets = EncodingOf(*shared);
        all_.push_back({std::move(name), std::string(type), std::move(shared), std::move(octets)});
    }
    std::vector<GoldenRecord> Take() { return std::move(all_); }

  private:
    std::vector<GoldenRecord> all_;
};

inline void AddValues(Collector& to) {
    using FrameUtil::AsnValue;
    const auto add = [&to](const std::string& name, auto fill) {
        AsnValue value;
        fill(value);
        to.Add("value " + name, "AsnValue", std::move(value));
    };
    add("none", [](AsnValue&) {});
    add("false", [](AsnValue& value) { value.bVal.Emplace(false); });
    add("true", [](AsnValue& value) { value.bVal.Emplace(true); });
    for (const std::int64_t integer : GoldenIntegers()) {
        add("integer " + std::to_string(integer),
            [&](AsnValue& value) { value.iVal.Emplace(integer); });
    }
    for (std::size_t i = 0; i < GoldenReals().size(); ++i) {
        add("real " + std::to_string(i),
            [&](AsnValue& value) { value.dVal.Emplace(GoldenReals()[i]); });
    }
    for (std::size_t i = 0; i < GoldenTexts().size(); ++i) {
        add("text " + std::to_string(i),
            [&](AsnValue& value) { value.sVal.Emplace(GoldenTexts()[i]); });
    }
    // More than one field means nothing to the library, but it is encoded and decoded.
    for (unsigned present = 0; present < 16; ++present) {
        add("fields " + std::to_string(present), [&](AsnValue& value) {
            if ((present & 1) != 0) {
                value.bVal.Emplace(true);
            }
            if ((present & 2) != 0) {
                value.iVal.Emplace(300);
            }
            if ((present & 4) != 0) {
                value.dVal.Emplace(0.1);
            }
            if ((present & 8) != 0) {
                value.sVal.Emplace("x");
            }
        });
    }
}

inline void AddTables(Collector& to) {
    using namespace FrameUtil;
    for (unsigned present = 0; present < 8; ++present) {
        AsnTable table;
        if ((present & 1) != 0) {
            table.name.Emplace("ports");
        }
        if ((present & 2) != 0) {
            *(table.schema = new AsnSchemaDef) = *GoldenTable(0).schema;
        }
        if ((present & 4) != 0) {
            table.rows = GoldenTable(2).rows;
        }
        to.Add("table parts " + std::to_string(present), "AsnTable", std::move(table));
    }
    for (const std::int64_t rows : {1, 3, 20}) {
        to.Add("table of " + std::to_string(rows), "AsnTable", GoldenTable(rows));
    }
    AsnTable empty_rows;
    empty_rows.schema.Ensure();
    for (int i = 0; i < 100; ++i) {
        empty_rows.rows.Append();
    }
    to.Add("table of 100 empty rows", "AsnTable", std::move(empty_rows));
}

inline void AddRequests(Collector& to) {
    using namespace FrameUtil;
    for (const std::int64_t user : GoldenIntegers()) {
        AsnCommonRequest request;
        request.userID = user;
        to.Add("request of user " + std::to_string(user), "AsnCommonRequest", std::move(request));
    }
    for (unsigned present = 0; present < 64; ++present) {
        AsnCommonRequest request;
        request.userID = 7;
        request.resID.Emplace(GoldenResource(present));
        to.Add("request for resource " + std::to_string(present), "AsnCommonRequest",
               std::move(request));
    }
    for (int tables = 0; tables < 4; ++tables) {
        AsnCommonRequest request;
        request.userID = tables - 1;
        AsnTableList& list = request.tables.Ensure();
        for (int i = 0; i < tables; ++i) {
            AsnTable& table = list.Append(GoldenTable(i));
            if (tables > 1) {
                table.name.Emplace("tab" + std::to_string(i));
            }
        }
        if (tables == 3) {
            request.resID.Emplace(GoldenResource(63));
        }
        to.Add("request with " + std::to_string(tables) + " tables", "AsnCommonRequest",
               std::move(request));
    }
    AsnCommonRequestSeqOf requests;
    requests.Append();
    requests.Append().resID.Emplace(GoldenResource(1));
    to.Add("requests", "AsnCommonRequestSeqOf", std::move(requests));
}

inline void AddResponses(Collector& to) {
    using namespace FrameUtil;
    AsnCommonResponseSeqOf responses;
    for (unsigned present = 0; present < 8; ++present) {
        AsnCommonResponse response;
        response.retCode = 0x42000030;
        if ((present & 1) != 0) {
            response.retCodeEx.Emplace(-1);
        }
        if ((present & 2) != 0) {
            response.ver.Emplace("V100R002");
        }
        if ((present & 4) != 0) {
            response.tables.Ensure().Append(GoldenTable(2));
        }
        responses.Append(response);
        to.Add("response " + std::to_string(present), "AsnCommonResponse", std::move(response));
    }
    to.Add("responses", "AsnCommonResponseSeqOf", std::move(responses));
    AsnCommonResponse large;
    large.tables.Ensure().Append(GoldenTable(300));
    to.Add("response with 300 rows", "AsnCommonResponse", std::move(large));
}

}  // namespace golden

/// All of them, made once; more than 200.
inline const std::vector<GoldenRecord>& GoldenRecords() {
    static const std::vector<GoldenRecord> records = [] {
        golden::Collector all;
        golden::AddValues(all);
        golden::AddTables(all);
        golden::AddRequests(all);
        golden::AddResponses(all);
        return all.Take();
    }();
    return records;
}

}  // namespace support
