#pragma once

#include "platform/framework/Types.h"

// Numbers that folders give a meaning to. Plain values only.
namespace qfc {

// Bits of the trusty mask.
inline constexpr DWORD kTrustyAnnounceCopies = 16;  // Items copied from the folder go to the global procedure.
inline constexpr DWORD kTrustyOfKeyName = 5;        // Added when a stored name has "--" behind its first character.

// Gallery ids whose items are told apart by file name, and whose direct sub-folders count as predefined.
inline constexpr DWORD kTemplatesGallery = 3;
inline constexpr DWORD kTemplatesH5Gallery = 12;
constexpr bool IsTemplatesGallery(DWORD dwId) { return dwId == kTemplatesGallery || dwId == kTemplatesH5Gallery; }

// Sort types of CQFolder::SortingAllItem; every other number sorts by name.
inline constexpr DWORD kSortByDate = 1;
inline constexpr DWORD kSortByKind = 2;

// Keys of CQFolder::Sorting; from 3 on the global procedure compares.
inline constexpr int kKeyName = 0;
inline constexpr int kKeyDescription = 1;
inline constexpr int kKeyAnnotation = 2;

// Messages of the global procedure.
inline constexpr DWORD kMessageCompareItems = 0x200;
inline constexpr DWORD kMessageItemCopied = 0x10000;

// How deep below the folder that is loaded rows are still followed; what lies deeper is left out of the tree.
inline constexpr int kMaxLoadDepth = 1000;

}  // namespace qfc
