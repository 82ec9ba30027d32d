#include "service/operations/TagsOperation_Items.h"

#include "db/DBTools.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"

namespace qfc {

TagsOperationOnItems::TagsOperationOnItems(DBTools* pDBTools, const std::vector<CQItem*>& items,
                                           const std::list<GUID>& tags)
    : CLibTagsOperation(pDBTools), m_items(items), m_tags(tags.begin(), tags.end()) {}

int TagsOperationOnItems::execute() {
    if (Database() == nullptr || m_items.empty() || m_tags.empty()) return 0;
    std::erase(m_items, nullptr);
    std::vector<GUID> guids;
    guids.reserve(m_items.size());
    for (const CQItem* const pItem : m_items) guids.push_back(GuidOfItem(*pItem));
    if (!Write(*Database(), guids, m_tags)) return 0;
    for (CQItem* const pItem : m_items) {
        for (const GUID& tag : m_tags) Apply(*pItem, tag);
    }
    return 1;
}

}  // namespace qfc

bool CLibTagsOperation_InsertTag2Item::Write(DBTools& database, std::span<const GUID> items,
                                             std::span<const GUID> tags) {
    return database.InsertTags2Items(items, tags);
}

void CLibTagsOperation_InsertTag2Item::Apply(CQItem& item, const GUID& tag) { item.AddLibTag(tag); }

bool CLibTagsOperation_DeleteTagFromItem::Write(DBTools& database, std::span<const GUID> items,
                                                std::span<const GUID> tags) {
    return database.DeleteTagsFromItems(items, tags);
}

void CLibTagsOperation_DeleteTagFromItem::Apply(CQItem& item, const GUID& tag) { item.RemoveLibTag(tag); }
