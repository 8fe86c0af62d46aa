// The rows that every contestant writes and reads.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace bench {

inline constexpr int kRows = 100'000;
inline constexpr int kColumns = 8;
inline constexpr const char* kCreate =
    "CREATE TABLE port (id bigint, ne bigint, load double precision, rate double precision, "
    "name text, alias text, place text, note text)";
inline constexpr const char* kInsert = "INSERT INTO port VALUES ($1, $2, $3, $4, $5, $6, $7, $8)";
inline constexpr const char* kSelect = "SELECT * FROM port";
inline constexpr const char* kEmpty = "DELETE FROM port";

struct Row {
    long id;
    long ne;
    double load;
    double rate;
    std::string name;
    std::string alias;
    std::string place;
    std::string note;
};

// Row `i` of all: texts of 6 to 40 octets, doubles with three decimals.
inline Row MakeRow(int i) {
    const std::string number = std::to_string(100000 + i);
    return {i,
            i % 977 * 1'000'003L,
            i % 1000 / 1000.0,
            i * 1.125,
            number,
            "GigabitEthernet0/" + number,
            "rack " + number.substr(3) + ", row 2F",
            "planned maintenance, ask shift " + number};
}

inline const std::vector<Row>& AllRows() {
    static const std::vector<Row> rows = [] {
        std::vector<Row> made;
        for (int i = 0; i < kRows; ++i) {
            made.push_back(MakeRow(i));
        }
        return made;
    }();
    return rows;
}

// What a C programmer would read a result into.
using Variant = std::variant<long, double, std::string>;
using Variants = std::vector<Variant>;

// What all cells amount to: contestants must agree, and a reader must look at each.
class Digest {
  public:
    void Add(long number) { Mix(static_cast<unsigned long>(number)); }
    void Add(double number) { Mix(static_cast<unsigned long>(number * 1000)); }
    void Add(std::string_view text) {
        Mix(text.size());
        Mix(static_cast<unsigned char>(text.front()));
        Mix(static_cast<unsigned char>(text.back()));
    }
    unsigned long Value() const { return m_value; }

  private:
    void Mix(unsigned long more) { m_value = (m_value ^ more) * 1099511628211UL; }
    unsigned long m_value = 14695981039346656037UL;
};

inline unsigned long DigestOf(const Variants& cells) {
    Digest digest;
    for (const Variant& cell : cells) {
        std::visit([&digest](const auto& value) { digest.Add(value); }, cell);
    }
    return digest.Value();
}

inline unsigned long ExpectedDigest() {
    Digest digest;
    for (const Row& row : AllRows()) {
        digest.Add(row.id);
        digest.Add(row.ne);
        digest.Add(row.load);
        digest.Add(row.rate);
        for (const std::string* text : {&row.name, &row.alias, &row.place, &row.note}) {
            digest.Add(std::string_view(*text));
        }
    }
    return digest.Value();
}

}  // namespace bench
