#include "allocationcount.h"

#include <cstdlib>

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
#define VELMODEL_COUNTS_ALLOCATIONS 1
#endif
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#undef VELMODEL_COUNTS_ALLOCATIONS
#endif
#endif

namespace {

size_t count = 0;

} // namespace

#ifdef VELMODEL_COUNTS_ALLOCATIONS
// Everything in the process allocates through these, Qt's strings included: the libraries see them, although
// the project hides its symbols.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(size_t bytes);                  // NOLINT
void* __libc_realloc(void* memory, size_t bytes);   // NOLINT
void* __libc_calloc(size_t elements, size_t bytes); // NOLINT
void* malloc(size_t bytes) {                        // NOLINT
    ++count;
    return __libc_malloc(bytes);
}
void* realloc(void* memory, size_t bytes) { // NOLINT
    ++count;
    return __libc_realloc(memory, bytes);
}
void* calloc(size_t elements, size_t bytes) { // NOLINT
    ++count;
    return __libc_calloc(elements, bytes);
}
}
#pragma GCC visibility pop
#endif

namespace Atelier::Vel::Testing {

bool countsAllocations() {
#ifdef VELMODEL_COUNTS_ALLOCATIONS
    return true;
#else
    return false;
#endif
}

std::size_t allocationCount() {
    return count;
}

} // namespace Atelier::Vel::Testing
