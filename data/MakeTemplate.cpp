// Makes the library that new users begin with: MakeTemplate HOST-FOLDER WORK-FOLDER TEMPLATE. The default tags and
// their translation come from "Orvel.dat" in the host folder; the work folder is emptied first and goes afterwards.
// What the library holds is read back before it becomes the template, and the result is the same file each time.
#include "api/QFCLib.h"
#include "tags/PredefinedGalleries.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;

void Require(bool done, const char* what) {
    if (!done) throw std::runtime_error(what);
}

void UseFolders(const fs::path& host, const fs::path& work) {
    fs::remove_all(work);
    fs::create_directories(work);
    Require(qfc::SetHostFolder(host.c_str()) && qfc::SetDataFolder(work.c_str()), "the folders cannot be used");
}

// New files of the library keep their texts as UTF-16 unless they hold something already. A table that came and went
// leaves a file with the encoding that was asked for; and since there is a file, nothing is seeded.
void BeginAsUtf8(const CString& path) {
    CppSQLite3DB db;
    db.open(path);
    for (const char* statement :
         {"PRAGMA encoding = 'UTF-8';", "CREATE TABLE BEGINNING(ID INTEGER);", "DROP TABLE BEGINNING;"}) {
        db.execQuery(statement);
    }
    db.close();
}

void CloseGalleries() {
    std::vector<CQGallery*> open;
    for (CQGallery* gallery : GetGalleryDoc()->GetGalleryList()) open.push_back(gallery);
    for (CQGallery* gallery : open) GetGalleryDoc()->CloseGallery(gallery);
}

void Fill() {
    Require(CreateGalleryDoc() && Manager::fnStartService() == 1, "the library cannot be opened");
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.name == nullptr) continue;
        Require(Manager::fnCreateGallery(gallery.id, gallery.name, 0, 0, 0) != 0, gallery.name);
    }
    CloseGalleries();
    // The result tells nothing about what was written; Check looks.
    Manager::fnCreateDefaultTag();
    Require(Manager::fnStopService() == 1, "the library cannot be closed");
}

std::size_t Count(CppSQLite3DB& db, const char* query) {
    return static_cast<std::size_t>(db.execQuery(query).getIntField(0));
}

void Check(const CString& path) {
    std::list<CLibTag> tags;
    CLibTagsMgr::GetLibTagMgr()->GetAllTagList(tags);
    std::size_t categories = 0;
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.name == nullptr) continue;
        const std::size_t own = CLibTagsMgr::GetLibTagMgr()->GetTagsData(static_cast<DWORD>(gallery.id)).size();
        Require(own > 0, gallery.section);
        categories += own;
    }
    CppSQLite3DB db;
    db.openReadOnly(path);
    Require(std::string(db.execQuery("PRAGMA encoding;").getStringField(0)) == "UTF-8", "the texts are not UTF-8");
    Require(Count(db, "SELECT count(*) FROM GALLERY_TABLE;") == qfc::kPredefinedGalleries.size() - 1, "the galleries");
    Require(Count(db, "SELECT count(*) FROM LIB_TAG_CATEGORY_TABLE;") == categories, "the categories");
    Require(Count(db, "SELECT count(*) FROM LIB_TAG_TABLE;") == tags.size() && !tags.empty(), "the tags");
}

void MakeTemplate(const fs::path& host, const fs::path& work, const fs::path& target) {
    fs::remove(target);
    UseFolders(host, work);
    const CString path = Manager::GetDatabasePath();
    Require(!path.IsEmpty(), "the work folder's path is too long");
    BeginAsUtf8(path);
    Fill();
    Check(path);
    fs::rename(path.GetString(), target);
    fs::remove_all(work);
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::fputs("usage: MakeTemplate HOST-FOLDER WORK-FOLDER TEMPLATE\n", stderr);
        return 2;
    }
    MakeTemplate(argv[1], argv[2], argv[3]);
    return 0;
} catch (const CppSQLite3Exception& error) {
    std::fprintf(stderr, "MakeTemplate: %s\n", error.errorMessage());
    return 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "MakeTemplate: %s\n", error.what());
    return 1;
}
