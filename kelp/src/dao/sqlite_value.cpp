// SQLite's integers end at 2^63-1. A larger unsigned number is kept as a block of its eight
// octets, the highest first: exact, equal to itself as a parameter, and sorted behind every
// integer and in order among its like, which neither its digits as text nor the nearest
// floating number would be. Only a column that is declared UNSIGNED gives it back as a number.

#include <cmath>
#include <limits>
#include <utility>

#include "dao/sql_text.h"
#include "dao/sqlite_driver.h"

namespace kelp::db {

namespace {

using refl::Enum::DataTypeEnum;

constexpr int kWideOctets = 8;

int BindUnsigned(sqlite3_stmt* statement, int index, unsigned long long number) {
    if (number <= static_cast<unsigned long long>(std::numeric_limits<long long>::max())) {
        return sqlite3_bind_int64(statement, index, static_cast<long long>(number));
    }
    unsigned char octets[kWideOctets];
    for (int i = kWideOctets - 1; i >= 0; --i, number >>= 8) {
        octets[i] = static_cast<unsigned char>(number);
    }
    return sqlite3_bind_blob(statement, index, octets, kWideOctets, SQLITE_TRANSIENT);
}

unsigned long long WideNumber(const void* block) {
    const auto* octets = static_cast<const unsigned char*>(block);
    unsigned long long number = 0;
    for (int i = 0; i < kWideOctets; ++i) {
        number = number << 8 | octets[i];
    }
    return number;
}

// The text or block at `column`; also for an empty one, for which SQLite gives null.
std::string_view Octets(const void* data, int length, std::size_t& bytes) {
    bytes += static_cast<std::size_t>(length);
    return data == nullptr
               ? std::string_view()
               : std::string_view(static_cast<const char*>(data), static_cast<std::size_t>(length));
}

bool Holds(std::string_view upper, std::string_view part) {
    return upper.find(part) != std::string_view::npos;
}

}  // namespace

int BindSqlite(sqlite3_stmt* statement, int index, const TEValue& value) {
    switch (value.GetType()) {
        case DataTypeEnum::DT_EMPTY:
            return sqlite3_bind_null(statement, index);
        case DataTypeEnum::DT_SHORT:
        case DataTypeEnum::DT_INT:
        case DataTypeEnum::DT_LONG:
        case DataTypeEnum::DT_LONG_LONG:
            return sqlite3_bind_int64(statement, index, value.As_long_long());
        case DataTypeEnum::DT_UNSIGNED_CHAR:
        case DataTypeEnum::DT_UNSIGNED_SHORT:
        case DataTypeEnum::DT_UNSIGNED_INT:
        case DataTypeEnum::DT_UNSIGNED_LONG:
            return BindUnsigned(statement, index, value.As_unsigned_long_long());
        case DataTypeEnum::DT_FLOAT:
        case DataTypeEnum::DT_DOUBLE: {
            const double number = value.As_double();
            return std::isnan(number) ? SQLITE_MISMATCH
                                      : sqlite3_bind_double(statement, index, number);
        }
        case DataTypeEnum::DT_CHAR:
        case DataTypeEnum::DT_TEXT: {
            const std::string_view text = value.Bytes();
            return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                                       SQLITE_UTF8);
        }
        case DataTypeEnum::DT_BINARY: {
            const std::string_view block = value.Bytes();
            return block.empty() ? sqlite3_bind_zeroblob(statement, index, 0)
                                 : sqlite3_bind_blob64(statement, index, block.data(), block.size(),
                                                       SQLITE_STATIC);
        }
    }
    return SQLITE_MISMATCH;
}

SqliteColumn DeclaredType(const char* declaration) {
    SqliteColumn column;
    if (declaration == nullptr) {
        return column;
    }
    std::string upper(declaration);
    for (char& c : upper) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    column.is_unsigned = Holds(upper, "UNSIGNED");
    const DataTypeEnum whole =
        column.is_unsigned ? DataTypeEnum::DT_UNSIGNED_LONG : DataTypeEnum::DT_LONG_LONG;
    const std::pair<std::string_view, DataTypeEnum> kinds[] = {
        // In the order in which SQLite decides a declared type's affinity.
        {"INT", whole},
        {"BOOL", whole},
        {"CHAR", DataTypeEnum::DT_TEXT},
        {"CLOB", DataTypeEnum::DT_TEXT},
        {"TEXT", DataTypeEnum::DT_TEXT},
        {"BLOB", DataTypeEnum::DT_BINARY},
        {"BYTEA", DataTypeEnum::DT_BINARY},
        {"REAL", DataTypeEnum::DT_DOUBLE},
        {"FLOA", DataTypeEnum::DT_DOUBLE},
        {"DOUB", DataTypeEnum::DT_DOUBLE},
        {"NUMERIC", DataTypeEnum::DT_TEXT},
        {"DECIMAL", DataTypeEnum::DT_TEXT},
    };
    for (const auto& [part, type] : kinds) {
        if (Holds(upper, part)) {
            column.type = type;
            break;
        }
    }
    return column;
}

void ReadSqlite(sqlite3_stmt* statement, int column, bool is_unsigned, TEValue& cell,
                std::size_t& bytes) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: {
            const long long number = sqlite3_column_int64(statement, column);
            cell = is_unsigned && number >= 0 ? TEValue(static_cast<unsigned long long>(number))
                                              : TEValue(number);
            break;
        }
        case SQLITE_FLOAT:
            cell = TEValue(sqlite3_column_double(statement, column));
            break;
        case SQLITE_TEXT: {
            const void* text = sqlite3_column_text(statement, column);
            cell = TEValue(Octets(text, sqlite3_column_bytes(statement, column), bytes));
            break;
        }
        case SQLITE_BLOB: {
            const void* block = sqlite3_column_blob(statement, column);
            const int length = sqlite3_column_bytes(statement, column);
            if (is_unsigned && length == kWideOctets) {
                cell = TEValue(WideNumber(block));
            } else {
                const std::string_view octets = Octets(block, length, bytes);
                cell = TEValue(refl::CBinary(octets.data(), octets.size()));
            }
            break;
        }
        default:
            cell.Clear();
    }
}

}  // namespace kelp::db
