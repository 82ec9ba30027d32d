#include "platform/compress/Compression.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <random>
#include <sqlite3.h>

namespace {

using namespace qfc::test;
using qfc::PackPayload;
using qfc::PayloadWrite;

class DBToolsCache : public LibraryTest {
protected:
    bool Write(int item, int kind, const Bytes& bytes) {
        return m_tools->UpdateCacheData(MakeGuid(item), PackPayload(kind, bytes));
    }

    // As a reader takes it; empty for no row or one that does not unpack.
    Bytes Read(int item, int kind) {
        CppSQLite3Query query;
        if (!m_tools->QueryCacheData(MakeGuid(item), kind, query) || query.eof()) return {};
        int length = 0;
        const auto* bytes = reinterpret_cast<const std::byte*>(query.getBlobField("COMPRESSED_DATA", length));
        const qfc::StoredPayload row{query.getIntField("PRE_COMPRESSED_SIZE"),
                                     query.getIntField("COMPRESSED_SIZE"),
                                     {bytes, static_cast<std::size_t>(length)}};
        if (!qfc::PayloadIsSound(row)) return {};
        Bytes payload(static_cast<std::size_t>(row.rawSize));
        return qfc::UnpackPayload(row, payload) ? payload : Bytes{};
    }
};

TEST_F(DBToolsCache, CompressedRowHoldsBothSizesAndTheBytes) {
    ASSERT_TRUE(Write(1, 0, Repeated(10000, 9)));
    EXPECT_EQ(Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE"), "10000");
    EXPECT_EQ(Cell("select COMPRESSED_SIZE > 0 and COMPRESSED_SIZE < 10000 and COMPRESSED_SIZE = "
                   "length(COMPRESSED_DATA) from CACHE_DATA_TABLE"),
              "1");
    EXPECT_EQ(Read(1, 0), Repeated(10000, 9));
}

TEST_F(DBToolsCache, PayloadThatDoesNotShrinkIsStoredRaw) {
    const Bytes noise = Noise(500);
    ASSERT_TRUE(Write(1, 2, noise));
    EXPECT_EQ(RawDb(m_path).Rows("select PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, length(COMPRESSED_DATA) from "
                                 "CACHE_DATA_TABLE"),
              (std::vector<RawDb::Row>{{"500", "0", "500"}}));
    EXPECT_EQ(Read(1, 2), noise);
}

TEST_F(DBToolsCache, PayloadOfNoBytesMakesNoRowAndSucceeds) {
    EXPECT_TRUE(Write(1, 1, {}));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
}

TEST_F(DBToolsCache, PayloadOfNoBytesKeepsTheRowThereIs) {
    ASSERT_TRUE(Write(1, 1, Repeated(100, 3)));
    EXPECT_TRUE(Write(1, 1, {}));
    EXPECT_EQ(Read(1, 1), Repeated(100, 3));
}

TEST_F(DBToolsCache, UnknownKindWritesNothingAndFails) {
    for (const int kind : {-1, 3, 100}) EXPECT_FALSE(Write(1, kind, Repeated(100, 3)));
    EXPECT_FALSE(Write(1, 3, {}));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
}

TEST_F(DBToolsCache, SizesThatDisagreeWithTheBytesAreNotWritten) {
    const Bytes bytes = Noise(100);
    PayloadWrite cut = PackPayload(1, bytes);
    cut.raw = cut.raw.first(99);
    EXPECT_FALSE(m_tools->UpdateCacheData(MakeGuid(1), cut));
    PayloadWrite negative = PackPayload(1, bytes);
    negative.rawSize = -1;
    EXPECT_FALSE(m_tools->UpdateCacheData(MakeGuid(1), negative));
    PayloadWrite longer = PackPayload(1, Repeated(1000, 1));
    longer.compressedSize += 1;
    EXPECT_FALSE(m_tools->UpdateCacheData(MakeGuid(1), longer));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
}

TEST_F(DBToolsCache, SameKindTwiceLeavesOneRow) {
    ASSERT_TRUE(Write(1, 0, Repeated(100, 1)));
    ASSERT_TRUE(Write(1, 0, Repeated(200, 2)));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Read(1, 0), Repeated(200, 2));
}

TEST_F(DBToolsCache, KindsAreRowsOfTheirOwn) {
    for (const int kind : {0, 1, 2}) ASSERT_TRUE(Write(1, kind, Repeated(100, kind + 1)));
    for (const int kind : {0, 1, 2}) EXPECT_EQ(Read(1, kind), Repeated(100, kind + 1));
    EXPECT_TRUE(m_tools->DeleteCacheData(MakeGuid(1), 1));
    EXPECT_EQ(Read(1, 1), Bytes{});
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "2");
}

