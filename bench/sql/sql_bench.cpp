// 100,000 rows of eight columns written in one transaction by a prepared statement, and read
// into a table, through which a cursor then goes; the peers use each database's C interface and
// read into a vector of variants. SQLite runs in
// the thread, whose CPU time counts (so a file's fsync does not); with PostgreSQL the time is
// what passes, since most of it is spent in the server.

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

#include "frameutil/table.h"
#include "kelp/dao.h"
#include "sql/contestants.h"
#include "sql/rows.h"
#include "support/check.h"
#include "support/clock.h"
#include "support/postgres_server.h"
#include "support/temp_folder.h"

namespace bench {

namespace {

class Ours : public Contestant {
  public:
    explicit Ours(const std::string& url) {
        Check(m_session.Open(url));
        Check(m_session.Exec(kCreate));
        Check(m_session.Prepare(kInsert, m_insert));
        Check(m_session.Prepare(kSelect, m_select));
    }

    void Insert() override {
        dao::CTransaction all(m_session);
        for (const Row& row : AllRows()) {
            Check(m_insert.Exec(
                {row.id, row.ne, row.load, row.rate, row.name, row.alias, row.place, row.note}));
        }
        Check(all.Commit());
    }

    unsigned long Select() override {
        dao::CExecResult result = m_select.Query();
        Check(result.GetStatus());
        FrameUtil::CFrmTableObject table;
        for (const dao::CColumn& column : result.GetColumns()) {
            table.AddCol(column.name.c_str());
        }
        *table.GetTable() = result.TakeRows();
        Digest digest;
        long id = 0;
        long ne = 0;
        double load = 0;
        double rate = 0;
        std::string texts[4];
        while (table() != nullptr) {
            table >> id >> ne >> load >> rate >> texts[0] >> texts[1] >> texts[2] >> texts[3];
            digest.Add(id);
            digest.Add(ne);
            digest.Add(load);
            digest.Add(rate);
            for (const std::string& text : texts) {
                digest.Add(std::string_view(text));
            }
        }
        return digest.Value();
    }

    void Empty() override { Check(m_session.Exec(kEmpty)); }

  protected:
    static void Check(const dao::CExecStatus& status) {
        Require(status.IsOk(), "ours", status.GetErrText().c_str());
    }

  private:
    dao::CSqlSession m_session;
    dao::CStatement m_insert;
    dao::CStatement m_select;
};

double WallSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

using Clock = double (*)();

template <class Work>
void Measure(benchmark::State& state, Clock clock, Work work, Contestant* emptied) {
    for (auto _ : state) {
        const double start = clock();
        work();
        state.SetIterationTime(clock() - start);
        if (emptied != nullptr) {
            emptied->Empty();
        }
    }
    state.counters["rows"] = kRows;
}

// A contestant with a table of its own to read and one to write.
struct Entry {
    std::string name;  // "sqlite/ours"
    Clock clock;
    std::unique_ptr<Contestant> reader;
    std::unique_ptr<Contestant> writer;
};

void Register(Entry& entry) {
    entry.reader->Insert();
    Require(entry.reader->Select() == ExpectedDigest(), entry.name.c_str(), "the rows differ");
    benchmark::RegisterBenchmark(("select/" + entry.name).c_str(),
                                 [&entry](benchmark::State& state) {
                                     Measure(
                                         state, entry.clock,
                                         [&] { benchmark::DoNotOptimize(entry.reader->Select()); },
                                         nullptr);
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("insert/" + entry.name).c_str(),
                                 [&entry](benchmark::State& state) {
                                     Measure(
                                         state, entry.clock, [&] { entry.writer->Insert(); },
                                         entry.writer.get());
                                 })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

std::unique_ptr<Contestant> MakeOurs(const std::string& url) {
    return std::make_unique<Ours>(url);
}

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    const TempFolder folder;
    PostgresServer server;
    Require(server.Start(), "PostgreSQL", "it does not start");
    dao::CSqlSession admin;
    Require(admin.Open(server.Url("postgres")).IsOk(), "PostgreSQL", "it does not answer");
    int last = 0;
    const auto database = [&] {
        const std::string name = "bench" + std::to_string(++last);
        Require(admin.Exec("CREATE DATABASE " + name).IsOk(), "PostgreSQL", "no database");
        return server.Url(name);
    };
    const auto file = [&] { return folder.Path(std::to_string(++last) + ".db"); };

    std::vector<Entry> entries;
    entries.push_back({"sqlite/ours", ThreadSeconds, MakeOurs("sqlite://" + file()),
                       MakeOurs("sqlite://" + file())});
    entries.push_back({"sqlite/c", ThreadSeconds, MakeSqlite(file()), MakeSqlite(file())});
    entries.push_back({"postgresql/ours", WallSeconds, MakeOurs(database()), MakeOurs(database())});
    entries.push_back(
        {"postgresql/c", WallSeconds, MakePostgres(database()), MakePostgres(database())});
    for (Entry& entry : entries) {
        Register(entry);
    }
    benchmark::RunSpecifiedBenchmarks();
}
