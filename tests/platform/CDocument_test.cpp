#include "platform/framework/CDocument.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

class RecordingView : public CView {
public:
    RecordingView(std::string name, std::string& log) : m_name(std::move(name)), m_log(log) {}
    std::function<void()> also;
    LPARAM lastHint = 0;
    CObject* lastObject = nullptr;
    CView* lastSender = nullptr;

protected:
    void OnUpdate(CView* sender, LPARAM hint, CObject* object) override {
        m_log += m_name;
        lastSender = sender;
        lastHint = hint;
        lastObject = object;
        if (also) also();
    }

private:
    std::string m_name;
    std::string& m_log;
};

class Commanded : public CDocument {
public:
    const AFX_MSGMAP* Map() const { return GetMessageMap(); }
    static const AFX_MSGMAP* BaseMap() { return CDocument::GetThisMessageMap(); }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(Commanded, CDocument)
END_MESSAGE_MAP()

struct Documents : testing::Test {
    std::string log;
    CDocument document;
    RecordingView a{"a", log}, b{"b", log}, c{"c", log};
    Documents() {
        document.AddView(&b);
        document.AddView(&a);
        document.AddView(&c);
    }
};

TEST_F(Documents, UpdateCallsEveryViewButTheSenderInOrder) {
    document.UpdateAllViews(&a, 4);
    EXPECT_EQ(log, "bc");
}

TEST_F(Documents, UpdateWithoutSenderCallsAll) {
    document.UpdateAllViews(nullptr);
    EXPECT_EQ(log, "bac");
}

TEST_F(Documents, HintAndObjectReachTheView) {
    document.UpdateAllViews(&b, 32768, &document);
    EXPECT_EQ(a.lastSender, &b);
    EXPECT_EQ(a.lastHint, 32768);
    EXPECT_EQ(a.lastObject, &document);
}

TEST_F(Documents, HintsArePointerSized) {
    const auto hint = reinterpret_cast<LPARAM>(&document);
    document.UpdateAllViews(nullptr, hint);
    EXPECT_EQ(a.lastHint, hint);
}

TEST_F(Documents, RemovedViewIsNoLongerCalled) {
    document.RemoveView(&a);
    EXPECT_EQ(a.GetDocument(), nullptr);
    document.UpdateAllViews(nullptr);
    EXPECT_EQ(log, "bc");
}

TEST_F(Documents, ViewsMayGoDuringAnUpdate) {
    auto dying = std::make_unique<RecordingView>("d", log);
    document.AddView(dying.get());
    b.also = [&] {
        document.RemoveView(&b);
        dying.reset();
    };
    document.UpdateAllViews(nullptr);
    EXPECT_EQ(log, "bac");
}

TEST_F(Documents, ViewAddedTwiceIsCalledOnce) {
    document.AddView(&a);
    document.AddView(nullptr);
    document.UpdateAllViews(nullptr);
    EXPECT_EQ(log, "bac");
}

TEST_F(Documents, ViewMovesToTheDocumentThatAddsIt) {
    CDocument other;
    other.AddView(&a);
    EXPECT_EQ(a.GetDocument(), &other);
    document.UpdateAllViews(nullptr);
    EXPECT_EQ(log, "bc");
}

TEST_F(Documents, ViewOutlivesItsDocument) {
    {
        CDocument other;
        other.AddView(&a);
    }
    EXPECT_EQ(a.GetDocument(), nullptr);
}

TEST(MessageMaps, AreEmptyTablesThatLeadToTheBase) {
    const Commanded document;
    const AFX_MSGMAP* map = document.Map();
    ASSERT_NE(map, nullptr);
    EXPECT_EQ(map->lpEntries[0].nCode, 0u);
    EXPECT_EQ(map->lpEntries[0].nID, 0u);
    EXPECT_EQ(map->pfnGetBaseMap(), Commanded::BaseMap());
    EXPECT_EQ(map->pfnGetBaseMap()->pfnGetBaseMap, nullptr);
}

}  // namespace