TEST_F(DBToolsCache, QueryByTypeYieldsTheRowsOfAllItems) {
    for (const int item : {1, 2, 3}) ASSERT_TRUE(Write(item, 2, Repeated(100, item)));
    ASSERT_TRUE(Write(4, 1, Repeated(100, 4)));
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryCacheDataByType(2, query));
    int rows = 0;
    for (; !query.eof(); query.nextRow()) ++rows;
    EXPECT_EQ(rows, 3);
}

TEST_F(DBToolsCache, EmptyBlobIsNoPayload) {
    Exec("INSERT INTO CACHE_DATA_TABLE VALUES(10, 0, x'', 0, " + Literal(MakeGuid(1)) + ")");
    EXPECT_EQ(Read(1, 0), Bytes{});
}

// --- Deleting all payloads of an item ---

constexpr char kPlainDelete[] = "Delete from CACHE_DATA_TABLE where ITEM_ID = ?";

TEST_F(DBToolsCache, DeletingAllTakesEveryKindOfThisItemOnly) {
    for (const int kind : {0, 1, 2}) {
        ASSERT_TRUE(Write(1, kind, Repeated(100, 1)));
        ASSERT_TRUE(Write(2, kind, Repeated(100, 1)));
    }
    EXPECT_TRUE(m_tools->DeleteAllCacheData(MakeGuid(1)));
    EXPECT_EQ(Cell("select count(*) || quote(max(ITEM_ID)) || quote(min(ITEM_ID)) from CACHE_DATA_TABLE"),
              "'3" + Literal(MakeGuid(2)) + Literal(MakeGuid(2)) + "'");
}

TEST_F(DBToolsCache, OddKindAnywhereSendsThePlainStatement) {
    m_tools.reset();
    for (const char* kind : {"NULL", "-1", "0.5", "1.5", "3", "'film'", "x'02'"}) {
        Exec("DELETE FROM CACHE_DATA_TABLE; INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, x'00', " + std::string(kind) +
             ", " + Literal(MakeGuid(2)) + ")");
        SqlTrace trace;
        Open();
        EXPECT_TRUE(m_tools->DeleteAllCacheData(MakeGuid(1)));
        EXPECT_EQ(trace.Count(kPlainDelete), 1) << "with kind " << kind;
        m_tools.reset();
    }
}

TEST_F(DBToolsCache, KnownKindsAreDeletedThroughTheKey) {
    m_tools.reset();
    Exec("INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, x'00', 1.0, " + Literal(MakeGuid(2)) + ")");
    SqlTrace trace;
    Open();
    trace.Clear();
    EXPECT_TRUE(m_tools->DeleteAllCacheData(MakeGuid(2)));
    EXPECT_EQ(trace.Count(kPlainDelete), 0);
    const auto sent = trace.Statements();
    m_tools.reset();
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
    // Neither the probe nor the deletion may read through the table.
    ASSERT_EQ(sent.size(), 4U);
    RawDb db(m_path);
    for (const std::string& sql : {sent[1], sent[2]}) {
        for (const auto& step : db.Rows("explain query plan " + sql)) {
            EXPECT_EQ(step[3].find("SCAN CACHE_DATA_TABLE"), std::string::npos) << step[3];
        }
    }
}

