#include "service/OperationQueues.h"

#include "service/LibraryOperation.h"

#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <ostream>
#include <random>
#include <string>

namespace {

class NamedOperation : public LibraryOperation {
public:
    explicit NamedOperation(std::string name) : m_name(std::move(name)) {}
    int execute() override { return 1; }
    const std::string& Name() const { return m_name; }

private:
    std::string m_name;
};

// Notes its name when it dies.
class DyingOperation : public NamedOperation {
public:
    DyingOperation(std::string name, std::string& noted) : NamedOperation(std::move(name)), m_noted(noted) {}
    ~DyingOperation() override { m_noted += Name() + " "; }

private:
    std::string& m_noted;
};

// Operations are named by their kind and number: S1 synchronous, O1 ordinary, D1 deferred.
class Dispatch {
public:
    void Push(char kind, int count = 1) {
        for (int i = 0; i < count; ++i) {
            const auto operation = std::make_shared<NamedOperation>(kind + std::to_string(++m_numbers[kind]));
            m_alive.push_back(operation);
            if (kind == 'S') {
                m_queues.PushSync(operation);
            } else {
                m_queues.PushAsync(operation, kind == 'D');
            }
        }
    }
    std::string Take() {
        const auto operation = m_queues.Take();
        return operation != nullptr ? static_cast<NamedOperation&>(*operation).Name() : "";
    }
    std::string TakeAll() {
        std::string names;
        for (std::string name = Take(); !name.empty(); name = Take()) names += (names.empty() ? "" : " ") + name;
        return names;
    }
    int Alive() const {
        int alive = 0;
        for (const auto& operation : m_alive) alive += operation.expired() ? 0 : 1;
        return alive;
    }

