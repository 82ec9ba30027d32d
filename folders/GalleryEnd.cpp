#include "folders/GalleryEnd.h"

#include "folders/Teardown.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"

namespace qfc {

void DestroyWithItems(CQGallery* gallery) {
    if (CQGalleryDoc* document = ExistingGalleryDocument()) document->ReleaseGallery(gallery);
    const Teardown teardown(*gallery, Teardown::Extent::kTreeAndAllItems);
    delete gallery;
}

}  // namespace qfc
