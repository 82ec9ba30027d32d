// The operation of the database tools that speaks of the tag store. It is defined here, in the layer that knows the
// store, so that the database floor stands and is tested alone.
#include "db/DBTools.h"
#include "tags/CLibTagsMgr.h"

#include <new>

bool DBTools::LoadTags(CLibTagsMgr& manager) {
    std::vector<CTagCategory> categories;
    if (!LoadTags(categories)) return false;
    try {
        // Behind the guard: the store's mutex is never taken inside it.
        if (!categories.empty()) manager.AddTag(categories);
        return true;
    } catch (const std::bad_alloc&) {
        return false;  // The store took none.
    }
}
