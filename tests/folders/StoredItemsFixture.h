#pragma once

#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qfc::test {

// A stored tree with the folders A and B, and items that count their ends.
class StoredItemsFixture : public testing::Test {
protected:
    CQItem* NewCounted(unsigned number, DWORD type = 1) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        item->SetItemType(type);
        item->SetItemName(("i" + std::to_string(number)).c_str());
        return item;
    }
    CQItem* StoredItem(CQFolder& folder, unsigned number) {
        CQItem* item = NewCounted(number);
        EXPECT_EQ(folder.AddItemDb(item, 1), 1);
        return item;
    }
    std::string Count(const std::string& tableAndCondition) {
        return library.Raw().Cell("select count(*) from " + tableAndCondition);
    }
    // Item number and index of the folder's placements, by index.
    std::vector<RawDb::Row> Placements(const CQFolder& folder) {
        return library.Raw().Rows(
            "select ITEM_NAME, ITEM_INDEX from RELATION_TABLE join ITEM_TABLE using (ITEM_ID) "
            "where PARENT_ID = " +
            std::to_string(folder.GetDBId()) + " order by ITEM_INDEX, ITEM_NAME");
    }
    void RefuseInserts(const char* table) {
        library.Raw().Exec(std::string("create trigger refuse before insert on ") + table +
                           " begin select raise(abort, 'no'); end");
    }
    void RefuseDeletes(const char* table) {
        library.Raw().Exec(std::string("create trigger refuse before delete on ") + table +
                           " begin select raise(abort, 'no'); end");
    }

    int destroyed = 0;
    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQGallery& gallery = tree.Gallery();
    CQFolder& a = *tree.pA;
    CQFolder& b = *tree.pB;
};

}  // namespace qfc::test
