#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"

#include <cstddef>
#include <span>
#include <vector>

// The rows of the library database as plain values. Texts are in the interface's encoding: the database tools convert
// folder, item and file names to UTF-8 when they bind them, and bind the other texts as they are.
namespace qfc {

// The kinds of payload, as CACHE_DATA_TYPE stores them.
inline constexpr int kBitmapCache = 0;
inline constexpr int kBlackBox = 1;
inline constexpr int kFilm = 2;

// The order in which an item's payloads are written.
inline constexpr int kPayloadWriteOrder[] = {kBlackBox, kFilm, kBitmapCache};

// What one row can hold raw at most, by SQLite's own limit: nothing larger is written or believed.
inline constexpr int kLargestPayload = 1'000'000'000;

// No folder row, or not yet stored; as parent number: the parent of every gallery root.
inline constexpr int kNoFolder = -1;

struct FolderRow {
    CString version;
    int predefinedId = -1;
    CString name;
    int adoptType = -1;
    int trustyType = -1;
    int typeExtra = -1;
    int parentId = kNoFolder;
    int expandType = -1;
    int orderIndex = -1;
};

struct ItemRow {
    int currentThumbFrame = 0;
    int originalThumbFrame = 0;
    int bbid = 0;
    int itemType = 0;
    CString name;
    CString description;
    CString annotation;
    CString fileName;
    int attributes = 0;
    CString templatePath;
    int timestamp = 0;  // The low 32 bits: the column is written and read that wide.
    int filmSize = 0;
    int frameSize = 0;
    int deletable = 0;
    GUID itemId{};
};

// One payload row as it is to be written; made by PackPayload.
struct PayloadWrite {
    int kind = kBitmapCache;
    int rawSize = 0;                    // 0 writes nothing: the row of that kind stays as it is.
    int compressedSize = 0;             // 0: the raw bytes are stored.
    std::span<const std::byte> raw;     // Borrowed: must live until the write is done.
    std::vector<std::byte> compressed;  // Of compressedSize bytes.

    std::span<const std::byte> Stored() const {
        return compressedSize != 0 ? std::span<const std::byte>(compressed) : raw;
    }
};

// One payload row as it was read; nothing in it can be trusted before PayloadIsSound has looked at it.
struct StoredPayload {
    int rawSize = 0;
    int compressedSize = 0;
    std::span<const std::byte> bytes;  // Borrowed from the query's row.
};

// What is known of one stored payload without its bytes.
struct PayloadSize {
    GUID itemId{};
    int compressedSize = 0;
};

struct StoredGallery {
    int galleryId = 0;
    int rootFolder = kNoFolder;  // Row number of its root folder.
    CString name;                // Of the root folder; empty when that row is missing.
};

}  // namespace qfc
