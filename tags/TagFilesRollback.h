#pragma once

#include "tags/CLibTagsMgr.h"

#include <cstddef>

namespace qfc {

// Takes back what the store reads of the files of default and preset tags while an object lives, unless that is kept.
// The thread that makes the store read; whoever else reads presets in between may see them go.
class TagFilesRollback {
public:
    explicit TagFilesRollback(CLibTagsMgr& store);
    ~TagFilesRollback();
    TagFilesRollback(const TagFilesRollback&) = delete;
    TagFilesRollback& operator=(const TagFilesRollback&) = delete;

    void Keep() { m_bKeep = true; }

private:
    CLibTagsMgr& m_store;
    std::size_t m_nPresets;
    CLibTagsMgr::CategoryTemplate m_categoryTemplate;
    bool m_bKeep = false;
};

}  // namespace qfc
