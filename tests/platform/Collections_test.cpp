#include "platform/framework/Collections.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

class Thing : public CObject {
public:
    explicit Thing(int n) : number(n) {}
    int number;
};

using ThingList = CTypedPtrList<CObList, Thing*>;
using ThingArray = CTypedPtrArray<CObArray, Thing*>;

template <class Call>
bool ThrowsInvalidArgument(Call call) {
    try {
        call();
    } catch (CInvalidArgException* exception) {
        exception->Delete();
        return true;
    }
    return false;
}

template <class Container>
std::vector<int> Numbers(const Container& things) {
    std::vector<int> numbers;
    for (const Thing* thing : things) numbers.push_back(thing != nullptr ? thing->number : -1);
    return numbers;
}

struct Lists : testing::Test {
    Thing one{1}, two{2}, three{3}, four{4};
    ThingList list{10};
};

TEST_F(Lists, NewListIsEmpty) {
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
}

TEST_F(Lists, AddsAtBothEndsAndReturnsTheNewPosition) {
    const POSITION middle = list.AddTail(&two);
    const POSITION tail = list.AddTail(&three);
    const POSITION head = list.AddHead(&one);
    EXPECT_EQ(Numbers(list), (std::vector{1, 2, 3}));
    EXPECT_EQ(list.GetHeadPosition(), head);
    EXPECT_EQ(list.GetTailPosition(), tail);
    EXPECT_EQ(list.GetAt(middle), &two);
    EXPECT_EQ(list.GetCount(), 3);
}

TEST_F(Lists, GetNextReturnsTheCurrentElementAndMovesOn) {
    list.AddTail(&one);
    list.AddTail(&two);
    POSITION position = list.GetHeadPosition();
    EXPECT_EQ(list.GetNext(position), &one);
    EXPECT_EQ(list.GetNext(position), &two);
    EXPECT_EQ(position, nullptr);
    position = list.GetTailPosition();
    EXPECT_EQ(list.GetPrev(position), &two);
    EXPECT_EQ(list.GetPrev(position), &one);
    EXPECT_EQ(position, nullptr);
}

TEST_F(Lists, PositionsOfOthersStayValidWhenAnElementGoes) {
    const POSITION first = list.AddTail(&one);
    const POSITION second = list.AddTail(&two);
    const POSITION third = list.AddTail(&three);
    list.RemoveAt(second);
    EXPECT_EQ(list.GetAt(first), &one);
    EXPECT_EQ(list.GetAt(third), &three);
    EXPECT_EQ(Numbers(list), (std::vector{1, 3}));
}

TEST_F(Lists, ElementsCanBeRemovedWhileWalking) {
    for (Thing* thing : {&one, &two, &three, &four}) list.AddTail(thing);
    for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
        const POSITION current = position;
        if (list.GetNext(position)->number % 2 == 0) list.RemoveAt(current);
    }
    EXPECT_EQ(Numbers(list), (std::vector{1, 3}));
}

TEST_F(Lists, InsertReturnsThePositionOfTheNewElement) {
    const POSITION second = list.AddTail(&two);
    EXPECT_EQ(list.GetAt(list.InsertBefore(second, &one)), &one);
    EXPECT_EQ(list.GetAt(list.InsertAfter(second, &three)), &three);
    EXPECT_EQ(Numbers(list), (std::vector{1, 2, 3}));
}

TEST_F(Lists, InsertAtNoPosition_MeansTheEnd) {
    list.AddTail(&two);
    list.InsertBefore(nullptr, &one);
    list.InsertAfter(nullptr, &three);
    EXPECT_EQ(Numbers(list), (std::vector{1, 2, 3}));
}

TEST_F(Lists, FindComparesPointersAndCanGoOn) {
    const POSITION first = list.AddTail(&one);
    list.AddTail(&two);
    const POSITION third = list.AddTail(&one);
    Thing twin{1};
    EXPECT_EQ(list.Find(&one), first);
    EXPECT_EQ(list.Find(&one, first), third);
    EXPECT_EQ(list.Find(&one, third), nullptr);
    EXPECT_EQ(list.Find(&twin), nullptr);
}

TEST_F(Lists, FindIndexIsNullOutside) {
    list.AddTail(&one);
    list.AddTail(&two);
    EXPECT_EQ(list.GetAt(list.FindIndex(1)), &two);
    EXPECT_EQ(list.FindIndex(2), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
}

TEST_F(Lists, RemovalNeverDeletesTheObjects) {
    list.AddTail(&one);
    list.AddTail(&two);
    list.AddTail(&three);
    EXPECT_EQ(list.RemoveHead(), &one);
    EXPECT_EQ(list.RemoveTail(), &three);
    list.RemoveAll();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(two.number, 2);
}

TEST_F(Lists, EndsOfAnEmptyListAndNullPositionsThrow) {
    POSITION nowhere = nullptr;
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.GetHead(); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.GetTail(); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.RemoveHead(); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.RemoveTail(); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.GetNext(nowhere); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.GetAt(nowhere); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.RemoveAt(nowhere); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { list.SetAt(nowhere, &one); }));
}

TEST_F(Lists, SetAtReplacesInPlace) {
    const POSITION first = list.AddTail(&one);
    list.AddTail(&two);
    list.SetAt(first, &three);
    EXPECT_EQ(Numbers(list), (std::vector{3, 2}));
}

TEST_F(Lists, ChangesAreCountedWhereTheOwnerWants) {
    std::atomic<std::uint64_t> changes{0};
    list.SetChangeCounter(&changes);
    const POSITION first = list.AddTail(&one);
    EXPECT_EQ(changes, 1u);
    list.SetAt(first, &two);
    EXPECT_EQ(changes, 2u);
    list.RemoveAt(first);
    EXPECT_EQ(changes, 3u);
    list.RemoveAll();
    EXPECT_EQ(changes, 4u);
    EXPECT_EQ(list.Find(&one), nullptr);
    EXPECT_EQ(changes, 4u);
    list.SetChangeCounter(nullptr);  // the list lives longer than the counter here
}

