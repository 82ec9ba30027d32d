#include "folders/CQFolder.h"

#include "folders/TreeChanges.h"
#include "tests/folders/FolderBuilders.h"

#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

TEST(CQFolder, NamedConstructor_TakesTrustyThenAdoptThenExtra) {
    CQFolder folder("Name", 5, 6, 7);
    EXPECT_TRUE(folder.GetFolderName() == "Name");
    EXPECT_EQ(folder.GetTrusty(), 5u);
    EXPECT_EQ(folder.GetAdopt(), 6u);
    EXPECT_EQ(folder.GetExtra(), 7u);
}

TEST(CQFolder, NewOne_HasTheDefaults) {
    OpenFolder folder;
    EXPECT_EQ(folder.GetDBId(), -1);
    EXPECT_EQ(folder.GetDBTools(), nullptr);
    EXPECT_EQ(folder.GetFolderList(), nullptr);
    EXPECT_EQ(folder.GetItemArray(), nullptr);
    EXPECT_EQ(folder.GetParent(), nullptr);
    EXPECT_EQ(folder.GetParentFolder(), nullptr);
    EXPECT_TRUE(folder.IsRoot());
    EXPECT_TRUE(folder.GetFilePath().IsEmpty());
    EXPECT_TRUE(folder.GetFolderName().IsEmpty());
    EXPECT_TRUE(folder.GetSubject().IsEmpty());
    EXPECT_TRUE(folder.GetDescription().IsEmpty());
    EXPECT_EQ(folder.GetAdopt() | folder.GetTrusty() | folder.GetExtra(), 0u);
    EXPECT_EQ(folder.m_dwNextItemNumber | folder.m_dwStorageNumber | folder.m_dwNextFolderNumber, 0u);
    EXPECT_EQ(folder.m_bDeleted, 0);
    EXPECT_EQ(folder.m_bWritable, 1);
    EXPECT_EQ(folder.GetItemsCount(), 0);
}

// Each test is a process of its own, so nobody has set them yet.
TEST(CQFolder, SharedByAllFolders_NothingIsSetAtFirst) {
    EXPECT_EQ(CQFolder::m_pCurrentFolder, nullptr);
    EXPECT_EQ(CQFolder::m_pCurrentFileStorage, nullptr);
    EXPECT_EQ(CQFolder::m_bLoadBBNow, 0);
}

TEST(CQFolder, RuntimeClass_IsCreatableAndSerialWithSchemaOne) {
    CRuntimeClass* runtimeClass = CQFolder::GetThisClass();
    EXPECT_STREQ(runtimeClass->m_lpszClassName, "CQFolder");
    EXPECT_EQ(runtimeClass->m_wSchema, 1u);
    EXPECT_EQ(runtimeClass->GetBaseClass(), CObject::GetThisClass());
    const std::unique_ptr<CObject> made(runtimeClass->CreateObject());
    EXPECT_TRUE(made->IsKindOf(runtimeClass));
    EXPECT_EQ(CRuntimeClass::FromName("CQFolder"), runtimeClass);
}

// Where the member function stands in the table of virtual functions.
template <class Member>
std::size_t SlotOf(Member member) {
    std::size_t words[2] = {};
    static_assert(sizeof(member) == sizeof(words));
    std::memcpy(words, &member, sizeof(words));
    return (words[0] - 1) / sizeof(void*);
}

TEST(CQFolder, VirtualOperations_StandInTheGivenOrder) {
    // Class, two slots of the destructor, Serialize, AssertValid, Dump, then our four.
    EXPECT_EQ(SlotOf(&CQFolder::GetRuntimeClass), 0u);
    EXPECT_EQ(SlotOf(&CObject::Serialize), 3u);
    EXPECT_EQ(SlotOf(&CObject::AssertValid), 4u);
    EXPECT_EQ(SlotOf(&CObject::Dump), 5u);
    EXPECT_EQ(SlotOf(&CQFolder::AddFolder), 6u);
    EXPECT_EQ(SlotOf(&CQFolder::GetFolderList), 7u);
    EXPECT_EQ(SlotOf(&CQFolder::GetItemArray), 8u);
    EXPECT_EQ(SlotOf(&CQFolder::RemoveSubFolder), 9u);
}

