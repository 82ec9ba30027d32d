#include "service/operations/ExchangeSort.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

// Elements of one key can be told apart, so that it shows which of them changed places.
struct Element {
    int key;
    int mark;
    bool operator==(const Element&) const = default;
};

bool Before(const Element& left, const Element& right) { return left.key < right.key; }

// The sort as it is told: for each position every later element that compares smaller is swapped in.
std::vector<Element> Literally(std::vector<Element> elements) {
    for (std::size_t i = 0; i < elements.size(); ++i) {
        for (std::size_t j = i + 1; j < elements.size(); ++j) {
            if (Before(elements[j], elements[i])) std::swap(elements[i], elements[j]);
        }
    }
    return elements;
}

std::vector<Element> Shortly(std::vector<Element> elements) {
    qfc::ExchangeSortAfterAdding(std::span(elements), Before);
    return elements;
}

std::vector<Element> Random(std::mt19937& random, int length, int keys) {
    std::vector<Element> elements;
    for (int mark = 0; mark < length; ++mark) elements.push_back({static_cast<int>(random() % keys), mark});
    return elements;
}

TEST(ExchangeSort, EmptyAndSingleStayAsTheyAre) {
    EXPECT_TRUE(Shortly({}).empty());
    EXPECT_EQ(Shortly({{1, 0}}), (std::vector<Element>{{1, 0}}));
}

TEST(ExchangeSort, AnAddedElement_HandsTheFirstOfEachRunBehindItToTheRunsEnd) {
    const std::vector<Element> elements{{1, 0}, {2, 1}, {2, 2}, {2, 3}, {3, 4}, {3, 5}, {1, 6}};
    EXPECT_EQ(Shortly(elements), Literally(elements));
    EXPECT_EQ(Shortly(elements), (std::vector<Element>{{1, 0}, {1, 6}, {2, 2}, {2, 3}, {2, 1}, {3, 5}, {3, 4}}));
}

TEST(ExchangeSort, OneAfterTheOtherWithTies_EqualsTheLiteralSort) {
    std::mt19937 random(4711);
    for (int round = 0; round < 300; ++round) {
        const int keys = 1 + round % 9;
        std::vector<Element> literal;
        std::vector<Element> shortcut;
        for (int mark = 0; mark < 40; ++mark) {
            const Element added{static_cast<int>(random() % static_cast<unsigned>(keys)), mark};
            literal.push_back(added);
            shortcut.push_back(added);
            literal = Literally(literal);
            shortcut = Shortly(shortcut);
            ASSERT_EQ(shortcut, literal) << "round " << round << ", element " << mark;
        }
    }
}

TEST(ExchangeSort, AnyOrder_EqualsTheLiteralSort) {
    std::mt19937 random(815);
    for (int round = 0; round < 2000; ++round) {
        const std::vector<Element> elements = Random(random, round % 30, 1 + round % 7);
        ASSERT_EQ(Shortly(elements), Literally(elements)) << "round " << round;
    }
}

TEST(ExchangeSort, AddingToASortedArray_ComparesALinearNumberOfTimes) {
    std::vector<Element> elements;
    for (int mark = 0; mark < 10000; ++mark) elements.push_back({mark / 3, mark});
    elements.push_back({5, -1});
    std::size_t comparisons = 0;
    qfc::ExchangeSortAfterAdding(std::span(elements), [&](const Element& left, const Element& right) {
        ++comparisons;
        return Before(left, right);
    });
    // One to see the order, one to find the runs behind the place, and a search for the place.
    EXPECT_LT(comparisons, 2u * 10000u + 32u);
    EXPECT_TRUE(std::is_sorted(elements.begin(), elements.end(), Before));
}

}  // namespace
