#pragma once

#include "hosts/qfc/cli/Console.h"

#include <cstdint>
#include <optional>
#include <string>

class CQFolder;
class CQGallery;
class CQItem;

namespace qfc::host {

class Tags;

// How items and folders are shown. Reads the tree; main thread, no adds under way.

// "2024-05-06 10:20:30" in UTC.
std::string TimeText(std::uint64_t seconds);

// The moment by which items are sorted by date: the first six of the twelve numbers of the description, in UTC, as
// TimeText writes it. Nothing for a description of another kind.
std::optional<std::string> SortDate(const CQItem& item);

// guid, name, kind, file, timestamp and time, the date of sorting (or null), gallery, paths.
Json ItemJson(CQGallery& gallery, const CQItem& item);
// The same, and its tags.
Json ItemJson(CQGallery& gallery, const CQItem& item, const Tags& tags);
// name, row, path.
Json FolderJson(const CQFolder& folder);
// "video  2024-05-06 10:20:30  <GUID>  name"; the time is the timestamp's unless another text stands for it.
std::string ItemLine(const CQItem& item, const std::string& name);
std::string ItemLine(const CQItem& item, const std::string& name, const std::string& time);

}  // namespace qfc::host
