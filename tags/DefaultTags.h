#pragma once

#include "tags/CLibTagsMgr.h"
#include "tags/TagWords.h"

#include <map>
#include <vector>

// The categories and tags that a library begins with. Any thread.
namespace qfc {

// Made of the gallery and the names as the file writes them, untranslated: the same default has the same GUID in every
// library, today and tomorrow.
GUID DefaultCategoryGuid(int galleryId, std::string_view category);
GUID DefaultTagGuid(int galleryId, std::string_view category, std::string_view tag);

// By gallery id: the categories of the template with the tags that "Default_Libtag.ini" gives them, named as
// g_GetTagTranslateName says. A gallery without categories has no entry; without a readable file there is none at all.
std::map<DWORD, std::vector<CTagCategory>> BuildDefaultCategories(const CLibTagsMgr::CategoryTemplate& categories,
                                                                  const LocalDate& today = Today());

}  // namespace qfc
