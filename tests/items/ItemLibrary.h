#pragma once

#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "tests/items/ItemBuilders.h"
#include "tests/support/RawDb.h"
#include "tests/support/TempFolder.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace qfc::test {

// "X'...'" of the bytes.
inline std::string BlobLiteral(const ByteVector& bytes) {
    std::string text = "X'";
    for (const BYTE byte : bytes) {
        char szDigits[3];
        std::snprintf(szDigits, sizeof(szDigits), "%02X", byte);
        text += szDigits;
    }
    return text + "'";
}

inline std::string BlobLiteral(const GUID& guid) {
    const auto* const pFirst = reinterpret_cast<const BYTE*>(&guid);
    return BlobLiteral(ByteVector(pFirst, pFirst + sizeof(GUID)));
}

// A library file with its tools, and a second plain look at the rows.
class LibraryFile {
public:
    explicit LibraryFile(const char* pszName = "library.db") : m_path(m_folder / pszName) { Open(); }

    DBTools* Tools() const { return m_pTools.get(); }
    const std::string& Path() const { return m_path; }
    RawDb& Raw() {
        if (m_pRaw == nullptr) m_pRaw = std::make_unique<RawDb>(m_path);
        return *m_pRaw;
    }
    void Open() {
        bool bOk = false;
        m_pTools = std::make_unique<DBTools>(m_path.c_str(), bOk);
        EXPECT_TRUE(bOk);
    }
    void Close() {
        m_pRaw.reset();
        m_pTools.reset();
    }

private:
    TempFolder m_folder;
    std::string m_path;
    std::unique_ptr<DBTools> m_pTools;
    std::unique_ptr<RawDb> m_pRaw;
};

// Writes down which kinds of payloads are asked for.
class AskedTools : public DBTools {
public:
    using DBTools::DBTools;
    bool QueryCacheData(const GUID& item, int kind, CppSQLite3Query& query) override {
        kinds.push_back(kind);
        return DBTools::QueryCacheData(item, kind, query);
    }
    std::vector<int> kinds;
};

// The file is the process's current database as long as this lives.
class CurrentLibrary : public LibraryFile {
public:
    CurrentLibrary() { SetCurrentDBTools(Tools()); }
    ~CurrentLibrary() { SetCurrentDBTools(nullptr); }
};

// One item of a library file, without a tree; rows are filled in by hand.
class ItemRowFixture : public testing::Test {
protected:
    ItemRowFixture() {
        m_item.SetUniqueID(GuidOf(1));
        m_item.fnSetDbTools(m_library.Tools());
    }
    void Sql(const std::string& text) { m_library.Raw().Exec(text); }
    // Columns and their values beside the GUID of item 1.
    void InsertItem(const std::string& columns, const std::string& values) {
        Sql("insert into ITEM_TABLE(" + columns + ", ITEM_ID) values(" + values + ", " + BlobLiteral(GuidOf(1)) + ")");
    }
    void InsertPayload(int nKind, const std::string& rawSize, const std::string& compressedSize,
                       const std::string& data) {
        Sql("insert into CACHE_DATA_TABLE values(" + rawSize + ", " + compressedSize + ", " + data + ", " +
            std::to_string(nKind) + ", " + BlobLiteral(GuidOf(1)) + ")");
    }
    std::string CountOf(const std::string& table) { return m_library.Raw().Cell("select count(*) from " + table); }

    CurrentLibrary m_library;
    CQItem m_item;
};

// Item 1 with its three payloads in the file, and as it is after a restart.
class StoredPayloadsFixture : public ItemRowFixture {
protected:
    std::unique_ptr<CQItem> Restarted() {
        const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
        EXPECT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
        auto pFresh = std::make_unique<CQItem>();
        pFresh->SetUniqueID(GuidOf(1));
        pFresh->fnSetDbTools(m_library.Tools());
        EXPECT_EQ(pFresh->fnLoadItemFromDb(), 1);
        return pFresh;
    }
};

// A gallery of id 1 with the folders "A" and "B", stored, in memory.
class StoredTree {
public:
    explicit StoredTree(DBTools* pTools) {
        m_gallery.SetFolderID(1);
        m_gallery.SetDBTools(pTools);
        EXPECT_EQ(m_gallery.InsertOrUpdateFolder(), 1);
        EXPECT_EQ(m_gallery.InsertOrUpdateGallery(), 1);
        for (CQFolder** ppFolder : {&pA, &pB}) {
            *ppFolder = AddSub(m_gallery, ppFolder == &pA ? "A" : "B");
            EXPECT_EQ((*ppFolder)->InsertOrUpdateFolder(), 1);
        }
    }
    CQGallery& Gallery() { return m_gallery; }

    CQFolder* pA = nullptr;
    CQFolder* pB = nullptr;

private:
    CQGallery m_gallery;
};

// The same tree as a later start of the library sees it.
class LoadedTree {
public:
    explicit LoadedTree(DBTools* pTools) {
        m_gallery.SetFolderID(1);
        m_gallery.SetDBTools(pTools);
        EXPECT_EQ(m_gallery.LoadTreeFromDb(), 1);
        pA = m_gallery.GetFolderByName("A");
        pB = m_gallery.GetFolderByName("B");
    }
    CQGallery& Gallery() { return m_gallery; }
    CQItem* Item(unsigned nNumber) { return m_gallery.GetItemByGUID(GuidOf(nNumber)); }

    CQFolder* pA = nullptr;
    CQFolder* pB = nullptr;

private:
    CQGallery m_gallery;
};

}  // namespace qfc::test