class FilledFolder : public testing::Test {
protected:
    FilledFolder() {
        parent.AddFolder(source, 0, 1);
        source->SetFolderID(8);
        source->SetIndex(4);
        source->GetFolderStrID() = "string id";
        source->m_strVersion = "7974943A-25B8-405B-A276-A6037A049880";
        source->SetSortInfo(1, 1);
        source->SetExpandStatus(3);
        source->GetSubject() = "subject";
        source->GetDescription() = "description";
        source->m_strTranslateName = "translated";
        source->m_nDBId = 12;
        source->SetDBTools(Tools());
        source->m_pStorage = At(1);
        source->m_pFileStorage = At(2);
        source->m_pSecondStorage = At(3);
        source->m_bWritable = 0;
        source->m_bDeleted = 1;
        source->m_dwNextItemNumber = 5;
        source->m_dwNextFolderNumber = 6;
        source->m_dwStorageNumber = 7;
        AddSub(*source, "child");
        source->AddItem(item.get(), 1);
    }

    // Addresses that are only compared.
    static IStorage* At(std::uintptr_t address) { return reinterpret_cast<IStorage*>(address); }
    static DBTools* Tools() { return reinterpret_cast<DBTools*>(std::uintptr_t{64}); }

    void ExpectTaken(OpenFolder& copy) const {
        EXPECT_EQ(copy.GetParent(), &parent);
        EXPECT_TRUE(copy.GetFolderName() == "Source");
        EXPECT_EQ(copy.GetTrusty(), 1u);
        EXPECT_EQ(copy.GetAdopt(), 2u);
        EXPECT_EQ(copy.GetExtra(), 3u);
        EXPECT_EQ(copy.GetExpandStatus(), 3);
        EXPECT_EQ(copy.m_pStorage, At(1));
        EXPECT_EQ(copy.m_pFileStorage, At(2));
        EXPECT_EQ(copy.m_bWritable, 0);
        EXPECT_EQ(copy.GetDBId(), 12);
        EXPECT_EQ(copy.GetDBTools(), Tools());
        EXPECT_EQ(copy.GetFolderID(), 8u);
        EXPECT_EQ(copy.GetVersion(), 4);
        DWORD type = 0;
        int order = 0;
        copy.GetSortInfo(type, order);
        EXPECT_EQ(type, 1u);
        EXPECT_EQ(order, 1);
        EXPECT_EQ(copy.m_bDeleted, 0);
        EXPECT_EQ(copy.GetFolderList(), nullptr);
        EXPECT_EQ(copy.GetItemArray(), nullptr);
    }

    // Of a type that the adopt mask has. Folders of a database that is not the current one leave their items alone.
    const std::unique_ptr<CQItem> item{NewItem(1, "", 2)};
    CQFolder parent;
    OpenFolder* source = new OpenFolder("Source", 1, 2, 3);
};

TEST_F(FilledFolder, CopyConstructor_TakesTheListedFieldsAndLeavesTheOthers) {
    OpenFolder copy(*source);
    ExpectTaken(copy);
    EXPECT_EQ(copy.GetIndex(), -1);
    EXPECT_TRUE(copy.GetFolderStrID().IsEmpty());
    EXPECT_TRUE(copy.GetSubject().IsEmpty());
    EXPECT_TRUE(copy.GetDescription().IsEmpty());
    EXPECT_TRUE(copy.m_strTranslateName.IsEmpty());
    EXPECT_TRUE(copy.GetFilePath().IsEmpty());
    EXPECT_EQ(copy.m_dwNextItemNumber | copy.m_dwNextFolderNumber | copy.m_dwStorageNumber, 0u);
}

TEST_F(FilledFolder, SecondStorageOfACopy_IsTheFileStorageOfItsSource) {
    const OpenFolder copy(*source);
    EXPECT_EQ(copy.m_pSecondStorage, At(2));
}

TEST_F(FilledFolder, Assignment_LeavesTheTargetItsOwnTexts) {
    OpenFolder target;
    target.GetDescription() = "own";
    target.GetSubject() = "own subject";
    target.m_dwNextItemNumber = 50;
    target.SetIndex(9);
    target = *source;
    ExpectTaken(target);
    EXPECT_TRUE(target.GetDescription() == "own");
    EXPECT_TRUE(target.GetSubject() == "own subject");
    EXPECT_EQ(target.m_dwNextItemNumber, 50u);
    EXPECT_EQ(target.GetIndex(), 9);
}

TEST(CQFolder, Assignment_LetsGoOfWhatTheTargetHeld) {
    int destroyed = 0;
    CQFolder target;
    AddSub(target, "child")->AddItem(new CountedItem(destroyed), 1);
    target.AddItem(new CountedItem(destroyed), 1);
    target = CQFolder("Other", 0, 0, 0);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(target.GetFolderList(), nullptr);
    EXPECT_EQ(target.GetItemArray(), nullptr);
}

TEST(CQFolder, SelfAssignment_ChangesNothing) {
    CQFolder folder("Self", 0, 0, 0);
    AddSub(folder, "child");
    CQFolder& same = folder;
    folder = same;
    EXPECT_EQ(Names(folder.GetFolderList()), std::vector<std::string>{"child"});
}

