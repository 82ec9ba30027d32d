#include "tags/TagFiles.h"

#include "api/names/PathRules.h"
#include "platform/os/IniFile.h"
#include "platform/os/Places.h"

namespace qfc {
namespace {

constexpr char kDefaultTags[] = "Default_Libtag.ini";
constexpr char kPresetTags[] = "PresetItemTag.ini";

CString InCurrentFolder(const char* name) {
    CString path;
    path.Format(".\\%s", name);
    return path;
}

CString JoinedTags(const std::list<CString>& tags) {
    CString joined;
    for (const CString& tag : tags) {
        const CString before = joined;
        joined.Format("String@%s;%s", tag.GetString(), before.GetString());
    }
    return joined.GetLength() > 0 ? joined.Left(joined.GetLength() - 1) : joined;
}

CString PresetSection(const PresetItemRecord& record) {
    CString section;
    section.Format("%s@%s", FileNameOf(record.filePath).GetString(), record.itemName.GetString());
    return section;
}

}  // namespace

CString DefaultTagFilePath() { return CString(HostDataFile("Orvel.dat", kDefaultTags)); }

CString PresetTagFilePath() { return CString(HostDataFile("Orvel.dat", kPresetTags)); }

bool WriteDefaultTagFile(std::span<const CategoryRecord> records) {
    const CString file = InCurrentFolder(kDefaultTags);
    bool bWritten = true;
    for (const CategoryRecord& record : records) {
        bWritten &= WritePrivateProfileStringA(record.section, record.category, JoinedTags(record.tags), file) != 0;
    }
    return bWritten;
}

bool WritePresetTagFile(std::span<const PresetItemRecord> records) {
    const CString file = InCurrentFolder(kPresetTags);
    bool bWritten = true;
    for (const PresetItemRecord& record : records) {
        const CString section = PresetSection(record);
        const auto write = [&](const char* key, const CString& value) {
            bWritten &= WritePrivateProfileStringA(section, key, value, file) != 0;
        };
        write("ItemName", record.itemName);
        write("FilePath", record.filePath);
        write("GalleryID", record.galleryId);
        write("TagList", JoinedTags(record.tags));
    }
    return bWritten;
}

}  // namespace qfc
