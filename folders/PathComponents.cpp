#include "folders/PathComponents.h"

#include "api/names/PathRules.h"

namespace qfc {

namespace {
POSITION g_position = nullptr;
}

CStringList& PathComponents() {
    static CStringList components;
    return components;
}

POSITION& PathPosition() { return g_position; }

bool SplitIntoComponents(const CString& path, bool bInOrder) {
    CStringList& components = PathComponents();
    components.RemoveAll();
    for (const CString& part : SplitFolderPath(path, bInOrder)) components.AddTail(part);
    g_position = components.GetHeadPosition();
    return g_position != nullptr;
}

CString TakeComponent() { return g_position != nullptr ? PathComponents().GetNext(g_position) : CString(); }

}  // namespace qfc
