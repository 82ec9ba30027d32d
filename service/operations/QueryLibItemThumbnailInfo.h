#pragma once

#include "platform/framework/Guid.h"
#include "service/LibItemThumbnailInfo.h"
#include "service/LibraryOperation.h"

#include <vector>

class CppSQLite3Query;
class DBTools;

namespace qfc {
struct PayloadSize;
}

// Gathers one row for each stored bitmap cache.
class LibraryOperation_QueryLibItemThumbnailInfo : public LibraryOperation {
public:
    explicit LibraryOperation_QueryLibItemThumbnailInfo(DBTools* pDBTools);

    // On failure the rows gathered so far stay.
    int execute() override;

    const std::vector<_DS_LibItemTunmbnailInfo_>& Thumbnails() const { return m_thumbnails; }

private:
    void AppendRow(const CppSQLite3Query& row);
    void Append(const GUID& guid, int nCompressedSize);
    void Append(const qfc::PayloadSize& size);

    std::vector<_DS_LibItemTunmbnailInfo_> m_thumbnails;
    DBTools* m_pDBTools;
};