TEST(StringLists, HoldCopiesAndFindByText) {
    CStringList list;
    CString text("a");
    list.AddTail(text);
    text = "b";
    list.AddTail(text);
    EXPECT_STREQ(list.GetHead(), "a");
    EXPECT_EQ(list.Find("b"), list.GetTailPosition());
    EXPECT_EQ(list.Find(CString("c")), nullptr);
    EXPECT_STREQ(list.RemoveHead(), "a");
    EXPECT_EQ(list.GetCount(), 1);
}

struct Arrays : testing::Test {
    Thing one{1}, two{2}, three{3};
    ThingArray array;
};

TEST_F(Arrays, AddReturnsTheIndex) {
    EXPECT_EQ(array.GetUpperBound(), -1);
    EXPECT_EQ(array.Add(&one), 0);
    EXPECT_EQ(array.Add(&two), 1);
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array.GetCount(), 2);
    EXPECT_EQ(array.GetUpperBound(), 1);
    EXPECT_EQ(array[1], &two);
    EXPECT_EQ(array.ElementAt(0), &one);
}

TEST_F(Arrays, InsertShiftsUpAndRemoveShiftsDown) {
    array.Add(&one);
    array.Add(&three);
    array.InsertAt(1, &two);
    EXPECT_EQ(Numbers(array), (std::vector{1, 2, 3}));
    array.RemoveAt(0, 2);
    EXPECT_EQ(Numbers(array), (std::vector{3}));
    array.RemoveAt(0);
    EXPECT_TRUE(array.IsEmpty());
}

TEST_F(Arrays, InsertBehindTheEndFillsUpWithNulls) {
    array.InsertAt(2, &one, 2);
    EXPECT_EQ(Numbers(array), (std::vector{-1, -1, 1, 1}));
}

TEST_F(Arrays, SetSizeCutsOrAddsNulls) {
    array.Add(&one);
    array.Add(&two);
    array.SetSize(1);
    EXPECT_EQ(Numbers(array), (std::vector{1}));
    array.SetSize(2);
    EXPECT_EQ(array.GetAt(1), nullptr);
    array.SetSize(0);
    EXPECT_TRUE(array.IsEmpty());
}

TEST_F(Arrays, IndexOutsideThrowsAndChangesNothing) {
    array.Add(&one);
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.GetAt(1); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.GetAt(-1); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { static_cast<void>(array[1]); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.SetAt(1, &two); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.InsertAt(-1, &two); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.InsertAt(0, &two, 0); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.RemoveAt(1); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.RemoveAt(0, 2); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.RemoveAt(0, -1); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.RemoveAt(2, 0); }));
    EXPECT_TRUE(ThrowsInvalidArgument([&] { array.SetSize(-1); }));
    EXPECT_EQ(Numbers(array), (std::vector{1}));
}

TEST_F(Arrays, WorkWithAlgorithms) {
    array.Add(&one);
    array.Add(&two);
    EXPECT_EQ(std::find(array.begin(), array.end(), &two), ++array.begin());
}

TEST_F(Arrays, EveryChangeIsCounted) {
    unsigned long long before = array.ModificationCount();
    const auto counted = [&] { return std::exchange(before, array.ModificationCount()) < array.ModificationCount(); };
    array.Add(&one);
    EXPECT_TRUE(counted());
    array.InsertAt(0, &two);
    EXPECT_TRUE(counted());
    array.SetAt(0, &three);
    EXPECT_TRUE(counted());
    array.RemoveAt(0);
    EXPECT_TRUE(counted());
    array.SetSize(3);
    EXPECT_TRUE(counted());
    array.RemoveAll();
    EXPECT_TRUE(counted());
    EXPECT_TRUE(Numbers(array).empty());
    EXPECT_FALSE(counted());
}

TEST(CObArray, ModificationCounts_AreNeverTheSameForTwoArrays) {
    std::optional<CObArray> array(std::in_place);
    const auto first = array->ModificationCount();
    array.emplace();  // At the same address.
    EXPECT_NE(array->ModificationCount(), first);
    EXPECT_NE(CObArray().ModificationCount(), array->ModificationCount());
}

TEST(CObArray, APlaceHandedOut_MayChangeUnnoticedForGood) {
    Thing one(1);
    CObArray array;
    array.Add(nullptr);
    array.SetAt(0, &one);
    EXPECT_EQ(std::as_const(array)[0], &one);
    EXPECT_TRUE(array.NoticesChanges());
    array.ElementAt(0);
    EXPECT_FALSE(array.NoticesChanges());
    array.RemoveAll();
    EXPECT_FALSE(array.NoticesChanges());
}

TEST(CObArray, MakingRoom_IsNoModification) {
    CObArray array;
    for (int size = 0; size < 100; ++size) {
        const auto before = array.ModificationCount();
        array.MakeRoomForOne();
        EXPECT_EQ(array.ModificationCount(), before);
        EXPECT_EQ(array.Add(nullptr), size);
    }
}

TEST(CollectionClasses, AreKnownByName) {
    EXPECT_EQ(CRuntimeClass::FromName("CObList"), RUNTIME_CLASS(CObList));
    EXPECT_EQ(CRuntimeClass::FromName("CObArray"), RUNTIME_CLASS(CObArray));
    EXPECT_EQ(CRuntimeClass::FromName("CStringList"), RUNTIME_CLASS(CStringList));
}

}  // namespace
