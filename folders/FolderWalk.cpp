#include "folders/FolderWalk.h"

#include <algorithm>

namespace qfc {

FolderWalk::FolderWalk(CQFolder& start, Stop stop) : m_start(start), m_stop(stop) {
    if (Enter(start)) m_current = NextInLevels();
}

bool FolderWalk::Enter(CQFolder& folder) {
    CQFolder::FolderList* list = folder.GetFolderList();
    if (list == nullptr || list->IsEmpty()) return false;
    m_levels.push_back({list, list->GetHeadPosition()});
    return true;
}

// The next folder of the innermost level that has one; null entries are passed over.
CQFolder* FolderWalk::NextInLevels() {
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        while (level.next != nullptr) {
            if (CQFolder* folder = level.list->GetNext(level.next)) return folder;
        }
        m_levels.pop_back();
    }
    return nullptr;
}

// Stands the walk behind the start in the lists of all its ancestors.
void FolderWalk::Surround() {
    m_top = &m_start;
    for (CQFolder* parent = m_top->GetParent(); parent != nullptr; parent = m_top->GetParent()) {
        CQFolder::FolderList* list = parent->GetFolderList();
        POSITION position = list != nullptr ? list->Find(static_cast<CObject*>(m_top)) : nullptr;
        if (position != nullptr) {
            list->GetNext(position);
            m_levels.push_back({list, position});
        }
        m_top = parent;
    }
    std::reverse(m_levels.begin(), m_levels.end());
}

void FolderWalk::Advance() {
    Enter(*m_current);
    PassBy();
}

void FolderWalk::PassBy() {
    m_current = NextInLevels();
    if (m_stop == Stop::BehindSubtree) return;
    if (m_current == nullptr && m_top == nullptr && !m_start.IsRoot()) {
        Surround();
        m_current = NextInLevels();
    }
    if (m_current == nullptr && m_top != nullptr && !m_toppedOut) {
        m_toppedOut = true;
        m_current = m_top;
    }
    if (m_current == &m_start) m_current = nullptr;
}

FolderWalkWithoutMemory::FolderWalkWithoutMemory(CQFolder& top) : m_top(top) { Enter(top); }

bool FolderWalkWithoutMemory::Enter(CQFolder& folder) {
    const CQFolder::FolderList* list = folder.GetFolderList();
    return list != nullptr && Meet(folder, list->GetHeadPosition());
}

// The first folder from the position on becomes the current one, if there is one.
bool FolderWalkWithoutMemory::Meet(CQFolder& parent, POSITION position) {
    m_current = nullptr;
    while (position != nullptr && m_current == nullptr) m_current = parent.GetFolderList()->GetNext(position);
    if (m_current != nullptr) m_current->m_pParent = &parent;
    return m_current != nullptr;
}

void FolderWalkWithoutMemory::Advance() {
    CQFolder* folder = m_current;
    if (Enter(*folder)) return;
    m_current = folder;
    PassBy();
}

void FolderWalkWithoutMemory::PassBy() {
    for (CQFolder* left = m_current; left != &m_top; left = left->m_pParent) {
        CQFolder& parent = *left->m_pParent;
        POSITION position = parent.GetFolderList()->Find(static_cast<CObject*>(left));
        parent.GetFolderList()->GetNext(position);
        if (Meet(parent, position)) return;
    }
}

}  // namespace qfc