TEST(CQFolder, AdoptMask_MatchesWhenEveryBitIsSetButNeverZero) {
    const CQFolder folder("", 0, 6, 0);
    EXPECT_FALSE(folder.CanMatchAdopt(0));
    EXPECT_TRUE(folder.CanMatchAdopt(2));
    EXPECT_TRUE(folder.CanMatchAdopt(6));
    EXPECT_FALSE(folder.CanMatchAdopt(7));
    EXPECT_FALSE(folder.CanMatchAdopt(8));
}

TEST(CQFolder, TrustyMask_MatchesWhenEveryBitIsSetAndForZero) {
    const CQFolder folder("", 6, 0, 0);
    EXPECT_TRUE(folder.CanMatchTrusty(0));
    EXPECT_TRUE(folder.CanMatchTrusty(2));
    EXPECT_TRUE(folder.CanMatchTrusty(6));
    EXPECT_FALSE(folder.CanMatchTrusty(7));
}

TEST(CQFolder, PredefinedFolder_IsOneWithAnIdOrDirectlyBelowATemplateGallery) {
    for (const DWORD id : {3u, 12u}) {
        CQGallery gallery;
        gallery.SetFolderID(id);
        CQFolder* direct = AddSub(gallery, "direct");
        EXPECT_TRUE(direct->IsPredefinedFolder()) << id;
        EXPECT_FALSE(AddSub(*direct, "deeper")->IsPredefinedFolder()) << id;
    }
    CQGallery media;
    media.SetFolderID(1);
    CQFolder* folder = AddSub(media, "folder");
    EXPECT_FALSE(folder->IsPredefinedFolder());
    folder->SetFolderID(100);
    EXPECT_TRUE(folder->IsPredefinedFolder());
    EXPECT_FALSE(CQFolder().IsPredefinedFolder());
}

TEST(CQFolder, NameFromImportFolder_IsTheLastBeforeABlankOne) {
    const struct {
        const char* list;
        const char* name;
    } rows[] = {
        {"a || b ||  || c", "b"}, {"", ""},        {"a", "a"}, {"a||b||c", "c"}, {"||a||", "a"},
        {"  a b  ", "a b"},       {"   || a", ""}, {"|", ""},  {"a|b", "b"},     {"a||||b", "b"},
    };
    for (const auto& row : rows) EXPECT_STREQ(CQFolder::GetNameFormImportFolder(row.list), row.name) << row.list;
}

TEST(CQFolder, SetDBTools_RefusesNull) {
    CQFolder folder;
    auto* tools = reinterpret_cast<DBTools*>(std::uintptr_t{64});
    EXPECT_EQ(folder.SetDBTools(tools), 1);
    EXPECT_EQ(folder.SetDBTools(nullptr), 0);
    EXPECT_EQ(folder.GetDBTools(), tools);
}

TEST(CQFolder, SetItemArray_HandsTheArrayBeforeBackUnfreed) {
    CQFolder folder;
    AddNew(folder, 1, "old");
    const std::unique_ptr<CQFolder::ItemArray> before(folder.GetItemArray());
    auto* given = new CQFolder::ItemArray;
    given->Add(NewItem(2, "new"));
    folder.SetItemArray(given);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), std::vector<std::string>{"new"});
    EXPECT_EQ(ItemNames(before.get()), std::vector<std::string>{"old"});
    delete before->GetAt(0);
}

TEST(CQFolder, ItemsCount_IsTheSizeOfTheItemArray) {
    CQFolder folder;
    AddNew(folder, 1);
    AddNew(folder, 2);
    EXPECT_EQ(folder.GetItemsCount(), 2);
}

// A folder that keeps its sub-folders and items in containers of its own.
class FolderWithOwnContainers : public CQFolder {
public:
    FolderList* GetFolderList() override { return &folders; }
    ItemArray* GetItemArray() override { return &items; }
    FolderList folders;
    ItemArray items;
};

class FolderThatCounts : public CQFolder {
public:
    FolderThatCounts() { m_nItemsCount = 7; }
    int Counted() const { return m_nItemsCount; }
};

TEST(CQFolder, ItemsCount_IsNotThatOfTheMember) {
    FolderThatCounts folder;
    EXPECT_EQ(folder.GetItemsCount(), 0);
    AddNew(folder, 1);
    EXPECT_EQ(folder.GetItemsCount(), 1);
    EXPECT_EQ(folder.Counted(), 7);
}

