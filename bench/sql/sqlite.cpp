#include <sqlite3.h>

#include "sql/contestants.h"
#include "sql/rows.h"
#include "support/check.h"

namespace bench {

namespace {

class Sqlite : public Contestant {
  public:
    explicit Sqlite(const std::string& path) {
        // The same rules as ours has, without the mutex that a thread's own connection needs not.
        Check(sqlite3_open_v2(path.c_str(), &m_db,
                              SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                              nullptr) == SQLITE_OK);
        Run("PRAGMA synchronous=FULL");
        Run("PRAGMA foreign_keys=ON");
        Run(kCreate);
        m_insert = Prepare(kInsert);
        m_select = Prepare(kSelect);
    }
    ~Sqlite() override {
        sqlite3_finalize(m_insert);
        sqlite3_finalize(m_select);
        sqlite3_close(m_db);
    }

    void Insert() override {
        Run("BEGIN IMMEDIATE");
        for (const Row& row : AllRows()) {
            sqlite3_bind_int64(m_insert, 1, row.id);
            sqlite3_bind_int64(m_insert, 2, row.ne);
            sqlite3_bind_double(m_insert, 3, row.load);
            sqlite3_bind_double(m_insert, 4, row.rate);
            BindText(5, row.name);
            BindText(6, row.alias);
            BindText(7, row.place);
            BindText(8, row.note);
            Check(sqlite3_step(m_insert) == SQLITE_DONE);
            sqlite3_reset(m_insert);
        }
        Run("COMMIT");
    }

    unsigned long Select() override {
        Variants cells;
        while (sqlite3_step(m_select) == SQLITE_ROW) {
            for (int i = 0; i < kColumns; ++i) {
                switch (sqlite3_column_type(m_select, i)) {
                    case SQLITE_INTEGER:
                        cells.emplace_back(static_cast<long>(sqlite3_column_int64(m_select, i)));
                        break;
                    case SQLITE_FLOAT:
                        cells.emplace_back(sqlite3_column_double(m_select, i));
                        break;
                    default: {
                        const void* text = sqlite3_column_text(m_select, i);
                        cells.emplace_back(
                            std::in_place_type<std::string>, static_cast<const char*>(text),
                            static_cast<std::size_t>(sqlite3_column_bytes(m_select, i)));
                    }
                }
            }
        }
        sqlite3_reset(m_select);
        return DigestOf(cells);
    }

    void Empty() override { Run(kEmpty); }

  private:
    static void Check(bool holds) { Require(holds, "sqlite3", "a call failed"); }
    void Run(const char* sql) {
        Check(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
    }
    sqlite3_stmt* Prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        Check(sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) ==
              SQLITE_OK);
        return statement;
    }
    void BindText(int index, const std::string& text) {
        sqlite3_bind_text(m_insert, index, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
    }

    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_insert = nullptr;
    sqlite3_stmt* m_select = nullptr;
};

}  // namespace

std::unique_ptr<Contestant> MakeSqlite(const std::string& path) {
    return std::make_unique<Sqlite>(path);
}

}  // namespace bench
