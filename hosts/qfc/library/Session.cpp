#include "hosts/qfc/library/Session.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"

#include <vector>

namespace qfc::host {
namespace {

void CloseGalleries() {
    CQGalleryDoc* document = GetGalleryDoc();
    if (document == nullptr) return;
    std::vector<CQGallery*> galleries;
    for (CQGallery* gallery : document->GetGalleryList()) galleries.push_back(gallery);
    for (CQGallery* gallery : galleries) document->CloseGallery(gallery);
}

}  // namespace

void UseDataFolder(const std::string& folder) {
    if (!SetDataFolder(folder.c_str())) throw Failure("cannot use the data folder " + folder);
}

std::string LibraryPath() {
    std::string path = ToText(QFCLibraryManager::GetDatabasePath());
    if (path.empty()) throw Failure("the path of the data folder is too long");
    return path;
}

std::string SettingsPath() {
    char folder[MAX_PATH];
    if (!GetAppDataFolder(folder, sizeof folder, 0, 0)) throw Failure("the path of the data folder is too long");
    return std::string(folder) + "Cinelume.ini";
}

Session::Session() {
    if (!CreateGalleryDoc() || !QFCLibraryManager::fnStartService()) {
        throw Failure("cannot open the library " + LibraryPath());
    }
}

Session::~Session() {
    CloseGalleries();
    QFCLibraryManager::fnStopService();
}

}  // namespace qfc::host
