// Values go in and come out as they were.

#include <cmath>
#include <limits>

#include "databases.h"

namespace {

using refl::Enum::DataTypeEnum;

std::string Bytes(std::string_view text) {
    return std::string(text);
}

class Values : public OnBothDatabases {
  protected:
    // Stores `value` in a column of that type and reads it back.
    TEValue RoundTrip(const std::string& type, const TEValue& value) {
        EXPECT_THAT(Session().Exec("DROP TABLE IF EXISTS cell"), IsFine());
        EXPECT_THAT(Session().Exec("CREATE TABLE cell (v " + type + ")"), IsFine());
        EXPECT_THAT(Session().Exec("INSERT INTO cell VALUES ($1)", {value}), IsFine());
        // It is found by itself too.
        EXPECT_THAT(Session().Exec("UPDATE cell SET v = $1 WHERE v = $1", {value}), IsFine());
        const dao::CExecResult read = Session().Query("SELECT v FROM cell");
        EXPECT_EQ(read.GetRowCount(), 1U);
        return read.At(0, 0);
    }
    std::string UnsignedType() const { return OneOf("bigint unsigned", "numeric(20)"); }
};
INSTANTIATE_ON_BOTH(Values);

TEST_P(Values, WholeNumbersToTheEndsOf64Bits) {
    constexpr long long kLeast = std::numeric_limits<long long>::min();
    constexpr long long kMost = std::numeric_limits<long long>::max();
    for (const long long number :
         {0LL, 1LL, -1LL, (1LL << 31) - 1, 1LL << 31, -(1LL << 31) - 1, (1LL << 53) + 1,
          -(1LL << 53) - 1, 4294967295LL, kMost - 1, kMost, kLeast, kLeast + 1}) {
        SCOPED_TRACE(number);
        const TEValue read = RoundTrip("bigint", number);
        EXPECT_EQ(read.GetType(), DataTypeEnum::DT_LONG_LONG);
        EXPECT_EQ(read.As_long_long(), number);
    }
}

TEST_P(Values, UnsignedNumbersToTheEndsOf64Bits) {
    constexpr unsigned long long kHalf = 1ULL << 63;
    for (const unsigned long long number :
         {0ULL, 1ULL, kHalf - 1, kHalf, kHalf + 1, (1ULL << 53) + 1, ~0ULL - 1, ~0ULL}) {
        SCOPED_TRACE(number);
        const TEValue read = RoundTrip(UnsignedType(), number);
        EXPECT_EQ(read.As_unsigned_long_long(), number);
        if (number >= kHalf) {
            EXPECT_EQ(read.GetType(), DataTypeEnum::DT_UNSIGNED_LONG);
        }
    }
}

TEST_P(Values, UnsignedNumbersAreInOrder) {
    ASSERT_THAT(Session().Exec("CREATE TABLE n (v " + UnsignedType() + ")"), IsFine());
    for (const unsigned long long number : {~0ULL, 5ULL, 1ULL << 63, (1ULL << 63) - 1}) {
        ASSERT_THAT(Session().Exec("INSERT INTO n VALUES ($1)", {number}), IsFine());
    }
    const dao::CExecResult sorted = Session().Query("SELECT v FROM n ORDER BY v");
    std::vector<unsigned long long> read;
    for (const dao::CRow& row : sorted.GetRows()) {
        read.push_back(row[0].As_unsigned_long_long());
    }
    EXPECT_THAT(read, testing::ElementsAre(5ULL, (1ULL << 63) - 1, 1ULL << 63, ~0ULL));
    EXPECT_EQ(Value("SELECT count(*) FROM n WHERE v > $1", {TEValue((1ULL << 63) - 1)}).As_int(),
              2);
}

TEST_P(Values, EveryKindOfNumber) {
    EXPECT_EQ(RoundTrip("bigint", TEValue(static_cast<short>(-5))).As_int(), -5);
    EXPECT_EQ(RoundTrip("bigint", TEValue(static_cast<unsigned char>(200))).As_int(), 200);
    EXPECT_EQ(RoundTrip("bigint", TEValue(static_cast<unsigned short>(65535))).As_int(), 65535);
    EXPECT_EQ(RoundTrip("bigint", TEValue(4294967295U)).As_long(), 4294967295L);
    EXPECT_EQ(RoundTrip("text", TEValue('x')).As_std_string(), "x");
}

TEST_P(Values, FloatingNumbersBitForBit) {
    using Limits = std::numeric_limits<double>;
    for (const double number :
         {0.0, 0.1, -1.0 / 3, 1e300, 5e-324, Limits::max(), Limits::min(), Limits::lowest(),
          12345678901234567.0, Limits::infinity(), -Limits::infinity()}) {
        SCOPED_TRACE(number);
        const TEValue read = RoundTrip("double precision", number);
        EXPECT_EQ(read.GetType(), DataTypeEnum::DT_DOUBLE);
        EXPECT_EQ(read.As_double(), number);
    }
    for (const float number : {0.1F, 16777217.0F, 3.4e38F, 1e-45F}) {
        SCOPED_TRACE(number);
        EXPECT_EQ(RoundTrip("double precision", number).As_float(), number);
        EXPECT_EQ(RoundTrip("real", number).As_float(), number);
    }
}

// NaN is a number to PostgreSQL; SQLite would store NULL for it, which is not what was said.
TEST_P(Values, NotANumber) {
    ASSERT_THAT(Session().Exec("CREATE TABLE n (v double precision)"), IsFine());
    const dao::CExecStatus status = Session().Exec("INSERT INTO n VALUES ($1)", {std::nan("")});
    EXPECT_THAT(status, Gives(IsSqlite() ? dao::DAO_ERR_DATA : dao::DAO_OK));
    if (!IsSqlite()) {
        EXPECT_TRUE(std::isnan(Value("SELECT v FROM n").As_double()));
    }
}

TEST_P(Values, Texts) {
    const std::string texts[] = {"",
                                 " ",
                                 "plain",
                                 "Zoë Ångström",
                                 "東京 2F",
                                 "\xF0\x9F\x9A\x80",
                                 "it's \"quoted\" \\ $1 ?",
                                 "tab\tline\nreturn\r\x01",
                                 std::string(22, 'a'),
                                 std::string(23, 'b'),
                                 std::string(100000, 'c'),
                                 "NULL",
                                 "17"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        const TEValue read = RoundTrip("text", text);
        EXPECT_EQ(read.GetType(), DataTypeEnum::DT_TEXT);
        EXPECT_EQ(read.As_std_string(), text);
    }
}

// SQLite keeps a zero byte in a text; PostgreSQL has none, and must not be given half a text.
TEST_P(Values, ATextWithAZeroByte) {
    const std::string text("a\0b", 3);
    if (IsSqlite()) {
        EXPECT_EQ(RoundTrip("text", text).As_std_string(), text);
        return;
    }
    const dao::CExecStatus status = Session().Exec("SELECT CAST($1 AS text)", {text});
    EXPECT_THAT(status, Gives(dao::DAO_ERR_DATA));
    EXPECT_EQ(status.GetErrText(),
              "the text of parameter 1 has a zero byte, which PostgreSQL's texts cannot hold");
    EXPECT_THAT(Session().Exec("SELECT CAST($1 AS text)", {"caf\xE9"}), Gives(dao::DAO_ERR_DATA));
}

TEST_P(Values, Blocks) {
    std::string all;
    for (int octet = 0; octet < 256; ++octet) {
        all += static_cast<char>(octet);
    }
    std::string large;
    while (large.size() < 300000) {
        large += all;
    }
    for (const std::string& block : {std::string(), std::string(1, '\0'), all, large,
                                     Bytes("\\x0a"), std::string(8, '\xFF')}) {
        SCOPED_TRACE(block.size());
        const TEValue read =
            RoundTrip(OneOf("blob", "bytea"), refl::CBinary(block.data(), block.size()));
        EXPECT_EQ(read.GetType(), DataTypeEnum::DT_BINARY);
        EXPECT_EQ(Bytes(read.Bytes()), block);
    }
}

TEST_P(Values, NullInEveryColumn) {
    ASSERT_THAT(Session().Exec("CREATE TABLE n (a bigint, b text, c double precision, d " +
                               OneOf("blob", "bytea") + ")"),
                IsFine());
    ASSERT_THAT(Session().Exec("INSERT INTO n VALUES ($1, $2, $3, $4)",
                               {TEValue(), TEValue(), TEValue(), TEValue()}),
                IsFine());
    const dao::CExecResult read = Session().Query("SELECT * FROM n WHERE a IS NULL");
    ASSERT_EQ(read.GetRowCount(), 1U);
    for (std::size_t column = 0; column < 4; ++column) {
        EXPECT_TRUE(read.At(0, column).IsNull()) << column;
    }
}

// An empty text is not NULL, and an empty block is neither.
TEST_P(Values, EmptyIsNotNull) {
    ASSERT_THAT(Session().Exec("CREATE TABLE n (b text, d " + OneOf("blob", "bytea") + ")"),
                IsFine());
    ASSERT_THAT(Session().Exec("INSERT INTO n VALUES ($1, $2)", {"", refl::CBinary()}), IsFine());
    EXPECT_EQ(Value("SELECT count(*) FROM n WHERE b IS NOT NULL AND d IS NOT NULL").As_int(), 1);
    EXPECT_EQ(Value("SELECT b FROM n").GetType(), DataTypeEnum::DT_TEXT);
    EXPECT_EQ(Value("SELECT d FROM n").GetType(), DataTypeEnum::DT_BINARY);
}

TEST_P(Values, AValueThatTheColumnCannotTake) {
    ASSERT_THAT(
        Session().Exec(OneOf("CREATE TABLE n (v integer) STRICT", "CREATE TABLE n (v integer)")),
        IsFine());
    EXPECT_THAT(Session().Exec("INSERT INTO n VALUES ($1)", {"not a number"}),
                Gives(dao::DAO_ERR_DATA));
}

// What only PostgreSQL has.
TEST(PostgresValues, TypesOfItsOwn) {
    dao::CSqlSession session;
    ASSERT_THAT(session.Open(NewPostgresDatabase()), IsFine());
    const struct {
        const char* expression;
        DataTypeEnum column;
        DataTypeEnum cell;
        const char* text;
    } cases[] = {
        {"true", DataTypeEnum::DT_INT, DataTypeEnum::DT_INT, "1"},
        {"false", DataTypeEnum::DT_INT, DataTypeEnum::DT_INT, "0"},
        {"(-32768)::smallint", DataTypeEnum::DT_SHORT, DataTypeEnum::DT_SHORT, "-32768"},
        {"2147483647::integer", DataTypeEnum::DT_INT, DataTypeEnum::DT_INT, "2147483647"},
        {"4294967295::oid", DataTypeEnum::DT_UNSIGNED_INT, DataTypeEnum::DT_UNSIGNED_INT,
         "4294967295"},
        {"0.1::real", DataTypeEnum::DT_FLOAT, DataTypeEnum::DT_FLOAT, "0.1"},
        {"5::numeric", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_LONG_LONG, "5"},
        {"18446744073709551615::numeric", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_UNSIGNED_LONG,
         "18446744073709551615"},
        {"18446744073709551616::numeric", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_TEXT,
         "18446744073709551616"},
        {"12345678901234567.25::numeric", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_TEXT,
         "12345678901234567.25"},
        {"sum(5::bigint)", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_LONG_LONG, "5"},
        {"date '2026-11-21'", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_TEXT, "2026-11-21"},
        {"'{\"a\": 1}'::jsonb", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_TEXT, "{\"a\": 1}"},
        {"array[1,2]", DataTypeEnum::DT_TEXT, DataTypeEnum::DT_TEXT, "{1,2}"},
        {"'NaN'::real", DataTypeEnum::DT_FLOAT, DataTypeEnum::DT_FLOAT, "nan"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.expression);
        const dao::CExecResult read = session.Query(std::string("SELECT ") + c.expression);
        ASSERT_EQ(read.GetRowCount(), 1U);
        EXPECT_EQ(read.GetColumns()[0].type, c.column);
        EXPECT_EQ(read.At(0, 0).GetType(), c.cell);
        EXPECT_EQ(read.At(0, 0).As_std_string(), c.text);
    }
}

// SQLite's cells have types of their own; a column declared UNSIGNED takes no other's octets.
TEST(SqliteValues, DeclaredTypes) {
    dao::CSqlSession session;
    ASSERT_THAT(session.Open("sqlite::memory:"), IsFine());
    const struct {
        const char* declared;
        DataTypeEnum type;
    } cases[] = {
        {"integer", DataTypeEnum::DT_LONG_LONG},
        {"BOOLEAN", DataTypeEnum::DT_LONG_LONG},
        {"bigint unsigned", DataTypeEnum::DT_UNSIGNED_LONG},
        {"varchar(10)", DataTypeEnum::DT_TEXT},
        {"double precision", DataTypeEnum::DT_DOUBLE},
        {"real", DataTypeEnum::DT_DOUBLE},
        {"blob", DataTypeEnum::DT_BINARY},
        {"bytea", DataTypeEnum::DT_BINARY},
        {"numeric(20)", DataTypeEnum::DT_TEXT},
        {"", DataTypeEnum::DT_EMPTY},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.declared);
        ASSERT_THAT(session.ExecScript(std::string("DROP TABLE IF EXISTS n; CREATE TABLE n (v ") +
                                       c.declared + ")"),
                    IsFine());
        EXPECT_EQ(session.Query("SELECT v FROM n").GetColumns()[0].type, c.type);
    }
    ASSERT_THAT(session.Exec("CREATE TABLE u (v bigint unsigned, b blob)"), IsFine());
    ASSERT_THAT(session.Exec("INSERT INTO u VALUES (-1, x'8000000000000000')"), IsFine());
    const dao::CExecResult read = session.Query("SELECT v, b FROM u");
    EXPECT_EQ(read.At(0, 0).As_long(), -1);
    EXPECT_EQ(read.At(0, 1).GetType(), DataTypeEnum::DT_BINARY);
}

}  // namespace
