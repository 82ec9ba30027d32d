#include "folders/GalleryEnd.h"

#include "folders/FolderWalk.h"
#include "folders/Teardown.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/CQItem.h"
#include "items/GalleryDocument.h"
#include "items/ItemGuid.h"

#include <unordered_set>

namespace qfc {

namespace {

using Items = std::unordered_set<CQItem*>;

// The objects of the gallery's index die with the gallery.
void Gather(const CQGallery& gallery, CQFolder& folder, Items& left, Items& ended) {
    const auto* items = folder.GetItemArray();
    if (items == nullptr) return;
    Items& into = EndsItsItems(folder) ? ended : left;
    for (CQItem* item : *items) {
        if (item == nullptr) continue;
        CQItem* indexed = nullptr;
        gallery.IsItemHasParentByGuid(GuidOfItem(*item), indexed);
        if (indexed != item) into.insert(item);
    }
}

Items ItemsLeftBehind(CQGallery& gallery) {
    Items left;
    Items ended;
    Gather(gallery, gallery, left, ended);
    for (CQFolder* folder : SubtreeOf(gallery)) Gather(gallery, *folder, left, ended);
    std::erase_if(left, [&](CQItem* item) { return ended.contains(item); });
    return left;
}

}  // namespace

void DestroyWithItems(CQGallery* gallery) {
    const Items left = ItemsLeftBehind(*gallery);
    if (CQGalleryDoc* document = ExistingGalleryDocument()) document->ReleaseGallery(gallery);
    delete gallery;
    for (CQItem* item : left) delete item;
}

}  // namespace qfc
