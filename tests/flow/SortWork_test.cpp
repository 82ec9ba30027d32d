// How much the folder of a transition is sorted, told by the comparisons of names.
#include "tests/support/EffectFixture.h"
#include "tests/support/TextComparisons.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace qfc::test;
using Manager = QFCLibraryManager;

class SortWork : public EffectFixture {
protected:
    // Names with ties.
    void Add(int first, int count) {
        for (int number = first; number < first + count; ++number) {
            const std::string name = "t" + std::to_string(number * 7919 % 101);
            ASSERT_EQ(Manager::fnAddItemAsync_Transition(MakeTransitionRecord("many.so"), m_hMedia, {"Clips"},
                                                         NewItem(name.c_str(), kTransitionType), 0),
                      1);
        }
        Settle();
        ASSERT_EQ(m_pClips->GetItemsCount(), first + count);
    }
};

TEST_F(SortWork, AnAddToAFullFolder_ComparesEachNameAFewTimesAlone) {
    constexpr int kBefore = 300;
    constexpr int kAdded = 10;
    Add(0, kBefore);
    const TextComparisons comparisons;
    Add(kBefore, kAdded);
    EXPECT_GT(comparisons.Seen(), std::uint64_t{kAdded} * kBefore) << "the sort is not seen";
    EXPECT_LT(comparisons.Seen(), std::uint64_t{kAdded} * kBefore * 10);  // More than 150 if each met each.
}

}  // namespace