TEST(CQFolder, DerivedFolder_SubstitutesItsContainersEverywhere) {
    FolderWithOwnContainers folder;
    CQItem first("one");
    first.SetUniqueID(GuidOf(1));
    CQFolder child("child", 0, 0, 0);
    folder.AddItem(&first, 1);
    folder.AddFolder(&child, 1, 1);
    EXPECT_EQ(folder.items.GetSize(), 1);
    EXPECT_EQ(folder.folders.GetCount(), 1);
    EXPECT_TRUE(folder.HasItem(GuidOf(1), 0));
    EXPECT_EQ(folder.GetSubFolderByName("child"), &child);
    EXPECT_EQ(folder.GetFolderByName("child"), &child);
    EXPECT_EQ(folder.GetAllSubItemArray()->GetSize(), 1);
    folder.folders.RemoveAll();
    folder.items.RemoveAll();
}

TEST(CQFolder, Clear_DestroysSubFoldersAndItems) {
    int destroyed = 0;
    CQFolder folder;
    folder.AddItem(new CountedItem(destroyed), 1);
    AddSub(*AddSub(folder, "A"), "B")->AddItem(new CountedItem(destroyed), 1);
    folder.GetAllSubItemArray();
    folder.Clear();
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(folder.GetFolderList(), nullptr);
    EXPECT_EQ(folder.GetItemArray(), nullptr);
}

TEST(CQFolder, Clear_LeavesItemsOfAnotherDatabaseAlone) {
    int destroyed = 0;
    CountedItem item(destroyed);
    {
        CQFolder folder;
        folder.SetDBTools(reinterpret_cast<DBTools*>(std::uintptr_t{64}));
        folder.AddItem(&item, 1);
    }
    EXPECT_EQ(destroyed, 0);
}

TEST(CQFolder, Clear_OfAGalleryDestroysAnItemOfThreeFoldersOnce) {
    int destroyed = 0;
    CQGallery gallery;
    auto* item = new CountedItem(destroyed);
    for (const char* name : {"A", "B", "C"}) {
        CQFolder* folder = AddSub(gallery, name);
        folder->AddItem(item, 0);
        gallery.AddItem2Map(item, reinterpret_cast<std::uintptr_t>(folder));
    }
    gallery.Clear();
    EXPECT_EQ(destroyed, 1);
}

TEST(CQFolder, Clear_EndsAnItemInSeveralFoldersOnceWithoutAMapAsWell) {
    int destroyed = 0;
    {
        CQFolder root;
        auto* item = new CountedItem(destroyed);
        CQFolder* deep = AddSub(*AddSub(root, "A"), "B");
        deep->AddItem(item, 1);
        deep->AddItem(item, 1);
        deep->GetParent()->AddItem(item, 1);
        root.AddItem(item, 1);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(CQFolder, Clear_SavesItsFileFirst_SubFoldersFlushedBeforeTheTree) {
    RecordedFile file;
    OpenFolder root("root", 0, 0, 0);
    root.m_strFilePath = "C:\\gallery.file";
    AddSub(root, "A");
    AddSub(root, "B");
    root.Clear();
    EXPECT_EQ(file.calls, (std::vector<std::string>{"flush A", "flush B", "save root"}));
    root.m_strFilePath.Empty();
}

TEST(CQFolder, Clear_NeverSavesAFolderMarkedDeleted) {
    RecordedFile file;
    OpenFolder root("root", 0, 0, 0);
    root.m_strFilePath = "C:\\gallery.file";
    AddSub(root, "A");
    root.SetDeleteFlag();
    root.Clear();
    EXPECT_TRUE(file.calls.empty());
}

TEST(CQFolder, Clear_LetsASubFolderWithItsOwnFileSaveItsTreeWhole) {
    RecordedFile file;
    {
        CQFolder root("root", 0, 0, 0);
        CQFolder* linked = AddSub(root, "linked");
        FolderInside::FilePath(*linked) = "C:\\linked.file";
        AddSub(*linked, "below");
        root.Clear();
    }
    EXPECT_EQ(file.calls, (std::vector<std::string>{"flush below", "save linked"}));
}

TEST(CQFolder, VeryDeepTree_IsWalkedAndDestroyedWithoutRecursion) {
    int destroyed = 0;
    auto folder = std::make_unique<CQFolder>("deepest", 0, 0, 0);
    folder->AddItem(new CountedItem(destroyed), 1);
    for (int level = 0; level < 100000; ++level) {
        auto parent = std::make_unique<CQFolder>();
        parent->AddFolder(folder.release(), 0, 1);
        folder = std::move(parent);
    }
    EXPECT_NE(folder->GetSubFolderByName("deepest"), nullptr);
    EXPECT_EQ(folder->GetAllSubItemArray()->GetSize(), 1);
    folder->SetAllParent();
    folder.reset();
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
}  // namespace qfc::test
