#include <libpq-fe.h>

#include <charconv>

#include "sql/contestants.h"
#include "sql/rows.h"
#include "support/check.h"

namespace bench {

namespace {

constexpr Oid kBigint = 20;
constexpr Oid kDouble = 701;

class Postgres : public Contestant {
  public:
    explicit Postgres(const std::string& url) : m_connection(PQconnectdb(url.c_str())) {
        Check(PQstatus(m_connection) == CONNECTION_OK);
        Run(kCreate);
        Take(PQprepare(m_connection, "insert", kInsert, 0, nullptr));
    }
    ~Postgres() override { PQfinish(m_connection); }

    void Insert() override {
        Run("BEGIN");
        for (const Row& row : AllRows()) {
            char numbers[4][32];
            Spell(numbers[0], row.id);
            Spell(numbers[1], row.ne);
            Spell(numbers[2], row.load);
            Spell(numbers[3], row.rate);
            const char* values[kColumns] = {numbers[0],        numbers[1],       numbers[2],
                                            numbers[3],        row.name.c_str(), row.alias.c_str(),
                                            row.place.c_str(), row.note.c_str()};
            Take(PQexecPrepared(m_connection, "insert", kColumns, values, nullptr, nullptr, 0));
        }
        Run("COMMIT");
    }

    unsigned long Select() override {
        PGresult* result = PQexec(m_connection, kSelect);
        Check(PQresultStatus(result) == PGRES_TUPLES_OK);
        Variants cells;
        const int rows = PQntuples(result);
        for (int row = 0; row < rows; ++row) {
            for (int i = 0; i < kColumns; ++i) {
                const char* text = PQgetvalue(result, row, i);
                const int length = PQgetlength(result, row, i);
                switch (PQftype(result, i)) {
                    case kBigint:
                        cells.emplace_back(Read<long>(text, length));
                        break;
                    case kDouble:
                        cells.emplace_back(Read<double>(text, length));
                        break;
                    default:
                        cells.emplace_back(std::in_place_type<std::string>, text,
                                           static_cast<std::size_t>(length));
                }
            }
        }
        PQclear(result);
        return DigestOf(cells);
    }

    void Empty() override { Run("TRUNCATE port"); }

  private:
    static void Check(bool holds) { Require(holds, "libpq", "a call failed"); }
    static void Take(PGresult* result) {
        Check(PQresultStatus(result) == PGRES_COMMAND_OK);
        PQclear(result);
    }
    void Run(const char* sql) { Take(PQexec(m_connection, sql)); }
    template <typename T>
    static void Spell(char (&text)[32], T number) {
        *std::to_chars(text, text + sizeof text, number).ptr = '\0';
    }
    template <typename T>
    static T Read(const char* text, int length) {
        T number{};
        std::from_chars(text, text + length, number);
        return number;
    }

    PGconn* m_connection;
};

}  // namespace

std::unique_ptr<Contestant> MakePostgres(const std::string& url) {
    return std::make_unique<Postgres>(url);
}

}  // namespace bench
