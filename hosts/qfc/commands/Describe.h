#pragma once

#include "hosts/qfc/cli/Console.h"

#include <cstdint>
#include <string>

class CQFolder;
class CQGallery;
class CQItem;

namespace qfc::host {

// How items and folders are shown. Reads the tree; main thread, no adds under way.

// "2024-05-06 10:20:30" in UTC.
std::string TimeText(std::uint64_t seconds);

// guid, name, kind, file, timestamp and time, gallery, paths.
Json ItemJson(const CQGallery& gallery, const CQItem& item);
// name, row, path.
Json FolderJson(const CQFolder& folder);
// "video  2024-05-06 10:20:30  <GUID>  name".
std::string ItemLine(const CQItem& item, const std::string& name);

}  // namespace qfc::host