    qfc::OperationQueues m_queues;

private:
    std::map<char, int> m_numbers;
    std::vector<std::weak_ptr<NamedOperation>> m_alive;
};

TEST(OperationQueues, NothingQueued_GivesNothing) {
    Dispatch dispatch;
    EXPECT_EQ(dispatch.m_queues.Take(), nullptr);
    EXPECT_TRUE(dispatch.m_queues.IsSyncEmpty());
}

struct OrderCase {
    const char* what;
    int sync;
    int ordinary;
    int deferred;
    const char* order;
    friend void PrintTo(const OrderCase& orderCase, std::ostream* out) { *out << orderCase.what; }
};

class DispatchOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(DispatchOrder, FollowsTheRule) {
    Dispatch dispatch;
    dispatch.Push('D', GetParam().deferred);
    dispatch.Push('O', GetParam().ordinary);
    dispatch.Push('S', GetParam().sync);
    EXPECT_EQ(dispatch.TakeAll(), GetParam().order);
}

INSTANTIATE_TEST_SUITE_P(
    Bursts, DispatchOrder,
    testing::Values(OrderCase{"TenAndTen", 0, 10, 10, "O1 O2 O3 O4 D1 O5 O6 O7 O8 D2 O9 O10 D3 D4 D5 D6 D7 D8 D9 D10"},
                    OrderCase{"OnlySync", 3, 0, 0, "S1 S2 S3"},
                    OrderCase{"SyncBeforeAll", 2, 2, 2, "S1 S2 O1 O2 D1 D2"},
                    OrderCase{"OnlyDeferred", 0, 0, 7, "D1 D2 D3 D4 D5 D6 D7"},
                    OrderCase{"OnlyOrdinary", 0, 16, 0, "O1 O2 O3 O4 O5 O6 O7 O8 O9 O10 O11 O12 O13 O14 O15 O16"},
                    OrderCase{"OneDeferredAmongMany", 0, 13, 1, "O1 O2 O3 O4 D1 O5 O6 O7 O8 O9 O10 O11 O12 O13"},
                    OrderCase{"TwoRefills", 0, 18, 5,
                              "O1 O2 O3 O4 D1 O5 O6 O7 O8 D2 O9 O10 O11 O12 D3 O13 O14 O15 O16 D4 O17 O18 D5"}),
    [](const auto& named) { return named.param.what; });

TEST(OperationQueues, SyncQueuedWhileTheDispatchListIsFilled_RunsNext) {
    Dispatch dispatch;
    dispatch.Push('O', 6);
    EXPECT_EQ(dispatch.Take(), "O1");
    dispatch.Push('S');
    EXPECT_EQ(dispatch.TakeAll(), "S1 O2 O3 O4 O5 O6");
}

TEST(OperationQueues, OperationsQueuedAfterARefill_WaitForTheNext) {
    Dispatch dispatch;
    dispatch.Push('D', 2);
    EXPECT_EQ(dispatch.Take(), "D1");
    dispatch.Push('O', 2);
    EXPECT_EQ(dispatch.TakeAll(), "D2 O1 O2");
}

TEST(OperationQueues, ARefillOfDeferredOnesTakesAtMostThree) {
    Dispatch dispatch;
    dispatch.Push('D', 7);
    EXPECT_EQ(dispatch.Take(), "D1");
    dispatch.Push('O');
    EXPECT_EQ(dispatch.TakeAll(), "D2 D3 O1 D4 D5 D6 D7");
}

TEST(OperationQueues, ARefillTakesAtMostFifteen) {
    Dispatch dispatch;
    dispatch.Push('O', 14);
    dispatch.Push('D', 5);
    for (int i = 0; i < 15; ++i) dispatch.Take();
    dispatch.Push('O', 2);
    // O13 and O14 stayed behind; what came since stands behind them.
    EXPECT_EQ(dispatch.TakeAll(), "O13 O14 O15 O16 D4 D5");
}

TEST(OperationQueues, OnlySyncOperationsCountForTheEmptyTest) {
    Dispatch dispatch;
    dispatch.Push('O', 2);
    dispatch.Push('D', 2);
    EXPECT_TRUE(dispatch.m_queues.IsSyncEmpty());
    dispatch.Push('S');
    EXPECT_FALSE(dispatch.m_queues.IsSyncEmpty());
    dispatch.Take();
    EXPECT_TRUE(dispatch.m_queues.IsSyncEmpty());
}

TEST(OperationQueues, Clear_ReleasesEveryOperationOfEveryList) {
    Dispatch dispatch;
    dispatch.Push('O', 20);
    dispatch.Push('D', 2);
    dispatch.Take();
    dispatch.Push('S', 2);
    ASSERT_EQ(dispatch.Alive(), 23);
    dispatch.m_queues.Clear();
    EXPECT_EQ(dispatch.Alive(), 0);
    EXPECT_EQ(dispatch.Take(), "");
}

TEST(OperationQueues, Copies_ShareTheOperationsAndNotTheLists) {
    Dispatch dispatch;
    dispatch.Push('O', 3);
    qfc::OperationQueues copy = dispatch.m_queues;
    EXPECT_EQ(copy.Take(), dispatch.m_queues.Take());
    copy.Clear();
    EXPECT_EQ(dispatch.TakeAll(), "O2 O3");
}

// The rule once more, written down as flatly as possible.
class PlainRule {
public:
    void Push(const std::string& name) { m_waiting[name[0]].push_back(name); }
    std::string Take() {
        if (!m_waiting['S'].empty()) return Pop(m_waiting['S']);
        if (m_chosen.empty()) {
            for (const char kind : std::string("OOOODOOOODOOOOD")) {
                if (!m_waiting[kind].empty()) m_chosen.push_back(Pop(m_waiting[kind]));
            }
        }
        return m_chosen.empty() ? "" : Pop(m_chosen);
    }

private:
    static std::string Pop(std::deque<std::string>& names) {
        std::string name = names.front();
        names.pop_front();
        return name;
    }
    std::map<char, std::deque<std::string>> m_waiting;
    std::deque<std::string> m_chosen;
};

TEST(OperationQueues, RandomPushesAndTakes_AgreeWithThePlainRule) {
    std::mt19937 random(20261121);
    Dispatch dispatch;
    PlainRule rule;
    std::map<char, int> numbers;
    for (int step = 0; step < 20000; ++step) {
        const unsigned draw = random() % 20;
        if (draw >= 12) {
            ASSERT_EQ(dispatch.Take(), rule.Take()) << "step " << step;
            continue;
        }
        const char kind = draw < 6 ? 'O' : draw < 11 ? 'D' : 'S';
        dispatch.Push(kind);
        rule.Push(kind + std::to_string(++numbers[kind]));
    }
}

// One operation in each of the four lists.
void FillAllLists(qfc::OperationQueues& queues, std::string& noted) {
    const auto make = [&noted](const char* name) { return std::make_shared<DyingOperation>(name, noted); };
    for (const char* name : {"taken", "chosen"}) queues.PushAsync(make(name), false);
    queues.Take();
    queues.PushSync(make("sync"));
    queues.PushAsync(make("ordinary"), false);
    queues.PushAsync(make("deferred"), true);
    noted.clear();
}

TEST(OperationQueues, Clear_DropsTheChosenThenTheDeferredThenTheOrdinaryThenTheSynchronousOnes) {
    std::string noted;
    qfc::OperationQueues queues;
    FillAllLists(queues, noted);
    queues.Clear();
    EXPECT_EQ(noted, "chosen deferred ordinary sync ");
}

TEST(OperationQueues, AtItsEnd_DropsTheDeferredThenTheOrdinaryThenTheChosenThenTheSynchronousOnes) {
    std::string noted;
    {
        qfc::OperationQueues queues;
        FillAllLists(queues, noted);
    }
    EXPECT_EQ(noted, "deferred ordinary chosen sync ");
}

TEST(OperationQueues, DropAsync_KeepsTheSynchronousOnesAloneInTheirOrder) {
    Dispatch dispatch;
    dispatch.Push('O', 20);
    dispatch.Push('D', 2);
    dispatch.Take();
    dispatch.Push('S', 2);
    dispatch.m_queues.DropAsync();
    EXPECT_EQ(dispatch.Alive(), 2);
    EXPECT_EQ(dispatch.TakeAll(), "S1 S2");
}

TEST(OperationQueues, TheMarkedEnd_ComesBeforeWhatIsQueuedLater) {
    Dispatch dispatch;
    dispatch.Push('S', 2);
    dispatch.m_queues.MarkEndOfSync();
    dispatch.Push('S');
    EXPECT_FALSE(dispatch.m_queues.IsSyncDone());
    dispatch.Take();
    EXPECT_FALSE(dispatch.m_queues.IsSyncDone());
    dispatch.Take();
    EXPECT_TRUE(dispatch.m_queues.IsSyncDone());
    EXPECT_FALSE(dispatch.m_queues.IsSyncEmpty());
    dispatch.Push('S');
    EXPECT_EQ(dispatch.Take(), "S3");  // A worker that did not look yet.
    EXPECT_TRUE(dispatch.m_queues.IsSyncDone());
    dispatch.m_queues.DropAsync();
    EXPECT_FALSE(dispatch.m_queues.IsSyncDone());
    dispatch.Take();
    EXPECT_TRUE(dispatch.m_queues.IsSyncDone());
}

}  // namespace
