#include "service/LibraryOperation.h"

#include "platform/os/Sync.h"
#include "service/LibItemThumbnailInfo.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <type_traits>

// The records of the interface: their fields in order, each of its width.
static_assert(std::is_standard_layout_v<QFCLibCallbackParam>);
static_assert(offsetof(QFCLibCallbackParam, hGallery) == 0);
static_assert(offsetof(QFCLibCallbackParam, guidItem) == 8);
static_assert(offsetof(QFCLibCallbackParam, nFolderId) == 24);
static_assert(sizeof(QFCLibCallbackParam::nFolderId) == 4 &&
              std::is_signed_v<decltype(QFCLibCallbackParam::nFolderId)>);
static_assert(std::is_standard_layout_v<_DS_LibItemTunmbnailInfo_>);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, guidItem) == 0);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, dwItemType) == 16);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, nReserved) == 20);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, nCompressedSize) == 24);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, sizeBitmapCache) == 28);
static_assert(offsetof(_DS_LibItemTunmbnailInfo_, strPath) > 28);
static_assert(sizeof(SIZE) == 8 && std::is_signed_v<decltype(SIZE::cx)>);

namespace {

class PlainOperation : public LibraryOperation {
public:
    explicit PlainOperation(ULONGLONG hGallery = 0) { SetGallery(hGallery); }
    int execute() override { return 1; }
};

TEST(LibraryOperation, IsSynchronousWithoutResultAndNotSignalledAtFirst) {
    const PlainOperation operation;
    EXPECT_FALSE(operation.IsAsync());
    EXPECT_EQ(operation.Result(), 0);
    ASSERT_NE(operation.Event(), nullptr);
    EXPECT_EQ(WaitForSingleObject(operation.Event(), 0), WAIT_TIMEOUT);
}

TEST(LibraryOperation, ItsEventStaysSignalledForEveryWaiter) {
    const PlainOperation operation;
    SetEvent(operation.Event());
    EXPECT_EQ(WaitForSingleObject(operation.Event(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(operation.Event(), 0), WAIT_OBJECT_0);
}

TEST(LibraryOperation, ClosesItsEventAtTheEnd) {
    HANDLE hEvent = nullptr;
    {
        const PlainOperation operation;
        hEvent = operation.Event();
    }
    EXPECT_EQ(WaitForSingleObject(hEvent, 0), WAIT_FAILED);
}

TEST(LibraryOperation, TheBaseRecordHoldsTheGalleryAndNothingElse) {
    PlainOperation operation(4711);
    QFCLibCallbackParam param;
    param.guidItem.Data1 = 1;
    param.nFolderId = 9;
    operation.FillCallbackParam(param);
    EXPECT_EQ(param.hGallery, 4711u);
    EXPECT_EQ(param.guidItem, GUID_NULL);
    EXPECT_EQ(param.nFolderId, -1);
}

}  // namespace
