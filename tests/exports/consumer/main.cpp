// Adds an item, restarts the service and finds the item again. The one argument is the data folder.
#include "api/QFCLib.h"

#include <cstdio>

namespace {

CQGallery* OpenMedia() {
    ULONGLONG media = QFCLibraryManager::fnLoadGallery(1);
    if (media == 0) media = QFCLibraryManager::fnCreateGallery(1, "Media", 0, 0, 0);
    return qfc::AsGallery(media);
}

bool CloseAndStop(CQGallery* gallery) {
    return GetGalleryDoc()->CloseGallery(gallery) == 1 && QFCLibraryManager::fnStopService() == 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2 || !qfc::SetDataFolder(argv[1]) || !QFCLibraryManager::fnStartService()) return 1;
    CQGallery* media = OpenMedia();
    if (media == nullptr || !QFCLibraryManager::fnCreateFolder(qfc::ToHandle(media), "", "Clips", 0, 0, 0, 0)) return 2;
    auto* item = new CQItem("Sunrise");
    const GUID guid = item->GetUniqueID();
    QFCLibraryManager::fnAddItem(qfc::ToHandle(media), {"Clips"}, item);
    if (!CloseAndStop(media)) return 3;

    if (!QFCLibraryManager::fnStartService() || (media = OpenMedia()) == nullptr) return 4;
    const bool found = media->GetItemByGUID(guid) != nullptr;
    std::printf("%s\n", found ? "found" : "lost");
    return CloseAndStop(media) && found ? 0 : 5;
}
