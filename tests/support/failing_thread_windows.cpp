// The runtime is linked statically here: the linker sends its thread starts through this file (--wrap).
#include <pthread.h>

#include <atomic>
#include <cerrno>

#include "support/failing_thread.h"

namespace {

// Thread starts until one fails; negative: none does.
std::atomic<int> g_startsLeft{-1};

}  // namespace

extern "C" {

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument) {
    if (g_startsLeft.load() >= 0 && g_startsLeft.fetch_sub(1) == 0) return EAGAIN;
    return __real_pthread_create(thread, attributes, start, argument);
}
}

namespace zant::test {

FailingThread::FailingThread(int countdown) {
    g_startsLeft = countdown;
}

FailingThread::~FailingThread() {
    g_startsLeft = -1;
}

}  // namespace zant::test
