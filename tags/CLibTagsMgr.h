#pragma once

#include "platform/Export.h"
#include "tags/TagRecords.h"

#include <list>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace qfc {
class TagFilesRollback;
class TagStorePeer;  // The private side, for tests.
}  // namespace qfc

// The one store of all tag categories and tags of all galleries in memory, and of what the files of default and preset
// tags say. It never touches the database: whoever changes tags writes them first, through the service's operations.
// The updates take the store's mutex and may be called from any thread; reads, SetTagsToDefault and the Generate
// functions take no lock, so nobody may use them while another thread updates.
class QFCLIB_API CLibTagsMgr {
public:
    // By gallery id: the section of the default tags and the names of its categories, in the order of the file.
    using CategoryTemplate = std::map<DWORD, std::pair<std::string, std::vector<std::string>>>;

    // Made by the first call, destroyed when the process ends. Any thread.
    static CLibTagsMgr* GetLibTagMgr();

    CLibTagsMgr(const CLibTagsMgr&) = delete;
    CLibTagsMgr& operator=(const CLibTagsMgr&) = delete;

    // Reads. What is asked of tags and categories is handed out in copies, which share the pictures; lists are appended
    // to, and the numbers count what was appended. An unknown gallery gets an empty entry by being asked for here, and
    // by nothing else.
    std::vector<CTagCategory> GetTagsData(const DWORD& dwGallery);
    // Whether no gallery has an entry, an empty one included.
    bool IsEmpty() const;
    int GetAllTagList(std::list<CLibTag>& tags) const;
    int GetCurGalleryAllTag(const DWORD& dwGallery, std::list<CLibTag>& tags) const;
    // The first checked date tag. On false `tag` is as it was; so it is with the other single results.
    bool GetCurGalleryDateTag(const DWORD& dwGallery, CLibTag& tag) const;
    // Each category that has checked tags which are no dates, with these tags alone. Counts tags, not categories.
    int GetCurGallerySelectedTag(const DWORD& dwGallery, std::vector<CTagCategory>& categories) const;
    int GetCurrentGalFaceCategory(const DWORD& dwGallery, CTagCategory& category) const;
    // In whatever case the name is written.
    int GetTagByName(DWORD dwGallery, const CString& strName, CLibTag& tag) const;
    // The first tag of that GUID, in whatever gallery.
    int GetTagByGuid(const GUID& guid, CLibTag& tag) const;
    bool IsTagCategoryExisted(const DWORD& dwGallery, const GUID& category) const;
    bool IsTagExisted(const DWORD& dwGallery, const GUID& tag) const;
    // The store's own, valid until the files are read again.
    const std::list<CPresetItemTag>& GetPresetTagData() const { return m_presets; }
    const CategoryTemplate& GetCategoryTemplate() const { return m_categoryTemplate; }

    // Updates. Those with a result always answer 1.
    // Appends each category to its own gallery, whether or not it is there already. All of them or, when memory runs
    // out (std::bad_alloc), none.
    void AddTag(const std::vector<CTagCategory>& categories);
    // Replaces the categories of the same GUID whole, their tags included; appends those that are new.
    int UpdateCategory(DWORD dwGallery, const std::vector<CTagCategory>& categories);
    // The same with the tags of a category; a tag whose category is not in the gallery is dropped.
    void UpdateTag(DWORD dwGallery, const std::list<CLibTag>& tags);
    int DeleteCategory(const DWORD& dwGallery, const std::vector<GUID>& categories);
    int DeleteTag(const DWORD& dwGallery, const std::vector<GUID>& tags);
    // The store holds `data` and nothing else; `data` is empty afterwards.
    // Kept: without the mutex, unlike the other updates.
    void SetTagsToDefault(std::map<DWORD, std::vector<CTagCategory>>& data);

    // What these read of files they take whole or, when memory runs out (std::bad_alloc), not at all.
    // Reads the category names of "Default_Libtag.ini", which lies with the host's data: replaces the entries of the
    // galleries 1 to 16.
    // Kept: 7 has no gallery and gets none.
    void GenerateCategoryTemplate();
    // Appends the items of "PresetItemTag.ini" to the presets. Hosts call it once, behind the loading of the tags.
    void GeneratePresetTagData();
    // Appends one preset item made of the first four entries of a section's text.
    // Kept: by their places, whatever their keys; and one also when there are fewer.
    void GetPresetTagIniFileContent(const char* pszBuffer, int nLength);

    static void GetPresetTagInifileSections(std::vector<std::string>& sections);
    // Appends the keys of a section's text: entries that end with a NUL each. One without '=' gives none.
    static void GetIniFileSectionContent(const char* pszBuffer, int nLength, std::vector<std::string>& keys);
    // The section of "Default_Libtag.ini" for a gallery's id; that of Media for ids it does not know.
    static CString GetInifileSectionByLibID(int nGalleryId);

private:
    friend class qfc::TagFilesRollback;
    friend class qfc::TagStorePeer;
    using Galleries = std::map<DWORD, std::vector<CTagCategory>>;

    CLibTagsMgr();
    ~CLibTagsMgr();

    const std::vector<CTagCategory>& CategoriesOf(DWORD dwGallery) const;
    template <typename Matches>
    const CLibTag* FindTag(DWORD dwGallery, Matches&& matches) const;

    Galleries m_galleries;
    std::mutex m_mutex;
    std::list<CPresetItemTag> m_presets;
    CategoryTemplate m_categoryTemplate;
};

// The text that is shown for a default tag or category: what the translation data say, else the name itself. Any
// thread.
// Kept: without translation data the text of the look-up before may come back.
QFCLIB_API CString g_GetTagTranslateName(const CString& strName);
