// One function in two threads at a time.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace zant::test {

// Runs a function in two threads that start it together, with 0 and with 1.
template <class Function>
void twice(Function function) {
    std::atomic<int> arrived = 0;
    const auto body = [&](uint32_t which) {
        ++arrived;
        while (arrived < 2) std::this_thread::yield();
        function(which);
    };
    std::thread other(body, 1);
    body(0);
    other.join();
}

}  // namespace zant::test
