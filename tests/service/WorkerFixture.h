#pragma once

#include "platform/os/Sync.h"
#include "tests/support/GateOperation.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/ServicePeer.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>

namespace qfc::test {

using SharedLambda = std::shared_ptr<LambdaOperation>;

// The started service, and operations made of functions for its worker.
class WorkerFixture : public StoppedServiceFixture {
protected:
    void SetUp() override {
        StoppedServiceFixture::SetUp();
        ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    }

    static SharedLambda QueueSync(std::function<int()> execute) {
        auto pOperation = std::make_shared<LambdaOperation>(std::move(execute));
        EXPECT_EQ(ServicePeer::Add(pOperation), 1);
        return pOperation;
    }
    static SharedLambda QueueAsync(std::function<int()> execute, int nPriority = 0,
                                   std::function<void(QFCLibCallbackParam&)> fill = nullptr) {
        auto pOperation = std::make_shared<LambdaOperation>(std::move(execute), std::move(fill));
        pOperation->SetAsync();
        EXPECT_EQ(ServicePeer::AddAsync(pOperation, nPriority), 1);
        return pOperation;
    }
    static void Await(const LibraryOperation& operation) {
        EXPECT_EQ(WaitForSingleObject(operation.Event(), INFINITE), WAIT_OBJECT_0);
    }
    // Returns when everything queued before is over, callbacks included: each kind is served in order of arrival.
    static void AwaitEndOfPasses() {
        for (const int nPriority : {0, 1}) Await(*QueueAsync([] { return 0; }, nPriority));
    }

    std::function<int()> Note(const std::string& mark) {
        return [this, mark] {
            m_order += mark + " ";
            return 1;
        };
    }

    std::string m_order;  // Written by the worker; read behind its last operation.
};

}  // namespace qfc::test
