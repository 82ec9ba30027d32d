#include "folders/CQFolderCtrl.h"

#include "folders/FolderVersions.h"

#include <gtest/gtest.h>

namespace {

class OpenCtrl : public CQFolderCtrl {
public:
    using CQFolderCtrl::m_nExpandStatus;
    using CQFolderCtrl::m_strVersion;
};

OpenCtrl Filled() {
    OpenCtrl ctrl;
    ctrl.SetFolderID(7);
    ctrl.GetFolderStrID() = "string id";
    ctrl.m_strVersion = qfc::kFolderVersionTags[1];
    ctrl.SetSortInfo(2, 1);
    ctrl.m_nExpandStatus = 9;
    ctrl.SetIndex(5);
    return ctrl;
}

TEST(CQFolderCtrl, NewOne_HasTheDefaults) {
    const OpenCtrl ctrl;
    DWORD type = 0;
    int order = 1;
    ctrl.GetSortInfo(type, order);
    EXPECT_EQ(ctrl.GetFolderID(), 0u);
    EXPECT_TRUE(ctrl.GetFolderStrID().IsEmpty());
    EXPECT_TRUE(ctrl.m_strVersion == "00000000-0000-0000-0000-000000000000");
    EXPECT_EQ(type, 0xFFFFFFFFu);
    EXPECT_EQ(order, 0);
    EXPECT_EQ(ctrl.GetIndex(), -1);
    EXPECT_EQ(ctrl.GetVersion(), 0);
}

TEST(CQFolderCtrl, Version_IsThePositionOfTheTag) {
    const struct {
        const char* tag;
        int version;
    } rows[] = {
        {"F73C5D01-87F4-4283-84DE-E7FB9B0AADEB", 1},
        {"F084123F-09DE-41A8-983E-838D99360969", 2},
        {"2D13C9D1-F9D7-4415-BDAC-D2D21AE79E38", 3},
        {"7974943A-25B8-405B-A276-A6037A049880", 4},
        {"00000000-0000-0000-0000-000000000000", 0},
        {"7974943a-25b8-405b-a276-a6037a049880", 0},
        {"", 0},
    };
    for (const auto& row : rows) {
        OpenCtrl ctrl;
        ctrl.m_strVersion = row.tag;
        EXPECT_EQ(ctrl.GetVersion(), row.version) << row.tag;
    }
}

void ExpectTaken(const OpenCtrl& copy) {
    DWORD type = 0;
    int order = 0;
    copy.GetSortInfo(type, order);
    EXPECT_EQ(copy.GetFolderID(), 7u);
    EXPECT_EQ(copy.GetVersion(), 2);
    EXPECT_EQ(type, 2u);
    EXPECT_EQ(order, 1);
    EXPECT_EQ(copy.m_nExpandStatus, 9);
}

TEST(CQFolderCtrl, Copying_LeavesStringIdEmptyAndIndexAtMinusOne) {
    const OpenCtrl source = Filled();
    const OpenCtrl copy(source);
    ExpectTaken(copy);
    EXPECT_TRUE(copy.GetFolderStrID().IsEmpty());
    EXPECT_EQ(copy.GetIndex(), -1);
}

TEST(CQFolderCtrl, Assigning_LeavesTheTargetItsOwnStringIdAndIndex) {
    OpenCtrl target;
    target.GetFolderStrID() = "own";
    target.SetIndex(3);
    target = Filled();
    ExpectTaken(target);
    EXPECT_TRUE(target.GetFolderStrID() == "own");
    EXPECT_EQ(target.GetIndex(), 3);
}

}  // namespace
