#pragma once

#include "db/CachePayload.h"
#include "db/DBTools.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/RawDb.h"
#include "tests/support/TempFolder.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace qfc::test {

using Bytes = std::vector<std::byte>;

inline GUID MakeGuid(int number) {
    GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(number);
    guid.Data4[7] = 0x77;
    return guid;
}

// As a literal of SQL.
inline std::string Literal(const GUID& guid) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "X'";
    for (const std::byte byte : GuidBytes(guid)) {
        text += kDigits[std::to_integer<unsigned>(byte) >> 4];
        text += kDigits[std::to_integer<unsigned>(byte) & 15];
    }
    return text + "'";
}

inline Bytes Repeated(std::size_t count, int value) { return Bytes(count, static_cast<std::byte>(value)); }

// Bytes that no compressor makes smaller.
inline Bytes Noise(std::size_t count, unsigned seed = 1) {
    Bytes bytes(count);
    for (std::byte& byte : bytes) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<std::byte>(seed >> 24);
    }
    return bytes;
}

// What the header of a file says that writes ahead to a log.
inline void MarkAsWritingAhead(const std::string& path) {
    std::string bytes = ReadFile(path);
    bytes[18] = bytes[19] = 2;
    std::ofstream(path, std::ios::binary) << bytes;
}

inline ItemRow MakeItem(int number, const char* name = "clip") {
    ItemRow item;
    item.itemId = MakeGuid(number);
    item.itemType = 1;
    item.name = name;
    return item;
}

// A library on a temporary file, opened by DBTools.
class LibraryTest : public testing::Test {
protected:
    void SetUp() override { Open(); }

    void Open() {
        bool ok = false;
        m_tools.reset();
        m_tools = std::make_unique<DBTools>(CString(m_path.c_str()), ok);
        ASSERT_TRUE(ok) << "the library cannot be opened: " << m_path;
    }

    // The row number; -1 when the write fails.
    int AddFolder(const char* name, int parent) {
        int folder = -1;
        m_tools->InsertOrUpdateFolder("1.0", 0, name, -1, -1, 0, parent, 0, -1, folder);
        return folder;
    }

    int AddGallery(int galleryId) {
        const int root = AddFolder("root", -1);
        EXPECT_TRUE(m_tools->InsertGallery(galleryId, root));
        return root;
    }

    bool AddItem(int number, int folder, int index = 0, const Bytes& blackBox = {}) {
        const PayloadWrite payload = PackPayload(kBlackBox, blackBox);
        return m_tools->AddItemDb(MakeItem(number), {&payload, 1}, folder, index);
    }

    // What a fresh connection sees.
    std::string Cell(const std::string& sql) const { return RawDb(m_path).Cell(sql); }
    std::string Count(const std::string& table) const { return Cell("select count(*) from " + table); }
    void Exec(const std::string& sql) const { RawDb(m_path).Exec(sql); }

    FaultVfs m_disk;
    TempFolder m_folder;
    std::string m_path = m_folder / "library.db";
    std::unique_ptr<DBTools> m_tools;
};

}  // namespace qfc::test
