#include "databases.h"

#include <map>

std::string CodeName(int code) {
    static const std::map<int, const char*> names = {
        {dao::DAO_OK, "DAO_OK"},
        {dao::DAO_ERR_ARGUMENT, "DAO_ERR_ARGUMENT"},
        {dao::DAO_ERR_CONNECT, "DAO_ERR_CONNECT"},
        {dao::DAO_ERR_LOGIN, "DAO_ERR_LOGIN"},
        {dao::DAO_ERR_CONNECTION_LOST, "DAO_ERR_CONNECTION_LOST"},
        {dao::DAO_ERR_SYNTAX, "DAO_ERR_SYNTAX"},
        {dao::DAO_ERR_CONSTRAINT, "DAO_ERR_CONSTRAINT"},
        {dao::DAO_ERR_LOCKED, "DAO_ERR_LOCKED"},
        {dao::DAO_ERR_TIMEOUT, "DAO_ERR_TIMEOUT"},
        {dao::DAO_ERR_FULL, "DAO_ERR_FULL"},
        {dao::DAO_ERR_IO, "DAO_ERR_IO"},
        {dao::DAO_ERR_READ_ONLY, "DAO_ERR_READ_ONLY"},
        {dao::DAO_ERR_PERMISSION, "DAO_ERR_PERMISSION"},
        {dao::DAO_ERR_DATA, "DAO_ERR_DATA"},
        {dao::DAO_ERR_NO_PROCEDURE, "DAO_ERR_NO_PROCEDURE"},
        {dao::DAO_ERR_LIMIT, "DAO_ERR_LIMIT"},
        {dao::DAO_ERR_NO_MEMORY, "DAO_ERR_NO_MEMORY"},
        {dao::DAO_ERR_POOL_TIMEOUT, "DAO_ERR_POOL_TIMEOUT"},
        {dao::DAO_ERR_STATE, "DAO_ERR_STATE"},
        {dao::DAO_ERR_CONFLICT, "DAO_ERR_CONFLICT"},
        {dao::DAO_ERR_TOO_MANY, "DAO_ERR_TOO_MANY"},
        {dao::DAO_ERR_NO_DATABASE, "DAO_ERR_NO_DATABASE"},
        {dao::DAO_ERR_OTHER, "DAO_ERR_OTHER"},
    };
    const auto found = names.find(code);
    return found == names.end() ? std::to_string(code) : found->second;
}

void dao::PrintTo(const CExecStatus& status, std::ostream* out) {
    *out << CodeName(status.GetErrCode()) << ": " << status.GetErrText() << " ("
         << status.GetSqlState() << ", " << status.GetNativeCode() << ")";
}

PostgresServer& Postgres() {
    static PostgresServer server;
    if (!server.Running() && !server.Start()) {
        throw std::runtime_error("PostgreSQL does not start: " + server.Log());
    }
    return server;
}

std::string NewPostgresDatabase() {
    static int last = 0;
    PostgresServer& server = Postgres();
    const std::string name = "test" + std::to_string(++last);
    dao::CSqlSession admin;
    EXPECT_THAT(admin.Open(server.Url("postgres")), IsFine());
    EXPECT_THAT(admin.Exec("CREATE DATABASE " + name + " STRATEGY FILE_COPY"), IsFine());
    return server.Url(name);
}

void OnBothDatabases::SetUp() {
    m_url = IsSqlite() ? "sqlite://" + m_folder.Path("test.db") : NewPostgresDatabase();
    ASSERT_THAT(m_session.Open(m_url), IsFine());
}
