#pragma once

#include "service/LibraryOperation.h"

class CLibTagsMgr;
class DBTools;

// A change of tags: it writes the database and, once that took, brings the tag store and the items given along. Nothing
// changes anywhere when the write fails. Synchronous; worker thread, as every operation.
class CLibTagsOperation : public LibraryOperation {
public:
    // The store is the process's.
    explicit CLibTagsOperation(DBTools* pDBTools);

protected:
    DBTools* Database() const { return m_pDBTools; }
    CLibTagsMgr* Store() const { return m_pStore; }
    bool IsReady() const { return m_pDBTools != nullptr && m_pStore != nullptr; }

private:
    DBTools* m_pDBTools;
    CLibTagsMgr* m_pStore;
};
