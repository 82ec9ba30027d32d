#include "tags/TagFilesRollback.h"

namespace qfc {

TagFilesRollback::TagFilesRollback(CLibTagsMgr& store)
    : m_store(store), m_nPresets(store.m_presets.size()), m_categoryTemplate(store.m_categoryTemplate) {}

TagFilesRollback::~TagFilesRollback() {
    if (m_bKeep) return;
    // Presets are only appended.
    while (m_store.m_presets.size() > m_nPresets) m_store.m_presets.pop_back();
    m_store.m_categoryTemplate.swap(m_categoryTemplate);
}

}  // namespace qfc
