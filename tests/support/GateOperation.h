#pragma once

#include "service/EntrySteps.h"
#include "service/LibraryOperation.h"

#include <future>
#include <memory>
#include <utility>

namespace qfc::test {

// Holds the worker inside an operation until it is opened, so that what is queued meanwhile is certain. Opens itself
// when it dies.
class Gate {
public:
    // Queues the operation that holds the worker and returns once the worker is inside it.
    Gate() {
        EntrySteps::RunAsync<Operation>(0, m_state);
        m_state->entered.get_future().wait();
    }
    ~Gate() { Open(); }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    void Open() {
        if (!std::exchange(m_open, true)) m_state->opened.set_value();
    }

private:
    struct State {
        std::promise<void> entered;
        std::promise<void> opened;
    };

    class Operation : public LibraryOperation {
    public:
        explicit Operation(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        int execute() override {
            m_state->entered.set_value();
            m_state->opened.get_future().wait();
            return 0;
        }

    private:
        std::shared_ptr<State> m_state;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
    bool m_open = false;
};

}  // namespace qfc::test
