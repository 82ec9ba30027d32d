// Which folders go when effects are deleted, compared with a model on random trees.
#include "service/operations/DeleteFilter.h"
#include "service/operations/DeleteTransition.h"
#include "tests/support/EffectFixture.h"

#include <algorithm>
#include <map>
#include <random>
#include <set>

namespace {

using namespace qfc::test;

constexpr const char* kEitherKind[] = {"filters", "transitions"};

class EffectPruning : public EffectFixture {
protected:
    // Deletes nothing but what is empty.
    int Prune(bool bTransitions) {
        return bTransitions ? QFCLibraryManager::fnDeleteTransition({}, m_hMedia)
                            : QFCLibraryManager::fnDeleteFilter({}, m_hMedia);
    }
    static std::string Tree(CQFolder& folder) {
        std::string text;
        if (CQFolder::FolderList* const pList = folder.GetFolderList()) {
            for (CQFolder* const pChild : *pList) {
                text += std::string(pChild->GetFolderName()) + "(" + Tree(*pChild) + ")";
            }
        }
        return text;
    }
    std::string Tree() const { return Tree(*qfc::AsGallery(m_hMedia)); }
};

TEST_F(EffectPruning, NestedEmptyFoldersAllGo) {
    for (const bool bTransitions : {false, true}) {
        SCOPED_TRACE(kEitherKind[bTransitions]);
        MakeFolder("", "A");
        MakeFolder("A", "B");
        MakeFolder("A\\B", "C");
        MakeFolder("", "D");
        EXPECT_EQ(Prune(bTransitions), 1);
        EXPECT_EQ(Tree(), "");
        EXPECT_EQ(CountRows("FOLDER_TABLE"), 1);  // The gallery's.
    }
}

// The folder goes by its row number. By its folder id, which is 0 as its neighbours', none would be found and the last
// one taken.
TEST_F(EffectPruning, AnEmptyFolderBeforeAFullOne_GoesAndTheFullOneStays) {
    std::string full;
    for (const bool bTransitions : {false, true}) {
        SCOPED_TRACE(kEitherKind[bTransitions]);
        const std::string name = bTransitions ? "Full of transitions" : "Full of filters";
        ASSERT_NE(MakeFolder("", "Empty"), nullptr);
        ASSERT_NE(MakeFolder("", name.c_str()), nullptr);
        CQItem* const pItem = AddItem("kept", {name.c_str()});
        EXPECT_EQ(Prune(bTransitions), 1);
        full += name + "()";
        EXPECT_EQ(Tree(), full);
        EXPECT_EQ(Folder(name.c_str())->HasItem(pItem->GetUniqueID(), 0), 1);
        EXPECT_EQ(CountRows("FOLDER_TABLE"), bTransitions ? 3 : 2);
    }
}

TEST_F(EffectPruning, AFolderWithItemsFarBelowStays) {
    MakeFolder("", "A");
    MakeFolder("A", "B");
    AddItem("kept", {"A\\B"});
    for (const bool bTransitions : {false, true}) {
        EXPECT_EQ(Prune(bTransitions), 1);
        EXPECT_EQ(Tree(), "A(B())");
    }
}

TEST_F(EffectPruning, APredefinedFolderStays_ButGoesWithAnEmptyOrdinaryOneAboveIt) {
    for (const bool bTransitions : {false, true}) {
        SCOPED_TRACE(kEitherKind[bTransitions]);
        MakePredefined("", bTransitions ? "P2" : "P1");
        MakeFolder("", "A");
        MakePredefined("A", "Q");
        MakeFolder(bTransitions ? "P2" : "P1", "Below");
        EXPECT_EQ(Prune(bTransitions), 1);
        EXPECT_EQ(Tree(), bTransitions ? "P1()P2()" : "P1()");
    }
}

TEST_F(EffectPruning, AFolderAndThoseAboveIt_GoWithTheirLastItem) {
    AddItem("kept");
    for (const bool bTransitions : {false, true}) {
        SCOPED_TRACE(kEitherKind[bTransitions]);
        MakeFolder("", "A");
        MakeFolder("A", "B");
        if (bTransitions) {
            const GUID guid = AddTransition("Fade", "A\\B");
            EXPECT_EQ(QFCLibraryManager::fnDeleteTransition({MakeTransitionRecord("Fade.so", guid)}, m_hMedia), 1);
        } else {
            const GUID guid = AddFilter("Glow", "A\\B");
            EXPECT_EQ(QFCLibraryManager::fnDeleteFilter({MakeFilterFile("Glow.so", {guid})}, m_hMedia), 1);
        }
        EXPECT_EQ(Tree(), "Clips()");
        EXPECT_EQ(CountRows("FOLDER_TABLE"), 2);
        EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    }
}

// Counts how often it is asked for its items.
class AskedFolder : public CQFolder {
public:
    AskedFolder() : CQFolder("Asked", 0, 0, 0) {}
    ItemArray* GetItemArray() override {
        ++nAsked;
        return CQFolder::GetItemArray();
    }

