#pragma once

#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/Tags.h"

#include <optional>
#include <string>
#include <vector>

namespace qfc::host {

// How tags are named on the command line and shown. Main thread.

// "string", "static", "date" for tags; "plain", "date", "untagged", "face" for categories; others by their number.
std::string TagTypeName(int type);
std::string CategoryTypeName(int type);

// guid, name, gallery, galleryId, category, type, checked, deletable. A tag that is not stored has its guid alone.
Json TagJson(const FoundTag& tag);
Json TagsJson(const std::vector<FoundTag>& tags);
// guid, name, gallery, galleryId, type, deletable.
Json CategoryJson(const Tags& tags, const CTagCategory& category);

// The id of the gallery that --gallery names; none for an empty text.
std::optional<int> NamedGallery(const Galleries& galleries, const std::string& gallery);
// Throws WrongUsage for a name that could not be typed again: empty, not UTF-8, or one that reads as a GUID.
void RequireTagName(const std::string& name);

}  // namespace qfc::host
