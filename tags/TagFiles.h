#pragma once

#include "platform/framework/CString.h"

#include <list>
#include <span>

// The two files of default and preset tags: where they lie, and how the content import writes them. Reading them into
// the store is the store's own affair. Any thread.
namespace qfc {

// In the folder "Orvel.dat" beside the host program, as HostDataFile says.
CString DefaultTagFilePath();
CString PresetTagFilePath();

// The default tags of one category.
struct CategoryRecord {
    CString section;
    CString category;
    std::list<CString> tags;
};

// The tags of one content item.
struct PresetItemRecord {
    CString itemName;
    CString filePath;
    CString galleryId;  // Decimal.
    std::list<CString> tags;
};

// Write into "Default_Libtag.ini" and "PresetItemTag.ini" of the process's current folder, what else stands there
// stays. Kept: the tags come out in reverse order. False when something could not be written; the rest is written all
// the same.
bool WriteDefaultTagFile(std::span<const CategoryRecord> records);
bool WritePresetTagFile(std::span<const PresetItemRecord> records);

}  // namespace qfc
