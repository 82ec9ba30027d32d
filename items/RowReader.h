#pragma once

#include "db/CppSQLite3Exception.h"
#include "db/CppSQLite3Query.h"
#include "db/DbRecords.h"
#include "db/RowNumber.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/text/CodePages.h"

#include <optional>
#include <span>
#include <utility>

namespace qfc {

// Reads the rows of a query for the model. No access-layer exception passes: a column that is missing, NULL or cannot
// be read gives the default, a cursor that cannot go on is at the end. One thread, as the query itself.
class RowReader {
public:
    explicit RowReader(CppSQLite3Query& query) : m_query(query) {}

    bool AtEnd() const { return m_bFailed || m_query.eof(); }

    void Next() {
        m_bFailed = !Guarded(false, [&] {
            m_query.nextRow();
            return true;
        });
    }

    int Int(const char* pszColumn, int nDefault) const {
        return Guarded(nDefault, [&] { return m_query.getIntField(pszColumn, nDefault); });
    }

    // kNoFolder for a number that is none of a row, one beyond 32 bits included.
    int RowNumber(const char* pszColumn) const {
        return Guarded(kNoFolder, [&] { return qfc::RowNumber(m_query, pszColumn).value_or(kNoFolder); });
    }

    // The bytes as stored.
    CString Text(const char* pszColumn, const CString& strDefault) const {
        return Guarded(strDefault, [&] { return CString(m_query.getStringField(pszColumn, strDefault)); });
    }

    // Stored UTF-8, in the ANSI code page; the default is not converted.
    CString NameText(const char* pszColumn, const CString& strDefault) const {
        return Guarded(strDefault, [&] {
            const char* pszStored = m_query.getStringField(pszColumn, nullptr);
            return pszStored != nullptr ? CDBStringHelper::UTF_82ASCII(pszStored) : strDefault;
        });
    }

    // Empty unless the cell holds 16 bytes. Columns of GUIDs are untyped, and only the length is tested: a text of 16
    // bytes is taken as well.
    std::optional<GUID> Guid(const char* pszColumn) const {
        const auto bytes = Blob(pszColumn);
        return GuidFromBytes(bytes.data(), bytes.size());
    }

    // Valid until the next row.
    std::span<const std::byte> Blob(const char* pszColumn) const {
        return Guarded(std::span<const std::byte>{}, [&] {
            int nLength = 0;
            const unsigned char* pBytes = m_query.getBlobField(pszColumn, nLength);
            if (pBytes == nullptr || nLength <= 0) return std::span<const std::byte>{};
            return std::span(reinterpret_cast<const std::byte*>(pBytes), static_cast<std::size_t>(nLength));
        });
    }

private:
    template <class Value, class Read>
    static Value Guarded(Value fallback, Read&& read) {
        try {
            return read();
        } catch (const CppSQLite3Exception&) {
            return fallback;
        }
    }

    CppSQLite3Query& m_query;
    bool m_bFailed = false;
};

}  // namespace qfc
