#pragma once

#include "platform/framework/Guid.h"
#include "service/operations/TagsOperation.h"

#include <list>
#include <span>
#include <vector>

class CQItem;

namespace qfc {

// Every one of the tags at every one of the items, in the order they were given; null among the items is passed over.
class TagsOperationOnItems : public CLibTagsOperation {
public:
    TagsOperationOnItems(DBTools* pDBTools, const std::vector<CQItem*>& items, const std::list<GUID>& tags);

    // 0 without items or tags; 1 when there are only nulls.
    int execute() override;

private:
    virtual bool Write(DBTools& database, std::span<const GUID> items, std::span<const GUID> tags) = 0;
    virtual void Apply(CQItem& item, const GUID& tag) = 0;

    std::vector<CQItem*> m_items;
    std::vector<GUID> m_tags;
};

}  // namespace qfc

// Gives items tags.
class CLibTagsOperation_InsertTag2Item : public qfc::TagsOperationOnItems {
public:
    using TagsOperationOnItems::TagsOperationOnItems;

private:
    bool Write(DBTools& database, std::span<const GUID> items, std::span<const GUID> tags) override;
    void Apply(CQItem& item, const GUID& tag) override;
};

// Takes tags from items.
class CLibTagsOperation_DeleteTagFromItem : public qfc::TagsOperationOnItems {
public:
    using TagsOperationOnItems::TagsOperationOnItems;

private:
    bool Write(DBTools& database, std::span<const GUID> items, std::span<const GUID> tags) override;
    void Apply(CQItem& item, const GUID& tag) override;
};
