#include "lookups.h"

#include <EGL/egl.h>
#include <dlfcn.h>
#include <pthread.h>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define VELMODEL_COUNTS_LOCKS 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#undef VELMODEL_COUNTS_LOCKS
#endif
#endif

namespace Atelier::Vel::Testing {

namespace {

thread_local int locks = 0;
thread_local int contextLookUps = 0;

template<typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

bool countsLocks() {
#ifdef VELMODEL_COUNTS_LOCKS
    return true;
#else
    return false;
#endif
}

int lockCount() {
    return locks;
}

int contextLookUpCount() {
    return contextLookUps;
}

} // namespace Atelier::Vel::Testing

using namespace Atelier::Vel::Testing;

// The dynamic linker finds these before those of the libraries, because it searches the program first.
// NOLINTBEGIN(readability-identifier-naming): the names are those of the libraries
#define VISIBLE extern "C" __attribute__((visibility("default")))

VISIBLE EGLContext eglGetCurrentContext() {
    static auto* const real = next<decltype(eglGetCurrentContext)>("eglGetCurrentContext");
    ++contextLookUps;
    const int before = locks;
    const EGLContext context = real();
    locks = before;
    return context;
}

#ifdef VELMODEL_COUNTS_LOCKS
VISIBLE int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    static auto* const real = next<int(pthread_mutex_t*)>("pthread_mutex_lock");
    ++locks;
    return real(mutex);
}
#endif
// NOLINTEND(readability-identifier-naming)
