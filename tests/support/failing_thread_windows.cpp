// The runtime is linked statically here: the linker sends its thread starts through this file (--wrap).
#include <pthread.h>

#include <cerrno>

#include "support/failing_thread.h"

extern "C" {

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*), void* argument) {
    if (zant::test::failsThisThreadStart()) return EAGAIN;
    return __real_pthread_create(thread, attributes, start, argument);
}
}
