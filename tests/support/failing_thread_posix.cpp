#include "support/failing_thread.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>

namespace {

// Thread starts until one fails; negative: none does.
std::atomic<int> g_startsLeft{-1};

using CreateFn = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

}  // namespace

// Stands before the system's, also for the standard library.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*start)(void*), void* argument) {
    if (g_startsLeft.load() >= 0 && g_startsLeft.fetch_sub(1) == 0) return EAGAIN;
    static const auto next = reinterpret_cast<CreateFn>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, start, argument);
}

namespace zant::test {

FailingThread::FailingThread(int countdown) {
    g_startsLeft = countdown;
}

FailingThread::~FailingThread() {
    g_startsLeft = -1;
}

}  // namespace zant::test
