#include "platform/framework/Exceptions.h"

#include <gtest/gtest.h>

namespace {

template <class Exception>
bool Throws(void (*raise)()) {
    try {
        raise();
    } catch (CException* exception) {
        const bool right = exception->IsKindOf(RUNTIME_CLASS(Exception));
        exception->Delete();
        return right;
    }
    return false;
}

TEST(Exceptions, AreThrownAsPointersToTheirBase) {
    EXPECT_TRUE(Throws<CMemoryException>(&AfxThrowMemoryException));
    EXPECT_TRUE(Throws<CInvalidArgException>(&AfxThrowInvalidArgException));
    EXPECT_TRUE(Throws<CNotSupportedException>(&AfxThrowNotSupportedException));
}

TEST(Exceptions, MemoryExceptionSurvivesDelete_SoItCanBeThrownAgain) {
    EXPECT_TRUE(Throws<CMemoryException>(&AfxThrowMemoryException));
    EXPECT_TRUE(Throws<CMemoryException>(&AfxThrowMemoryException));
}

}  // namespace
