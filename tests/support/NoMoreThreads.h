#pragma once

#include <cstddef>
#include <pthread.h>

namespace qfc::test {

// While it lives the system gives no thread that asks for the usual stack: there is no room for one of that size.
class NoMoreThreads {
public:
    NoMoreThreads() {
        pthread_getattr_default_np(&m_usual);
        pthread_attr_t huge = m_usual;
        pthread_attr_setstacksize(&huge, std::size_t{1} << 48);
        pthread_setattr_default_np(&huge);
    }
    ~NoMoreThreads() {
        pthread_setattr_default_np(&m_usual);
        pthread_attr_destroy(&m_usual);
    }
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    pthread_attr_t m_usual;
};

}  // namespace qfc::test
