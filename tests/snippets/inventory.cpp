// [inventory]
#include <cstdio>
#include <string>

#include "kelp/dao.h"

int main() {
    dao::CSqlSession session;
    if (!session.Open("sqlite::memory:").IsOk())  // or postgresql://user@host/database
        return 1;                                 // the log says why

    session.ExecScript(
        "CREATE TABLE ne (id bigint PRIMARY KEY, name text NOT NULL);"
        "CREATE TABLE port (ne bigint REFERENCES ne(id), name text, mtu integer)");

    {
        dao::CTransaction change(session);  // rolled back unless Commit is reached
        session.Exec("INSERT INTO ne VALUES ($1, $2)", {1, "tokyo-1"});
        dao::CStatement add;
        session.Prepare("INSERT INTO port VALUES ($1, $2, $3)", add);
        for (int i = 0; i < 3; ++i) {
            if (!add.Exec({1, "eth" + std::to_string(i), 1500 + i}).IsOk())
                return 1;
        }
        if (!change.Commit().IsOk())
            return 1;
    }

    dao::CExecResult ports = session.Query("SELECT name, mtu FROM port WHERE mtu > $1", {1500});
    for (std::size_t i = 0; i < ports.GetRowCount(); ++i) {
        std::printf("%s %d\n", ports.At(i, "name").As_std_string().c_str(),
                    ports.At(i, 1).As_int());
    }

    dao::CCursorTable cursor;  // one row in memory at a time
    session.OpenCursor("SELECT count(*) AS ports FROM port", cursor);
    while (cursor.Fetch()) {
        std::printf("%ld ports\n", cursor["ports"].As_long());
    }
}
// [/inventory]
