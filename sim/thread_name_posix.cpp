#include <pthread.h>

#include <array>

#include "thread_name.h"

std::string zant::sim::threadName() {
    std::array<char, 16> name{};  // all that the kernel keeps
    return pthread_getname_np(pthread_self(), name.data(), name.size()) == 0 ? name.data() : "";
}
