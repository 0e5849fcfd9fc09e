#include "support/failing_thread.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

namespace {

using CreateFn = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

}  // namespace

// Stands before the system's, also for the standard library.
extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*start)(void*), void* argument) {
    if (zant::test::failsThisThreadStart()) return EAGAIN;
    static const auto next = reinterpret_cast<CreateFn>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, start, argument);
}