TEST_F(DBToolsCache, ShortcutCanBeSwitchedOff) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    m_tools->SetShortcuts(false);
    trace.Clear();
    EXPECT_TRUE(m_tools->DeleteAllCacheData(MakeGuid(1)));
    EXPECT_EQ(trace.Statements(), (std::vector<std::string>{"BEGIN TRANSACTION;", kPlainDelete, "END TRANSACTION;"}));
}

// The literal form and the shortcut over the same random contents leave the same rows and answer the same.
TEST_F(DBToolsCache, ShortcutDoesWhatThePlainStatementDoes) {
    std::mt19937 random(20260101);
    const char* const kinds[] = {"0",  "1",    "2",    "0",  "1",   "2",     "1.0",   "NULL",
                                 "-7", "0.25", "1.75", "99", "'2'", "'two'", "x'01'", "''"};
    const auto pick = [&](std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    };
    m_tools.reset();
    for (int round = 0; round < 40; ++round) {
        // Half of the rounds have known kinds only, so that both ways of the shortcut are taken.
        const std::size_t usable = round % 2 == 0 ? 7 : std::size(kinds);
        std::string sql = "DELETE FROM CACHE_DATA_TABLE;";
        for (std::size_t row = pick(12); row-- > 0;) {
            const std::string item = pick(9) == 0 ? "'text'" : Literal(MakeGuid(static_cast<int>(pick(3))));
            sql += "INSERT OR IGNORE INTO CACHE_DATA_TABLE VALUES(3, 0, x'010203', " +
                   std::string(kinds[pick(usable)]) + ", " + item + ");";
        }
        const GUID victim = MakeGuid(static_cast<int>(pick(3)));
        std::string results[2];
        for (const bool shortcut : {false, true}) {
            Exec(sql);
            Open();
            m_tools->SetShortcuts(shortcut);
            const bool answer = m_tools->DeleteAllCacheData(victim);
            m_tools.reset();
            results[shortcut ? 1 : 0] =
                std::to_string(answer) +
                RawDb(m_path).Cell(
                    "select ifnull(group_concat(quote(CACHE_DATA_TYPE) || quote(ITEM_ID)), '') from (select * from "
                    "CACHE_DATA_TABLE order by rowid)");
        }
        EXPECT_EQ(results[0], results[1]) << "round " << round << ": " << sql;
    }
}

TEST_F(DBToolsCache, DeletingAllFailsWithoutTheTable) {
    Exec("DROP TABLE CACHE_DATA_TABLE");
    EXPECT_FALSE(m_tools->DeleteAllCacheData(MakeGuid(1)));
}

// SQLite asks the busy handler only where waiting can help: not for a reader that turns writer.
TEST_F(DBToolsCache, DeletingAllWaitsForAForeignWriter) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    ASSERT_TRUE(Write(1, 0, Repeated(10, 1)));
    sqlite3* const connection = trace.Connection();
    RawDb writer(m_path);
    writer.Exec("BEGIN IMMEDIATE");
    const auto letGo = [](void* other, int calls) {
        if (calls == 0) static_cast<RawDb*>(other)->Exec("COMMIT");
        return calls == 0 ? 1 : 0;
    };
    sqlite3_busy_handler(connection, letGo, &writer);
    EXPECT_TRUE(m_tools->DeleteAllCacheData(MakeGuid(1)));
}

// --- Sizes without bytes ---

