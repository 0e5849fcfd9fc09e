// Thread starts of the whole test program, of which one fails on demand.
#pragma once

#include <atomic>

namespace zant::test {

// Thread starts until one fails; negative: none does.
inline std::atomic<int> g_threadStartsLeft{-1};

// Asked by what stands before the system's pthread_create.
inline bool failsThisThreadStart() {
    return g_threadStartsLeft.load() >= 0 && g_threadStartsLeft.fetch_sub(1) == 0;
}

// While it lives, one thread start fails for want of resources: the one that countdown others came before.
class FailingThread {
public:
    explicit FailingThread(int countdown) { g_threadStartsLeft = countdown; }
    ~FailingThread() { g_threadStartsLeft = -1; }
    FailingThread(const FailingThread&) = delete;
    FailingThread& operator=(const FailingThread&) = delete;
};

}  // namespace zant::test
