#pragma once

#include "db/Cells.h"
#include "db/CppSQLite3Exception.h"
#include "db/CppSQLite3Query.h"
#include "db/DbRecords.h"
#include "db/RowNumber.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"

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
        return Guarded(nDefault, [&] { return cell::Int(m_query, IndexOf(pszColumn), nDefault); });
    }

    // kNoFolder for a number that is none of a row, one beyond 32 bits included.
    int RowNumber(const char* pszColumn) const {
        return Guarded(kNoFolder, [&] { return qfc::RowNumber(m_query, pszColumn).value_or(kNoFolder); });
    }

    // The bytes as stored.
    CString Text(const char* pszColumn, const CString& strDefault) const {
        return Guarded(strDefault, [&] { return cell::Text(m_query, IndexOf(pszColumn), strDefault); });
    }

    // Stored UTF-8, in the ANSI code page; the default is not converted.
    CString NameText(const char* pszColumn, const CString& strDefault) const {
        return Guarded(strDefault, [&] { return cell::NameText(m_query, IndexOf(pszColumn), strDefault); });
    }

    // Empty unless the cell holds 16 bytes.
    std::optional<GUID> Guid(const char* pszColumn) const {
        return Guarded(std::optional<GUID>(), [&] { return cell::Guid(m_query, IndexOf(pszColumn)); });
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
    int IndexOf(const char* pszColumn) const { return cell::IndexOf(m_query, pszColumn); }

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