TEST_F(DBToolsCache, SizesAreListedAsTheRowsTellThem) {
    ASSERT_TRUE(Write(3, 0, Repeated(1000, 3)));
    ASSERT_TRUE(Write(1, 0, Noise(300)));
    ASSERT_TRUE(Write(2, 0, Repeated(5000, 2)));
    ASSERT_TRUE(Write(4, 1, Repeated(5000, 2)));
    Exec("INSERT INTO CACHE_DATA_TABLE VALUES(1, 7, x'00', 0, 'no guid'), (1, 7, x'00', 0, x'01')");
    Exec("INSERT INTO CACHE_DATA_TABLE VALUES(1, NULL, x'00', 0, " + Literal(MakeGuid(9)) + ")");
    std::vector<qfc::PayloadSize> sizes;
    ASSERT_TRUE(m_tools->QueryCacheSizes(0, sizes));
    CppSQLite3Query rows;
    ASSERT_TRUE(m_tools->QueryCacheDataByType(0, rows));
    std::size_t count = 0;
    for (; !rows.eof(); rows.nextRow()) {
        int length = 0;
        const unsigned char* bytes = rows.getBlobField("ITEM_ID", length);
        const auto guid = qfc::GuidFromBytes(bytes, static_cast<std::size_t>(length));
        if (!guid) continue;
        ASSERT_LT(count, sizes.size());
        EXPECT_EQ(sizes[count].itemId, *guid);
        EXPECT_EQ(sizes[count].compressedSize, rows.getIntField("COMPRESSED_SIZE"));
        ++count;
    }
    EXPECT_EQ(count, 4U);
    EXPECT_EQ(sizes.size(), 4U);
}

TEST_F(DBToolsCache, SizesAreNotListedWithoutShortcutsOrTheTable) {
    std::vector<qfc::PayloadSize> sizes(2);
    m_tools->SetShortcuts(false);
    EXPECT_FALSE(m_tools->QueryCacheSizes(0, sizes));
    m_tools->SetShortcuts(true);
    Exec("DROP TABLE CACHE_DATA_TABLE");
    EXPECT_FALSE(m_tools->QueryCacheSizes(0, sizes));
    EXPECT_EQ(sizes.size(), 2U);
}

// --- A compressor that is not there ---

class FailingCompressor {
public:
    FailingCompressor() : m_before(qfc::SetCompressionBinding({&Fail, &Fail})) {}
    ~FailingCompressor() { qfc::SetCompressionBinding(m_before); }

private:
    static int Fail(unsigned, const void*, unsigned*, void*) { return 0; }
    qfc::CompressionBinding m_before;
};

TEST_F(DBToolsCache, PayloadIsStoredRawWhenTheCompressorFails) {
    const FailingCompressor failing;
    ASSERT_TRUE(Write(1, 0, Repeated(1000, 9)));
    EXPECT_EQ(RawDb(m_path).Rows("select PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, length(COMPRESSED_DATA) from "
                                 "CACHE_DATA_TABLE"),
              (std::vector<RawDb::Row>{{"1000", "0", "1000"}}));
    EXPECT_EQ(Read(1, 0), Repeated(1000, 9));
}

TEST_F(DBToolsCache, CompressedRowIsNotReadWhenTheDecompressorFails) {
    ASSERT_TRUE(Write(1, 0, Repeated(1000, 9)));
    const FailingCompressor failing;
    EXPECT_EQ(Read(1, 0), Bytes{});
}

// A frame of twelve bytes that announces 2 GB, in a row that agrees.
TEST_F(DBToolsCache, RowOfTwelveBytesThatAnnouncesTwoGigabytesIsNotSound) {
    Exec("INSERT INTO CACHE_DATA_TABLE VALUES(2147483647, 12, x'28B52FFDA0FFFFFF7F010000', 0, " + Literal(MakeGuid(1)) +
         ")");
    EXPECT_EQ(Read(1, 0), Bytes{});
    Exec("UPDATE CACHE_DATA_TABLE SET PRE_COMPRESSED_SIZE = 900000000, COMPRESSED_DATA = x'28B52FFDA000E9A435010000'");
    EXPECT_EQ(Read(1, 0), Bytes{});
}

TEST_F(DBToolsCache, SizeBeyondTheLargestPayloadIsNotWritten) {
    PayloadWrite payload = PackPayload(0, Repeated(10, 1));
    payload.rawSize = qfc::kLargestPayload + 1;
    payload.compressed = Repeated(10, 1);
    payload.compressedSize = 10;
    EXPECT_FALSE(m_tools->UpdateCacheData(MakeGuid(1), payload));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
}

}  // namespace
