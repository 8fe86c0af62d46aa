// Parameters go as text and the server infers their types, so that 5 fits wherever a number
// does; only blocks go in binary. Results come as text, which is exact for every type
// (extra_float_digits) and the one form that all types have.

#include <charconv>
#include <limits>

#include "dao/driver.h"
#include "dao/postgres_driver.h"

namespace kelp::db {

namespace {

using refl::Enum::DataTypeEnum;

// The object identifiers of the server's built-in types never change.
enum : Oid {
    kBool = 16,
    kBytea = 17,
    kInt8 = 20,
    kInt2 = 21,
    kInt4 = 23,
    kOid = 26,
    kFloat4 = 700,
    kFloat8 = 701,
    kNumeric = 1700,
};

template <typename T>
bool Spells(std::string_view text, T& number) {
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end;
}

template <typename T>
void ReadNumber(std::string_view text, TEValue& cell) {
    T number{};
    if (Spells(text, number)) {
        cell = TEValue(number);
    } else {
        cell = TEValue(text);
    }
}

// Including Infinity and NaN, which PostgreSQL spells as the standard library reads them.
template <typename T>
void ReadFloating(std::string_view text, TEValue& cell) {
    ReadNumber<T>(text, cell);
}

void ReadNumeric(std::string_view text, TEValue& cell) {
    long long number = 0;
    if (Spells(text, number)) {
        cell = TEValue(number);
    } else {
        ReadNumber<unsigned long long>(text, cell);
    }
}

int HexDigit(char c) {
    return c <= '9' ? c - '0' : c - 'a' + 10;
}

// "\x0aff" as the server spells it with bytea_output=hex.
void ReadBlock(std::string_view text, TEValue& cell, std::size_t& bytes) {
    std::string block;
    if (text.substr(0, 2) == "\\x") {
        block.resize((text.size() - 2) / 2);
        for (std::size_t i = 0; i < block.size(); ++i) {
            block[i] =
                static_cast<char>(HexDigit(text[2 + 2 * i]) * 16 + HexDigit(text[3 + 2 * i]));
        }
    }
    bytes += block.size();
    cell = TEValue(refl::CBinary(block.data(), block.size()));
}

constexpr int kTextFormat = 0;
constexpr int kBinaryFormat = 1;
constexpr std::size_t kNumberOctets = 40;

}  // namespace

void PgParams::AddText(std::string_view text) {
    m_values.push_back(m_texts.data() + m_texts.size());
    m_lengths.push_back(static_cast<int>(text.size()));
    m_formats.push_back(kTextFormat);
    m_texts.append(text);
    m_texts.push_back('\0');
}

dao::CExecStatus PgParams::Fill(const dao::CParams& params) {
    m_values.clear();
    m_lengths.clear();
    m_formats.clear();
    m_texts.clear();
    std::size_t octets = 0;
    for (const TEValue& value : params) {
        octets += value.Bytes().size() + kNumberOctets;
    }
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<int>::max());
    if (octets > kMost) {
        return Refusal(dao::DAO_ERR_DATA, "the parameters are larger than 2 GiB");
    }
    m_texts.reserve(octets);  // the values point into it
    for (const TEValue& value : params) {
        switch (value.GetType()) {
            case DataTypeEnum::DT_EMPTY:
                m_values.push_back(nullptr);
                m_lengths.push_back(0);
                m_formats.push_back(kTextFormat);
                break;
            case DataTypeEnum::DT_BINARY: {
                const std::string_view block = value.Bytes();
                m_values.push_back(block.empty() ? "" : block.data());
                m_lengths.push_back(static_cast<int>(block.size()));
                m_formats.push_back(kBinaryFormat);
                break;
            }
            case DataTypeEnum::DT_CHAR:
            case DataTypeEnum::DT_TEXT:
                if (value.Bytes().find('\0') != std::string_view::npos) {
                    return Refusal(dao::DAO_ERR_DATA,
                                   "the text of parameter " + std::to_string(m_values.size() + 1) +
                                       " has a zero byte, which PostgreSQL's texts cannot hold");
                }
                AddText(value.Bytes());
                break;
            case DataTypeEnum::DT_UNSIGNED_CHAR:
                AddText(std::to_string(value.As_unsigned_int()));
                break;
            case DataTypeEnum::DT_FLOAT:
                AddText(value.As_std_string());
                break;
            default: {
                char text[kNumberOctets];
                const refl::CNumeric number = value.As_CNumeric();
                const auto end =
                    number.GetKind() == refl::CNumeric::Kind::kSigned
                        ? std::to_chars(text, text + sizeof text, number.As<long long>())
                    : number.GetKind() == refl::CNumeric::Kind::kUnsigned
                        ? std::to_chars(text, text + sizeof text, number.As<unsigned long long>())
                        : std::to_chars(text, text + sizeof text, number.As<double>());
                AddText(std::string_view(text, static_cast<std::size_t>(end.ptr - text)));
            }
        }
    }
    return {};
}

refl::Enum::DataTypeEnum PgColumnType(Oid type) {
    switch (type) {
        case kBool:
        case kInt4:
            return DataTypeEnum::DT_INT;
        case kInt2:
            return DataTypeEnum::DT_SHORT;
        case kInt8:
            return DataTypeEnum::DT_LONG_LONG;
        case kOid:
            return DataTypeEnum::DT_UNSIGNED_INT;
        case kFloat4:
            return DataTypeEnum::DT_FLOAT;
        case kFloat8:
            return DataTypeEnum::DT_DOUBLE;
        case kBytea:
            return DataTypeEnum::DT_BINARY;
        default:
            return DataTypeEnum::DT_TEXT;
    }
}

void ReadPg(Oid type, std::string_view text, TEValue& cell, std::size_t& bytes) {
    switch (type) {
        case kBool:
            cell = TEValue(text == "t" ? 1 : 0);
            return;
        case kInt2:
            return ReadNumber<short>(text, cell);
        case kInt4:
            return ReadNumber<int>(text, cell);
        case kInt8:
            return ReadNumber<long long>(text, cell);
        case kOid:
            return ReadNumber<unsigned int>(text, cell);
        case kFloat4:
            return ReadFloating<float>(text, cell);
        case kFloat8:
            return ReadFloating<double>(text, cell);
        case kNumeric:
            bytes += text.size();
            return ReadNumeric(text, cell);
        case kBytea:
            return ReadBlock(text, cell, bytes);
        default:
            bytes += text.size();
            cell = TEValue(text);
    }
}

}  // namespace kelp::db
