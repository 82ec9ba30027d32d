#pragma once

#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

// The records of the tag store: plain values, copied whole, names in the ANSI code page. Each object belongs to one
// thread at a time; the pictures that copies share are never written.

namespace qfc {

// What a tag is about, as CLibTag stores it.
namespace tag_type {
inline constexpr int kString = 0;
inline constexpr int kStatic = 1;
inline constexpr int kDate = 2;
}  // namespace tag_type

// What a category holds, as CTagCategory stores it.
namespace category_type {
inline constexpr int kPlain = 0;
inline constexpr int kDate = 1;
inline constexpr int kUntagged = 2;
inline constexpr int kFace = 3;
}  // namespace category_type

}  // namespace qfc

struct CLibTag {
    GUID m_guid{};          // Of the tag.
    GUID m_guidCategory{};  // Of the category it is stored in, whatever list it stands in.
    int m_nType = qfc::tag_type::kString;
    CString m_strName;  // A date tag's is its range of dates.
    bool m_bChecked = false;
    bool m_bDeletable = true;
    int m_nPictureSize = 0;                               // Bytes of the picture that count.
    std::shared_ptr<const std::vector<BYTE>> m_pPicture;  // Shared between copies; null without picture.
    std::vector<std::int64_t> m_values;                   // Carried along; in memory only.
};

struct CTagCategory {
    GUID m_guid{};
    int m_nGallery = 0;  // Id of the gallery it belongs to, under which the store files it.
    CString m_strName;
    std::list<CLibTag> m_tags;
    bool m_bDeletable = true;
    int m_nType = qfc::category_type::kPlain;
};

// The tags of one known content item, as the file of preset tags gives them.
struct CPresetItemTag {
    CString m_strItemName;
    CString m_strFilePath;
    CString m_strGalleryId;        // Decimal, as read.
    std::list<CString> m_tagList;  // One specifier each: type word, '@', value. Empty ones are kept.
};
