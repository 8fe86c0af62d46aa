#include "dao/postgres_driver.h"
#include "dao/sql_text.h"

namespace kelp::db {

namespace {

struct Mapping {
    std::string_view begin;  // of the state: all of it, or its class
    int code;
};

// The first that fits counts.
constexpr Mapping kMappings[] = {
    {"08P01", dao::DAO_ERR_ARGUMENT},  // as a rule: a wrong number of parameters
    {"08", dao::DAO_ERR_CONNECTION_LOST},
    {"22", dao::DAO_ERR_DATA},
    {"23", dao::DAO_ERR_CONSTRAINT},
    {"25006", dao::DAO_ERR_READ_ONLY},
    {"25", dao::DAO_ERR_STATE},
    {"26", dao::DAO_ERR_STATE},
    {"28", dao::DAO_ERR_LOGIN},
    {"3D", dao::DAO_ERR_CONNECT},
    {"40", dao::DAO_ERR_CONFLICT},
    {"42501", dao::DAO_ERR_PERMISSION},
    {"42804", dao::DAO_ERR_DATA},  // a value of another type than the column's
    {"42", dao::DAO_ERR_SYNTAX},
    {"3F", dao::DAO_ERR_SYNTAX},
    {"44", dao::DAO_ERR_CONSTRAINT},
    {"53100", dao::DAO_ERR_FULL},
    {"53200", dao::DAO_ERR_NO_MEMORY},
    {"53300", dao::DAO_ERR_TOO_MANY},
    {"55P03", dao::DAO_ERR_LOCKED},
    {"57014", dao::DAO_ERR_TIMEOUT},
    {"57P03", dao::DAO_ERR_CONNECT},  // it is just starting, or stopping
    {"57P", dao::DAO_ERR_CONNECTION_LOST},
    {"58", dao::DAO_ERR_IO},
    {"XX001", dao::DAO_ERR_IO},
    {"XX002", dao::DAO_ERR_IO},
};

constexpr std::size_t kStateLength = 5;

bool IsState(std::string_view text) {
    if (text.size() != kStateLength) {
        return false;
    }
    for (const char c : text) {
        if (!((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z'))) {
            return false;
        }
    }
    return true;
}

// Where the "SEVERITY:  STATE: " of a verbose message has its state, or npos. The severity may
// be in any language.
std::size_t StateAt(std::string_view message) {
    for (std::size_t at = message.find(":  "); at != std::string_view::npos;
         at = message.find(":  ", at + 1)) {
        const std::string_view rest = message.substr(at + 3);
        if (rest.size() > kStateLength && rest[kStateLength] == ':' &&
            IsState(rest.substr(0, kStateLength))) {
            return at + 3;
        }
    }
    return std::string_view::npos;
}

}  // namespace

int PgErrCode(std::string_view sql_state) {
    for (const Mapping& mapping : kMappings) {
        if (sql_state.substr(0, mapping.begin.size()) == mapping.begin) {
            return mapping.code;
        }
    }
    return dao::DAO_ERR_OTHER;
}

std::string_view StateInMessage(std::string_view message) {
    const std::size_t at = StateAt(message);
    return at == std::string_view::npos ? std::string_view() : message.substr(at, kStateLength);
}

std::string PlainMessage(std::string_view message) {
    const std::size_t at = StateAt(message);
    if (at != std::string_view::npos) {
        message = message.substr(at + kStateLength + 2);
    }
    return FirstLine(message);
}

}  // namespace kelp::db
