// Thread starts of the whole test program, of which one fails on demand.
#pragma once

namespace zant::test {

// While it lives, one thread start fails for want of resources: the one that countdown others came before.
class FailingThread {
public:
    explicit FailingThread(int countdown);
    ~FailingThread();
    FailingThread(const FailingThread&) = delete;
    FailingThread& operator=(const FailingThread&) = delete;
};

}  // namespace zant::test
