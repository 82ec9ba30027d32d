#pragma once

#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <string>

namespace qfc::test {

inline constexpr int kGallery = 1;
inline constexpr int kRoot = 1;

// A library whose rows are written by hand. Row 1 is the root of gallery 1. With shortcuts (true) the tree is read at
// once, without them row by row.
class LoadFixture : public testing::TestWithParam<bool> {
protected:
    LoadFixture() {
        library.Tools()->SetShortcuts(GetParam());
        AddFolderRow(kRoot, -1, "Root");
        Sql("insert into GALLERY_TABLE values(1, 1)");
    }

    void Sql(const std::string& text) { library.Raw().Exec(text); }
    void AddFolderRow(int id, int parent, const std::string& name, int index = -1) {
        Sql("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME, ORDER_INDEX, PREDEFINED_ID, TRUSTY_TYPE) values(" +
            std::to_string(id) + ", " + std::to_string(parent) + ", '" + name + "', " + std::to_string(index) +
            ", 0, 0)");
    }
    void AddItemRow(unsigned number, const std::string& name) {
        Sql("insert into ITEM_TABLE(ITEM_NAME, ITEM_ID, ITEM_TYPE) values('" + name + "', " +
            BlobLiteral(GuidOf(number)) + ", 2)");
    }
    void Place(unsigned number, int folder, int index) {
        Sql("insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) values(" + std::to_string(folder) + ", " +
            BlobLiteral(GuidOf(number)) + ", " + std::to_string(index) + ")");
    }
    int Load() { return Load(library.Tools()); }
    int Load(DBTools* tools) {
        gallery.SetFolderID(kGallery);
        gallery.SetDBTools(tools);
        return gallery.LoadTreeFromDb();
    }

    CurrentLibrary library;
    CQGallery gallery;
};

}  // namespace qfc::test