    int nAsked = 0;
};

// Kept: what is left is the same, the way there is not. Whatever else a deletion looks at, it does for both kinds.
TEST_F(EffectPruning, FiltersLookAtTheFirstFolderAgainAfterEachDeletion_TransitionsOnlyOnce) {
    EXPECT_EQ(Prune(false), 1);  // Takes what the fixture made.
    auto* const pFirst = new AskedFolder;
    ASSERT_EQ(qfc::AsGallery(m_hMedia)->AddFolder(pFirst, 0, 1), 1);
    pFirst->AddItem(NewItem("kept"), 1);
    int asked[2] = {};
    for (const bool bTransitions : {false, true}) {
        MakeFolder("", "Empty");
        MakeFolder("", "EmptyToo");
        pFirst->nAsked = 0;
        EXPECT_EQ(Prune(bTransitions), 1);
        asked[bTransitions] = pFirst->nAsked;
        EXPECT_EQ(Tree(), "Asked()");
    }
    EXPECT_EQ(asked[0], asked[1] + 2);
}

// By its row number, -1, the deletion would take the first folder without a row.
TEST_F(EffectPruning, AFolderWithoutARowStays) {
    CQGallery& gallery = *qfc::AsGallery(m_hMedia);
    for (const char* pszName : {"Full", "Empty"}) gallery.AddFolder(new CQFolder(pszName, 0, 0, 0), 0, 1);
    Folder("Full")->AddItem(NewItem("kept"), 1);
    for (const bool bTransitions : {false, true}) {
        EXPECT_EQ(Prune(bTransitions), 1);
        EXPECT_EQ(Tree(), "Full()Empty()");
    }
}

// What a pruning leaves, told from the outside: an ordinary folder stays when an item is in or below it, a predefined
// one when nothing above it goes.
struct Model {
    struct Node {
        std::string name;
        bool predefined = false;
        bool holdsItem = false;
        std::vector<int> children;
    };
    std::vector<Node> nodes{1};

    bool HasItems(int node) const {
        const Node& here = nodes[static_cast<std::size_t>(node)];
        return here.holdsItem ||
               std::any_of(here.children.begin(), here.children.end(), [&](int child) { return HasItems(child); });
    }
    std::string Left(int node = 0) const {
        std::string text;
        for (const int child : nodes[static_cast<std::size_t>(node)].children) {
            const Node& below = nodes[static_cast<std::size_t>(child)];
            if (below.predefined || HasItems(child)) text += below.name + "(" + Left(child) + ")";
        }
        return text;
    }
};

TEST_F(EffectPruning, RandomTrees_AreLeftAsTheModelSays) {
    std::mt19937 random(20);
    EXPECT_EQ(Prune(false), 1);
    for (int round = 0; round < 40; ++round) {
        Model model;
        std::vector<std::string> paths{""};
        const std::string tag = "r" + std::to_string(round);
        MakePredefined("", tag.c_str());
        model.nodes.push_back({tag, true, false, {}});
        model.nodes[0].children.push_back(1);
        paths.push_back(tag);
        for (int folder = 2; folder < 14; ++folder) {
            // Everything hangs below the round's own folder.
            const std::size_t parent = 1 + random() % (paths.size() - 1);
            const std::string name = "f" + std::to_string(folder);
            const bool predefined = random() % 4 == 0;
            const bool holds = random() % 4 == 0;
            ASSERT_NE(predefined ? MakePredefined(paths[parent].c_str(), name.c_str())
                                 : MakeFolder(paths[parent].c_str(), name.c_str()),
                      nullptr);
            model.nodes.push_back({name, predefined, holds, {}});
            model.nodes[parent].children.push_back(folder);
            paths.push_back(paths[parent] + "\\" + name);
            if (holds) AddItem(name.c_str(), {paths.back().c_str()});
        }
        EXPECT_EQ(Prune(round % 2 != 0), 1);
        const std::string whole = Tree();
        EXPECT_EQ(tag + "(" + Tree(*Folder(tag.c_str())) + ")", model.Left()) << kEitherKind[round % 2];
        if (HasFailure()) return;
        // What is left is what is stored.
        if (round % 10 == 9) {
            Restart();
            EXPECT_EQ(Tree(), whole);
        }
        ASSERT_EQ(QFCLibraryManager::fnDeleteFolder(qfc::ToHandle(Folder(tag.c_str()))), 1);
    }
}

}  // namespace
