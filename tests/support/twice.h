// One function in two threads at a time.
#pragma once

#include <barrier>
#include <cstdint>
#include <thread>

namespace zant::test {

// Runs a function in two threads that start it together, with 0 and with 1.
template <class Function>
void twice(Function function) {
    std::barrier<> start(2);
    const auto body = [&](uint32_t which) {
        start.arrive_and_wait();
        function(which);
    };
    std::thread other(body, 1);
    body(0);
    other.join();
}

}  // namespace zant::test
